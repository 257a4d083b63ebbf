#include "common/calendar/rule.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "common/calendar/rule_parts.h"

namespace calendar {
namespace {

using std::chrono::year_month_day;

constexpr int kFebruary = 2;
constexpr std::array kLastOfMonth = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

std::string Part(std::string_view name, int value) {
  return std::string(name) + std::to_string(value);
}

std::string Frequency(const char* name, int interval) {
  std::string rule = std::string("FREQ=") + name;
  if (interval != 1) rule += Part(";INTERVAL=", interval);
  return rule;
}

// The day, or the last one of a month that lacks it.
std::string DayOfMonth(int day) {
  if (day == 31) return ";BYMONTHDAY=-1";
  if (day <= 28) return Part(";BYMONTHDAY=", day);
  return std::string(";BYMONTHDAY=28,29") + (day == 30 ? ",30" : "") + ";BYSETPOS=-1";
}

std::string DayOfYear(int month, int day) {
  const int last = kLastOfMonth[static_cast<std::size_t>(month) - 1];
  const bool isLeapDay = month == kFebruary && day > last;
  return Part(";BYMONTH=", month) + Part(";BYMONTHDAY=", isLeapDay ? -1 : std::min(day, last));
}

std::string NthDay(int mask, int instance) {
  const int position = instance == 5 ? -1 : instance;
  const bool isOneDay = (mask & (mask - 1)) == 0;
  if (isOneDay) return ";BYDAY=" + std::to_string(position) + WeekdayNames(mask);
  return ";BYDAY=" + WeekdayNames(mask) + Part(";BYSETPOS=", position);
}

std::string EndlessRuleOf(const Pattern& pattern) {
  switch (pattern.type) {
    case PatternType::kDaily:
      return Frequency("DAILY", pattern.interval);
    case PatternType::kWeekly:
      return Frequency("WEEKLY", pattern.interval) + ";BYDAY=" + WeekdayNames(pattern.daysOfWeek) +
             ";WKST=SU";
    case PatternType::kMonthly:
      return Frequency("MONTHLY", pattern.interval) + DayOfMonth(pattern.dayOfMonth);
    case PatternType::kMonthNth:
      return Frequency("MONTHLY", pattern.interval) + NthDay(pattern.daysOfWeek, pattern.instance);
    case PatternType::kYearly:
      return Frequency("YEARLY", 1) + DayOfYear(pattern.monthOfYear, pattern.dayOfMonth);
    case PatternType::kYearNth:
      return Frequency("YEARLY", 1) + Part(";BYMONTH=", pattern.monthOfYear) +
             NthDay(pattern.daysOfWeek, pattern.instance);
  }
  return {};
}

std::string Until(local_days day) {
  const year_month_day date{std::clamp(day, kFirstDay, kLastDay)};
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), ";UNTIL=%04d%02u%02u", static_cast<int>(date.year()),
                unsigned{date.month()}, unsigned{date.day()});
  return text.data();
}

}  // namespace

std::string RuleOf(const Pattern& pattern) {
  std::string rule = EndlessRuleOf(pattern);
  if (pattern.occurrences) rule += Part(";COUNT=", *pattern.occurrences);
  if (pattern.until) rule += Until(*pattern.until);
  return rule;
}

}  // namespace calendar
