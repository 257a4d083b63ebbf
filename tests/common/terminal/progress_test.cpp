#include "common/terminal/progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace terminal::testing {
namespace {

TEST(ProgressLine, FillsItsBarByShare) {
  EXPECT_EQ(ProgressLine("Pushing", 0, 4), "Pushing [                              ] 0 of 4");
  EXPECT_EQ(ProgressLine("Pushing", 2, 4), "Pushing [###############               ] 2 of 4");
  EXPECT_EQ(ProgressLine("Pushing", 4, 4), "Pushing [##############################] 4 of 4");
}

TEST(ProgressLine, CountsWithoutABarWhenTheTotalIsNotKnown) {
  EXPECT_EQ(ProgressLine("Pulling contacts", 7, std::nullopt), "Pulling contacts 7");
}

TEST(ProgressLine, StaysInItsBarWhenMoreIsDoneThanExpected) {
  EXPECT_EQ(ProgressLine("P", 9, 4), "P [##############################] 9 of 4");
}

TEST(Progress, DrawsNothingIntoAPipe) {
  std::ostringstream pipe;
  {
    Progress progress(pipe, false, "Pulling", 3);
    progress.Update(1);
    progress.Hide();
  }
  EXPECT_EQ(pipe.str(), "");
}

TEST(Progress, LeavesACleanLineBehind) {
  std::ostringstream terminal;
  {
    Progress progress(terminal, true, "Pulling", std::nullopt);
    progress.Update(1);
    EXPECT_EQ(terminal.str(), "\r\x1B[KPulling 1");
  }
  EXPECT_EQ(terminal.str(), "\r\x1B[KPulling 1\r\x1B[K");
}

TEST(Progress, DrawsAtMostTenTimesASecondHoweverOftenItIsHidden) {
  std::ostringstream terminal;
  Progress progress(terminal, true, "P", std::nullopt);
  const std::chrono::steady_clock::time_point begin;
  std::size_t drawn = 0;
  for (int i = 0; i < 1000; ++i) {
    terminal.str("");
    progress.Update(1, begin + std::chrono::milliseconds(i));
    if (!terminal.str().empty()) ++drawn;
    progress.Hide();
  }
  EXPECT_EQ(drawn, 10U);
}

}  // namespace
}  // namespace terminal::testing
