#pragma once

namespace panelry::test
{

/// Sanitizers bring a heap of their own, which finds other faults in other places and takes other room.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
inline constexpr bool kSanitized = false;
#endif

}  // namespace panelry::test
