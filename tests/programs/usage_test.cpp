// What each program says of itself, and what it says to a command line it cannot follow.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <sstream>

#include "tests/programs/tool_test.h"
#include "tests/support/case_lines.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;

struct Naming {
  const char* program;
  std::vector<std::string> words;
};

class EveryProgram : public ToolTest, public ::testing::WithParamInterface<Naming> {};

TEST_P(EveryProgram, HelpNamesEveryCommandAndTheExitCodes) {
  const Ended help = Run(GetParam().program, {"--help"});
  EXPECT_EQ(help.code, 0);
  EXPECT_EQ(help.err, "");
  EXPECT_THAT(help.out, HasSubstr(std::string("Usage: ") + GetParam().program + " "));
  for (const std::string& word : GetParam().words) EXPECT_THAT(help.out, HasSubstr("  " + word));
  EXPECT_THAT(help.out, HasSubstr("Exit "));
}

TEST_P(EveryProgram, VersionIsOneLineWithItsName) {
  const Ended version = Run(GetParam().program, {"--version"});
  EXPECT_EQ(version.code, 0);
  EXPECT_EQ(version.err, "");
  EXPECT_TRUE(IsOneLine(version.out)) << version.out;
  EXPECT_THAT(version.out, ::testing::StartsWith(std::string(GetParam().program) + " "));
}

TEST_P(EveryProgram, RefusesToDoNothing) {
  const Ended ended = Run(GetParam().program, {});
  EXPECT_EQ(ended.code, 2);
  EXPECT_EQ(ended.out, "");
  EXPECT_THAT(ended.err, HasSubstr("required"));
}

TEST_P(EveryProgram, RefusesAnOptionThatItDoesNotKnow) {
  const Ended ended = Run(GetParam().program, {"--frobnicate"});
  EXPECT_EQ(ended.code, 2);
  EXPECT_EQ(ended.out, "");
  EXPECT_NE(ended.err, "");
}

INSTANTIATE_TEST_SUITE_P(
    Programs, EveryProgram,
    ::testing::Values(Naming{"corvane", {"--handheld", "--listen", "--stay", "--version"}},
                      Naming{"corvane-device",
                             {"init", "set", "info", "check", "import", "show", "export", "remove",
                              "registry", "clock", "--version"}},
                      Naming{"corvane-desktop",
                             {"pull", "push", "delete", "sync", "restore", "time", "logging",
                              "quit", "--to", "--timeout", "--version"}}),
    [](const auto& each) {
      std::string name = each.param.program;
      std::replace(name.begin(), name.end(), '-', '_');
      return name;
    });

// A command line, and what the message about it names.
class WrongCommandLine : public ToolTest, public ::testing::WithParamInterface<CaseLine> {};

TEST_P(WrongCommandLine, ExitsWithTwoAndNamesWhatIsWrong) {
  std::istringstream words(GetParam().cells.at(0));
  std::string program;
  words >> program;
  const std::vector<std::string> arguments{std::istream_iterator<std::string>(words), {}};
  const Ended ended = Run(program, arguments);
  EXPECT_EQ(ended.code, 2);
  EXPECT_EQ(ended.out, "");
  EXPECT_THAT(ended.err, HasSubstr(GetParam().cells.at(1)));
}

INSTANTIATE_TEST_SUITE_P(Cases, WrongCommandLine,
                         ::testing::ValuesIn(CasesOf("tests/programs/wrong_use.txt", "Wrong")),
                         CaseName);

}  // namespace
}  // namespace corvane::testing
