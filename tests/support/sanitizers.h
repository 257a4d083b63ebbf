// Which sanitizer the tests are built with: both keep memory for themselves.
#pragma once

#include <cstddef>

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

// How many of something large a test makes: a sanitizer, slower by far, looks at other things.
inline constexpr bool kSanitizer = kAddressSanitizer || kThreadSanitizer;
constexpr std::size_t Many(std::size_t count) {
  return kSanitizer ? count / 10 : count;
}

}  // namespace corvane::testing
