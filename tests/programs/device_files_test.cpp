// corvane-device as a person calls it: notes, storage cards, and what a handheld has.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;

class DeviceFiles : public ToolTest {
 protected:
  void ExpectWrongUse(const Ended& ended, const std::string& says) {
    EXPECT_EQ(ended.code, 2);
    EXPECT_EQ(ended.out, "");
    EXPECT_THAT(ended.err, HasSubstr(says));
  }
};

TEST_F(DeviceFiles, PutsANoteAmongTheDocuments) {
  const std::string handheld = MakeHandheld();
  const std::string note = File("call.pwi", "a note");
  const Ended added = Device({"note", handheld, "add", note});
  EXPECT_EQ(added.code, 0) << added.err;
  EXPECT_EQ(added.out, "\\My Documents\\call.pwi: 6 bytes\n");
  EXPECT_EQ(directory_.Read("handheld/files/My Documents/call.pwi"), "a note");
  EXPECT_EQ(Device({"note", handheld, "add", note, "\\other.pwi"}).code, 0);
  EXPECT_EQ(directory_.Read("handheld/files/other.pwi"), "a note");
}

TEST_F(DeviceFiles, RefusesANoteOutsideTheHandheld) {
  const std::string handheld = MakeHandheld();
  const std::string note = File("call.pwi", "a note");
  const std::string registry = directory_.Read("handheld/registry.reg");
  ExpectWrongUse(Device({"note", handheld, "add", note, "../../registry.reg"}), "no file of this");
  ExpectWrongUse(Device({"note", handheld, "add", note, "\\..\\registry.reg"}), "no file of this");
  EXPECT_EQ(directory_.Read("handheld/registry.reg"), registry);
  const Ended missing = Device({"note", handheld, "add", Path("absent")});
  EXPECT_EQ(missing.code, 1);
  EXPECT_TRUE(IsOneLine(missing.err)) << missing.err;
}

TEST_F(DeviceFiles, AddsListsAndRemovesACard) {
  const std::string handheld = MakeHandheld();
  std::filesystem::create_directory(Path("sd"));
  const std::string line =
      "Storage Card -> " + std::filesystem::canonical(Path("sd")).string() + "\n";
  EXPECT_EQ(Device({"card", handheld, "list"}).out, "0 cards\n");
  EXPECT_EQ(Device({"card", handheld, "add", "Storage Card", Path("sd")}).out, line);
  EXPECT_EQ(Device({"card", handheld, "list"}).out, line + "1 card\n");
  EXPECT_THAT(Device({"info", handheld}).out, HasSubstr("Cards       Storage Card\n"));
  EXPECT_EQ(Device({"note", handheld, "add", File("n", "x"), "\\Storage Card\\n"}).code, 0);
  EXPECT_EQ(directory_.Read("sd/n"), "x");
  EXPECT_EQ(Device({"card", handheld, "remove", "Storage Card"}).out, "removed Storage Card\n");
  EXPECT_EQ(Device({"card", handheld, "remove", "Storage Card"}).code, 1);
  EXPECT_EQ(directory_.Read("sd/n"), "x");
}

TEST_F(DeviceFiles, WantsAllThatACardNeeds) {
  const std::string handheld = MakeHandheld();
  ExpectWrongUse(Device({"card", handheld, "add"}), "NAME");
  ExpectWrongUse(Device({"card", handheld, "add", "Card"}), "DIRECTORY");
  ExpectWrongUse(Device({"card", handheld, "list", "Card"}), "NAME");
  ExpectWrongUse(Device({"card", handheld, "remove"}), "NAME");
  ExpectWrongUse(Device({"card", handheld, "remove", "Card", Path("sd")}), "DIRECTORY");
  ExpectWrongUse(Device({"card", handheld, "add", "Card", Path("absent")}), "is no directory");
  ExpectWrongUse(Device({"card", handheld, "add", "Card", handheld}), "holds the handheld");
}

TEST_F(DeviceFiles, SwitchesPhoneAndInk) {
  const std::string handheld = MakeHandheld();
  EXPECT_EQ(Device({"set", handheld, "phone", "off"}).out, "phone = off\n");
  EXPECT_EQ(Device({"set", handheld, "ink", "off"}).out, "ink = off\n");
  EXPECT_THAT(Device({"info", handheld}).out,
              HasSubstr("Messages    0\nCalls       0\nPhone       off\nInk         off\n"));
  ExpectWrongUse(Device({"set", handheld, "phone", "maybe"}), "\"maybe\"");
  EXPECT_EQ(Device({"set", handheld, "phone", "on"}).code, 0);
  EXPECT_THAT(Device({"info", handheld, "--json"}).out, HasSubstr("\"phone\":true"));
}

}  // namespace
}  // namespace corvane::testing
