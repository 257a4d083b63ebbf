#include "platform/host/system/zone.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <set>

#include "platform/host/system/handheld_clock.h"
#include "platform/host/system/posix_zone.h"

namespace ce::host {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr int kDay = 24 * 3600;
constexpr LONGLONG kTicksPerMinute = 60 * kTicksPerSecond;
// The calendar repeats after this many years, weekdays included.
constexpr int kCycleStart = 2000;
constexpr int kCycle = 400;

// The day of the month/week/weekday form in a year; week 5 is the last.
sys_days DayInYear(int inYear, int month, int week, int weekday) {
  const year_month_day first{year{inYear}, std::chrono::month{static_cast<unsigned>(month)},
                             std::chrono::day{1}};
  const std::chrono::weekday wanted{static_cast<unsigned>(weekday)};
  const sys_days firstSuch = sys_days{first} + (wanted - std::chrono::weekday{sys_days{first}});
  sys_days day = firstSuch + days{7 * (week - 1)};
  if (year_month_day{day}.month() != first.month()) day -= days{7};
  return day;
}

sys_days DayOfRule(const PosixDate& date, int inYear) {
  const sys_days newYear{year{inYear} / 1 / 1};
  switch (date.kind) {
    case PosixDate::Kind::kMonthWeekDay:
      return DayInYear(inYear, date.month, date.week, date.weekday);
    case PosixDate::Kind::kDayNoLeap: {
      const bool afterLeapDay = year{inYear}.is_leap() && date.day > 31 + 28;
      return newYear + days{date.day - 1 + (afterLeapDay ? 1 : 0)};
    }
    case PosixDate::Kind::kDayFromZero:
      break;
  }
  return newYear + days{date.day};
}

struct WeekForm {
  int month = 1;
  int week = 1;
  int weekday = 0;
  LONGLONG daysOff = std::numeric_limits<LONGLONG>::max();  // over the calendar's cycle
};

LONGLONG DaysOff(const WeekForm& form, const std::vector<sys_days>& wanted) {
  LONGLONG off = 0;
  for (const sys_days day : wanted) {
    const int inYear = static_cast<int>(year_month_day{day}.year());
    off += std::abs((day - DayInYear(inYear, form.month, form.week, form.weekday)).count());
  }
  return off;
}

// The form that lies nearest to the rule's days, moved by `shift` days.
WeekForm NearestForm(const PosixDate& date, int shift) {
  std::vector<sys_days> wanted;
  std::set<int> months;
  for (int i = 0; i < kCycle; ++i) {
    wanted.push_back(DayOfRule(date, kCycleStart + i) + days{shift});
    months.insert(static_cast<int>(static_cast<unsigned>(year_month_day{wanted.back()}.month())));
  }
  const bool keepsWeekday = date.kind == PosixDate::Kind::kMonthWeekDay;
  const int shifted = ((date.weekday + shift) % 7 + 7) % 7;
  WeekForm best;
  for (const int month : months) {
    for (int week = 1; week <= 5; ++week) {
      for (int weekday = 0; weekday < 7; ++weekday) {
        if (keepsWeekday && weekday != shifted) continue;
        WeekForm form{month, week, weekday, 0};
        form.daysOff = DaysOff(form, wanted);
        if (form.daysOff < best.daysOff) best = form;
      }
    }
  }
  return best;
}

SYSTEMTIME RuleTime(const WeekForm& form, int seconds, WORD milliseconds) {
  return {0,
          static_cast<WORD>(form.month),
          static_cast<WORD>(form.weekday),
          static_cast<WORD>(form.week),
          static_cast<WORD>(seconds / 3600),
          static_cast<WORD>(seconds / 60 % 60),
          static_cast<WORD>(seconds % 60),
          milliseconds};
}

SYSTEMTIME DeviceDate(const PosixDate& date) {
  const int shift = (date.seconds - (date.seconds < 0 ? kDay - 1 : 0)) / kDay;
  const WeekForm form = NearestForm(date, shift);
  if (form.daysOff != 0 && date.seconds == kDay) {
    const WeekForm dayBefore = NearestForm(date, 0);
    if (dayBefore.daysOff == 0) return RuleTime(dayBefore, kDay - 1, 999);
  }
  return RuleTime(form, date.seconds - shift * kDay, 0);
}

void CopyName(const std::string& name, WCHAR (&out)[32]) {
  for (std::size_t i = 0; i < name.size() && i < 31; ++i) {
    out[i] = static_cast<unsigned char>(name[i]);
  }
}

// On daylight time from the first moment of the year to the last.
bool IsDaylightAllYear(const PosixZone& zone) {
  const PosixDate& start = *zone.daylightStart;
  const PosixDate& end = *zone.daylightEnd;
  const bool fromNewYear = (start.kind == PosixDate::Kind::kDayFromZero && start.day == 0) ||
                           (start.kind == PosixDate::Kind::kDayNoLeap && start.day == 1);
  const bool toNewYear = end.kind == PosixDate::Kind::kDayNoLeap && end.day == 365 &&
                         end.seconds >= kDay + zone.standardWest - zone.daylightWest;
  return fromNewYear && start.seconds <= 0 && toNewYear;
}

TIME_ZONE_INFORMATION WithoutRule(const std::string& name, int west) {
  TIME_ZONE_INFORMATION zone{};
  zone.Bias = west / 60;
  CopyName(name, zone.StandardName);
  CopyName(name, zone.DaylightName);
  return zone;
}

// The ticks of a rule's wall-clock time in a year.
LONGLONG RuleTicks(const SYSTEMTIME& rule, int inYear) {
  const year_month_day day{DayInYear(inYear, rule.wMonth, rule.wDay, rule.wDayOfWeek)};
  const SYSTEMTIME time{static_cast<WORD>(inYear),
                        rule.wMonth,
                        0,
                        static_cast<WORD>(static_cast<unsigned>(day.day())),
                        rule.wHour,
                        rule.wMinute,
                        rule.wSecond,
                        rule.wMilliseconds};
  LONGLONG ticks = 0;
  TicksFromSystemTime(time, ticks);
  return ticks;
}

}  // namespace

std::optional<TIME_ZONE_INFORMATION> ZoneFromPosixRule(std::string_view rule) {
  const std::optional<PosixZone> posix = ParsePosixZone(rule);
  if (!posix) return std::nullopt;
  if (!posix->daylightStart || posix->daylightWest == posix->standardWest) {
    return WithoutRule(posix->standardName, posix->standardWest);
  }
  if (IsDaylightAllYear(*posix)) return WithoutRule(posix->daylightName, posix->daylightWest);

  const bool reversed = posix->daylightWest > posix->standardWest;
  const int standardWest = reversed ? posix->daylightWest : posix->standardWest;
  const int daylightWest = reversed ? posix->standardWest : posix->daylightWest;
  TIME_ZONE_INFORMATION zone{};
  zone.Bias = standardWest / 60;
  zone.DaylightBias = (daylightWest - standardWest) / 60;
  CopyName(reversed ? posix->daylightName : posix->standardName, zone.StandardName);
  CopyName(reversed ? posix->standardName : posix->daylightName, zone.DaylightName);
  zone.StandardDate = DeviceDate(reversed ? *posix->daylightStart : *posix->daylightEnd);
  zone.DaylightDate = DeviceDate(reversed ? *posix->daylightEnd : *posix->daylightStart);
  return zone;
}

bool IsDaylightAt(const TIME_ZONE_INFORMATION& zone, LONGLONG utc) {
  if (zone.StandardDate.wMonth == 0 || zone.DaylightDate.wMonth == 0) return false;
  const LONGLONG standard = utc - (zone.Bias + zone.StandardBias) * kTicksPerMinute;
  const int inYear = SystemTimeFromTicks(standard < 0 ? 0 : standard).wYear;
  // Both in standard time: the end is given on the daylight clock.
  const LONGLONG start = RuleTicks(zone.DaylightDate, inYear);
  const LONGLONG end = RuleTicks(zone.StandardDate, inYear) +
                       (zone.DaylightBias - zone.StandardBias) * kTicksPerMinute;
  if (start < end) return standard >= start && standard < end;
  return standard < end || standard >= start;
}

LONGLONG LocalFromUtc(const TIME_ZONE_INFORMATION& zone, LONGLONG utc) {
  const LONG bias = zone.Bias + (IsDaylightAt(zone, utc) ? zone.DaylightBias : zone.StandardBias);
  const LONGLONG local = utc - bias * kTicksPerMinute;
  return local < 0 ? 0 : local;
}

}  // namespace ce::host
