#pragma once

#if defined(__has_feature)
#if __has_feature(thread_sanitizer) && !defined(__SANITIZE_THREAD__)
#define __SANITIZE_THREAD__ 1
#endif
#endif
#ifdef __SANITIZE_THREAD__
#include <mutex>
#endif

/// What is done before something is posted to another thread happens before what is done when it arrives. The toolkit
/// sees to that inside, where the thread sanitizer doesn't look, as it wasn't built with it. So a build for that
/// sanitizer posts under a lock which the receiver takes too. In other builds nothing is here.
namespace panelry
{

#ifdef __SANITIZE_THREAD__

inline std::mutex postingLock;

/// Held by a thread while it posts something to another one.
struct Posting {
    std::lock_guard<std::mutex> guard{postingLock};
};

/// For the receiver, at the head of its event function.
inline void AwaitPosted()
{
    const Posting over;
}

#else

struct Posting {
    Posting() {}  // NOLINT(modernize-use-equals-default): a trivial one is a variable that is never used
};

inline void AwaitPosted() {}

#endif

}  // namespace panelry
