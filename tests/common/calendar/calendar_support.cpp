#include "tests/common/calendar/calendar_support.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <sstream>
#include <string>

namespace calendar {

using std::chrono::days;
using std::chrono::weekday;
using std::chrono::year_month_day;
using std::chrono::year_month_day_last;

void PrintTo(const Pattern& pattern, std::ostream* out) {
  *out << "type " << static_cast<int>(pattern.type) << " interval " << pattern.interval << " days "
       << pattern.daysOfWeek << " day " << pattern.dayOfMonth << " instance " << pattern.instance
       << " month " << pattern.monthOfYear;
  if (pattern.occurrences) *out << " occurrences " << *pattern.occurrences;
  if (pattern.until) *out << " until " << testing::Text({*pattern.until});
}

std::ostream& operator<<(std::ostream& out, const Pattern& pattern) {
  PrintTo(pattern, &out);
  return out;
}

namespace testing {
namespace {

int DayOf(local_days day) {
  return static_cast<int>(unsigned{year_month_day{day}.day()});
}

int MonthOf(local_days day) {
  return static_cast<int>(unsigned{year_month_day{day}.month()});
}

int YearOf(local_days day) {
  return static_cast<int>(year_month_day{day}.year());
}

int LastDayOfMonth(local_days day) {
  const year_month_day date{day};
  const year_month_day_last last{date.year(), std::chrono::month_day_last{date.month()}};
  return static_cast<int>(unsigned{last.day()});
}

bool IsInMask(local_days day, int mask) {
  return (mask >> weekday{day}.c_encoding() & 1) != 0;
}

bool IsNth(const Pattern& pattern, local_days day) {
  if (!IsInMask(day, pattern.daysOfWeek)) return false;
  int before = 0;
  int after = 0;
  const int last = LastDayOfMonth(day);
  for (int i = 1; i <= last; ++i) {
    const int away = i - DayOf(day);
    if (away == 0 || !IsInMask(day + days{away}, pattern.daysOfWeek)) continue;
    ++(away < 0 ? before : after);
  }
  return pattern.instance == 5 ? after == 0 : before == pattern.instance - 1;
}

bool IsDayOfMonth(const Pattern& pattern, local_days day) {
  return DayOf(day) == std::min(pattern.dayOfMonth, LastDayOfMonth(day));
}

}  // namespace

local_days Day(int year, int month, int day) {
  return local_days{std::chrono::year{year} / month / day};
}

std::string Text(const std::vector<local_days>& days) {
  std::string all;
  for (const local_days day : days) {
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", YearOf(day), MonthOf(day), DayOf(day));
    if (!all.empty()) all += ' ';
    all += text;
  }
  return all;
}

Pattern PatternOf(const std::string& text) {
  const std::map<std::string, PatternType> types = {
      {"daily", PatternType::kDaily},     {"weekly", PatternType::kWeekly},
      {"monthly", PatternType::kMonthly}, {"month-nth", PatternType::kMonthNth},
      {"yearly", PatternType::kYearly},   {"year-nth", PatternType::kYearNth},
  };
  const std::map<std::string, int Pattern::*> members = {
      {"interval", &Pattern::interval}, {"days", &Pattern::daysOfWeek},
      {"day", &Pattern::dayOfMonth},    {"instance", &Pattern::instance},
      {"month", &Pattern::monthOfYear},
  };
  std::istringstream words(text);
  std::string word;
  words >> word;
  Pattern pattern{.type = types.at(word)};
  while (words >> word) {
    const std::size_t equals = word.find('=');
    pattern.*members.at(word.substr(0, equals)) = std::stoi(word.substr(equals + 1));
  }
  return pattern;
}

rc::Gen<Pattern> AnyEndlessPattern() {
  return rc::gen::map(
      rc::gen::tuple(
          rc::gen::element(PatternType::kDaily, PatternType::kWeekly, PatternType::kMonthly,
                           PatternType::kMonthNth, PatternType::kYearly, PatternType::kYearNth),
          rc::gen::oneOf(rc::gen::inRange(1, 30), rc::gen::inRange(1, kMaxInterval + 1)),
          rc::gen::oneOf(rc::gen::inRange(1, 128), rc::gen::element(1, 2, 32, 64)),
          rc::gen::oneOf(rc::gen::inRange(1, 32), rc::gen::inRange(28, 32)), rc::gen::inRange(1, 6),
          rc::gen::inRange(1, 13)),
      [](const std::tuple<PatternType, int, int, int, int, int>& any) {
        const auto& [type, interval, mask, dayOfMonth, instance, month] = any;
        Pattern pattern = PatternFrom(type, kFirstDay);
        if (pattern.monthOfYear == 0) pattern.interval = interval;
        if (pattern.daysOfWeek != 0) pattern.daysOfWeek = mask;
        if (pattern.dayOfMonth != 0) pattern.dayOfMonth = dayOfMonth;
        if (pattern.instance != 0) pattern.instance = instance;
        if (pattern.monthOfYear != 0) pattern.monthOfYear = month;
        return pattern;
      });
}

rc::Gen<local_days> AnyDay(int firstYear, int lastYear) {
  const auto number = [](local_days day) { return day.time_since_epoch().count(); };
  return rc::gen::map(
      rc::gen::inRange(number(Day(firstYear, 1, 1)), number(Day(lastYear, 12, 31)) + 1),
      [](auto count) { return local_days{days{count}}; });
}

bool FallsOn(const Pattern& pattern, local_days start, local_days day) {
  const auto months = (YearOf(day) - YearOf(start)) * 12 + MonthOf(day) - MonthOf(start);
  const auto sunday = [](local_days of) { return of - (weekday{of} - std::chrono::Sunday); };
  switch (pattern.type) {
    case PatternType::kDaily:
      return (day - start).count() % pattern.interval == 0;
    case PatternType::kWeekly:
      return IsInMask(day, pattern.daysOfWeek) &&
             (sunday(day) - sunday(start)).count() / 7 % pattern.interval == 0;
    case PatternType::kMonthly:
      return months % pattern.interval == 0 && IsDayOfMonth(pattern, day);
    case PatternType::kMonthNth:
      return months % pattern.interval == 0 && IsNth(pattern, day);
    case PatternType::kYearly:
      return MonthOf(day) == pattern.monthOfYear && IsDayOfMonth(pattern, day);
    case PatternType::kYearNth:
      return MonthOf(day) == pattern.monthOfYear && IsNth(pattern, day);
  }
  return false;
}

std::vector<local_days> CountedDays(const Pattern& pattern, local_days start, local_days last,
                                    std::size_t most) {
  std::vector<local_days> found;
  last = std::min(last, pattern.until.value_or(last));
  if (pattern.occurrences) most = std::min(most, static_cast<std::size_t>(*pattern.occurrences));
  for (local_days day = start; day <= last && found.size() < most; day += days{1}) {
    if (FallsOn(pattern, start, day)) found.push_back(day);
  }
  return found;
}

std::vector<local_days> ToldDays(const Pattern& pattern, local_days start, std::size_t most) {
  const SeriesDays series(pattern, start);
  const std::int64_t count = std::min(series.size(), static_cast<std::int64_t>(most));
  std::vector<local_days> told;
  for (std::int64_t n = 0; n < count; ++n) told.push_back(series[n]);
  return told;
}

}  // namespace testing
}  // namespace calendar
