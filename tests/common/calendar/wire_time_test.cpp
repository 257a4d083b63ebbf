// The handheld's conversions, written afresh, against the agent's own.
#include "common/calendar/wire_time.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "agent/time/zone.h"
#include "common/calendar/zone.h"
#include "platform/clock.h"
#include "tests/support/test_handheld.h"

namespace calendar {
namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::local_days;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year_month_day;

ce::SYSTEMTIME ToSystemTime(seconds time) {
  const sys_days day{floor<days>(time)};
  const year_month_day date{day};
  const auto rest = (time - day.time_since_epoch()).count();
  const auto field = [](auto value) { return static_cast<ce::WORD>(value); };
  return {field(static_cast<int>(date.year())),
          field(unsigned{date.month()}),
          field(std::chrono::weekday{day}.c_encoding()),
          field(unsigned{date.day()}),
          field(rest / 3600),
          field(rest / 60 % 60),
          field(rest % 60),
          0};
}

seconds ToSeconds(const ce::SYSTEMTIME& time) {
  const sys_days day{std::chrono::year{time.wYear} / time.wMonth / time.wDay};
  return day.time_since_epoch() + seconds{(time.wHour * 60 + time.wMinute) * 60 + time.wSecond};
}

class WireTime : public corvane::testing::HandheldTest,
                 public ::testing::WithParamInterface<const char*> {
 protected:
  void TearDown() override {
    corvane::ResetTimeZoneCache();
    HandheldTest::TearDown();
  }
  void UseZone(const std::string& name) {
    handheld_.SetZone(name);
    corvane::ResetTimeZoneCache();
    zone_ = Zone::Find(name);
    ASSERT_TRUE(zone_) << name;
  }

  // For every half hour of the days in some years on which the clocks may change, every six hours
  // of the other days, and the second before each.
  template <typename Check>
  void ForEachTime(Check check) {
    const auto offset = [&](seconds time) {
      return time - zone_->ToWireUtc(local_seconds{time}).time_since_epoch();
    };
    for (const int year : {1900, 1901, 1947, 1970, 1999, 2000, 2023, 2024, 2025, 2026, 2027, 2028,
                           2038, 2099, 2100, 2101, 2400, 2999}) {
      const seconds end = sys_days{std::chrono::year{year} / 12 / 31}.time_since_epoch() + days{1};
      for (seconds day = sys_days{std::chrono::year{year} / 1 / 1}.time_since_epoch(); day < end;
           day += days{1}) {
        const bool changes = offset(day - days{1}) != offset(day + days{2});
        for (seconds time = day; time < day + days{1};
             time += changes ? minutes{30} : minutes{360}) {
          check(time);
          check(time - seconds{1});
          if (HasFatalFailure()) return;
        }
      }
    }
  }

  std::optional<Zone> zone_;
};

TEST_P(WireTime, ToUtcIsTheAgents) {
  UseZone(GetParam());
  ForEachTime([&](seconds time) {
    const seconds expected = ToSeconds(corvane::LocalTimeToUtc(ToSystemTime(time)));
    ASSERT_EQ(zone_->ToWireUtc(local_seconds{time}).time_since_epoch(), expected) << time.count();
  });
}

TEST_P(WireTime, FromUtcIsTheAgents) {
  UseZone(GetParam());
  ForEachTime([&](seconds time) {
    const seconds expected = ToSeconds(corvane::UtcToLocalTime(ToSystemTime(time)));
    ASSERT_EQ(zone_->FromWireUtc(sys_seconds{time}).time_since_epoch(), expected) << time.count();
  });
}

INSTANTIATE_TEST_SUITE_P(Zones, WireTime,
                         ::testing::Values("Europe/Berlin", "America/New_York", "Australia/Sydney",
                                           "Asia/Tokyo", "Asia/Kolkata", "UTC", "America/Santiago",
                                           "Africa/Casablanca", "Europe/Dublin", "Asia/Jerusalem",
                                           "America/Nuuk", "Africa/Cairo", "Australia/Lord_Howe",
                                           "Asia/Gaza", "Antarctica/Troll"));

TEST(ToWireUtc, GoesByThePresentRulesInAllYears) {
  const auto rules = PresentRulesOf(*ParsePosixZone("CET-1CEST,M3.5.0,M10.5.0/3"));
  const local_seconds summer = local_days{std::chrono::year{1975} / 7 / 1} + std::chrono::hours{12};
  EXPECT_EQ(ToWireUtc(rules, summer).time_since_epoch(),
            summer.time_since_epoch() - std::chrono::hours{2});
}

// An end at 00:30 is 23:30 of the day before in standard time, and yet counts for its own day.
TEST(ToWireUtc, KeepsTheDayOfAnEndThatLeavesIt) {
  const auto rules = PresentRulesOf(*ParsePosixZone("CET-1CEST,M3.5.0,M10.5.0/0:30"));
  const local_seconds midnight = local_days{std::chrono::year{2024} / 10 / 27};
  const auto offset = [&](local_seconds local) {
    return local.time_since_epoch() - ToWireUtc(rules, local).time_since_epoch();
  };
  EXPECT_EQ(offset(midnight), std::chrono::hours{2});
  EXPECT_EQ(offset(midnight + seconds{84'599}), std::chrono::hours{2});
  EXPECT_EQ(offset(midnight + seconds{84'600}), std::chrono::hours{1});
}

}  // namespace
}  // namespace calendar
