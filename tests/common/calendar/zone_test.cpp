#include "common/calendar/zone.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <ctime>
#include <future>
#include <string>
#include <vector>

#include "common/calendar/zone_file.h"
#include "tests/support/zone_database.h"

namespace calendar {
namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::local_days;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;

local_seconds Local(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return local_days{std::chrono::year{year} / month / day} + hours{hour} + minutes{minute} +
         seconds{second};
}

sys_seconds Utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return sys_seconds{Local(year, month, day, hour, minute, second).time_since_epoch()};
}

Zone Known(std::string_view name) {
  std::optional<Zone> zone = Zone::Find(name);
  EXPECT_TRUE(zone) << name;
  return zone.value_or(Zone::OfHost());
}

// The C library's idea of a zone, while it lives.
class LibcZone {
 public:
  explicit LibcZone(const std::string& name) : setting_("TZ", name) { ::tzset(); }

  static local_seconds Local(sys_seconds utc) {
    const std::time_t time = utc.time_since_epoch().count();
    std::tm local{};
    ::localtime_r(&time, &local);
    return local_seconds{seconds{time + local.tm_gmtoff}};
  }

 private:
  corvane::testing::Environment setting_;
};

RC_GTEST_PROP(ToLocal, AgreesWithTheCLibraryInEveryZoneAndYear, ()) {
  static const std::vector<std::string> names = ListZones();
  const std::string name = *rc::gen::elementOf(names);
  const Zone zone = Known(name);
  const LibcZone libc(name);
  const auto first = Utc(1900, 1, 1).time_since_epoch().count();
  const auto last = Utc(2999, 12, 31).time_since_epoch().count();
  for (int i = 0; i < 50; ++i) {
    const sys_seconds utc{seconds{*rc::gen::resize(100, rc::gen::inRange(first, last))}};
    RC_ASSERT(zone.ToLocal(utc) == LibcZone::Local(utc));
  }
}

class EveryHalfHour : public ::testing::TestWithParam<const char*> {};

// Both ways, with the second coming of an hour left out.
TEST_P(EveryHalfHour, AgreesWithTheCLibrary) {
  const Zone zone = Known(GetParam());
  const LibcZone libc(GetParam());
  for (const int year : {1916, 1945, 1980, 2011, 2024, 2037, 2038, 2100, 2996}) {
    local_seconds latest = LibcZone::Local(Utc(year, 1, 1) - minutes{30});
    for (sys_seconds utc = Utc(year, 1, 1); utc < Utc(year + 1, 1, 1); utc += minutes{30}) {
      const local_seconds local = zone.ToLocal(utc);
      ASSERT_EQ(local, LibcZone::Local(utc)) << utc.time_since_epoch().count();
      if (local > latest) {
        ASSERT_EQ(zone.ToUtc(local), utc) << utc.time_since_epoch().count();
        latest = local;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, EveryHalfHour,
                         ::testing::Values("Europe/Berlin", "America/New_York", "Australia/Sydney",
                                           "Asia/Tokyo", "Asia/Kolkata", "UTC", "America/Santiago",
                                           "Africa/Casablanca", "Europe/Dublin", "Asia/Jerusalem",
                                           "America/Nuuk", "Australia/Lord_Howe", "Pacific/Apia",
                                           "Antarctica/Troll"));

TEST(ToUtc, TakesTheOffsetBeforeAGap) {
  const Zone berlin = Known("Europe/Berlin");
  EXPECT_EQ(berlin.ToUtc(Local(2024, 3, 31, 1, 59, 59)), Utc(2024, 3, 31, 0, 59, 59));
  EXPECT_EQ(berlin.ToUtc(Local(2024, 3, 31, 2, 30)), Utc(2024, 3, 31, 1, 30));
  EXPECT_EQ(berlin.ToUtc(Local(2024, 3, 31, 3)), Utc(2024, 3, 31, 1));
  EXPECT_EQ(berlin.ToUtc(Local(2500, 3, 28, 2, 30)), Utc(2500, 3, 28, 1, 30));
}

TEST(ToUtc, TakesTheFirstOfTwo) {
  const Zone berlin = Known("Europe/Berlin");
  EXPECT_EQ(berlin.ToUtc(Local(2024, 10, 27, 1, 59, 59)), Utc(2024, 10, 26, 23, 59, 59));
  EXPECT_EQ(berlin.ToUtc(Local(2024, 10, 27, 2, 30)), Utc(2024, 10, 27, 0, 30));
  EXPECT_EQ(berlin.ToUtc(Local(2024, 10, 27, 3)), Utc(2024, 10, 27, 2));
  EXPECT_EQ(Known("Australia/Sydney").ToUtc(Local(2050, 4, 3, 2, 30)), Utc(2050, 4, 2, 15, 30));
}

TEST(ToUtc, KnowsADayThatWasLeftOut) {
  const Zone apia = Known("Pacific/Apia");
  EXPECT_EQ(apia.ToUtc(Local(2011, 12, 29, 23, 59, 59)), Utc(2011, 12, 30, 9, 59, 59));
  EXPECT_EQ(apia.ToUtc(Local(2011, 12, 30, 12)), Utc(2011, 12, 30, 22));
  EXPECT_EQ(apia.ToUtc(Local(2011, 12, 31)), Utc(2011, 12, 30, 10));
}

TEST(ToUtc, GoesByTheRulesOfTheTime) {
  const Zone berlin = Known("Europe/Berlin");
  EXPECT_EQ(berlin.ToUtc(Local(1975, 7, 1, 12)), Utc(1975, 7, 1, 11));
  EXPECT_EQ(berlin.ToUtc(Local(1985, 7, 1, 12)), Utc(1985, 7, 1, 10));
}

TEST(Zone, TellsItsName) {
  EXPECT_EQ(Known("Europe/Berlin").name(), "Europe/Berlin");
  const Zone copy = Known("UTC");
  EXPECT_EQ(copy.name(), "UTC");
}

TEST(Zone, RefusesWhatTheDatabaseLacks) {
  for (const char* name : {"", "Europe", "Europe/Atlantis", "../UTC", "/usr/share/zoneinfo/UTC",
                           "Europe/Berlin\n", "zone.tab", "CET-1"}) {
    EXPECT_FALSE(Zone::Find(name)) << name;
  }
}

TEST(Zone, OfTheHostIsOne) {
  const Zone zone = Zone::OfHost();
  EXPECT_TRUE(Zone::Find(zone.name()));
  EXPECT_EQ(zone.ToLocal(zone.ToUtc(Local(2024, 1, 15, 12))), Local(2024, 1, 15, 12));
}

class OwnZone : public ::testing::Test {
 protected:
  corvane::testing::OwnZoneDatabase database_;
};

TEST_F(OwnZone, IsFoundWhereTzdirSays) {
  database_.directory.Write("Home", corvane::testing::ZoneFile("CET-1CEST,M3.5.0,M10.5.0/3"));
  EXPECT_EQ(Known("Home").ToUtc(Local(2024, 7, 1, 12)), Utc(2024, 7, 1, 10));
  EXPECT_FALSE(Zone::Find("Europe/Berlin"));
}

TEST_F(OwnZone, NeedsNoFileForUtc) {
  EXPECT_EQ(Known("UTC").ToUtc(Local(2024, 7, 1, 12)), Utc(2024, 7, 1, 12));
  EXPECT_EQ(Known("UTC").ToWireUtc(Local(2024, 7, 1, 12)), Utc(2024, 7, 1, 12));
}

TEST_F(OwnZone, IsNoneWhenItsFileIsDamaged) {
  const std::string whole = corvane::testing::ZoneFile("CET-1");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    database_.directory.Write("Zone", whole.substr(0, length));
    EXPECT_FALSE(Zone::Find("Zone")) << length;
  }
  for (const char* rule : {"", "CET", "CET-1CEST,M3.5.0"}) {
    database_.directory.Write("Zone", corvane::testing::ZoneFile(rule));
    EXPECT_FALSE(Zone::Find("Zone")) << rule;
  }
}

TEST(Zone, MayBeUsedInSeveralThreads) {
  const Zone zone = Known("Europe/Berlin");
  std::vector<std::future<local_seconds>> conversions;
  for (int i = 0; i < 4; ++i) {
    conversions.push_back(std::async(std::launch::async, [zone] {
      local_seconds latest;
      for (sys_seconds utc = Utc(2024, 1, 1); utc < Utc(2025, 1, 1); utc += hours{1}) {
        latest = zone.ToLocal(utc);
      }
      return latest;
    }));
  }
  for (auto& conversion : conversions) EXPECT_EQ(conversion.get(), Local(2025, 1, 1));
}

}  // namespace
}  // namespace calendar
