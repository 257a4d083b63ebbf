#include "agent/device/ink_requests.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "handheld/base/fault.h"
#include "tests/agent/device/ink_support.h"
#include "tests/support/fault_runs.h"

namespace corvane {
namespace {

using namespace testing;
using ce::host::FaultPlan;

constexpr auto kInvalidArgument = static_cast<ce::HRESULT>(0x80070057);
constexpr auto kNotImplemented = static_cast<ce::HRESULT>(0x80004001);

CorvaneStream* SomeStream() {
  static int place;
  return reinterpret_cast<CorvaneStream*>(&place);
}

std::string ToInput(ce::DWORD format, std::u16string_view path, std::string_view data) {
  return Le32(format) + Le32(2 * path.size()) + Utf16Bytes(path) + std::string(data);
}

std::string FromInput(ce::DWORD format, std::u16string_view path) {
  return Le32(format) + Utf16Bytes(path);
}

class InkRequest : public InkTest {
 protected:
  static InkOutcome Run(RequestHandler handler, const std::string& input,
                        CorvaneStream* stream = nullptr) {
    // Behind a byte, as nothing is aligned on the wire; followed by zeros, as the dispatcher has
    // it.
    const std::string placed = "x" + input + std::string(8, '\0');
    ce::DWORD count = 0;
    ce::BYTE* output = nullptr;
    const ce::HRESULT status = handler(static_cast<ce::DWORD>(input.size()),
                                       BytePointer(placed) + 1, &count, &output, stream);
    return Outcome(status, output, count);
  }
  static InkOutcome From(ce::DWORD format, std::u16string_view path) {
    return Run(CVCeConvertFromFile, FromInput(format, path));
  }
  static InkOutcome To(ce::DWORD format, std::u16string_view path, std::string_view data) {
    return Run(CVCeConvertToFile, ToInput(format, path, data));
  }
};

using ConvertFromFileRequest = InkRequest;
using ConvertToFileRequest = InkRequest;
using HasRichInkRequest = InkRequest;

TEST_F(ConvertFromFileRequest, AnswersANotesTextAsUnicodeWithoutATerminator) {
  MakeFile("note.pwi", InkNote({"Milk", Bytes({0xC1, 0xE9})}));
  const InkOutcome outcome = From(17, u"\\note.pwi");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.bytes, Utf16Bytes(u"Milk\r\né"));
}

TEST_F(ConvertFromFileRequest, LeavesOutHalfACharacterOfThePath) {
  MakeFile("note.txt", "Milk");
  EXPECT_EQ(Run(CVCeConvertFromFile, FromInput(kText, u"note.txt") + "x").bytes, "Milk");
}

TEST_F(ConvertFromFileRequest, EndsThePathAtAZero) {
  MakeFile("note.txt", "Milk");
  EXPECT_EQ(From(kText, std::u16string_view(u"note.txt\0.pwi", 13)).bytes, "Milk");
}

TEST_F(ConvertFromFileRequest, RefusesAStreamAndAShortInput) {
  MakeFile("note.txt", "Milk");
  EXPECT_EQ(Run(CVCeConvertFromFile, FromInput(kText, u"note.txt"), SomeStream()).status,
            kInvalidArgument);
  for (const std::size_t size : {0u, 4u, 5u}) {
    EXPECT_EQ(Run(CVCeConvertFromFile, std::string(size, '\0')).status, kInvalidArgument);
  }
  EXPECT_EQ(Run(CVCeConvertFromFile, std::string(6, '\0')).status, kUnknownExtension);
}

TEST_F(ConvertFromFileRequest, LooksAtItsInputBeforeTheControl) {
  WithoutRichInk();
  EXPECT_EQ(Run(CVCeConvertFromFile, "short").status, kInvalidArgument);
  EXPECT_EQ(From(kText, u"note.PWI").status, kNotImplemented);
  EXPECT_EQ(From(kText, std::u16string(300, u'x')).status, kNotImplemented);
}

TEST_F(ConvertFromFileRequest, RefusesAnExtensionInUpperCase) {
  MakeFile("note.pwi", InkNote({"Milk"}));
  EXPECT_EQ(From(17, u"\\note.PWI").status, static_cast<ce::HRESULT>(0x800A0141));
  EXPECT_EQ(From(17, u"\\NOTE.pwi").bytes, Utf16Bytes(u"Milk")) << "the name may be in any case";
}

TEST_F(ConvertFromFileRequest, BoundsThePath) {
  const std::u16string directory = u"\\" + std::u16string(4, u'd');
  std::filesystem::create_directory(handheld_->filesRoot() / "dddd");
  const auto pathOf = [&](std::size_t length) {
    std::u16string path = directory + u"\\";
    path += std::u16string(length - path.size() - 4, u'n') + u".txt";
    return path;
  };
  const std::u16string longest = pathOf(259);
  EXPECT_EQ(To(kText, longest, "Milk").status, 0);
  EXPECT_EQ(From(kText, longest).bytes, "Milk");
  EXPECT_EQ(From(kText, pathOf(260)).status, kInvalidArgument);
  EXPECT_EQ(To(kText, pathOf(260), "Milk").status, kInvalidArgument);
  EXPECT_EQ(To(kText, std::u16string(500, u'x'), "Milk").status, kInvalidArgument);
}

// Paths that lead nowhere: out of the handheld, to devices, through files.
constexpr std::u16string_view kRefused[] = {
    u"..\\outside.txt",  u"\\..\\outside.txt",     u"/../outside.txt", u"\\a\\..\\..\\outside.txt",
    u"\\.\\outside.txt", u"C:\\outside.txt",       u"\\\\host\\x.txt", u"NUL.txt",
    u"\\com1.txt",       u"\\a\\\\outside.txt",    u"\\a?.txt",        u"\\inside.txt\\outside.txt",
    u"\\link.txt",       u"\\a\\card\\inside.txt", u"\\x\u0001.txt",
};

TEST_F(InkRequest, NeverLeadsOutOfTheHandheld) {
  namespace fs = std::filesystem;
  const fs::path files = handheld_->filesRoot();
  fs::create_directory(files / "a");
  MakeFile("inside.txt", "Milk");
  std::ofstream(handheld_.directory() / "outside.txt") << "secret";
  fs::create_symlink(handheld_.directory() / "outside.txt", files / "link.txt");
  fs::create_directory_symlink(files, files / "a" / "card");
  const auto entries = [&] {
    return std::distance(fs::recursive_directory_iterator(handheld_.directory()), {});
  };
  const auto before = entries();
  for (const std::u16string_view path : kRefused) {
    EXPECT_EQ(From(kText, path).status, ce::HRESULT{ce::ERROR_INVALID_HANDLE}) << path.size();
    EXPECT_EQ(To(kText, path, "Milk").status, ce::HRESULT{ce::ERROR_INVALID_HANDLE});
    EXPECT_EQ(To(kText, path, "").status, 0) << "unnoticed, as nothing is written";
  }
  EXPECT_EQ(entries(), before);
  EXPECT_EQ(handheld_.FileContent("../outside.txt"), "secret");
  EXPECT_EQ(handheld_.FileContent("inside.txt"), "Milk");
}

TEST_F(InkRequest, ReachesAStorageCard) {
  const TemporaryDirectory card;
  std::filesystem::create_directory_symlink(card.path(), handheld_->filesRoot() / "Storage Card");
  EXPECT_EQ(To(kText, u"\\storage card\\note.txt", "Milk").status, 0);
  EXPECT_EQ(card.Read("note.txt"), "Milk");
  EXPECT_EQ(From(kText, u"\\Storage Card\\NOTE.txt").bytes, "Milk");
}

TEST_F(ConvertFromFileRequest, TellsAMissingFileByAPositiveError) {
  const InkOutcome outcome = From(17, u"\\nothing.pwi");
  EXPECT_EQ(outcome.status, 6);
  EXPECT_FALSE(outcome.hasOutput);
}

TEST_F(ConvertFromFileRequest, HandsOnAFormatThatTheControlRefuses) {
  MakeFile("note.txt", "Milk");
  for (const ce::DWORD format : {0u, 3u, 0xFFFFFFFFu}) {
    EXPECT_EQ(From(format, u"note.txt").status, ce::E_FAIL);
  }
}

TEST_F(ConvertToFileRequest, LeavesTheLogAloneWhileItIsOpen) {
  SetLoggingLevel(1);
  Log(u"kept");
  const std::string before = handheld_.FileContent("CorvaneLog.txt");
  ASSERT_NE(before, "");
  EXPECT_EQ(To(kText, u"\\CorvaneLog.txt", "Milk").status, 6) << "nothing to write to";
  EXPECT_EQ(To(kText, u"\\CorvaneLog.txt", "").status, 0) << "not noticed";
  EXPECT_EQ(handheld_.FileContent("CorvaneLog.txt"), before);
}

TEST_F(ConvertToFileRequest, WritesTheDataInTheFilesFormat) {
  for (const std::u16string_view name : {u"note.pwi", u"note.rtf", u"note.txt", u"note.unicode"}) {
    EXPECT_EQ(To(kUnicode, name, Utf16Bytes(u"Milk\r\nBread")).status, 0);
    EXPECT_EQ(From(kText, name).bytes, "Milk\r\nBread");
  }
  EXPECT_EQ(handheld_.FileContent("note.txt"), "Milk\r\nBread");
  EXPECT_EQ(handheld_.FileContent("note.unicode"), Utf16Bytes(u"Milk\r\nBread"));
  EXPECT_EQ(handheld_.FileContent("note.rtf").substr(0, 6), "{\\rtf1");
  EXPECT_EQ(handheld_.FileContent("note.pwi").substr(0, 14), InkHeader());
}

TEST_F(ConvertToFileRequest, GivesNoOutput) {
  EXPECT_FALSE(To(kText, u"note.txt", "Milk").hasOutput);
}

TEST_F(ConvertToFileRequest, KeepsTextOfAnyScript) {
  const std::u16string text = u"é Ж א \u0E01 日本語 한국어 \U0001F600\r\n\tend";
  EXPECT_EQ(To(kUnicode, u"note.pwi", Utf16Bytes(text)).status, 0);
  EXPECT_EQ(From(kUnicode, u"note.pwi").bytes, Utf16Bytes(text));
}

TEST_F(ConvertToFileRequest, ReplacesAFile) {
  MakeFile("note.txt", "an older and longer text");
  EXPECT_EQ(To(kText, u"\\NOTE.txt", "new").status, 0);
  EXPECT_EQ(handheld_.FileContent("note.txt"), "new");
}

TEST_F(ConvertToFileRequest, TakesAPathOfOddLength) {
  // The half character is the path's: the data begins behind it.
  const std::string input = Le32(kText) + Le32(17) + Utf16Bytes(u"note.txt") + "xMilk";
  EXPECT_EQ(Run(CVCeConvertToFile, input).status, 0);
  EXPECT_EQ(handheld_.FileContent("note.txt"), "Milk");
}

TEST_F(ConvertToFileRequest, MakesOrEmptiesTheFileWithoutData) {
  MakeFile("old.txt", "old");
  EXPECT_EQ(To(kText, u"old.txt", "").status, 0);
  EXPECT_EQ(To(kText, u"new.pwi", "").status, 0);
  EXPECT_EQ(handheld_.FileContent("old.txt"), "");
  EXPECT_TRUE(HasFile("old.txt"));
  EXPECT_TRUE(HasFile("new.pwi"));
  EXPECT_EQ(handheld_.FileContent("new.pwi"), "");
}

TEST_F(ConvertToFileRequest, LooksAtNoFormatWithoutData) {
  EXPECT_EQ(To(0xBAD, u"new.txt", "").status, 0);
  EXPECT_TRUE(HasFile("new.txt"));
}

TEST_F(ConvertToFileRequest, WritesNothingForATextOfNothing) {
  EXPECT_EQ(To(kUnicode, u"new.txt", "\xFF\xFE").status, 0);
  EXPECT_TRUE(HasFile("new.txt"));
}

TEST_F(ConvertToFileRequest, DoesNotNoticeAFileThatCannotBeMadeWithoutData) {
  EXPECT_EQ(To(kText, u"\\no\\such\\folder\\note.txt", "").status, 0);
  EXPECT_FALSE(HasFile("no"));
  EXPECT_EQ(To(kText, u"\\no\\such\\folder\\note.txt", "Milk").status, 6);
}

TEST_F(ConvertToFileRequest, RefusesAPathThatRunsPastTheInput) {
  const std::string path = Utf16Bytes(u"note.txt");
  for (const std::size_t length : {17u, 18u, 1000u, 0x7FFFFFFFu, 0xFFFFFFF8u, 0xFFFFFFFFu}) {
    EXPECT_EQ(Run(CVCeConvertToFile, Le32(kText) + Le32(length) + path).status,
              static_cast<ce::HRESULT>(0x800A017C))
        << length;
  }
  EXPECT_FALSE(HasFile("note.txt"));
}

TEST_F(ConvertToFileRequest, RefusesAStreamAndAShortInput) {
  EXPECT_EQ(Run(CVCeConvertToFile, ToInput(kText, u"note.txt", "Milk"), SomeStream()).status,
            kInvalidArgument);
  for (const std::size_t size : {0u, 8u, 9u}) {
    EXPECT_EQ(Run(CVCeConvertToFile, std::string(size, '\0')).status, kInvalidArgument);
  }
  EXPECT_EQ(Run(CVCeConvertToFile, std::string(10, '\0')).status, kUnknownExtension);
  EXPECT_FALSE(HasFile("note.txt"));
}

TEST_F(ConvertToFileRequest, RefusesAnUnknownExtension) {
  for (const std::u16string_view path : {u"note.PWI", u"note", u"note.doc", u""}) {
    EXPECT_EQ(To(kText, path, "Milk").status, static_cast<ce::HRESULT>(0x800A0141));
  }
  EXPECT_FALSE(HasFile("note.PWI"));
}

TEST_F(ConvertToFileRequest, LooksAtTheControlBeforeThePath) {
  WithoutRichInk();
  EXPECT_EQ(Run(CVCeConvertToFile, "short").status, kInvalidArgument);
  EXPECT_EQ(Run(CVCeConvertToFile, Le32(kText) + Le32(99) + "xx").status, kNotImplemented);
  EXPECT_EQ(To(kText, u"note.txt", "").status, kNotImplemented);
  EXPECT_FALSE(HasFile("note.txt"));
}

TEST_F(ConvertToFileRequest, KeepsTheOldFileWhenTheDataIsDamaged) {
  MakeFile("note.txt", "old");
  EXPECT_EQ(To(kRich, u"note.txt", "no rich text").status, ce::E_FAIL);
  EXPECT_EQ(To(0xBAD, u"note.txt", "Milk").status, ce::E_FAIL);
  EXPECT_EQ(handheld_.FileContent("note.txt"), "old");
}

TEST_F(ConvertToFileRequest, TellsTheErrorOfAWrite) {
  const auto plan = FaultPlan::FailCalls("WriteFile", ce::ERROR_DISK_FULL);
  EXPECT_EQ(To(kText, u"note.txt", "Milk").status, ce::HRESULT{ce::ERROR_DISK_FULL});
}

TEST_F(ConvertToFileRequest, StopsAtAnyStatusOfTheConversionButZero) {
  const auto plan = FaultPlan::FailCalls("DestroyWindow", ce::ERROR_GEN_FAILURE);
  EXPECT_EQ(To(kText, u"note.txt", "Milk").status, ce::HRESULT{ce::ERROR_GEN_FAILURE});
  EXPECT_FALSE(HasFile("note.txt"));
  windowsLeft_ = 1;
}

TEST_F(ConvertToFileRequest, AnswersHonestlyWhicheverCallFails) {
  LoadLogSettings();
  ASSERT_TRUE(LoadRichInk());
  FailEachCall(
      ce::ERROR_DISK_FULL,
      [&] {
        MakeFile("note.txt", "old");
        return To(kText, u"note.txt", "Milk");
      },
      [&](const InkOutcome& outcome, const std::string& call) {
        const bool changesNothing =
            call.empty() || call == "GetModuleHandleW" || call == "CloseHandle";
        EXPECT_EQ(outcome.status == 0, changesNothing);
        EXPECT_FALSE(outcome.hasOutput);
        const std::string content = handheld_.FileContent("note.txt");
        EXPECT_EQ(content, changesNothing ? "Milk" : call == "WriteFile" ? "" : "old");
      });
  windowsLeft_ = 1;
}

TEST_F(ConvertFromFileRequest, FailsTheSameWayEverAfterWhenTheLibraryCannotBeLoaded) {
  MakeFile("note.txt", "Milk");
  {
    const auto plan = FaultPlan::FailCalls("LoadLibraryW", ce::ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(From(kText, u"note.txt").status, kNotImplemented);
  }
  EXPECT_EQ(From(kText, u"note.txt").status, kNotImplemented);
}

TEST_F(InkRequest, TellsOfFewerBytesThanTheFileHasOrTakes) {
  MakeFile("note.txt", "Milk");
  {
    const auto plan = FaultPlan::GiveFewer("ReadFile", 3);
    const InkOutcome outcome = From(kText, u"note.txt");
    EXPECT_EQ(outcome.status, static_cast<ce::HRESULT>(0x800A0039));
    EXPECT_FALSE(outcome.hasOutput);
  }
  const auto plan = FaultPlan::GiveFewer("WriteFile", 2);
  EXPECT_EQ(To(kText, u"note.txt", "Milk").status, static_cast<ce::HRESULT>(0x800A0039));
  EXPECT_EQ(handheld_.FileContent("note.txt"), "Mi");
}

TEST_F(HasRichInkRequest, AnswersWhetherTheLibraryIsThere) {
  const InkOutcome has = Run(CVCeHasRichInk, "");
  EXPECT_EQ(has.status, 0);
  EXPECT_EQ(has.bytes, Le32(1));
  ResetRichInk();
  WithoutRichInk();
  EXPECT_EQ(Run(CVCeHasRichInk, "any input").bytes, Le32(0));
}

TEST_F(HasRichInkRequest, RefusesAStream) {
  const InkOutcome outcome = Run(CVCeHasRichInk, "", SomeStream());
  EXPECT_EQ(outcome.status, kInvalidArgument);
  EXPECT_FALSE(outcome.hasOutput);
}

TEST_F(HasRichInkRequest, FailsWithoutMemory) {
  const auto plan = FaultPlan::FailCalls("LocalAlloc", ce::ERROR_NOT_ENOUGH_MEMORY);
  const InkOutcome outcome = Run(CVCeHasRichInk, "");
  EXPECT_EQ(outcome.status, static_cast<ce::HRESULT>(0x8007000E));
  EXPECT_FALSE(outcome.hasOutput);
}

}  // namespace
}  // namespace corvane
