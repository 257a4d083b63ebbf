#include "agent/time/zone_rules.h"

#include <algorithm>
#include <array>

namespace corvane {
namespace {

constexpr ce::LONGLONG kMillisecondsPerDay = 86'400'000;
// What moves an end of daylight back into its day: one short of a day, and kept so.
constexpr ce::LONGLONG kDayCorrection = 86'399'999;

// The last day of the year of each month; the first entry stands before January.
using DayTable = std::array<int, 13>;
constexpr DayTable kCommonYear = {-1, 30, 58, 89, 119, 150, 180, 211, 242, 272, 303, 333, 364};
constexpr DayTable kLeapYear = {-1, 30, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

bool IsMonth(int month) {
  return month >= 1 && month <= 12;
}

int TransitionDay(int year, int month, int week, int dayOfWeek) {
  const DayTable& table = (year & 3) == 0 ? kLeapYear : kCommonYear;
  month = std::clamp(month, 1, 12);
  int day = table[month - 1] + 1;
  const int firstWeekday = (year * 365 + ((year - 1) >> 2) + day - 25563) % 7;
  day += dayOfWeek - firstWeekday + (firstWeekday <= dayOfWeek ? week - 1 : week) * 7;
  if (week == 5 && day > table[month]) day -= 7;
  return day;
}

int MillisecondOf(const BrokenDownTime& time) {
  return ((time.hour * 60 + time.minute) * 60 + time.second) * 1000;
}

}  // namespace

ce::LONG BiasSeconds(const ce::TIME_ZONE_INFORMATION& zone) {
  const ce::LONG standard = zone.StandardDate.wMonth != 0 ? zone.StandardBias : 0;
  return (zone.Bias + standard) * 60;
}

ce::LONG DaylightBiasSeconds(const ce::TIME_ZONE_INFORMATION& zone) {
  if (zone.DaylightDate.wMonth == 0 || zone.DaylightBias == 0) return 0;
  return (zone.DaylightBias - zone.StandardBias) * 60;
}

TransitionPoint ComputeTransition(TransitionKind kind, int year, const ce::SYSTEMTIME& rule,
                                  ce::LONG daylightBiasSeconds) {
  ce::LONGLONG seconds = (rule.wHour * 60LL + rule.wMinute) * 60 + rule.wSecond;
  if (kind == kEndOfDaylight) seconds += daylightBiasSeconds;
  ce::LONGLONG millisecond = seconds * 1000 + rule.wMilliseconds;
  if (kind == kEndOfDaylight) {
    if (millisecond < 0) {
      millisecond += kDayCorrection;
    } else if (millisecond >= kMillisecondsPerDay) {
      millisecond -= kDayCorrection;
    }
  }
  return {year, TransitionDay(year, rule.wMonth, rule.wDay, rule.wDayOfWeek),
          static_cast<int>(millisecond)};
}

bool IsDaylightByRules(const ce::TIME_ZONE_INFORMATION& zone, ce::LONG daylightBiasSeconds,
                       const BrokenDownTime& time) {
  const ce::SYSTEMTIME& startRule = zone.DaylightDate;
  const ce::SYSTEMTIME& endRule = zone.StandardDate;
  if (startRule.wYear != 0 || endRule.wYear != 0) return false;
  if (!IsMonth(startRule.wMonth) || !IsMonth(endRule.wMonth)) return false;

  const TransitionPoint start = ComputeTransition(kStartOfDaylight, time.year, startRule, 0);
  const TransitionPoint end =
      ComputeTransition(kEndOfDaylight, time.year, endRule, daylightBiasSeconds);
  const int day = time.dayOfYear;
  if (start.dayOfYear < end.dayOfYear) {
    if (day < start.dayOfYear || day > end.dayOfYear) return false;
    if (day > start.dayOfYear && day < end.dayOfYear) return true;
  } else {
    if (day < end.dayOfYear || day > start.dayOfYear) return true;
    if (day > end.dayOfYear && day < start.dayOfYear) return false;
  }
  if (day == start.dayOfYear) return MillisecondOf(time) >= start.millisecond;
  return MillisecondOf(time) < end.millisecond;
}

}  // namespace corvane
