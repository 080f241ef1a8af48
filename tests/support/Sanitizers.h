#pragma once

// Which sanitizers are in this program, for the few tests whose subject they change: time, memory, threads,
// descriptors.
namespace pelloran::testing {

#ifdef __has_feature
constexpr bool hasAddressSanitizer = __has_feature(address_sanitizer);
constexpr bool hasThreadSanitizer = __has_feature(thread_sanitizer);
constexpr bool hasUndefinedBehaviourSanitizer = __has_feature(undefined_behavior_sanitizer);
#else
// GCC before 14, which does not tell of the third.
#ifdef __SANITIZE_ADDRESS__
constexpr bool hasAddressSanitizer = true;
#else
constexpr bool hasAddressSanitizer = false;
#endif
#ifdef __SANITIZE_THREAD__
constexpr bool hasThreadSanitizer = true;
#else
constexpr bool hasThreadSanitizer = false;
#endif
constexpr bool hasUndefinedBehaviourSanitizer = false;
#endif

} // namespace pelloran::testing
