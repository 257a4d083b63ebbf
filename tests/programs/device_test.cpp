// corvane-device as a person calls it: making a handheld, its settings, registry and clock.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

constexpr char kAgentKey[] = "SOFTWARE\\Tenbrook\\Corvane";

class DeviceTool : public ToolTest {
 protected:
  void ExpectDone(const Ended& ended, const std::string& out) {
    EXPECT_EQ(ended.code, 0);
    EXPECT_EQ(ended.out, out);
    EXPECT_EQ(ended.err, "");
  }
  // A value that makes no sense is wrong use.
  void ExpectWrongUse(const Ended& ended, const std::string& says) {
    ExpectRefusal(ended, says, 2);
  }
  void ExpectRefusal(const Ended& ended, const std::string& says, int code = 1) {
    EXPECT_EQ(ended.code, code);
    EXPECT_EQ(ended.out, "");
    EXPECT_TRUE(IsOneLine(ended.err)) << ended.err;
    EXPECT_THAT(ended.err, StartsWith("corvane-device: "));
    EXPECT_THAT(ended.err, HasSubstr(says));
  }
};

TEST_F(DeviceTool, MakesAHandheldAsAsked) {
  ExpectDone(Device({"init", Path("mine"), "--language", "de-DE", "--zone", "Europe/Berlin",
                     "--os-version", "4.21", "--first-oid", "500"}),
             Path("mine") + ": a handheld, de-DE, Europe/Berlin, version 4.21\n");
  const Ended info = Device({"info", Path("mine")});
  EXPECT_EQ(info.code, 0);
  EXPECT_THAT(info.out, HasSubstr("Language    de-DE\nVersion     4.21\n"
                                  "Zone        Europe/Berlin\nOwner       -\n"));
  EXPECT_THAT(info.out, HasSubstr("Contacts    0\n"));
  EXPECT_THAT(Device({"import", "-v", Path("mine"), Sample("people.vcf")}).out,
              HasSubstr("added           500  Okafor, Amara\n"));
}

TEST_F(DeviceTool, MakesAHandheldWithoutAnyOption) {
  EXPECT_EQ(Device({"init", Path("mine")}).code, 0);
  EXPECT_EQ(Device({"check", Path("mine")}).code, 0);
}

TEST_F(DeviceTool, MakesNoHandheldOverAnother) {
  const std::string handheld = MakeHandheld();
  const std::string registry = directory_.Read("handheld/registry.reg");
  ExpectRefusal(Device({"init", handheld, "--zone", "Asia/Tokyo"}), handheld + " is not empty");
  EXPECT_EQ(directory_.Read("handheld/registry.reg"), registry);
}

TEST_F(DeviceTool, MakesNothingOfAWrongOption) {
  ExpectWrongUse(Device({"init", Path("mine"), "--zone", "Mars/Base"}), "\"Mars/Base\"");
  ExpectWrongUse(Device({"init", Path("mine"), "--language", "klingon"}), "\"klingon\"");
  ExpectWrongUse(Device({"init", Path("mine"), "--os-version", "five"}), "\"five\"");
  ExpectWrongUse(Device({"init", Path("mine"), "--first-oid", "0"}), "first-oid");
  EXPECT_FALSE(std::filesystem::exists(Path("mine")));
}

TEST_F(DeviceTool, RefusesWhatIsNoHandheld) {
  std::filesystem::create_directory(Path("plain"));
  for (const std::string command : {"info", "check"}) {
    ExpectRefusal(Device({command, Path("plain")}), Path("plain") + " is not a handheld");
    ExpectRefusal(Device({command, Path("nowhere")}), Path("nowhere"));
  }
}

TEST_F(DeviceTool, ChangesASetting) {
  const std::string handheld = MakeHandheld();
  ExpectDone(Device({"set", handheld, "owner", "Ada Brook"}), "owner = Ada Brook\n");
  ExpectDone(Device({"set", handheld, "zone", "Asia/Tokyo"}), "zone = Asia/Tokyo\n");
  ExpectDone(Device({"set", handheld, "os-version", "3.0"}), "os-version = 3.0\n");
  const std::string info = Device({"info", handheld, "--json"}).out;
  EXPECT_THAT(info, HasSubstr("\"owner\":\"Ada Brook\""));
  EXPECT_THAT(info, HasSubstr("\"zone\":\"Asia/Tokyo\""));
  EXPECT_THAT(info, HasSubstr("\"osVersion\":\"3.0\""));
  EXPECT_THAT(info, HasSubstr("\"directory\":\"" + handheld + "\""));
}

TEST_F(DeviceTool, RefusesASettingOrAValueThatItDoesNotKnow) {
  const std::string handheld = MakeHandheld();
  const std::string registry = directory_.Read("handheld/registry.reg");
  ExpectWrongUse(Device({"set", handheld, "colour", "red"}), "no setting \"colour\"");
  ExpectWrongUse(Device({"set", handheld, "zone", "Mars/Base"}), "\"Mars/Base\"");
  ExpectWrongUse(Device({"set", handheld, "peer-timeout", "soon"}), "\"soon\"");
  ExpectWrongUse(Device({"set", handheld, "yomi", "maybe"}), "\"maybe\"");
  EXPECT_EQ(directory_.Read("handheld/registry.reg"), registry);
}

TEST_F(DeviceTool, SetsGetsAndDeletesRegistryValues) {
  const std::string handheld = MakeHandheld();
  const auto registry = [&](Arguments arguments) {
    arguments.insert(arguments.begin(), {"registry", handheld});
    return Device(arguments);
  };
  ExpectDone(registry({"set", kAgentKey, "Logging", "dword:0x2"}), "");
  ExpectDone(registry({"set", kAgentKey, "Greeting", "sz:Grüße"}), "");
  ExpectDone(registry({"set", kAgentKey, "Bytes", "binary:00ffA5"}), "");
  ExpectDone(registry({"set", std::string(kAgentKey) + "\\Below"}), "");
  ExpectDone(registry({"get", kAgentKey, "Logging"}), "dword:2\n");
  ExpectDone(registry({"get", kAgentKey, "greeting"}), "sz:Grüße\n");
  const std::string all = registry({"get", kAgentKey}).out;
  for (const char* line :
       {"Logging = dword:2\n", "Greeting = sz:Grüße\n", "Bytes = binary:00FFA5\n", "[Below]\n"})
    EXPECT_THAT(all, HasSubstr(line));
  ExpectDone(registry({"delete", kAgentKey, "Greeting"}), "");
  ExpectRefusal(registry({"get", kAgentKey, "Greeting"}), "\"Greeting\": it is not there");
  ExpectDone(registry({"delete", std::string(kAgentKey) + "\\Below"}), "");
  ExpectRefusal(registry({"get", std::string(kAgentKey) + "\\Below"}), "it is not there");
  ExpectWrongUse(registry({"set", kAgentKey, "Logging", "two"}), "\"two\"");
  ExpectWrongUse(registry({"set", kAgentKey, "Logging", "dword:4294967296"}), "Logging");
  ExpectDone(registry({"get", kAgentKey, "Logging"}), "dword:2\n");
}

TEST_F(DeviceTool, ShowsSetsAndResetsTheClock) {
  const std::string handheld = MakeHandheld();
  ASSERT_EQ(Device({"set", handheld, "zone", "Europe/Berlin"}).code, 0);
  const Ended shown = Device({"clock", handheld});
  EXPECT_EQ(shown.code, 0);
  EXPECT_THAT(shown.out, MatchesRegex("UTC    [0-9: -]+\nlocal  [0-9: -]+  Europe/Berlin\n"));
  const Ended set = Device({"clock", handheld, "set", "2008-02-15T14:45:00+01:00"});
  EXPECT_EQ(set.code, 0);
  EXPECT_THAT(set.out, StartsWith("UTC    2008-02-15 13:4"));
  EXPECT_THAT(set.out, HasSubstr("local  2008-02-15 14:4"));
  EXPECT_THAT(Device({"clock", handheld, "show"}).out, StartsWith("UTC    2008-02-15 13:4"));
  EXPECT_EQ(Device({"clock", handheld, "reset"}).code, 0);
  EXPECT_THAT(Device({"clock", handheld}).out, ::testing::Not(HasSubstr("2008")));
}

TEST_F(DeviceTool, RefusesATimeThatIsNone) {
  ExpectWrongUse(Device({"clock", MakeHandheld(), "set", "yesterday"}), "\"yesterday\"");
}

TEST_F(DeviceTool, FindsDamageInTheStore) {
  const std::string handheld = MakeHandheld();
  ASSERT_EQ(Device({"import", handheld, Sample("people.vcf")}).code, 0);
  ExpectDone(Device({"check", handheld}), "The store is sound.\n");
  std::string store = directory_.Read("handheld/store.db");
  // From the second page on, which is the root of the first table.
  directory_.Write("handheld/store.db", store.replace(4096, 2000, 2000, '\xA5'));
  const Ended check = Device({"check", handheld});
  EXPECT_EQ(check.code, 1);
  EXPECT_EQ(check.out, "");
  EXPECT_THAT(check.err, StartsWith("corvane-device: "));
}

}  // namespace
}  // namespace corvane::testing
