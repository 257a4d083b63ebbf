#include "platform/disk_space.h"

#include <filesystem>
#include <fstream>
#include <functional>

#include "handheld/base/fault.h"
#include "platform/status.h"
#include "tests/support/paths.h"
#include "tests/support/test_handheld.h"
#include "tests/support/volume_room.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using namespace ce;
using testing::AskAtRest;
using testing::VolumeRoom;

class DiskSpace : public testing::HandheldTest {
 protected:
  fs::path Root() const { return handheld_.directory() / "files"; }

  static VolumeRoom Ask(const WCHAR* path) {
    VolumeRoom room;
    ULONGLONG free = 0;
    EXPECT_TRUE(GetDiskFreeSpaceExW(path, &room.free, &room.total, &free));
    EXPECT_GE(free, room.free);
    EXPECT_LE(free, room.total);
    return room;
  }
  static void ExpectTruth(const WCHAR* path, const fs::path& directory) {
    VolumeRoom truth;
    const VolumeRoom asked = AskAtRest(
        {directory}, &truth, [path] { return Ask(path); }, std::equal_to<>());
    EXPECT_EQ(asked, truth);
    EXPECT_GT(asked.total, 0u);
  }
  static void ExpectRefused(const WCHAR* path, DWORD error) {
    ULONGLONG values[3] = {1, 2, 3};
    SetLastError(0);
    EXPECT_FALSE(GetDiskFreeSpaceExW(path, &values[0], &values[1], &values[2]));
    EXPECT_EQ(GetLastError(), error);
    EXPECT_EQ(values[0], 1u);
    EXPECT_EQ(values[1], 2u);
    EXPECT_EQ(values[2], 3u);
  }
};

TEST_F(DiskSpace, TellsTheTruthOfTheRoot) {
  for (const WCHAR* root : {u"\\", u"/"}) ExpectTruth(root, Root());
  ExpectTruth(nullptr, Root());
}

TEST_F(DiskSpace, TellsTheTruthOfADirectory) {
  fs::create_directories(Root() / "One" / "Two");
  for (const WCHAR* path : {u"\\One", u"one\\TWO", u"/One/Two/", u"\\One\\Two\\"}) {
    ExpectTruth(path, Root());
  }
}

TEST_F(DiskSpace, TellsTheTruthOfACard) {
  fs::create_directory_symlink(testing::SourcePath("."), Root() / "Card");
  ExpectTruth(u"\\Card", testing::SourcePath("."));
  ExpectTruth(u"\\CARD\\", testing::SourcePath("."));
  ExpectTruth(u"\\Card\\tests", testing::SourcePath("."));
}

TEST_F(DiskSpace, NeedsNoneOfItsResults) {
  EXPECT_TRUE(GetDiskFreeSpaceExW(u"\\", nullptr, nullptr, nullptr));
}

TEST_F(DiskSpace, RefusesWhatIsNoDirectory) {
  std::ofstream(Root() / "file");
  ExpectRefused(u"\\nothing", ERROR_PATH_NOT_FOUND);
  ExpectRefused(u"\\nothing\\at all", ERROR_PATH_NOT_FOUND);
  ExpectRefused(u"\\file", ERROR_PATH_NOT_FOUND);
  ExpectRefused(u"", ERROR_PATH_NOT_FOUND);
}

TEST_F(DiskSpace, NeverLeadsOutOfTheHandheld) {
  for (const WCHAR* path : {u"..", u"\\..", u"\\..\\..", u"/../", u"\\.", u"\\\\", u"\\\\server\\x",
                            u"C:\\", u"\\NUL", u"\\com1", u"\\*"}) {
    ExpectRefused(path, ERROR_INVALID_NAME);
  }
  fs::create_directory(Root() / "dir");
  ExpectRefused(u"\\dir\\..\\..", ERROR_INVALID_NAME);
  ExpectRefused((u"\\" + std::u16string(256, u'x')).c_str(), ERROR_INVALID_NAME);
  ExpectRefused(u"/proc", ERROR_PATH_NOT_FOUND);
  fs::create_directory_symlink("/proc", Root() / "dir" / "link");
  ExpectRefused(u"\\dir\\link", ERROR_ACCESS_DENIED);
}

TEST_F(DiskSpace, RefusesACardThatIsGone) {
  fs::create_directory_symlink("/nowhere at all", Root() / "Card");
  ExpectRefused(u"\\Card", ERROR_ACCESS_DENIED);
}

TEST_F(DiskSpace, HandsOnAFault) {
  const auto plan = host::FaultPlan::FailCalls("GetDiskFreeSpaceExW", ERROR_NOT_READY);
  ExpectRefused(u"\\", ERROR_NOT_READY);
}

}  // namespace
}  // namespace corvane
