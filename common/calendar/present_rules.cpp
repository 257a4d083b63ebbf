#include "common/calendar/present_rules.h"

#include <chrono>
#include <cstdlib>
#include <limits>
#include <set>
#include <vector>

namespace calendar {
namespace {

using std::chrono::days;
using std::chrono::local_days;
using std::chrono::year_month_day;

constexpr int kDaySeconds = 24 * 3600;
// The calendar repeats after this many years, weekdays included.
constexpr int kCycleStart = 2000;
constexpr int kYearsInCycle = 400;

struct WeekForm {
  int month = 1;
  int week = 1;
  int weekday = 0;
  long long daysOff = std::numeric_limits<long long>::max();  // over the calendar's cycle
};

long long DaysOff(const WeekForm& form, const std::vector<local_days>& wanted) {
  long long off = 0;
  for (const local_days day : wanted) {
    const int inYear = static_cast<int>(year_month_day{day}.year());
    off += std::abs((day - WeekdayOfMonth(inYear, form.month, form.week, form.weekday)).count());
  }
  return off;
}

// The form that lies nearest to the rule's days, moved by `shift` days.
WeekForm NearestForm(const PosixDate& date, int shift) {
  std::vector<local_days> wanted;
  std::set<int> found;
  for (int i = 0; i < kYearsInCycle; ++i) {
    wanted.push_back(DayInYear(date, kCycleStart + i) + days{shift});
    found.insert(static_cast<int>(static_cast<unsigned>(year_month_day{wanted.back()}.month())));
  }
  const bool keepsWeekday = date.kind == PosixDate::Kind::kMonthWeekDay;
  const int shifted = ((date.weekday + shift) % 7 + 7) % 7;
  WeekForm best;
  for (const int month : found) {
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

YearlyChange ChangeOf(const WeekForm& form, int millisecond) {
  return {form.month, form.week, form.weekday, millisecond};
}

YearlyChange PresentChange(const PosixDate& date) {
  const int shift = (date.seconds - (date.seconds < 0 ? kDaySeconds - 1 : 0)) / kDaySeconds;
  const WeekForm form = NearestForm(date, shift);
  if (form.daysOff != 0 && date.seconds == kDaySeconds) {
    const WeekForm dayBefore = NearestForm(date, 0);
    if (dayBefore.daysOff == 0) return ChangeOf(dayBefore, kDaySeconds * 1000 - 1);
  }
  return ChangeOf(form, (date.seconds - shift * kDaySeconds) * 1000);
}

// On daylight time from the first moment of the year to the last.
bool IsDaylightAllYear(const PosixZone& zone) {
  const PosixDate& start = *zone.daylightStart;
  const PosixDate& end = *zone.daylightEnd;
  const bool fromNewYear = (start.kind == PosixDate::Kind::kDayFromZero && start.day == 0) ||
                           (start.kind == PosixDate::Kind::kDayNoLeap && start.day == 1);
  const bool toNewYear = end.kind == PosixDate::Kind::kDayNoLeap && end.day == 365 &&
                         end.seconds >= kDaySeconds + zone.standardWest - zone.daylightWest;
  return fromNewYear && start.seconds <= 0 && toNewYear;
}

PresentRules WithoutChange(const std::string& name, int west) {
  PresentRules rules;
  rules.bias = west / 60;
  rules.standardName = name;
  rules.daylightName = name;
  return rules;
}

}  // namespace

PresentRules PresentRulesOf(const PosixZone& posix) {
  if (!posix.daylightStart || posix.daylightWest == posix.standardWest) {
    return WithoutChange(posix.standardName, posix.standardWest);
  }
  if (IsDaylightAllYear(posix)) return WithoutChange(posix.daylightName, posix.daylightWest);

  const bool reversed = posix.daylightWest > posix.standardWest;
  const int standardWest = reversed ? posix.daylightWest : posix.standardWest;
  const int daylightWest = reversed ? posix.standardWest : posix.daylightWest;
  PresentRules rules;
  rules.bias = standardWest / 60;
  rules.daylightBias = (daylightWest - standardWest) / 60;
  rules.standardName = reversed ? posix.daylightName : posix.standardName;
  rules.daylightName = reversed ? posix.standardName : posix.daylightName;
  rules.toStandard = PresentChange(reversed ? *posix.daylightStart : *posix.daylightEnd);
  rules.toDaylight = PresentChange(reversed ? *posix.daylightEnd : *posix.daylightStart);
  return rules;
}

}  // namespace calendar
