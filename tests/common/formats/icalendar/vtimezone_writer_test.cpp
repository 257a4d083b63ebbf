#include "common/formats/icalendar/vtimezone_writer.h"

#include <gtest/gtest.h>
#include <libical/ical.h>

#include <memory>

#include "common/calendar/wall_time.h"
#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

struct FreeZone {
  void operator()(icaltimezone* zone) const { icaltimezone_free(zone, 1); }
};
using IcalZone = std::unique_ptr<icaltimezone, FreeZone>;

// The zone as another library understands what was written.
IcalZone Understood(const std::string& vtimezone) {
  IcalZone zone(icaltimezone_new());
  icalcomponent* component = icalparser_parse_string(vtimezone.c_str());
  EXPECT_NE(component, nullptr);
  if (component != nullptr) icaltimezone_set_component(zone.get(), component);
  return zone;
}

local_seconds LocalIn(icaltimezone* zone, sys_seconds utc) {
  const icaltimetype time = icaltime_from_timet_with_zone(utc.time_since_epoch().count(), 0, zone);
  return At(time.year, static_cast<unsigned>(time.month), static_cast<unsigned>(time.day),
            time.hour, time.minute, time.second);
}

class ZoneTest : public ::testing::TestWithParam<const char*> {};

// What the writer does not say by rules ends in 2150; libical takes rules to 2582.
TEST_P(ZoneTest, IsUnderstoodAsItIs) {
  const calendar::Zone zone = ZoneOf(GetParam());
  const UsedTimes used{At(1950, 1, 1, 0), At(2100, 1, 1, 0), true};
  const IcalZone understood = Understood(VTimezoneOf(zone, used));
  int differ = 0;
  for (sys_seconds at{At(1950, 1, 2, 0).time_since_epoch()};
       at < sys_seconds(At(2100, 1, 1, 0).time_since_epoch()); at += std::chrono::hours(31)) {
    const local_seconds local = LocalIn(understood.get(), at);
    if (local == zone.ToLocal(at)) continue;
    if (++differ < 5) ADD_FAILURE() << BasicUtc(at) << " is understood as " << IsoDateTime(local);
  }
  EXPECT_EQ(differ, 0);
}

INSTANTIATE_TEST_SUITE_P(VTimezoneOf, ZoneTest,
                         ::testing::Values("Europe/Berlin", "Europe/Dublin", "America/New_York",
                                           "America/Sao_Paulo", "America/Nuuk", "America/Santiago",
                                           "Australia/Sydney", "Australia/Lord_Howe", "Asia/Tokyo",
                                           "Asia/Kolkata", "Asia/Jerusalem", "Asia/Gaza",
                                           "Africa/Casablanca", "Africa/Cairo", "Pacific/Apia",
                                           "Pacific/Auckland", "Antarctica/Troll", "Etc/UTC"),
                         [](const auto& test) {
                           std::string name = test.param;
                           for (char& c : name) {
                             if (c == '/') c = '_';
                           }
                           return name;
                         });

std::string Written(std::string_view zone, const UsedTimes& used) {
  return VTimezoneOf(ZoneOf(zone), used);
}

TEST(VTimezoneOf, SaysPresentRulesAsRules) {
  EXPECT_EQ(Written("Europe/Berlin", {At(2008, 1, 1, 0), At(2008, 1, 1, 0), false}),
            "BEGIN:VTIMEZONE\r\nTZID:Europe/Berlin\r\n"
            "BEGIN:STANDARD\r\nDTSTART:20070101T000000\r\nTZOFFSETFROM:+0100\r\n"
            "TZOFFSETTO:+0100\r\nEND:STANDARD\r\n"
            "BEGIN:DAYLIGHT\r\nDTSTART:20070325T020000\r\n"
            "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\r\nTZOFFSETFROM:+0100\r\n"
            "TZOFFSETTO:+0200\r\nEND:DAYLIGHT\r\n"
            "BEGIN:STANDARD\r\nDTSTART:20071028T030000\r\n"
            "RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU\r\nTZOFFSETFROM:+0200\r\n"
            "TZOFFSETTO:+0100\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n");
}

TEST(VTimezoneOf, SaysPastChangesOneByOne) {
  const std::string text =
      Written("America/New_York", {At(1990, 6, 1, 0), At(1990, 6, 1, 0), false});
  EXPECT_EQ(text.find("RRULE"), std::string::npos);
  EXPECT_NE(text.find("BEGIN:DAYLIGHT\r\nDTSTART:19890402T020000\r\nRDATE:19890402T020000\r\n"
                      "RDATE:19900401T020000\r\nRDATE:19910407T020000\r\nTZOFFSETFROM:-0500\r\n"),
            std::string::npos)
      << text;
}

TEST(VTimezoneOf, ReachesTheRulesForASeriesWithoutEnd) {
  const std::string text =
      Written("America/New_York", {At(1990, 6, 1, 0), At(1990, 6, 1, 0), true});
  EXPECT_NE(text.find("RDATE:20060402T020000\r\n"), std::string::npos);
  EXPECT_NE(text.find("DTSTART:20070311T020000\r\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=2SU\r\n"),
            std::string::npos)
      << text;
}

TEST(VTimezoneOf, SaysAWeekdayFromADayOn) {
  const std::string text = Written("Asia/Jerusalem", {At(2020, 6, 1, 0), At(2020, 6, 1, 0), false});
  EXPECT_NE(text.find("BYMONTH=3;BYDAY=FR;BYMONTHDAY=23,24,25,26,27,28,29"), std::string::npos)
      << text;
}

TEST(VTimezoneOf, WritesOffsetsWithSeconds) {
  const std::string text =
      Written("Africa/Monrovia", {At(1960, 6, 1, 0), At(1960, 6, 1, 0), false});
  EXPECT_NE(text.find("TZOFFSETTO:-004430\r\n"), std::string::npos) << text;
}

}  // namespace
}  // namespace formats::testing
