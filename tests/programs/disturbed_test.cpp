#include "tests/programs/disturbed_test.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <filesystem>

#include "tests/support/sanitizers.h"

namespace corvane::testing {

using ::testing::AnyOf;

namespace {

bool Kills(const Fault& fault) {
  return fault.how == "kill" || fault.how == "half";
}

int Failures() {
  return ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}

}  // namespace

DisturbedTest::DisturbedTest() : work_(Path("work")) {}

Ended DisturbedTest::RunWith(const Fault& fault, std::uint64_t n) const {
  return RunCommand(Disturbed(fault, n, work_));
}

void DisturbedTest::Disturb(const std::string& command, std::vector<Fault> faults) {
  // A sanitizer has its own allocator, and sees nothing of a process that is killed.
  if (kSanitizer) {
    std::erase_if(faults, [](const Fault& fault) { return Kills(fault); });
  } else {
    faults.insert(faults.end(), {{"memory", "fail"}, {"memory", "fail-on"}});
  }
  Prepare();
  const Ended undisturbed = RunCommand(Options());
  ASSERT_THAT(undisturbed.code, AnyOf(0, 3)) << ::testing::PrintToString(undisturbed);
  doneCode_ = undisturbed.code;
  KeepWhole();
  for (const Fault& fault : faults) {
    Prepare();
    EXPECT_EQ(RunWith(fault, 0).code, doneCode_);
    const std::uint64_t calls = std::stoull("0" + directory_.Read("told"));
    const int failedBefore = Failures();
    std::size_t points = 0;
    for (const std::uint64_t point : PointsAmong(calls, 1)) {
      ++points;
      Prepare();
      const Ended ended = RunWith(fault, point);
      const std::string told = directory_.Read("told");
      SCOPED_TRACE(NameOf(fault) + " at call " + std::to_string(point) + " of " +
                   std::to_string(calls) + ", " + told);
      ASSERT_FALSE(told.empty());
      // How often it asks a connection is not always the same: there may have been fewer calls.
      const bool wentWrong = std::isdigit(static_cast<unsigned char>(told.front())) == 0;
      if (!wentWrong || Kills(fault)) {
        EXPECT_EQ(ended.code, wentWrong ? -SIGKILL : doneCode_);
      }
      ExpectToldAndFinished(ended, fault);
      if (Failures() > failedBefore) break;
    }
    std::printf("%s: %s at %zu of %llu calls\n", command.c_str(), NameOf(fault).c_str(), points,
                static_cast<unsigned long long>(calls));
  }
}

void ExpectSame(const std::map<std::string, std::string>& is,
                const std::map<std::string, std::string>& expected) {
  for (const auto& [name, content] : expected) {
    const auto there = is.find(name);
    if (there == is.end()) {
      ADD_FAILURE() << name << " is not there";
    } else if (there->second != content) {
      const auto [differs, instead] = std::ranges::mismatch(there->second, content);
      const auto at = static_cast<std::size_t>(differs - there->second.begin());
      ADD_FAILURE() << name << " at " << at << ": \"" << there->second.substr(at, 60)
                    << "\" instead of \"" << content.substr(at, 60) << '"';
    }
  }
  for (const auto& [name, content] : is) EXPECT_TRUE(expected.contains(name)) << name;
}

bool EndedAtOnce(const Ended& ended, const Fault& fault) {
  return fault.calls == "memory" ? ended.code < 0 : ended.code == -SIGKILL;
}

}  // namespace corvane::testing
