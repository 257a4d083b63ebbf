#include "common/calendar/zone_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/zone_database.h"

namespace calendar {
namespace {

namespace fs = std::filesystem;
using corvane::testing::ZoneFile;
using ::testing::Contains;
using ::testing::Not;

class ZoneDatabase : public ::testing::Test {
 protected:
  corvane::testing::OwnZoneDatabase database_;
  const corvane::testing::TemporaryDirectory& directory_ = database_.directory;
};

TEST_F(ZoneDatabase, ListsItsZonesInOrder) {
  fs::create_directories(directory_ / "Europe");
  fs::create_directories(directory_ / "posix/Europe");
  for (const char* name : {"UTC", "Europe/Zagreb", "Europe/Berlin", "posix/Europe/Berlin"}) {
    directory_.Write(name, ZoneFile("CET-1"));
  }
  directory_.Write("zone.tab", "# text");
  directory_.Write("Europe/leapseconds", "# text");
  EXPECT_THAT(ListZones(), ::testing::ElementsAre("Europe/Berlin", "Europe/Zagreb", "UTC"));
}

TEST(ListZones, KnowsTheSystemsZones) {
  const auto zones = ListZones();
  EXPECT_THAT(zones, Contains("Europe/Berlin"));
  EXPECT_THAT(zones, Contains("UTC"));
  EXPECT_THAT(zones, Not(Contains("zone.tab")));
}

TEST(HostZoneName, IsWhatTheLinkSays) {
  const corvane::testing::TemporaryDirectory etc;
  fs::create_symlink("../usr/share/zoneinfo/Europe/Berlin", etc / "localtime");
  etc.Write("timezone", "Asia/Tokyo\n");
  EXPECT_EQ(HostZoneName(etc.path()), "Europe/Berlin");
}

TEST(HostZoneName, IsWhatTheFileSaysWithoutALink) {
  const corvane::testing::TemporaryDirectory etc;
  etc.Write("localtime", "TZif2");
  etc.Write("timezone", "Asia/Tokyo\n");
  EXPECT_EQ(HostZoneName(etc.path()), "Asia/Tokyo");
}

TEST(HostZoneName, FallsBackToUtc) {
  const corvane::testing::TemporaryDirectory etc;
  EXPECT_EQ(HostZoneName(etc.path()), "UTC");
  etc.Write("timezone", "../../etc/passwd\n");
  EXPECT_EQ(HostZoneName(etc.path()), "UTC");
}

}  // namespace
}  // namespace calendar
