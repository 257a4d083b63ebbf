// What the tests of the log share.
#pragma once

#include <string>
#include <vector>

#include "tests/support/test_handheld.h"

namespace corvane::testing {

inline constexpr char kLogFile[] = "CorvaneLog.txt";
inline constexpr char kOldLogFile[] = "CorvaneLogOld.txt";

// One line of a log, taken apart.
struct LogLine {
  std::string time;  // "12:52:35"
  long long counter = 0;
  unsigned thread = 0;
  std::string message;  // with its indentation, without the line end
};

// Fails the test for a line that has not the log's form.
std::vector<LogLine> ParseLog(const std::string& content);
std::vector<std::string> Messages(const std::string& content);

// A handheld whose clock stands at 2008-02-25 12:52:35.067 UTC, with the log switched on and
// nothing written yet.
class LogTest : public HandheldTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  std::string Content() const { return handheld_.FileContent(kLogFile); }
  std::string OldContent() const { return handheld_.FileContent(kOldLogFile); }
  // The messages of the log without the header of its last opening.
  std::vector<std::string> Body() const;
};

}  // namespace corvane::testing
