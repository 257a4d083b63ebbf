#include "platform/clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "handheld/base/fault.h"
#include "handheld/clock/handheld_clock.h"
#include "platform/status.h"
#include "tests/support/test_handheld.h"

namespace ce {

static bool operator==(const SYSTEMTIME& a, const SYSTEMTIME& b) {
  return a.wYear == b.wYear && a.wMonth == b.wMonth && a.wDayOfWeek == b.wDayOfWeek &&
         a.wDay == b.wDay && a.wHour == b.wHour && a.wMinute == b.wMinute &&
         a.wSecond == b.wSecond && a.wMilliseconds == b.wMilliseconds;
}
static void PrintTo(const SYSTEMTIME& time, std::ostream* out) {
  *out << time.wYear << '-' << time.wMonth << '-' << time.wDay << " (" << time.wDayOfWeek << ") "
       << time.wHour << ':' << time.wMinute << ':' << time.wSecond << '.' << time.wMilliseconds;
}

}  // namespace ce

namespace corvane {
namespace {

using namespace ce;

constexpr SYSTEMTIME kWinter{2008, 2, 5, 15, 13, 5, 9, 250};  // a Friday
constexpr SYSTEMTIME kSummer{2008, 7, 2, 15, 13, 5, 9, 250};  // a Tuesday

SYSTEMTIME Utc() {
  SYSTEMTIME time{};
  GetSystemTime(&time);
  return time;
}
SYSTEMTIME Local() {
  SYSTEMTIME time{};
  GetLocalTime(&time);
  return time;
}
LONGLONG TicksOf(const SYSTEMTIME& time) {
  LONGLONG ticks = 0;
  EXPECT_TRUE(host::TicksFromSystemTime(time, ticks));
  return ticks;
}

class ClockCall : public testing::HandheldTest {};
using GetSystemTimeCall = ClockCall;
using SetSystemTimeCall = ClockCall;
using GetLocalTimeCall = ClockCall;
using GetTimeZoneInformationCall = ClockCall;

TEST_F(GetSystemTimeCall, IsTheHostsTimeOnANewHandheld) {
  const auto seconds = [](const SYSTEMTIME& time) { return TicksOf(time) / 10'000'000; };
  const auto host = [] {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
               .count() +
           11'644'473'600;
  };
  const auto before = host();
  const LONGLONG now = seconds(Utc());
  EXPECT_GE(now, before);
  EXPECT_LE(now, host());
}

TEST_F(GetSystemTimeCall, StandsStillWhenFrozen) {
  SYSTEMTIME anyWeekday = kWinter;
  anyWeekday.wDayOfWeek = 0;
  handheld_.FreezeClock(anyWeekday);
  EXPECT_EQ(Utc(), kWinter);
  EXPECT_EQ(Utc(), kWinter);
}

TEST_F(SetSystemTimeCall, MovesTheHandheldsClockAndNotTheHosts) {
  const auto host = std::chrono::system_clock::now();
  ASSERT_TRUE(SetSystemTime(&kWinter));
  const LONGLONG gone = TicksOf(Utc()) - TicksOf(kWinter);
  EXPECT_GE(gone, 0);
  const auto hostGone = std::chrono::system_clock::now() - host;
  EXPECT_LE(gone, std::chrono::duration_cast<std::chrono::nanoseconds>(hostGone).count() / 100 +
                      host::kTicksPerMillisecond);
}

TEST_F(SetSystemTimeCall, StaysWhenTheHandheldIsOpenedAgain) {
  for (const SYSTEMTIME& time :
       {SYSTEMTIME{1999, 12, 0, 31, 23, 59, 0, 0}, SYSTEMTIME{2099, 1, 0, 1, 0, 0, 0, 0},
        SYSTEMTIME{1601, 1, 0, 1, 0, 0, 0, 0}}) {
    ASSERT_TRUE(SetSystemTime(&time));
    handheld_.Reopen();
    EXPECT_EQ(Utc().wYear, time.wYear);
    EXPECT_EQ(Utc().wMonth, time.wMonth);
    EXPECT_EQ(Utc().wDay, time.wDay);
  }
}

TEST_F(SetSystemTimeCall, LeavesAFrozenClockStandingAtTheNewTime) {
  handheld_.FreezeClock(kWinter);
  ASSERT_TRUE(SetSystemTime(&kSummer));
  EXPECT_EQ(Utc(), kSummer);
  EXPECT_EQ(Utc(), kSummer);
}

TEST_F(SetSystemTimeCall, RefusesAnImpossibleTime) {
  handheld_.FreezeClock(kWinter);
  for (const SYSTEMTIME& time :
       {SYSTEMTIME{2007, 2, 0, 29, 0, 0, 0, 0}, SYSTEMTIME{2008, 13, 0, 1, 0, 0, 0, 0},
        SYSTEMTIME{2008, 1, 0, 1, 24, 0, 0, 0}, SYSTEMTIME{1600, 1, 0, 1, 0, 0, 0, 0}}) {
    EXPECT_FALSE(SetSystemTime(&time));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  }
  EXPECT_FALSE(SetSystemTime(nullptr));
  EXPECT_EQ(Utc(), kWinter);
}

TEST_F(SetSystemTimeCall, ChangesNothingWhenItCannotBeStored) {
  handheld_.FreezeClock(kWinter);
  const auto plan = host::FaultPlan::FailCalls("ReplaceFile", ERROR_DISK_FULL);
  EXPECT_FALSE(SetSystemTime(&kSummer));
  EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
  EXPECT_EQ(Utc(), kWinter);
}

TEST_F(SetSystemTimeCall, IgnoresADamagedOffset) {
  for (const char16_t* offset :
       {u"", u"soon", u"12x", u"99999999999999999999", u"9223372036854775807"}) {
    handheld_->Set(host::setting::kClockOffset, offset);
    handheld_.Reopen();
    EXPECT_GT(Utc().wYear, 2020);
    EXPECT_LT(Utc().wYear, 3000);
  }
}

TEST_F(GetLocalTimeCall, FollowsTheZoneAndItsDaylightTime) {
  handheld_.SetZone("Europe/Berlin");
  handheld_.FreezeClock(kWinter);
  EXPECT_EQ(Local().wHour, 14);
  handheld_.FreezeClock(kSummer);
  EXPECT_EQ(Local().wHour, 15);
  handheld_.SetZone("America/New_York");
  EXPECT_EQ(Local().wHour, 9);
  handheld_.SetZone("Asia/Kolkata");
  EXPECT_EQ(Local(), (SYSTEMTIME{2008, 7, 2, 15, 18, 35, 9, 250}));
  handheld_.SetZone("Australia/Sydney");
  EXPECT_EQ(Local().wHour, 23) << "winter there";
  handheld_.FreezeClock(kWinter);
  EXPECT_EQ(Local(), (SYSTEMTIME{2008, 2, 6, 16, 0, 5, 9, 250}));
}

TEST_F(GetLocalTimeCall, ChangesAtTheVerySecond) {
  handheld_.SetZone("Europe/Berlin");
  handheld_.FreezeClock({2008, 3, 0, 30, 0, 59, 59, 999});
  EXPECT_EQ(Local(), (SYSTEMTIME{2008, 3, 0, 30, 1, 59, 59, 999}));
  handheld_.FreezeClock({2008, 3, 0, 30, 1, 0, 0, 0});
  EXPECT_EQ(Local(), (SYSTEMTIME{2008, 3, 0, 30, 3, 0, 0, 0}));
  handheld_.FreezeClock({2008, 10, 0, 26, 0, 59, 59, 999});
  EXPECT_EQ(Local(), (SYSTEMTIME{2008, 10, 0, 26, 2, 59, 59, 999}));
  handheld_.FreezeClock({2008, 10, 0, 26, 1, 0, 0, 0});
  EXPECT_EQ(Local(), (SYSTEMTIME{2008, 10, 0, 26, 2, 0, 0, 0}));
}

TEST_F(GetLocalTimeCall, IsUtcWhenTheZoneCannotBeRead) {
  handheld_.SetZone("Atlantis/Capital");
  handheld_.FreezeClock(kSummer);
  EXPECT_EQ(Local(), kSummer);
}

TEST_F(GetTimeZoneInformationCall, TellsTheSeason) {
  TIME_ZONE_INFORMATION zone{};
  handheld_.SetZone("Europe/Berlin");
  handheld_.FreezeClock(kWinter);
  EXPECT_EQ(GetTimeZoneInformation(&zone), TIME_ZONE_ID_STANDARD);
  handheld_.FreezeClock(kSummer);
  EXPECT_EQ(GetTimeZoneInformation(&zone), TIME_ZONE_ID_DAYLIGHT);
  EXPECT_EQ(zone.Bias, -60);
  EXPECT_EQ(zone.DaylightBias, -60);
  EXPECT_EQ(std::u16string(zone.StandardName), u"CET");
  handheld_.SetZone("Asia/Tokyo");
  EXPECT_EQ(GetTimeZoneInformation(&zone), TIME_ZONE_ID_UNKNOWN);
  EXPECT_EQ(zone.Bias, -540);
}

TEST_F(GetTimeZoneInformationCall, IsInvalidWhenTheZoneCannotBeRead) {
  for (const char* name : {"Atlantis/Capital", "../../../etc/passwd", "/etc/localtime", ""}) {
    handheld_.SetZone(name);
    TIME_ZONE_INFORMATION zone{};
    EXPECT_EQ(GetTimeZoneInformation(&zone), TIME_ZONE_ID_INVALID) << name;
  }
  handheld_.SetZone("UTC");
  EXPECT_EQ(GetTimeZoneInformation(nullptr), TIME_ZONE_ID_INVALID);
}

TEST_F(ClockCall, HandsOnItsFaults) {
  handheld_.FreezeClock(kWinter);
  SYSTEMTIME time{};
  FILETIME ticks{};
  LONGLONG count = 0;
  TIME_ZONE_INFORMATION zone{};
  const auto fails = [](const char* call, auto&& attempt) {
    const auto plan = host::FaultPlan::FailCalls(call, ERROR_READ_FAULT);
    SetLastError(ERROR_SUCCESS);
    attempt();
    EXPECT_TRUE(plan.fired()) << call;
    EXPECT_EQ(GetLastError(), ERROR_READ_FAULT) << call;
  };
  fails("GetSystemTime", [&] { GetSystemTime(&time); });
  EXPECT_EQ(time, SYSTEMTIME{});
  fails("GetLocalTime", [&] { GetLocalTime(&time); });
  EXPECT_EQ(time, SYSTEMTIME{});
  fails("SetSystemTime", [&] { EXPECT_FALSE(SetSystemTime(&kSummer)); });
  EXPECT_EQ(Utc(), kWinter);
  fails("GetTimeZoneInformation",
        [&] { EXPECT_EQ(GetTimeZoneInformation(&zone), TIME_ZONE_ID_INVALID); });
  fails("SystemTimeToFileTime", [&] { EXPECT_FALSE(SystemTimeToFileTime(&kWinter, &ticks)); });
  fails("FileTimeToSystemTime", [&] { EXPECT_FALSE(FileTimeToSystemTime(&ticks, &time)); });
  fails("QueryPerformanceCounter", [&] { EXPECT_FALSE(QueryPerformanceCounter(&count)); });
  fails("QueryPerformanceFrequency", [&] { EXPECT_FALSE(QueryPerformanceFrequency(&count)); });
}

TEST(ClockCallWithoutAHandheld, FailsCleanly) {
  SYSTEMTIME time = kWinter;
  GetSystemTime(&time);
  EXPECT_EQ(time, SYSTEMTIME{});
  EXPECT_EQ(GetLastError(), ERROR_NOT_READY);
  time = kWinter;
  GetLocalTime(&time);
  EXPECT_EQ(time, SYSTEMTIME{});
  EXPECT_FALSE(SetSystemTime(&kWinter));
  TIME_ZONE_INFORMATION zone{};
  EXPECT_EQ(GetTimeZoneInformation(&zone), TIME_ZONE_ID_INVALID);
}

TEST(SystemTimeToFileTimeCall, CountsFrom1601) {
  FILETIME ticks{1, 1};
  const SYSTEMTIME first{1601, 1, 6, 1, 0, 0, 0, 0};
  EXPECT_TRUE(SystemTimeToFileTime(&first, &ticks));
  EXPECT_EQ(ticks.dwLowDateTime, 0u);
  EXPECT_EQ(ticks.dwHighDateTime, 0u);
  const SYSTEMTIME unixEpoch{1970, 1, 0, 1, 0, 0, 0, 0};
  EXPECT_TRUE(SystemTimeToFileTime(&unixEpoch, &ticks));
  EXPECT_EQ(ticks.dwHighDateTime, 0x019DB1DEu);
  EXPECT_EQ(ticks.dwLowDateTime, 0xD53E8000u);
}

TEST(SystemTimeToFileTimeCall, RefusesWhatNoCalendarHas) {
  FILETIME ticks{};
  for (const SYSTEMTIME& time :
       {SYSTEMTIME{1600, 12, 0, 31, 0, 0, 0, 0}, SYSTEMTIME{30828, 1, 0, 1, 0, 0, 0, 0},
        SYSTEMTIME{2008, 0, 0, 1, 0, 0, 0, 0}, SYSTEMTIME{2008, 1, 0, 0, 0, 0, 0, 0},
        SYSTEMTIME{1900, 2, 0, 29, 0, 0, 0, 0}, SYSTEMTIME{2008, 4, 0, 31, 0, 0, 0, 0},
        SYSTEMTIME{2008, 1, 0, 1, 24, 0, 0, 0}, SYSTEMTIME{2008, 1, 0, 1, 0, 60, 0, 0},
        SYSTEMTIME{2008, 1, 0, 1, 0, 0, 60, 0}, SYSTEMTIME{2008, 1, 0, 1, 0, 0, 0, 1000}}) {
    EXPECT_FALSE(SystemTimeToFileTime(&time, &ticks)) << ::testing::PrintToString(time);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  }
  EXPECT_FALSE(SystemTimeToFileTime(nullptr, &ticks));
  EXPECT_FALSE(SystemTimeToFileTime(&kWinter, nullptr));
}

TEST(FileTimeToSystemTimeCall, SetsTheDayOfTheWeek) {
  for (SYSTEMTIME time : {kWinter, kSummer, SYSTEMTIME{1601, 1, 1, 1, 0, 0, 0, 0},
                          SYSTEMTIME{2000, 2, 2, 29, 23, 59, 59, 999}}) {
    const SYSTEMTIME expected = time;
    time.wDayOfWeek = 99;
    FILETIME ticks{};
    SYSTEMTIME back{};
    ASSERT_TRUE(SystemTimeToFileTime(&time, &ticks));
    ASSERT_TRUE(FileTimeToSystemTime(&ticks, &back));
    EXPECT_EQ(back, expected);
  }
}

TEST(FileTimeToSystemTimeCall, RefusesWhatLiesBehindTheLastYear) {
  SYSTEMTIME time{30827, 12, 0, 31, 23, 59, 59, 999};
  FILETIME ticks{};
  ASSERT_TRUE(SystemTimeToFileTime(&time, &ticks));
  EXPECT_TRUE(FileTimeToSystemTime(&ticks, &time));
  for (const FILETIME& beyond : {FILETIME{0xFFFFFFFF, 0x7FFFFFFF}, FILETIME{0, 0x80000000}}) {
    EXPECT_FALSE(FileTimeToSystemTime(&beyond, &time));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  }
}

TEST(QueryPerformanceCounterCall, NeverGoesBack) {
  LONGLONG frequency = 0;
  LONGLONG first = 0;
  LONGLONG second = 0;
  EXPECT_TRUE(QueryPerformanceFrequency(&frequency));
  EXPECT_GT(frequency, 0);
  EXPECT_TRUE(QueryPerformanceCounter(&first));
  EXPECT_TRUE(QueryPerformanceCounter(&second));
  EXPECT_GE(second, first);
  EXPECT_FALSE(QueryPerformanceCounter(nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

}  // namespace
}  // namespace corvane
