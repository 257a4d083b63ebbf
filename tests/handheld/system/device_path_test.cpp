// Which entry of the host a path of the device means, and which it may never mean.
#include "handheld/system/device_path.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

#include "common/text/unicode.h"
#include "platform/files.h"
#include "platform/status.h"
#include "tests/support/test_handheld.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using namespace ce;

class DevicePathTest : public testing::HandheldTest {
 protected:
  fs::path Root() const { return handheld_.directory() / "files"; }

  // Opens or makes the file; 0, or the error.
  static DWORD Touch(const std::u16string& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, 0);
    if (file == INVALID_HANDLE_VALUE) return GetLastError();
    CloseHandle(file);
    return ERROR_SUCCESS;
  }
};

TEST_F(DevicePathTest, TakesBothSeparators) {
  fs::create_directories(Root() / "My Documents" / "Notes");
  EXPECT_EQ(Touch(u"\\My Documents\\Notes\\a.txt"), ERROR_SUCCESS);
  EXPECT_EQ(Touch(u"/My Documents/Notes/b.txt"), ERROR_SUCCESS);
  EXPECT_EQ(Touch(u"My Documents\\Notes/c.txt"), ERROR_SUCCESS);
  for (const char* name : {"a.txt", "b.txt", "c.txt"}) {
    EXPECT_TRUE(fs::exists(Root() / "My Documents" / "Notes" / name));
  }
}

TEST_F(DevicePathTest, MatchesEveryNameWithoutRegardToCase) {
  fs::create_directories(Root() / "Größe");
  EXPECT_EQ(Touch(u"\\GRÖßE\\ä.txt"), ERROR_SUCCESS);
  EXPECT_EQ(Touch(u"\\größe\\Ä.TXT"), ERROR_SUCCESS);
  EXPECT_TRUE(fs::exists(Root() / "Größe" / "ä.txt"));
  EXPECT_FALSE(fs::exists(Root() / "Größe" / "Ä.TXT"));
}

TEST_F(DevicePathTest, PrefersTheExactName) {
  for (const char* name : {"b.txt", "B.txt"}) fs::create_directory(Root() / name);
  host::DevicePath path;
  EXPECT_EQ(host::ResolveDevicePath(u"\\b.txt", path), ERROR_SUCCESS);
  EXPECT_EQ(path.name, "b.txt");
  EXPECT_EQ(host::ResolveDevicePath(u"\\B.txt", path), ERROR_SUCCESS);
  EXPECT_EQ(path.name, "B.txt");
  EXPECT_EQ(host::ResolveDevicePath(u"\\B.TXT", path), ERROR_SUCCESS);
  EXPECT_EQ(path.name, "B.txt") << "of several, the first in byte order";
}

TEST_F(DevicePathTest, RefusesNamesThatTheDeviceDoesNotAllow) {
  fs::create_directory(Root() / "dir");
  std::u16string_view paths =
      u"\\. \\.. \\dir\\..\\a \\dir\\.\\a .. ..\\a \\dir\\..\\..\\a \\\\a \\dir\\\\a "
      u"\\dir\\ /../registry.reg \\C:\\a C:a \\a* \\a? \\a\"b \\<a \\a> \\a|b \\a\nb "
      u"\\a\x01 \\NUL \\con.txt \\COM1 \\lpt9.log \\aux\\a \\\xD800 \\a\xDC00z";
  while (!paths.empty()) {
    const std::u16string path(paths.substr(0, paths.find(u' ')));
    paths.remove_prefix(std::min(path.size() + 1, paths.size()));
    EXPECT_EQ(Touch(path), ERROR_INVALID_NAME) << text::ToUtf8Lossy(path);
  }
  EXPECT_EQ(Touch(u"\\" + std::u16string(256, u'n')), ERROR_INVALID_NAME);
  EXPECT_EQ(Touch(u"\\" + std::u16string(128, u'ä')), ERROR_INVALID_NAME)
      << "longer than the host's names can be";
  EXPECT_EQ(Touch(u"\\" + std::u16string(255, u'n')), ERROR_SUCCESS);
  EXPECT_EQ(Touch(u"\\COM1x"), ERROR_SUCCESS);
}

TEST_F(DevicePathTest, RefusesAPathWithoutAName) {
  EXPECT_EQ(Touch(u""), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(Touch(u"\\"), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(Touch(u"/"), ERROR_PATH_NOT_FOUND);
  host::DevicePath path;
  EXPECT_EQ(host::ResolveDevicePath(nullptr, path), ERROR_INVALID_PARAMETER);
}

TEST_F(DevicePathTest, RefusesAWayThatIsNotThereOrIsAFile) {
  EXPECT_EQ(Touch(u"\\nowhere\\a.txt"), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(Touch(u"\\file"), ERROR_SUCCESS);
  EXPECT_EQ(Touch(u"\\file\\a.txt"), ERROR_PATH_NOT_FOUND);
}

TEST_F(DevicePathTest, StopsAtTheFirstZero) {
  EXPECT_EQ(Touch(std::u16string(u"\\a\0\\..\\b", 8)), ERROR_SUCCESS);
  EXPECT_TRUE(fs::exists(Root() / "a"));
  host::UniqueFd root;
  host::DevicePath path;
  ASSERT_EQ(host::OpenFilesRoot(root), ERROR_SUCCESS);
  EXPECT_EQ(host::ResolveDevicePath(root, std::u16string_view(u"a\0b", 3), path),
            ERROR_INVALID_NAME);
}

class StorageCard : public DevicePathTest {
 protected:
  const testing::TemporaryDirectory outside_;
};

TEST_F(StorageCard, IsALinkAtTheRootToADirectory) {
  fs::create_directory_symlink(outside_.path(), Root() / "Storage Card");
  fs::create_directory(outside_ / "deeper");
  EXPECT_EQ(Touch(u"\\storage card\\a.txt"), ERROR_SUCCESS);
  EXPECT_EQ(Touch(u"\\Storage Card\\deeper\\b.txt"), ERROR_SUCCESS);
  EXPECT_TRUE(fs::exists(outside_ / "a.txt"));
  EXPECT_TRUE(fs::exists(outside_ / "deeper" / "b.txt"));
}

TEST_F(StorageCard, CannotBeOpenedDeletedOrMovedItself) {
  fs::create_directory_symlink(outside_.path(), Root() / "Card");
  EXPECT_EQ(Touch(u"\\Card"), ERROR_ACCESS_DENIED);
  EXPECT_FALSE(DeleteFileW(u"\\Card"));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_FALSE(MoveFileW(u"\\Card", u"\\Other"));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_TRUE(fs::is_symlink(Root() / "Card"));
}

TEST_F(StorageCard, IsNoLinkToAFile) {
  outside_.Write("secret", "content");
  fs::create_symlink(outside_ / "secret", Root() / "a.txt");
  EXPECT_EQ(Touch(u"\\a.txt"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(Touch(u"\\a.txt\\b"), ERROR_ACCESS_DENIED);
  EXPECT_FALSE(DeleteFileW(u"\\a.txt"));
  EXPECT_TRUE(fs::exists(outside_ / "secret"));
}

TEST_F(StorageCard, IsNoLinkThatLeadsNowhere) {
  fs::create_symlink(outside_ / "gone", Root() / "Card");
  EXPECT_EQ(Touch(u"\\Card\\a.txt"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(Touch(u"\\Card"), ERROR_ACCESS_DENIED);
  EXPECT_FALSE(fs::exists(outside_ / "gone")) << "nothing is made through a link";
}

TEST_F(StorageCard, IsNoLinkBelowTheRoot) {
  fs::create_directory(Root() / "dir");
  fs::create_directory_symlink(outside_.path(), Root() / "dir" / "Card");
  EXPECT_EQ(Touch(u"\\dir\\Card\\a.txt"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(Touch(u"\\dir\\card\\a.txt"), ERROR_ACCESS_DENIED);
  fs::create_directory_symlink(outside_.path(), Root() / "Card");
  fs::create_directory_symlink("/", outside_ / "root");
  EXPECT_EQ(Touch(u"\\Card\\root\\a.txt"), ERROR_ACCESS_DENIED) << "a link within a card";
  EXPECT_FALSE(fs::exists(outside_ / "a.txt"));
}

TEST_F(StorageCard, IsNotLeftUpwards) {
  fs::create_directory(outside_ / "card");
  fs::create_directory_symlink(outside_ / "card", Root() / "Card");
  for (const char16_t* path : {u"\\Card\\..\\a.txt", u"\\Card/../a.txt", u"Card\\..\\..\\a.txt"}) {
    EXPECT_EQ(Touch(path), ERROR_INVALID_NAME);
  }
  EXPECT_FALSE(fs::exists(outside_ / "a.txt"));
  EXPECT_FALSE(fs::exists(handheld_.directory() / "a.txt"));
}

TEST_F(DevicePathTest, NeverWaitsForWhatIsNoFile) {
  ASSERT_EQ(::mkfifo((Root() / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(Touch(u"\\pipe"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(CreateFileW(u"\\pipe", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, 0),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(CreateFileW(u"\\pipe", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, 0),
            INVALID_HANDLE_VALUE);
}

TEST_F(DevicePathTest, LeavesAloneWhatTheHostCannotSpell) {
  fs::create_directory(Root() / "bad\xFFname");
  EXPECT_EQ(Touch(u"\\bad\xFFFDname"), ERROR_SUCCESS) << "another name, not a match";
  EXPECT_TRUE(fs::is_directory(Root() / "bad\xFFname"));
}

}  // namespace
}  // namespace corvane
