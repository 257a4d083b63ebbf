// The conversions in the zone of a handheld, against the C library's.
#include "agent/time/zone.h"

#include <gtest/gtest.h>

#include <cctype>

#include "handheld/base/fault.h"
#include "tests/agent/time/time_support.h"

namespace corvane {
namespace {

using testing::At;
using testing::LibcZone;
using testing::SecondsSince1970;
using testing::ZoneTest;

constexpr std::time_t kHour = 3600;

struct ZoneCase {
  const char* name;
  int firstYear;  // from here on the zone's present rules hold
};

void PrintTo(const ZoneCase& zone, std::ostream* out) {
  *out << zone.name;
}

class EveryHour : public ZoneTest, public ::testing::WithParamInterface<ZoneCase> {
 protected:
  static constexpr int kYears = 5;

  // Calls `check` with every half hour of the years and its neighbours of a second.
  template <typename Check>
  void ForEachTime(Check check) {
    const std::time_t end = SecondsSince1970(GetParam().firstYear + kYears, 1, 1);
    for (std::time_t time = SecondsSince1970(GetParam().firstYear, 1, 1); time < end;
         time += kHour / 2) {
      check(time);
      check(time - 1);
      if (HasFatalFailure()) return;
    }
  }
};

TEST_P(EveryHour, UtcToLocalTimeAgreesWithTheSystem) {
  UseZone(GetParam().name);
  const LibcZone libc(GetParam().name);
  ForEachTime([&](std::time_t time) {
    ASSERT_EQ(UtcToLocalTime(LibcZone::Utc(time)), libc.Local(time)) << time;
  });
}

// An hour that comes twice stands for its second coming.
TEST_P(EveryHour, LocalTimeToUtcAgreesWithTheSystem) {
  UseZone(GetParam().name);
  const LibcZone libc(GetParam().name);
  ce::LONG daylightBias = 0;
  GetZoneBiases(nullptr, &daylightBias);
  ForEachTime([&](std::time_t time) {
    const ce::SYSTEMTIME local = libc.Local(time);
    const std::time_t later = time - daylightBias;
    const bool comesAgain = daylightBias != 0 && libc.Local(later) == local;
    ASSERT_EQ(LocalTimeToUtc(local), LibcZone::Utc(comesAgain ? later : time)) << time;
  });
}

INSTANTIATE_TEST_SUITE_P(
    Zones, EveryHour,
    ::testing::Values(ZoneCase{"Europe/Berlin", 2007}, ZoneCase{"America/New_York", 2007},
                      ZoneCase{"Australia/Sydney", 2009}, ZoneCase{"Asia/Tokyo", 2007},
                      ZoneCase{"Asia/Kolkata", 2007}, ZoneCase{"UTC", 2007},
                      ZoneCase{"America/St_Johns", 2012}, ZoneCase{"Australia/Lord_Howe", 2009}),
    [](const auto& zone) {
      std::string name = zone.param.name;
      for (char& character : name) {
        if (!std::isalnum(static_cast<unsigned char>(character))) character = '_';
      }
      return name;
    });

class Zone : public ZoneTest {};

TEST_F(Zone, BiasesOfAZoneWithDaylightTime) {
  UseZone("Europe/Berlin");
  ce::LONG bias = 1;
  ce::LONG daylightBias = 1;
  GetZoneBiases(&bias, &daylightBias);
  EXPECT_EQ(bias, -3600);
  EXPECT_EQ(daylightBias, -3600);
}

TEST_F(Zone, EitherBiasMayBeLeftOut) {
  UseZone("America/New_York");
  ce::LONG bias = 1;
  ce::LONG daylightBias = 1;
  GetZoneBiases(&bias, nullptr);
  GetZoneBiases(nullptr, &daylightBias);
  GetZoneBiases(nullptr, nullptr);
  EXPECT_EQ(bias, 5 * 3600);
  EXPECT_EQ(daylightBias, -3600);
}

TEST_F(Zone, DaylightBiasIsNothingWithoutADaylightRule) {
  UseZone("Asia/Tokyo");
  ce::LONG bias = 1;
  ce::LONG daylightBias = 1;
  GetZoneBiases(&bias, &daylightBias);
  EXPECT_EQ(bias, -9 * 3600);
  EXPECT_EQ(daylightBias, 0);
}

TEST_F(Zone, IsReadOnceUntilReset) {
  UseZone("Asia/Tokyo");
  ce::LONG bias = 0;
  GetZoneBiases(&bias, nullptr);
  handheld_.SetZone("America/New_York");
  GetZoneBiases(&bias, nullptr);
  EXPECT_EQ(bias, -9 * 3600);
  ResetTimeZoneCache();
  GetZoneBiases(&bias, nullptr);
  EXPECT_EQ(bias, 5 * 3600);
}

TEST_F(Zone, BiasesStayAsTheyWereWhenTheZoneCannotBeRead) {
  UseZone("Europe/Berlin");
  const auto plan = ce::host::FaultPlan::FailCalls("GetTimeZoneInformation", 5);
  ce::LONG bias = 17;
  ce::LONG daylightBias = 18;
  GetZoneBiases(&bias, &daylightBias);
  EXPECT_EQ(bias, 17);
  EXPECT_EQ(daylightBias, 18);
  EXPECT_EQ(LocalTimeToUtc(At(2008, 7, 1, 12)), At(2008, 7, 1, 12));
}

TEST_F(Zone, IsTriedAgainAfterItCouldNotBeRead) {
  UseZone("Europe/Berlin");
  {
    const auto plan = ce::host::FaultPlan::FailCalls("GetTimeZoneInformation", 5);
    EXPECT_EQ(UtcToLocalTime(At(2008, 7, 1, 12)), At(2008, 7, 1, 12));
  }
  EXPECT_EQ(UtcToLocalTime(At(2008, 7, 1, 12)), At(2008, 7, 1, 14));
}

TEST_F(Zone, DaylightSwitchOffLeavesOnlyTheStandardBias) {
  UseZone("Europe/Berlin");
  g_bUseDST = 0;
  EXPECT_EQ(IsDaylightTime(SystemTimeToBrokenDown(At(2008, 7, 1, 12))), 0);
  EXPECT_EQ(LocalTimeToUtc(At(2008, 7, 1, 12)), At(2008, 7, 1, 11));
  EXPECT_EQ(UtcToLocalTime(At(2008, 7, 1, 12)), At(2008, 7, 1, 13));
}

TEST_F(Zone, DaylightSwitchIsOnAtFirstAndCountsWhateverItsValue) {
  UseZone("Europe/Berlin");
  EXPECT_EQ(g_bUseDST, 1);
  g_bUseDST = -1;
  EXPECT_EQ(LocalTimeToUtc(At(2008, 7, 1, 12)), At(2008, 7, 1, 10));
}

TEST_F(Zone, ConversionsKeepMillisecondsAndCarryOverTheDay) {
  UseZone("Europe/Berlin");
  EXPECT_EQ(LocalTimeToUtc(At(2009, 1, 1, 0, 30, 15, 250)), At(2008, 12, 31, 23, 30, 15, 250));
  EXPECT_EQ(UtcToLocalTime(At(2008, 2, 28, 23, 59, 59, 999)), At(2008, 2, 29, 0, 59, 59, 999));
}

TEST_F(Zone, AnHourThatDoesNotExistCountsAsDaylight) {
  UseZone("Europe/Berlin");
  EXPECT_EQ(LocalTimeToUtc(At(2008, 3, 30, 2, 30)), At(2008, 3, 30, 0, 30));
}

// Daylight ends there at midnight, which is an hour before the day in standard time: the end stays
// on its day, so it comes most of a day late.
TEST_F(Zone, AnEndOfDaylightAtMidnightComesADayLate) {
  UseZone("Asia/Beirut");
  const LibcZone libc("Asia/Beirut");
  const std::time_t midnight = SecondsSince1970(2009, 10, 25);
  EXPECT_EQ(libc.Local(midnight), At(2009, 10, 25, 2));
  EXPECT_EQ(UtcToLocalTime(LibcZone::Utc(midnight)), At(2009, 10, 25, 3));
  EXPECT_EQ(UtcToLocalTime(At(2009, 10, 25, 20, 59, 59)), At(2009, 10, 25, 23, 59, 59));
  EXPECT_EQ(UtcToLocalTime(At(2009, 10, 25, 21)), At(2009, 10, 25, 23));
}

TEST_F(Zone, ImpossibleTimesGiveNoDate) {
  UseZone("America/New_York");
  const ce::SYSTEMTIME none{};
  ce::SYSTEMTIME thirteenthMonth = At(2008, 12, 1);
  thirteenthMonth.wMonth = 13;
  EXPECT_EQ(LocalTimeToUtc(thirteenthMonth), none);
  EXPECT_EQ(UtcToLocalTime(thirteenthMonth), none);
  EXPECT_EQ(LocalTimeToUtc(none), none);
  EXPECT_EQ(UtcToLocalTime(At(1600, 12, 31)), none);
  EXPECT_EQ(UtcToLocalTime(At(1601, 1, 1)), none);  // would be before the first tick
}

TEST_F(Zone, EveryFailingCallLeavesADateOrNone) {
  UseZone("Europe/Berlin");
  for (std::uint64_t n = 1;; ++n) {
    ResetTimeZoneCache();
    const auto plan = ce::host::FaultPlan::FailNth(n, 8);
    const ce::SYSTEMTIME utc = LocalTimeToUtc(At(2008, 7, 1, 12));
    const bool usual = utc == At(2008, 7, 1, 10);
    if (!plan.fired()) {
      EXPECT_TRUE(usual);
      EXPECT_GT(n, 3u);
      break;
    }
    // Without the zone, without the day of the year, or without the conversion itself.
    EXPECT_TRUE(usual || utc == At(2008, 7, 1, 11) || utc == At(2008, 7, 1, 12) ||
                utc == ce::SYSTEMTIME{})
        << "failed " << plan.firedCall() << " gave " << ::testing::PrintToString(utc);
  }
}

TEST(FileTimeDiffSeconds, IsSignedAndRoundsTowardsZero) {
  const ce::FILETIME zero{0, 0};
  const ce::FILETIME almostTwo{19'999'999, 0};
  const ce::FILETIME high{0, 1};
  EXPECT_EQ(FileTimeDiffSeconds(zero, almostTwo), 1);
  EXPECT_EQ(FileTimeDiffSeconds(almostTwo, zero), -1);
  EXPECT_EQ(FileTimeDiffSeconds(zero, high), 429);
  EXPECT_EQ(FileTimeDiffSeconds(high, zero), -429);
  EXPECT_EQ(FileTimeDiffSeconds(high, high), 0);
}

TEST(DayOfYear, CountsFromNewYear) {
  EXPECT_EQ(DayOfYear(At(2008, 1, 1, 23, 59, 59, 999)), 0);
  EXPECT_EQ(DayOfYear(At(2008, 12, 31)), 365);
  EXPECT_EQ(DayOfYear(At(2009, 12, 31)), 364);
  EXPECT_EQ(DayOfYear(At(2100, 3, 1)), 59);  // by the calendar, not by every fourth year
}

TEST(SystemTimeToBrokenDown, TakesEveryField) {
  const BrokenDownTime time = SystemTimeToBrokenDown(At(2008, 2, 25, 12, 52, 35, 67));
  EXPECT_EQ(time.year, 108);
  EXPECT_EQ(time.month, 1);
  EXPECT_EQ(time.day, 25);
  EXPECT_EQ(time.dayOfWeek, 1);
  EXPECT_EQ(time.dayOfYear, 55);
  EXPECT_EQ(time.hour, 12);
  EXPECT_EQ(time.minute, 52);
  EXPECT_EQ(time.second, 35);
  EXPECT_EQ(time.isDaylight, 0);
}

}  // namespace
}  // namespace corvane
