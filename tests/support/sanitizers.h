// Which sanitizer the tests are built with: both keep memory for themselves.
#pragma once

namespace corvane::testing {

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define CORVANE_TESTS_ADDRESS_SANITIZER true
#endif
#if __has_feature(thread_sanitizer)
#define CORVANE_TESTS_THREAD_SANITIZER true
#endif
#endif
#ifndef CORVANE_TESTS_ADDRESS_SANITIZER
#define CORVANE_TESTS_ADDRESS_SANITIZER false
#endif
#ifndef CORVANE_TESTS_THREAD_SANITIZER
#define CORVANE_TESTS_THREAD_SANITIZER false
#endif

inline constexpr bool kAddressSanitizer = CORVANE_TESTS_ADDRESS_SANITIZER;
inline constexpr bool kThreadSanitizer = CORVANE_TESTS_THREAD_SANITIZER;

}  // namespace corvane::testing
