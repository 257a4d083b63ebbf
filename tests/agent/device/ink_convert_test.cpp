#include "agent/device/ink_convert.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "handheld/base/fault.h"
#include "platform/files.h"
#include "platform/modules.h"
#include "platform/status.h"
#include "tests/agent/device/ink_support.h"
#include "tests/support/fault_runs.h"

namespace corvane {
namespace {

using namespace testing;
using ce::host::FaultPlan;

class LoadRichInkTest : public InkTest {};
class ConvertWithRichInkTest : public InkTest {
 protected:
  static InkOutcome Convert(std::string_view data, ce::DWORD from, ce::DWORD to) {
    ce::BYTE* buffer = nullptr;
    ce::DWORD count = 0;
    const ce::HRESULT status = ConvertWithRichInk(
        BytePointer(data), static_cast<ce::DWORD>(data.size()), from, &buffer, &count, to);
    return Outcome(status, buffer, count);
  }
};
class ConvertFileToBufferTest : public InkTest {
 protected:
  static InkOutcome Convert(const char16_t* path, ce::DWORD to) {
    ce::BYTE* buffer = nullptr;
    ce::DWORD count = 0;
    const ce::HRESULT status = ConvertFileToBuffer(path, to, &count, &buffer);
    return Outcome(status, buffer, count);
  }
};

TEST_F(LoadRichInkTest, LoadsOnceAndKeepsTheLibrary) {
  const auto plan = FaultPlan::CountOnly("LoadLibraryW");
  EXPECT_TRUE(LoadRichInk());
  WithoutRichInk();
  EXPECT_TRUE(LoadRichInk());
  EXPECT_EQ(plan.calls(), 1u);
  EXPECT_NE(ce::GetModuleHandleW(u"RichInk.dll"), nullptr);
}

TEST_F(LoadRichInkTest, NeverTriesAgainAfterAFailure) {
  WithoutRichInk();
  EXPECT_FALSE(LoadRichInk());
  handheld_->Set(u"RichInk", ce::DWORD{1});
  EXPECT_FALSE(LoadRichInk());
  ResetRichInk();
  EXPECT_TRUE(LoadRichInk());
}

TEST_F(LoadRichInkTest, IsForgottenWithTheLibraryFreed) {
  EXPECT_TRUE(LoadRichInk());
  ResetRichInk();
  EXPECT_EQ(ce::GetModuleHandleW(u"RichInk.dll"), nullptr);
}

TEST(GetFormatFromExtensionTest, KnowsFourExtensions) {
  EXPECT_EQ(GetFormatFromExtension(u"\\My Documents\\a.pwi"), kInkNote);
  EXPECT_EQ(GetFormatFromExtension(u"a.rtf"), kRich);
  EXPECT_EQ(GetFormatFromExtension(u"a.txt"), kText);
  EXPECT_EQ(GetFormatFromExtension(u"a.unicode"), kUnicode);
}

TEST(GetFormatFromExtensionTest, TakesWhatFollowsTheLastDot) {
  EXPECT_EQ(GetFormatFromExtension(u"a.txt.pwi"), kInkNote);
  EXPECT_EQ(GetFormatFromExtension(u".rtf"), kRich);
  EXPECT_EQ(GetFormatFromExtension(u"a.pwi."), 0u);
  EXPECT_EQ(GetFormatFromExtension(u"a.txt\\b"), 0u);
}

TEST(GetFormatFromExtensionTest, MindsLetterCase) {
  for (const char16_t* path : {u"a.PWI", u"a.Pwi", u"a.RTF", u"a.TXT", u"a.Unicode"}) {
    EXPECT_EQ(GetFormatFromExtension(path), 0u);
  }
}

TEST(GetFormatFromExtensionTest, KnowsNoFormatWithoutADot) {
  for (const char16_t* path : {u"", u"pwi", u"\\pwi", u"."}) {
    EXPECT_EQ(GetFormatFromExtension(path), 0u);
  }
  EXPECT_EQ(GetFormatFromExtension(u"a.doc"), 0u);
  EXPECT_EQ(GetFormatFromExtension(u"a.pwi "), 0u);
}

TEST_F(ConvertWithRichInkTest, ConvertsANoteToText) {
  const InkOutcome outcome = Convert(InkNote({"Milk", "Bread"}), kInkNote, kUnicode);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.bytes, Utf16Bytes(u"Milk\r\nBread"));
}

TEST_F(ConvertWithRichInkTest, ConvertsMoreThanOnePiece) {
  const std::string text(100000, 'x');
  const InkOutcome note = Convert(text, kText, kInkNote);
  EXPECT_EQ(Convert(note.bytes, kInkNote, kText).bytes, text);
}

TEST_F(ConvertWithRichInkTest, GivesABlockForANoteWithoutText) {
  const InkOutcome outcome = Convert("", kText, kUnicode);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.hasOutput);
  EXPECT_EQ(outcome.bytes, "");
}

TEST_F(ConvertWithRichInkTest, HandsOnWhatTheControlRefuses) {
  for (const auto& [from, to] : {std::pair{0u, kText}, {kText, 0u}, {kInkNote, kText}}) {
    const InkOutcome outcome = Convert("text", from, to);
    EXPECT_EQ(outcome.status, ce::E_FAIL);
    EXPECT_FALSE(outcome.hasOutput);
  }
}

TEST_F(ConvertWithRichInkTest, NeedsTheLibrary) {
  WithoutRichInk();
  const InkOutcome outcome = Convert("text", kText, kText);
  EXPECT_EQ(outcome.status, ce::E_NOTIMPL);
  EXPECT_FALSE(outcome.hasOutput);
}

TEST_F(ConvertWithRichInkTest, StreamsInOnceAndOutTwice) {
  const auto plan = FaultPlan::CountOnly("SendMessageW");
  EXPECT_EQ(Convert("text", kText, kText).bytes, "text");
  EXPECT_EQ(plan.calls(), 3u);
}

TEST_F(ConvertWithRichInkTest, TellsTheErrorOfAWindowThatCannotBeMade) {
  const auto plan = FaultPlan::FailCalls("CreateWindowExW", ce::ERROR_NOT_ENOUGH_MEMORY);
  const InkOutcome outcome = Convert("text", kText, kText);
  EXPECT_EQ(outcome.status, ce::HRESULT{ce::ERROR_NOT_ENOUGH_MEMORY}) << "positive, as it is";
  EXPECT_FALSE(outcome.hasOutput);
}

TEST_F(ConvertWithRichInkTest, TakesAnyMessageResultButZeroForAFailure) {
  for (const std::uint64_t n : {1u, 2u, 3u}) {
    for (const ce::DWORD result : {1u, 0x80004005u}) {
      const auto plan = FaultPlan::FailNthCall("SendMessageW", n, result);
      const InkOutcome outcome = Convert("text", kText, kText);
      EXPECT_EQ(outcome.status, static_cast<ce::HRESULT>(result)) << n;
      EXPECT_FALSE(outcome.hasOutput) << n;
      EXPECT_EQ(Windows(), 0u) << n;
    }
  }
}

TEST_F(ConvertWithRichInkTest, TakesNothingBackWhenTheWindowStays) {
  const auto plan = FaultPlan::FailCalls("DestroyWindow", ce::ERROR_GEN_FAILURE);
  const InkOutcome outcome = Convert("text", kText, kText);
  EXPECT_EQ(outcome.status, ce::HRESULT{ce::ERROR_GEN_FAILURE});
  EXPECT_EQ(outcome.bytes, "text");
  windowsLeft_ = 1;
}

TEST_F(ConvertWithRichInkTest, AnswersHonestlyWhicheverCallFails) {
  ASSERT_TRUE(LoadRichInk());
  std::size_t before = 0;
  const std::uint64_t calls = FailEachCall(
      ce::ERROR_GEN_FAILURE,
      [&] {
        before = Windows();
        return Convert("text", kText, kUnicode);
      },
      [&](const InkOutcome& outcome, const std::string& call) {
        const bool stays = call == "DestroyWindow";
        const bool changesNothing = call.empty() || call == "GetModuleHandleW";
        EXPECT_EQ(outcome.status == 0, changesNothing);
        EXPECT_EQ(outcome.hasOutput, changesNothing || stays);
        EXPECT_EQ(Windows() - before, stays ? 1u : 0u);
      });
  EXPECT_EQ(calls, 8u);
  windowsLeft_ = 1;
}

TEST_F(ConvertWithRichInkTest, ServesSeveralThreadsAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([i] {
      const std::string text(static_cast<std::size_t>(1000 * i), static_cast<char>('a' + i));
      for (int round = 0; round < 20; ++round) {
        const InkOutcome note = Convert(text, kText, kInkNote);
        EXPECT_EQ(Convert(note.bytes, kInkNote, kText).bytes, text);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(ConvertFileToBufferTest, ReadsAFileInTheFormatOfItsName) {
  MakeFile("note.pwi", InkNote({"Milk"}));
  MakeFile("note.rtf", "{\\rtf1 Milk}");
  MakeFile("note.txt", "Milk");
  MakeFile("note.unicode", Utf16Bytes(u"Milk"));
  for (const char16_t* path : {u"\\note.pwi", u"note.rtf", u"\\note.txt", u"\\note.unicode"}) {
    const InkOutcome outcome = Convert(path, kUnicode);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.bytes, Utf16Bytes(u"Milk"));
  }
}

TEST_F(ConvertFileToBufferTest, RefusesAnUnknownExtensionBeforeItLooksForTheFile) {
  const auto plan = FaultPlan::CountOnly("CreateFileW");
  EXPECT_EQ(Convert(u"\\note.PWI", kUnicode).status, static_cast<ce::HRESULT>(0x800A0141));
  EXPECT_EQ(Convert(u"\\note", kUnicode).status, static_cast<ce::HRESULT>(0x800A0141));
  EXPECT_EQ(plan.calls(), 0u);
}

TEST_F(ConvertFileToBufferTest, NoticesAFailedOpenWhenItAsksForTheSize) {
  const InkOutcome outcome = Convert(u"\\nothing.pwi", kUnicode);
  EXPECT_EQ(outcome.status, ce::HRESULT{ce::ERROR_INVALID_HANDLE});
  EXPECT_FALSE(outcome.hasOutput);
}

TEST_F(ConvertFileToBufferTest, LooksForTheFileBeforeTheLibrary) {
  WithoutRichInk();
  MakeFile("note.txt", "Milk");
  EXPECT_EQ(Convert(u"\\note.txt", kUnicode).status, ce::E_NOTIMPL);
  EXPECT_EQ(Convert(u"\\nothing.txt", kUnicode).status, ce::HRESULT{ce::ERROR_INVALID_HANDLE});
}

TEST_F(ConvertFileToBufferTest, ReadsAnEmptyFileAsAnEmptyNote) {
  for (const std::string name : {"note.pwi", "note.rtf", "note.txt", "note.unicode"}) {
    MakeFile(name, "");
    const InkOutcome outcome = Convert(std::u16string(name.begin(), name.end()).c_str(), kUnicode);
    EXPECT_EQ(outcome.status, 0) << name;
    EXPECT_EQ(outcome.bytes, "") << name;
  }
}

TEST_F(ConvertFileToBufferTest, RefusesADamagedFile) {
  MakeFile("note.pwi", InkNote({"Milk"}).substr(0, 150));
  EXPECT_EQ(Convert(u"\\note.pwi", kUnicode).status, ce::E_FAIL);
}

TEST_F(ConvertFileToBufferTest, RefusesADirectory) {
  std::filesystem::create_directory(handheld_->filesRoot() / "note.pwi");
  EXPECT_EQ(Convert(u"\\note.pwi", kUnicode).status, ce::HRESULT{ce::ERROR_INVALID_HANDLE});
}

TEST_F(ConvertFileToBufferTest, RefusesAFileThatIsLargerThanABlock) {
  handheld_->Set(ce::host::setting::kMaxBlock, ce::DWORD{1000});
  MakeFile("note.txt", std::string(1001, 'x'));
  EXPECT_EQ(Convert(u"\\note.txt", kUnicode).status, ce::HRESULT{ce::ERROR_NOT_ENOUGH_MEMORY});
}

TEST_F(ConvertFileToBufferTest, AnswersHonestlyWhicheverCallFails) {
  ASSERT_TRUE(LoadRichInk());
  MakeFile("note.txt", "Milk");
  const std::uint64_t calls = FailEachCall(
      ce::ERROR_READ_FAULT, [&] { return Convert(u"\\note.txt", kText); },
      [&](const InkOutcome& outcome, const std::string& call) {
        const bool changesNothing =
            call.empty() || call == "GetModuleHandleW" || call == "CloseHandle";
        EXPECT_EQ(outcome.status == 0, changesNothing);
        EXPECT_EQ(outcome.hasOutput, changesNothing || call == "DestroyWindow");
        if (outcome.hasOutput) {
          EXPECT_EQ(outcome.bytes, "Milk");
        }
      });
  EXPECT_EQ(calls, 13u);
  windowsLeft_ = 1;
}

}  // namespace
}  // namespace corvane
