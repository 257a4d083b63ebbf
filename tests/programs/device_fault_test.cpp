// One call to the system that goes wrong in corvane-device, and what it then says and does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

using DeviceFault = ToolTest;

// The name is the Japanese for mountain, 8E 52 in Shift-JIS; another set reads two other letters.
TEST_F(DeviceFault, NoMemoryForAConversionReadsNoTextByAnotherSet) {
  const std::string card = File("mountain.vcf",
                                "BEGIN:VCARD\r\nVERSION:2.1\r\n"
                                "N;CHARSET=SHIFT_JIS:\x8E\x52;Ai\r\nEND:VCARD\r\n");
  const std::string handheld = MakeHandheld();
  const Arguments import{"import", handheld, card};
  const Ended refused =
      Run("corvane-device", import, Disturbed({"conversions", "fail-on", ENOMEM}, 1, handheld));
  EXPECT_EQ(refused.code, 1) << ::testing::PrintToString(refused);
  EXPECT_THAT(refused.err, HasSubstr("memory"));
  EXPECT_EQ(Contacts(handheld), "");

  // Its first answer may be wrong for want of memory.
  const Ended denied =
      Run("corvane-device", import, Disturbed({"conversions", "fail", EINVAL}, 1, handheld));
  EXPECT_EQ(denied.code, 0) << ::testing::PrintToString(denied);
  EXPECT_THAT(Contacts(handheld), HasSubstr("\"LastName\":\"\xE5\xB1\xB1\""));
}

TEST_F(DeviceFault, ADirectoryThatCannotBeLockedIsTakenAwayAgain) {
  const std::string backup = Path("backup.tar");
  ASSERT_EQ(Device({"backup", MakeHandheld(), backup}).code, 0);
  fs::create_directory(Path("new"));
  const Ended ended = Run("corvane-device", {"restore", backup, Path("new/handheld")},
                          Disturbed({"locks", "fail-on", ENOLCK}, 1, Path("new")));
  EXPECT_EQ(ended.code, 1);
  EXPECT_THAT(ended.err, HasSubstr("new: no directory can be locked"));
  EXPECT_TRUE(fs::is_empty(Path("new")));
}

// A disk that fails is no wrong use of the program.
TEST_F(DeviceFault, ANoteIsNotTakenForWrongUseWhenTheDiskFails) {
  const std::string note = File("note.txt", "A note");
  int failed = 0;
  for (std::uint64_t call = 1;; ++call) {
    const std::string handheld = MakeHandheld();
    const Ended ended = Run("corvane-device", {"note", handheld, "add", note},
                            Disturbed({"files", "fail", EIO}, call, handheld));
    EXPECT_NE(ended.code, 2) << "call " << call << ": " << ::testing::PrintToString(ended);
    const std::string told = directory_.Read("told");
    ASSERT_FALSE(told.empty());
    if (std::isdigit(static_cast<unsigned char>(told.front())) != 0) break;
    if (ended.code == 1) ++failed;
    fs::remove_all(handheld);
  }
  EXPECT_GT(failed, 3);
}

// To the database an error of the disk is damage, but the second reading finds the row.
TEST_F(DeviceFault, ARepairTakesNoRowForLostThatTheDiskRefusedOnce) {
  const std::string handheld = MakeFilledHandheld();
  std::string store = directory_.Read("handheld/store.db");
  store.replace(0, 16, 16, 'x');
  directory_.Write("handheld/store.db", store);
  const Arguments repair{"repair", handheld};
  const Ended whole = Run("corvane-device", repair, Disturbed({"files", "fail", EIO}, 0, handheld));
  ASSERT_EQ(whole.code, 0) << ::testing::PrintToString(whole);
  const std::uint64_t calls = std::stoull(directory_.Read("told"));
  ASSERT_GT(calls, 80u);
  int saved = 0;
  for (std::uint64_t call = 1; call <= calls; call += calls / 80) {
    const Ended ended =
        Run("corvane-device", repair, Disturbed({"files", "fail", EIO}, call, handheld));
    if (ended.code == 1) continue;
    EXPECT_EQ(ended.out, whole.out) << "call " << call << " of " << calls;
    ++saved;
  }
  EXPECT_GT(saved, 10);
}

}  // namespace
}  // namespace corvane::testing
