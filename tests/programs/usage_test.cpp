// What each program says of itself, and what it says to a command line it cannot follow.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/programs/tool_test.h"

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
                             {"pull", "push", "delete", "time", "logging", "quit", "--to",
                              "--timeout", "--version"}}),
    [](const auto& each) {
      std::string name = each.param.program;
      std::replace(name.begin(), name.end(), '-', '_');
      return name;
    });

struct WrongUse {
  const char* name;
  const char* program;
  std::vector<std::string> arguments;
  const char* says;  // what the message names
};

class WrongCommandLine : public ToolTest, public ::testing::WithParamInterface<WrongUse> {};

TEST_P(WrongCommandLine, ExitsWithTwoAndNamesWhatIsWrong) {
  const Ended ended = Run(GetParam().program, GetParam().arguments);
  EXPECT_EQ(ended.code, 2);
  EXPECT_EQ(ended.out, "");
  EXPECT_THAT(ended.err, HasSubstr(GetParam().says));
}

// The handheld named does not exist, so that a program that went on would fail with 1.
INSTANTIATE_TEST_SUITE_P(
    Cases, WrongCommandLine,
    ::testing::Values(
        WrongUse{"AgentWithoutDirectory", "corvane", {"--stay"}, "--handheld"},
        WrongUse{"AgentWithAnEmptyOption", "corvane", {"--handheld"}, "--handheld"},
        WrongUse{"AgentWithAnUnknownOption", "corvane", {"--handheld", "x", "--bogus"}, "--bogus"},
        WrongUse{"AgentWithAWordTooMany", "corvane", {"--handheld", "x", "extra"}, "extra"},
        WrongUse{"AgentWithNoAddress",
                 "corvane",
                 {"--handheld", "x", "--listen", "no..desk"},
                 "\"no..desk\" is not an IPv4 address, nor the name of a host that has one"},
        WrongUse{"AgentWithAnIp6Address",
                 "corvane",
                 {"--handheld", "x", "--listen", "[::1]:2005"},
                 "\"[::1]:2005\" is an IPv6 address; the agent listens on IPv4 only"},
        WrongUse{"AgentWithHalfAnAddress",
                 "corvane",
                 {"--handheld", "x", "--listen", "10.0.1"},
                 "\"10.0.1\" is not an IPv4 address"},
        WrongUse{"AgentWithTooHighAPort",
                 "corvane",
                 {"--handheld", "x", "--listen", "127.0.0.1:65536"},
                 "\"65536\" is not a port number"},
        WrongUse{"AgentWithAPortThatIsNoNumber",
                 "corvane",
                 {"--handheld", "x", "--listen", "127.0.0.1:sync"},
                 "\"sync\" is not a port number"},
        WrongUse{"DeviceWithoutDirectory", "corvane-device", {"info"}, "DIR"},
        WrongUse{
            "DeviceWithAnUnknownOption", "corvane-device", {"info", "x", "--bogus"}, "--bogus"},
        WrongUse{"DeviceShowWithoutKind", "corvane-device", {"show", "x"}, "KIND"},
        WrongUse{"DeviceShowOfAnUnknownKind", "corvane-device", {"show", "x", "stones"}, "stones"},
        WrongUse{"DeviceImportOfNothing", "corvane-device", {"import", "x"}, "FILE"},
        WrongUse{"DeviceRemoveOfNothing", "corvane-device", {"remove", "x"}, "OID"},
        WrongUse{"DeviceRemoveOfNoNumber", "corvane-device", {"remove", "x", "Ada"}, "Ada"},
        WrongUse{"DeviceSetWithoutValue", "corvane-device", {"set", "x", "zone"}, "VALUE"},
        WrongUse{"DeviceRegistryWithAnUnknownVerb",
                 "corvane-device",
                 {"registry", "x", "paint", "KEY"},
                 "paint"},
        WrongUse{"DeviceClockSetWithoutTime", "corvane-device", {"clock", "x", "set"}, "TIME"},
        WrongUse{"DeviceClockShowWithTime",
                 "corvane-device",
                 {"clock", "x", "show", "2008-02-15T13:45:00Z"},
                 "TIME"},
        WrongUse{"DeviceExportOfAnOldVersion",
                 "corvane-device",
                 {"export", "x", "contacts", "--vcard-version", "2.1"},
                 "2.1"},
        WrongUse{"DesktopWithNoTarget", "corvane-desktop", {"--to", ":", "quit"}, "--to"},
        WrongUse{"DesktopWithTooHighAPort",
                 "corvane-desktop",
                 {"--to", "desk:65536", "quit"},
                 "desk:65536"},
        WrongUse{
            "DesktopWithNoPatience", "corvane-desktop", {"--timeout", "0", "quit"}, "--timeout"},
        WrongUse{"DesktopWithAnUnknownOption", "corvane-desktop", {"quit", "--bogus"}, "--bogus"},
        WrongUse{"DesktopPullOfNothing", "corvane-desktop", {"pull"}, "what"},
        WrongUse{"DesktopPullOfAnUnknownKind", "corvane-desktop", {"pull", "stones"}, "stones"},
        WrongUse{"DesktopPullInAnUnknownFormat",
                 "corvane-desktop",
                 {"pull", "contacts", "--format", "csv"},
                 "csv"},
        WrongUse{"DesktopPullOfNoIdentifier",
                 "corvane-desktop",
                 {"pull", "contacts", "--oid", "Ada"},
                 "Ada"},
        WrongUse{"DesktopPushOfNothing", "corvane-desktop", {"push"}, "files"},
        WrongUse{"DesktopDeleteOfNothing", "corvane-desktop", {"delete"}, "what"},
        WrongUse{"DesktopDeleteOfAnUnknownKind", "corvane-desktop", {"delete", "stones"}, "stones"},
        WrongUse{"DesktopTimeAlone", "corvane-desktop", {"time"}, "required"},
        WrongUse{
            "DesktopSetToNoTime", "corvane-desktop", {"time", "set", "yesterday"}, "yesterday"},
        WrongUse{"DesktopLoggingAlone", "corvane-desktop", {"logging"}, "state"},
        WrongUse{"DesktopLoggingAtNoLevel", "corvane-desktop", {"logging", "loud"}, "loud"}),
    [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace corvane::testing
