// Runs a case once for every platform call that it makes, and fails that call.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "handheld/base/fault.h"

namespace corvane::testing {

enum class Failing {
  kOnce,      // the n-th call, and no other
  kFromThen,  // the n-th call and all behind it
};

// `prepare()` comes before the plan is in force; `run()` gives the outcome; `check(outcome, call)`
// is told which call failed last, once the plan is no longer in force. Ends with the first run in
// which no call failed. Answers the number of calls. A step leaves calls out.
template <typename Prepare, typename Run, typename Check>
std::uint64_t FailEachCall(ce::DWORD error, Prepare prepare, Run run, Check check,
                           Failing failing = Failing::kOnce, std::uint64_t step = 1) {
  for (std::uint64_t n = 1;; n += step) {
    std::string call;
    prepare();
    auto outcome = [&] {
      const auto plan = failing == Failing::kOnce ? ce::host::FaultPlan::FailNth(n, error)
                                                  : ce::host::FaultPlan::FailFromNth(n, error);
      auto result = run();
      call = plan.firedCall();
      return result;
    }();
    SCOPED_TRACE("call " + std::to_string(n) + ": " + call);
    check(outcome, call);
    if (call.empty()) return n - 1;
    if (::testing::Test::HasFailure()) return n;
  }
}
template <typename Run, typename Check>
std::uint64_t FailEachCall(ce::DWORD error, Run run, Check check,
                           Failing failing = Failing::kOnce) {
  return FailEachCall(
      error, [] {}, run, check, failing);
}

}  // namespace corvane::testing
