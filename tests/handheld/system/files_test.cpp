#include "platform/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "handheld/base/fault.h"
#include "platform/status.h"
#include "tests/support/fault_runs.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

using namespace ce;

class FileCall : public testing::HandheldTest {
 protected:
  static HANDLE Open(const WCHAR* path, DWORD disposition,
                     DWORD access = GENERIC_READ | GENERIC_WRITE) {
    return CreateFileW(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL, 0);
  }
  static BOOL Write(HANDLE file, std::string_view text) {
    DWORD written = 0;
    const BOOL done =
        WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    if (done) {
      EXPECT_EQ(written, text.size());
    }
    return done;
  }
  static std::string Read(HANDLE file, DWORD bytes) {
    std::string text(bytes, '?');
    DWORD read = 0;
    EXPECT_TRUE(ReadFile(file, text.data(), bytes, &read, nullptr));
    text.resize(read);
    return text;
  }
  static void Make(const WCHAR* path, std::string_view content) {
    const HANDLE file = Open(path, CREATE_ALWAYS);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(Write(file, content));
    EXPECT_TRUE(CloseHandle(file));
  }
};

using CreateFileCall = FileCall;
using ReadFileCall = FileCall;
using WriteFileCall = FileCall;
using SetFilePointerCall = FileCall;
using DeleteFileCall = FileCall;
using MoveFileCall = FileCall;
using CloseHandleCall = FileCall;

TEST_F(CreateFileCall, MakesAFileAtTheRootWithOrWithoutABackslash) {
  Make(u"\\CorvaneLog.txt", "new");
  Make(u"CorvaneLogOld.txt", "old");
  EXPECT_EQ(handheld_.FileContent("CorvaneLog.txt"), "new");
  EXPECT_EQ(handheld_.FileContent("CorvaneLogOld.txt"), "old");
}

TEST_F(CreateFileCall, CreateNewRefusesAFileThatIsThere) {
  Make(u"\\a.txt", "1");
  EXPECT_EQ(Open(u"\\A.TXT", CREATE_NEW), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
  EXPECT_EQ(handheld_.FileContent("a.txt"), "1");
}

TEST_F(CreateFileCall, CreateAlwaysEmptiesAFileThatIsThere) {
  Make(u"\\a.txt", "content");
  const HANDLE file = Open(u"\\a.txt", CREATE_ALWAYS);
  EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS) << "a note, not a failure";
  EXPECT_NE(file, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(handheld_.FileContent("a.txt"), "");
}

TEST_F(CreateFileCall, OpenAlwaysKeepsTheContent) {
  Make(u"\\a.txt", "content");
  const HANDLE file = Open(u"\\a.txt", OPEN_ALWAYS);
  EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
  EXPECT_EQ(Read(file, 100), "content");
  EXPECT_TRUE(CloseHandle(file));
  const HANDLE fresh = Open(u"\\b.txt", OPEN_ALWAYS);
  EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
  EXPECT_TRUE(CloseHandle(fresh));
}

TEST_F(CreateFileCall, OpenExistingRefusesAFileThatIsNotThere) {
  EXPECT_EQ(Open(u"\\a.txt", OPEN_EXISTING), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  EXPECT_FALSE(std::filesystem::exists(handheld_->filesRoot() / "a.txt"));
}

TEST_F(CreateFileCall, RefusesAnUnknownDisposition) {
  for (const DWORD disposition : {0u, 5u, 99u}) {
    EXPECT_EQ(Open(u"\\a.txt", disposition), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  }
}

TEST_F(CreateFileCall, RefusesADirectory) {
  std::filesystem::create_directory(handheld_->filesRoot() / "Temp");
  EXPECT_EQ(Open(u"\\Temp", OPEN_EXISTING), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_EQ(Open(u"\\Temp", OPEN_EXISTING, GENERIC_READ), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(CreateFileCall, GrantsOnlyTheAccessThatWasAskedFor) {
  Make(u"\\a.txt", "content");
  const HANDLE reader = Open(u"\\a.txt", OPEN_EXISTING, GENERIC_READ);
  EXPECT_FALSE(Write(reader, "x"));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  const HANDLE writer = Open(u"\\a.txt", OPEN_EXISTING, GENERIC_WRITE);
  char byte = 0;
  DWORD read = 9;
  EXPECT_FALSE(ReadFile(writer, &byte, 1, &read, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_EQ(read, 0u);
  EXPECT_TRUE(CloseHandle(reader));
  EXPECT_TRUE(CloseHandle(writer));
}

TEST_F(CreateFileCall, LetsAFileBeOpenTwice) {
  const HANDLE first = Open(u"\\a.txt", CREATE_NEW);
  const HANDLE second = Open(u"\\a.txt", OPEN_EXISTING);
  EXPECT_NE(second, INVALID_HANDLE_VALUE);
  EXPECT_NE(first, second);
  EXPECT_TRUE(Write(first, "shared"));
  EXPECT_EQ(Read(second, 10), "shared");
  EXPECT_TRUE(CloseHandle(first));
  EXPECT_TRUE(CloseHandle(second));
}

// An open file's access and shares, those of an attempt beside it, and whether that goes.
struct Sharing {
  DWORD access;
  DWORD share;
  DWORD access2;
  DWORD share2;
  bool goes;
};
class ShareModes : public FileCall, public ::testing::WithParamInterface<Sharing> {};

TEST_P(ShareModes, HoldBothWaysAndByWhatTheFileIs) {
  Make(u"\\a.txt", "content");
  std::filesystem::create_hard_link(handheld_->filesRoot() / "a.txt",
                                    handheld_->filesRoot() / "b.txt");
  const auto open = [](const WCHAR* path, DWORD access, DWORD share, DWORD disposition) {
    return CreateFileW(path, access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, 0);
  };
  const auto [access, share, access2, share2, goes] = GetParam();
  const bool writes = (access2 & GENERIC_WRITE) != 0;
  const HANDLE first = open(u"\\a.txt", access, share, OPEN_EXISTING);
  ASSERT_NE(first, INVALID_HANDLE_VALUE);
  for (const WCHAR* path : {u"\\A.TXT", u"\\b.txt"}) {
    const HANDLE second = open(path, access2, share2, writes ? CREATE_ALWAYS : OPEN_EXISTING);
    if (!goes) {
      EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    }
    EXPECT_EQ(second != INVALID_HANDLE_VALUE, goes);
    EXPECT_EQ(CloseHandle(second), goes);
    EXPECT_EQ(handheld_.FileContent("a.txt"), goes && writes ? "" : "content");
  }
  EXPECT_TRUE(CloseHandle(first));
  const HANDLE alone = open(u"\\a.txt", GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
  EXPECT_TRUE(CloseHandle(alone)) << "nothing of it stays behind";
}

constexpr DWORD kR = GENERIC_READ;
constexpr DWORD kW = GENERIC_WRITE;
constexpr DWORD kShareBoth = FILE_SHARE_READ | FILE_SHARE_WRITE;
INSTANTIATE_TEST_SUITE_P(
    Pairs, ShareModes,
    ::testing::Values(Sharing{kR, FILE_SHARE_READ, kR, FILE_SHARE_READ, true},
                      Sharing{kW, FILE_SHARE_WRITE, kW, FILE_SHARE_WRITE, true},
                      Sharing{kR | kW, kShareBoth, kR | kW, kShareBoth, true},
                      Sharing{kR, FILE_SHARE_WRITE, kW, FILE_SHARE_READ, true},
                      Sharing{0, 0, kR | kW, 0, true}, Sharing{kR | kW, 0, 0, 0, true},
                      Sharing{kR, 0, kR, FILE_SHARE_READ, false},
                      Sharing{kR, FILE_SHARE_READ, kR, 0, false},
                      Sharing{kR, kShareBoth, kW, FILE_SHARE_WRITE, false},
                      Sharing{kR, FILE_SHARE_READ, kW, kShareBoth, false},
                      Sharing{kW, kShareBoth, kW, 0, false},
                      Sharing{kW, kShareBoth, kR, FILE_SHARE_READ, false}));

TEST_F(ReadFileCall, AnswersLessAtTheEndOfTheFile) {
  Make(u"\\a.txt", "content");
  const HANDLE file = Open(u"\\a.txt", OPEN_EXISTING);
  EXPECT_EQ(Read(file, 4), "cont");
  EXPECT_EQ(Read(file, 100), "ent");
  EXPECT_EQ(Read(file, 100), "");
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(ReadFileCall, RefusesAHandleThatIsNoFile) {
  char byte = 0;
  DWORD read = 9;
  for (const HANDLE handle : {HANDLE{0}, HANDLE{0x100000}, INVALID_HANDLE_VALUE}) {
    EXPECT_FALSE(ReadFile(handle, &byte, 1, &read, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(read, 0u);
  }
}

TEST_F(WriteFileCall, SaysWhatWasWrittenWhenTheDiskIsFull) {
  const HANDLE file = Open(u"\\a.txt", CREATE_NEW);
  const auto plan = host::FaultPlan::FailCalls("WriteFile", ERROR_DISK_FULL);
  DWORD written = 9;
  EXPECT_FALSE(WriteFile(file, "abc", 3, &written, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
  EXPECT_EQ(written, 0u);
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(WriteFileCall, RefusesANullBuffer) {
  const HANDLE file = Open(u"\\a.txt", CREATE_NEW);
  DWORD written = 9;
  EXPECT_FALSE(WriteFile(file, nullptr, 3, &written, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_FALSE(WriteFile(file, "abc", 3, nullptr, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_TRUE(WriteFile(file, nullptr, 0, &written, nullptr));
  EXPECT_EQ(written, 0u);
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(SetFilePointerCall, MovesFromTheStartTheEndAndWhereItIs) {
  Make(u"\\a.txt", "0123456789");
  const HANDLE file = Open(u"\\a.txt", OPEN_EXISTING);
  EXPECT_EQ(SetFilePointer(file, 3, nullptr, FILE_BEGIN), 3u);
  EXPECT_EQ(Read(file, 1), "3");
  EXPECT_EQ(SetFilePointer(file, -2, nullptr, FILE_CURRENT), 2u);
  EXPECT_EQ(SetFilePointer(file, -1, nullptr, FILE_END), 9u);
  EXPECT_EQ(Read(file, 5), "9");
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(SetFilePointerCall, KnowsPositionsBeyondFourGigabytes) {
  const HANDLE file = Open(u"\\a.txt", CREATE_NEW);
  LONG high = 1;
  EXPECT_EQ(SetFilePointer(file, 7, &high, FILE_BEGIN), 7u);
  EXPECT_EQ(high, 1);
  high = 0;
  EXPECT_EQ(SetFilePointer(file, -8, &(high = -1), FILE_CURRENT), 0xFFFFFFFF);
  EXPECT_EQ(GetLastError(), ERROR_SUCCESS) << "a position that looks like a failure";
  EXPECT_EQ(high, 0);
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(SetFilePointerCall, RefusesToGoBeforeTheStart) {
  const HANDLE file = Open(u"\\a.txt", CREATE_NEW);
  EXPECT_EQ(SetFilePointer(file, -1, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), ERROR_NEGATIVE_SEEK);
  EXPECT_EQ(SetFilePointer(file, 0, nullptr, 3), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_TRUE(CloseHandle(file));
}

TEST_F(DeleteFileCall, RemovesAFileInAnyCase) {
  Make(u"\\CorvaneLogOld.txt", "old");
  EXPECT_TRUE(DeleteFileW(u"corvanelogold.TXT"));
  EXPECT_FALSE(DeleteFileW(u"CorvaneLogOld.txt"));
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(DeleteFileCall, RefusesADirectory) {
  std::filesystem::create_directory(handheld_->filesRoot() / "Temp");
  EXPECT_FALSE(DeleteFileW(u"\\Temp"));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(MoveFileCall, RenamesAFile) {
  Make(u"\\CorvaneLog.txt", "log");
  EXPECT_TRUE(MoveFileW(u"\\CorvaneLog.txt", u"CorvaneLogOld.txt"));
  EXPECT_EQ(handheld_.FileContent("CorvaneLogOld.txt"), "log");
  EXPECT_FALSE(std::filesystem::exists(handheld_->filesRoot() / "CorvaneLog.txt"));
}

TEST_F(MoveFileCall, RefusesATargetThatIsThere) {
  Make(u"\\a.txt", "a");
  Make(u"\\b.txt", "b");
  EXPECT_FALSE(MoveFileW(u"\\a.txt", u"\\B.txt"));
  EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
  EXPECT_EQ(handheld_.FileContent("a.txt"), "a");
  EXPECT_EQ(handheld_.FileContent("b.txt"), "b");
}

TEST_F(MoveFileCall, RefusesASourceThatIsNotThere) {
  EXPECT_FALSE(MoveFileW(u"\\a.txt", u"\\b.txt"));
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(FileCall, NeitherDeletesNorMovesAFileThatIsOpen) {
  const HANDLE file = Open(u"\\a.txt", CREATE_NEW);
  EXPECT_FALSE(DeleteFileW(u"\\a.txt"));
  EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  EXPECT_FALSE(MoveFileW(u"\\a.txt", u"\\b.txt"));
  EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_TRUE(MoveFileW(u"\\a.txt", u"\\b.txt"));
  EXPECT_TRUE(DeleteFileW(u"\\b.txt"));
}

TEST_F(CloseHandleCall, MakesTheHandleInvalidForGood) {
  const HANDLE stale = Open(u"\\a.txt", CREATE_NEW);
  EXPECT_TRUE(CloseHandle(stale));
  EXPECT_FALSE(CloseHandle(stale));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  const HANDLE next = Open(u"\\b.txt", CREATE_NEW);
  EXPECT_NE(next, stale);
  EXPECT_FALSE(Write(stale, "x"));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_TRUE(CloseHandle(next));
}

TEST_F(FileCall, FlushKeepsWhatWasWritten) {
  const HANDLE file = Open(u"\\a.txt", CREATE_NEW);
  EXPECT_TRUE(Write(file, "kept"));
  EXPECT_TRUE(FlushFileBuffers(file));
  EXPECT_EQ(handheld_.FileContent("a.txt"), "kept");
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_FALSE(FlushFileBuffers(file));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(FileCall, HandsOnTheFaultOfEachCall) {
  const auto session = [this]() -> DWORD {
    std::filesystem::remove(handheld_->filesRoot() / "b.txt");
    const HANDLE file = Open(u"\\a.txt", CREATE_ALWAYS);
    if (file == INVALID_HANDLE_VALUE) return GetLastError();
    char byte = 0;
    DWORD count = 0;
    DWORD error = ERROR_SUCCESS;
    const auto step = [&error](bool done) {
      if (!done && error == ERROR_SUCCESS) error = GetLastError();
    };
    step(WriteFile(file, "x", 1, &count, nullptr));
    step(FlushFileBuffers(file));
    step(SetFilePointer(file, 0, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER);
    step(ReadFile(file, &byte, 1, &count, nullptr));
    step(CloseHandle(file));
    step(MoveFileW(u"\\a.txt", u"\\b.txt"));
    step(DeleteFileW(u"\\b.txt"));
    return error;
  };
  const auto check = [](DWORD error, const std::string& call) {
    EXPECT_EQ(error, call.empty() ? ERROR_SUCCESS : ERROR_WRITE_FAULT);
  };
  EXPECT_EQ(testing::FailEachCall(ERROR_WRITE_FAULT, session, check), 8u);
}

TEST(FileCallWithoutAHandheld, FailsCleanly) {
  EXPECT_EQ(CreateFileW(u"\\a.txt", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, 0),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_NOT_READY);
  EXPECT_FALSE(DeleteFileW(u"\\a.txt"));
  EXPECT_EQ(GetLastError(), ERROR_NOT_READY);
  EXPECT_FALSE(MoveFileW(u"\\a.txt", u"\\b.txt"));
  EXPECT_EQ(GetLastError(), ERROR_NOT_READY);
}

}  // namespace
}  // namespace corvane
