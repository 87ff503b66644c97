#pragma once

#include <mutex>
#include <utility>

/// What the two observers share: their result without a provider, how they attach, and sets of what is
/// subscribed, each under a lock of its own that is never held over a call to the provider.
namespace panelry::subscriptions
{

inline constexpr int kNoProvider = -1;
inline constexpr int kAttachKind = 1;

/// Puts a value in (`on`) or takes it out.
template <class Set>
void Note(Set& subscribed, std::recursive_mutex& lock, const typename Set::value_type& value, bool on)
{
    const std::lock_guard guard(lock);
    if (on) {
        subscribed.insert(value);
    } else {
        subscribed.erase(value);
    }
}

template <class Set>
Set CopyOf(const Set& subscribed, std::recursive_mutex& lock)
{
    const std::lock_guard guard(lock);
    return subscribed;
}

/// What was in the set; it is empty afterwards.
template <class Set>
Set TakeAll(Set& subscribed, std::recursive_mutex& lock)
{
    const std::lock_guard guard(lock);
    return std::exchange(subscribed, {});
}

}  // namespace panelry::subscriptions
