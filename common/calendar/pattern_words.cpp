#include "common/calendar/pattern_words.h"

#include <fmt/core.h>

#include <string_view>

#include "common/calendar/wall_time.h"

namespace calendar {
namespace {

constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr const char* kInstances[] = {"first", "second", "third", "fourth", "last"};

constexpr int kEveryDay = 127;
constexpr int kWeekdays = 62;
constexpr int kWeekend = 65;

std::string DayNames(int mask, std::string_view separator) {
  std::string names;
  for (int i = 0; i < 7; ++i) {
    if (!(mask & 1 << i)) continue;
    if (!names.empty()) names += separator;
    names += kDays[i];
  }
  return names;
}

// Which of a month's days the instance counts.
std::string CountedDay(int mask) {
  if (mask == kEveryDay) return "day";
  if (mask == kWeekdays) return "weekday";
  if (mask == kWeekend) return "weekend day";
  return DayNames(mask, " or ");
}

std::string Often(const char* adverb, const char* units, int interval) {
  return interval == 1 ? adverb : fmt::format("every {} {}", interval, units);
}

std::string Days(const Pattern& pattern) {
  const int interval = pattern.interval;
  switch (pattern.type) {
    case PatternType::kDaily:
      return Often("daily", "days", interval);
    case PatternType::kWeekly:
      return Often("weekly", "weeks", interval) + " on " + DayNames(pattern.daysOfWeek, ", ");
    case PatternType::kMonthly:
      return fmt::format("{} on day {}", Often("monthly", "months", interval), pattern.dayOfMonth);
    case PatternType::kMonthNth:
      return fmt::format("{} on the {} {}", Often("monthly", "months", interval),
                         kInstances[pattern.instance - 1], CountedDay(pattern.daysOfWeek));
    case PatternType::kYearly:
      return fmt::format("yearly on {} {}", pattern.dayOfMonth, kMonths[pattern.monthOfYear - 1]);
    case PatternType::kYearNth:
      return fmt::format("yearly on the {} {} of {}", kInstances[pattern.instance - 1],
                         CountedDay(pattern.daysOfWeek), kMonths[pattern.monthOfYear - 1]);
  }
  return "recurring";
}

}  // namespace

std::string PatternWords(const Pattern& pattern) {
  if (!IsValid(pattern)) return "recurring";
  std::string words = Days(pattern);
  if (pattern.until) words += " until " + formats::IsoDate(*pattern.until);
  if (pattern.occurrences) words += fmt::format(", {} times", *pattern.occurrences);
  return words;
}

}  // namespace calendar
