// corvane-desktop against the real agent: notes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "handheld/directory/handheld.h"
#include "tests/programs/tool_test.h"
#include "tests/support/ink_note_bytes.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char kScratch[] = "handheld/files/~note.pwi";
const std::vector<std::string> kExtensions = {"pwi", "rtf", "txt", "unicode"};
// "Grüße" on one line and "2 < 3" on another, in the handheld's 8-bit characters.
constexpr char kText[] = "Gr\xFC\xDF\x65\r\n2 < 3";

class DesktopConvert : public ToolTest {
 protected:
  void SetUp() override { handheld_ = MakeHandheld(); }
  std::string OnHandheld(const std::string& name) const {
    return directory_.Read("handheld/files/" + name);
  }
  bool IsOnHandheld(const std::string& name) const {
    return std::filesystem::exists(Path("handheld/files/" + name));
  }

  std::string handheld_;
};

TEST_F(DesktopConvert, ConvertsEachFormatIntoEachAndBack) {
  StartAgent(handheld_);
  const std::string text = File("note.txt", kText);
  for (const std::string& from : kExtensions) {
    const std::string first = Path("first." + from);
    ASSERT_EQ(Desktop({"convert", text, "--to", from, "-o", first}).code, 0) << from;
    for (const std::string& to : kExtensions) {
      const std::string second = Path("second." + to);
      const Ended there = Desktop({"convert", first, "--to", to, "-o", second});
      EXPECT_EQ(there.code, 0) << from << " to " << to;
      EXPECT_EQ(there.err, "");
      const Ended back = Desktop({"convert", second, "--to", "txt"});
      EXPECT_EQ(back.code, 0);
      EXPECT_EQ(back.out, kText) << from << " to " << to;
    }
  }
  EXPECT_EQ(directory_.Read("first.unicode"), std::string("G\0r\0\xFC\0\xDF\0e\0\r\0\n\0"
                                                          "2\0 \0<\0 \0"
                                                          "3\0",
                                                          24));
  EXPECT_THAT(directory_.Read("first.rtf"), StartsWith("{\\rtf1"));
  EXPECT_EQ(directory_.Read("first.pwi").substr(0, 5), InkHeader().substr(0, 5));
}

TEST_F(DesktopConvert, LeavesAnEmptyFileOnTheHandheld) {
  StartAgent(handheld_);
  const Ended ended = Desktop({"convert", File("note.txt", kText), "--to", "rtf"});
  EXPECT_EQ(ended.code, 0);
  EXPECT_TRUE(IsOnHandheld("~note.pwi"));
  EXPECT_EQ(directory_.Read(kScratch), "");
}

TEST_F(DesktopConvert, LeavesNothingOfADamagedNote) {
  StartAgent(handheld_);
  const Ended ended = Desktop({"convert", File("note.pwi", "no ink note"), "--to", "rtf"});
  EXPECT_EQ(ended.code, 1);
  EXPECT_EQ(ended.out, "");
  EXPECT_THAT(ended.err, HasSubstr("the handheld cannot convert the note, which is damaged"));
  EXPECT_EQ(directory_.Read(kScratch), "");
}

TEST_F(DesktopConvert, ReadsNotesOfTheHandheld) {
  directory_.Write("handheld/files/call.pwi", InkNote({"Call back", "today"}));
  StartAgent(handheld_);
  const Ended text = Desktop({"convert", "--device-path", "/call.pwi", "--to", "txt"});
  EXPECT_EQ(text.code, 0);
  EXPECT_EQ(text.out, "Call back\r\ntoday");
  const Ended rich =
      Desktop({"convert", "--device-path", "\\call.pwi", "--to", "rtf", "-o", Path("call.rtf")});
  EXPECT_EQ(rich.code, 0);
  EXPECT_THAT(rich.out, StartsWith(Path("call.rtf") + ": "));
  EXPECT_THAT(directory_.Read("call.rtf"), HasSubstr("Call back"));
  EXPECT_FALSE(IsOnHandheld("~note.pwi"));
}

TEST_F(DesktopConvert, ReadsANoteOfAnySize) {
  const std::string text(100'000, 'x');
  directory_.Write("handheld/files/long.txt", text);
  StartAgent(handheld_);
  EXPECT_EQ(Desktop({"convert", "--device-path", "/long.txt", "--to", "txt"}).out, text);
}

TEST_F(DesktopConvert, PutsNotesOnTheHandheld) {
  StartAgent(handheld_);
  const std::string text = File("note.txt", kText);
  for (const std::string& format : kExtensions) {
    const Ended put = Desktop({"convert", text, "--to-device", "/mine." + format});
    EXPECT_EQ(put.code, 0);
    EXPECT_EQ(put.out, text + ": is /mine." + format + " on the handheld now\n");
    EXPECT_EQ(Desktop({"convert", "--device-path", "/mine." + format, "--to", "txt"}).out, kText);
  }
  EXPECT_EQ(OnHandheld("mine.txt"), kText);
  EXPECT_THAT(OnHandheld("mine.rtf"), StartsWith("{\\rtf1"));
  EXPECT_FALSE(IsOnHandheld("~note.pwi"));
  const Ended empty = Desktop({"convert", File("empty.txt", ""), "--to-device", "/empty.pwi"});
  EXPECT_EQ(empty.code, 0);
  EXPECT_TRUE(IsOnHandheld("empty.pwi"));
}

TEST_F(DesktopConvert, SaysWhatCannotBeReadOrMadeThere) {
  StartAgent(handheld_);
  const Ended missing = Desktop({"convert", "--device-path", "/no.pwi", "--to", "txt"});
  EXPECT_EQ(missing.code, 1);
  EXPECT_THAT(missing.err, HasSubstr("there is no file /no.pwi on the handheld"));
  for (const char* content : {"", "Hi"}) {
    const Ended nowhere =
        Desktop({"convert", File("note.txt", content), "--to-device", "/No/a.pwi"});
    EXPECT_EQ(nowhere.code, 1);
    EXPECT_EQ(nowhere.out, "");
    EXPECT_THAT(nowhere.err, HasSubstr("/No/a.pwi"));
  }
}

TEST_F(DesktopConvert, RefusesANoteThatIsTooLarge) {
  StartAgent(handheld_);
  const Ended fits = Desktop({"convert", File("fits.txt", std::string(912, 'x')), "--to", "txt"});
  EXPECT_EQ(fits.code, 0);
  EXPECT_EQ(fits.out, std::string(912, 'x'));
  const Ended large = Desktop({"convert", File("large.txt", std::string(913, 'x')), "--to", "txt"});
  EXPECT_EQ(large.code, 1);
  EXPECT_EQ(large.out, "");
  EXPECT_THAT(large.err, HasSubstr("large.txt is too large: "));
  EXPECT_THAT(large.err, HasSubstr("room for 912 bytes of it, and it has 913"));
}

TEST_F(DesktopConvert, SaysThatTheHandheldConvertsNothing) {
  ce::host::Handheld::Open(handheld_, "a test")->Set(u"RichInk", ce::DWORD{0});
  StartAgent(handheld_);
  const std::string text = File("note.txt", kText);
  const Arguments commands[] = {{"convert", text, "--to", "rtf"},
                                {"convert", text, "--to-device", "/a.pwi"},
                                {"convert", "--device-path", "/a.pwi", "--to", "txt"}};
  for (const Arguments& command : commands) {
    const Ended ended = Desktop(command);
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "corvane-desktop: the handheld has no RichInk control to convert notes\n");
  }
  EXPECT_FALSE(IsOnHandheld("a.pwi"));
}

TEST_F(DesktopConvert, RefusesWhatDoesNotGoTogether) {
  StartAgent(handheld_);
  const std::string text = File("note.txt", kText);
  const Arguments commands[] = {
      {"convert"},
      {"convert", text},
      {"convert", "--to", "rtf"},
      {"convert", text, "--to", "doc"},
      {"convert", text, "--device-path", "/a.pwi", "--to", "rtf"},
      {"convert", text, "--to", "rtf", "--to-device", "/a.pwi"},
      {"convert", "--device-path", "/a.pwi", "--to-device", "/b.pwi"},
      {"convert", text, "--to-device", "/a.pwi", "-o", Path("out")},
      {"convert", "--device-path", "/a.pwi", "--from", "txt", "--to", "rtf"}};
  for (const Arguments& command : commands) {
    const Ended ended = Desktop(command);
    EXPECT_EQ(ended.code, 2);
    EXPECT_EQ(ended.out, "");
    EXPECT_NE(ended.err, "");
  }
}

}  // namespace
}  // namespace corvane::testing
