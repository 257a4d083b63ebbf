#include "platform/find_files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "common/text/unicode.h"
#include "handheld/base/fault.h"
#include "handheld/system/directories.h"
#include "platform/files.h"
#include "platform/status.h"
#include "tests/support/fault_runs.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr DWORD kCard = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY;

class FindFiles : public testing::HandheldTest {
 protected:
  fs::path Root() const { return handheld_.directory() / "files"; }
  void MakeFile(const fs::path& name, std::size_t size = 0) const {
    std::ofstream(Root() / name) << std::string(size, 'x');
  }
  void MakeCard(const fs::path& name) const {
    fs::create_directory_symlink(card_.path(), Root() / name);
  }

  static std::vector<WIN32_FIND_DATAW> Find(const WCHAR* pattern) {
    std::vector<WIN32_FIND_DATAW> found;
    WIN32_FIND_DATAW data;
    const HANDLE search = FindFirstFileW(pattern, &data);
    if (search == INVALID_HANDLE_VALUE) return found;
    do {
      found.push_back(data);
    } while (FindNextFileW(search, &data));
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
    EXPECT_TRUE(FindClose(search));
    return found;
  }
  static std::vector<std::string> Names(const WCHAR* pattern) {
    std::vector<std::string> names;
    for (const WIN32_FIND_DATAW& data : Find(pattern)) {
      names.push_back(text::ToUtf8Lossy(data.cFileName));
    }
    return names;
  }
  static DWORD ErrorOf(const WCHAR* pattern) {
    WIN32_FIND_DATAW data;
    SetLastError(0);
    EXPECT_EQ(FindFirstFileW(pattern, &data), INVALID_HANDLE_VALUE);
    return GetLastError();
  }

  const testing::TemporaryDirectory card_;
};

TEST_F(FindFiles, FindsNothingInAnEmptyRoot) {
  EXPECT_EQ(ErrorOf(u"\\*"), ERROR_FILE_NOT_FOUND);
}

TEST_F(FindFiles, ComesByNameWithoutRegardToCase) {
  for (const char* name : {"b.txt", "C.txt", "a.txt", "B.TXT", "\xC3\xA9.txt", "_.txt"}) {
    MakeFile(name);
  }
  EXPECT_THAT(Names(u"\\*"),
              ElementsAre("a.txt", "B.TXT", "b.txt", "C.txt", "_.txt", "\xC3\xA9.txt"));
  EXPECT_EQ(Names(u"\\*"), Names(u"*"));
  EXPECT_EQ(Names(u"\\*"), Names(u"/*"));
}

TEST_F(FindFiles, TellsFilesDirectoriesAndCards) {
  MakeFile("file", 5);
  fs::create_directory(Root() / "directory");
  MakeCard("Storage Card");
  const std::vector<WIN32_FIND_DATAW> found = Find(u"\\*");
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(found[0].dwFileAttributes, FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(found[1].dwFileAttributes, FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(found[1].nFileSizeLow, 5u);
  EXPECT_EQ(found[1].nFileSizeHigh, 0u);
  EXPECT_EQ(found[2].dwFileAttributes, kCard);
}

TEST_F(FindFiles, TellsASizeOfMoreThan32Bits) {
  MakeFile("file");
  fs::resize_file(Root() / "file", (std::uint64_t{3} << 32) + 7);
  const std::vector<WIN32_FIND_DATAW> found = Find(u"\\file");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].nFileSizeHigh, 3u);
  EXPECT_EQ(found[0].nFileSizeLow, 7u);
}

TEST_F(FindFiles, TellsTheTimeOfTheLastChange) {
  MakeFile("file");
  const timespec times[2] = {{0, 0}, {1203083101, 500}};  // 2008-02-15 13:45:01
  ASSERT_EQ(::utimensat(AT_FDCWD, (Root() / "file").c_str(), times, 0), 0);
  const std::vector<WIN32_FIND_DATAW> found = Find(u"\\file");
  ASSERT_EQ(found.size(), 1u);
  const FILETIME time = found[0].ftLastWriteTime;
  EXPECT_EQ(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime, 128475567010000005u);
}

TEST_F(FindFiles, LeavesOutWhatTheDeviceDoesNotHave) {
  MakeFile("file");
  for (const char* name : {"NUL", "a:b", "a?", "bad\xFF", "tab\tbed"}) MakeFile(name);
  fs::create_symlink(handheld_.directory() / "registry.reg", Root() / "link to a file");
  fs::create_symlink(Root() / "nothing", Root() / "link to nothing");
  ASSERT_EQ(::mkfifo((Root() / "pipe").c_str(), 0600), 0);
  EXPECT_THAT(Names(u"\\*"), ElementsAre("file"));
}

TEST_F(FindFiles, FollowsNoLinkButACard) {
  fs::create_directory(Root() / "directory");
  fs::create_directory_symlink(handheld_.directory(), Root() / "directory" / "link");
  MakeFile("directory/file");
  EXPECT_THAT(Names(u"\\directory\\*"), ElementsAre("file"));
  EXPECT_EQ(ErrorOf(u"\\directory\\link\\*"), ERROR_ACCESS_DENIED);
}

TEST_F(FindFiles, LooksIntoDirectoriesAndCards) {
  fs::create_directories(Root() / "One" / "Two");
  MakeFile("One/Two/file");
  MakeCard("Card");
  std::ofstream(card_.path() / "on the card");
  fs::create_directory(card_.path() / "sub");
  EXPECT_THAT(Names(u"\\one\\TWO\\*"), ElementsAre("file"));
  EXPECT_THAT(Names(u"\\card\\*"), ElementsAre("on the card", "sub"));
  EXPECT_EQ(Find(u"\\card\\sub").at(0).dwFileAttributes, FILE_ATTRIBUTE_DIRECTORY);
}

TEST_F(FindFiles, MatchesPictures) {
  for (const char* name : {"a.txt", "ab.txt", "abc.TXT", "b.pwi", "txt"}) MakeFile(name);
  EXPECT_THAT(Names(u"\\*.txt"), ElementsAre("a.txt", "ab.txt", "abc.TXT"));
  EXPECT_THAT(Names(u"\\a?.txt"), ElementsAre("ab.txt"));
  EXPECT_THAT(Names(u"\\A*"), ElementsAre("a.txt", "ab.txt", "abc.TXT"));
  EXPECT_THAT(Names(u"\\*b*"), ElementsAre("ab.txt", "abc.TXT", "b.pwi"));
  EXPECT_THAT(Names(u"\\**t"), ElementsAre("a.txt", "ab.txt", "abc.TXT", "txt"));
  EXPECT_THAT(Names(u"\\TXT"), ElementsAre("txt"));
  EXPECT_THAT(Names(u"\\?"), IsEmpty());
  EXPECT_EQ(ErrorOf(u"\\*.doc"), ERROR_FILE_NOT_FOUND);
}

TEST_F(FindFiles, NeverLeadsOutOfTheHandheld) {
  for (const WCHAR* pattern : {u"\\..\\*", u"..\\*", u"/../*", u"\\.\\*", u"\\C:\\*", u"\\\\*"}) {
    EXPECT_EQ(ErrorOf(pattern), ERROR_INVALID_NAME);
  }
  EXPECT_EQ(ErrorOf(u"\\nothing\\*"), ERROR_PATH_NOT_FOUND);
  MakeFile("file");
  EXPECT_EQ(ErrorOf(u"\\file\\*"), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(ErrorOf(u"\\.."), ERROR_FILE_NOT_FOUND);
}

TEST_F(FindFiles, GoesOnWithWhatWasThereWhenItBegan) {
  for (const char* name : {"a", "b", "c"}) MakeFile(name);
  WIN32_FIND_DATAW data;
  const HANDLE search = FindFirstFileW(u"\\*", &data);
  fs::remove(Root() / "b");
  MakeFile("d");
  EXPECT_TRUE(FindNextFileW(search, &data));
  EXPECT_EQ(std::u16string(data.cFileName), u"b");
  EXPECT_TRUE(FindNextFileW(search, &data));
  EXPECT_FALSE(FindNextFileW(search, &data));
  EXPECT_TRUE(FindClose(search));
}

TEST_F(FindFiles, KnowsOnlyAnOpenSearch) {
  MakeFile("a");
  WIN32_FIND_DATAW data;
  const HANDLE search = FindFirstFileW(u"\\*", &data);
  EXPECT_FALSE(FindNextFileW(search, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_TRUE(FindClose(search));
  const HANDLE file = CreateFileW(u"a", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, 0);
  for (const HANDLE other : {search, file, INVALID_HANDLE_VALUE, HANDLE{0}}) {
    EXPECT_FALSE(FindNextFileW(other, &data));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(FindClose(other));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  }
  EXPECT_TRUE(CloseHandle(file)) << "it was left open";
  EXPECT_EQ(FindFirstFileW(nullptr, &data), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(FindFirstFileW(u"\\*", nullptr), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(FindFiles, HandsOnFaults) {
  MakeFile("a");
  MakeFile("b");
  WIN32_FIND_DATAW data;
  {
    const auto plan = FaultPlan::FailCalls("FindFirstFileW", ERROR_READ_FAULT);
    EXPECT_EQ(ErrorOf(u"\\*"), ERROR_READ_FAULT);
  }
  const HANDLE search = FindFirstFileW(u"\\*", &data);
  {
    const auto plan = FaultPlan::FailCalls("FindNextFileW", ERROR_READ_FAULT);
    EXPECT_FALSE(FindNextFileW(search, &data));
    EXPECT_EQ(GetLastError(), ERROR_READ_FAULT);
  }
  {
    const auto plan = FaultPlan::FailCalls("FindClose", ERROR_READ_FAULT);
    EXPECT_FALSE(FindClose(search));
  }
  EXPECT_TRUE(FindNextFileW(search, &data)) << "it is still open";
  EXPECT_TRUE(FindClose(search));
}

TEST(MountPoint, IsTheRootOfAnotherVolume) {
  const testing::TemporaryDirectory directory;
  fs::create_directory(directory.path() / "plain");
  std::ofstream(directory.path() / "file");
  fs::create_directory_symlink("/proc", directory.path() / "link");
  const host::UniqueFd root(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
  const host::UniqueFd own(::open(directory.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  EXPECT_TRUE(host::IsMountPoint(root.get(), "proc"));
  for (const char* name : {"plain", "file", "link", "nothing"}) {
    EXPECT_FALSE(host::IsMountPoint(own.get(), name)) << name;
  }
}

}  // namespace
}  // namespace corvane
