#include <algorithm>
#include <bit>

#include "common/calendar/pattern.h"

namespace calendar {
namespace {

using std::chrono::days;
using std::chrono::months;
using std::chrono::weekday;
using std::chrono::year_month;
using std::chrono::year_month_day;

int DaysAWeek(const Pattern& pattern) {
  return std::popcount(static_cast<unsigned>(pattern.daysOfWeek));
}

bool IsOfMask(local_days day, int mask) {
  return (mask >> weekday{day}.c_encoding() & 1) != 0;
}

local_days SundayBy(local_days day) {
  return day - (weekday{day} - std::chrono::Sunday);
}

bool IsOfYear(const Pattern& pattern) {
  return pattern.monthOfYear != 0;
}

// The month of the series' first period.
year_month FirstMonth(const Pattern& pattern, local_days start) {
  const year_month_day date{start};
  if (IsOfYear(pattern)) return date.year() / pattern.monthOfYear;
  return date.year() / date.month();
}

local_days DayInMonth(const Pattern& pattern, year_month month) {
  const local_days first{month / 1};
  const local_days last{month / std::chrono::last};
  if (pattern.dayOfMonth != 0) return std::min(first + days{pattern.dayOfMonth - 1}, last);
  const bool isLast = pattern.instance == 5;
  local_days day = isLast ? last : first;
  for (int left = isLast ? 1 : pattern.instance;; day += days{isLast ? -1 : 1}) {
    if (IsOfMask(day, pattern.daysOfWeek) && --left == 0) return day;
  }
}

}  // namespace

SeriesDays::SeriesDays(const Pattern& pattern, local_days start)
    : pattern_(pattern), start_(std::max(start, kFirstDay)) {
  const local_days last = std::min(pattern.until.value_or(kLastDay), kLastDay);
  first_ = IndexFrom(start_);
  end_ = last < start_ ? first_ : IndexFrom(last + days{1});
  if (pattern.occurrences) end_ = std::min(end_, first_ + *pattern.occurrences);
}

std::int64_t SeriesDays::CountBefore(local_days day) const {
  if (size() == 0 || day <= start_) return 0;
  return std::min(IndexFrom(std::min(day, kLastDay + days{1})), end_) - first_;
}

local_days SeriesDays::DayAt(std::int64_t index) const {
  const int interval = pattern_.interval;
  if (pattern_.type == PatternType::kDaily) return start_ + days{index * interval};
  if (pattern_.type == PatternType::kWeekly) {
    const int each = DaysAWeek(pattern_);
    local_days day = SundayBy(start_) + days{7 * (index / each * interval)};
    for (auto before = index % each;; day += days{1}) {
      if (IsOfMask(day, pattern_.daysOfWeek) && before-- == 0) return day;
    }
  }
  const months later{index * (IsOfYear(pattern_) ? 12 : interval)};
  return DayInMonth(pattern_, FirstMonth(pattern_, start_) + later);
}

std::int64_t SeriesDays::IndexFrom(local_days day) const {
  std::int64_t index = 0;
  if (pattern_.type == PatternType::kDaily) {
    index = (day - start_).count() / pattern_.interval;
  } else if (pattern_.type == PatternType::kWeekly) {
    const auto weeks = (day - SundayBy(start_)).count() / 7;
    index = weeks / pattern_.interval * DaysAWeek(pattern_);
  } else {
    const year_month_day date{day};
    const months passed = date.year() / date.month() - FirstMonth(pattern_, start_);
    index = passed.count() / (IsOfYear(pattern_) ? 12 : pattern_.interval);
  }
  while (DayAt(index) < day) ++index;
  return index;
}

bool IsDayOf(const Pattern& pattern, local_days start, local_days day) {
  return NextDayOf(pattern, start, day) == day;
}

std::optional<local_days> NextDayOf(const Pattern& pattern, local_days start, local_days day) {
  const SeriesDays series(pattern, start);
  const std::int64_t before = series.CountBefore(day);
  return before < series.size() ? std::optional(series[before]) : std::nullopt;
}

std::optional<local_days> LastDayOf(const Pattern& pattern, local_days start) {
  const SeriesDays series(pattern, start);
  const bool hasLast = (pattern.occurrences || pattern.until) && series.size() != 0;
  return hasLast ? std::optional(series[series.size() - 1]) : std::nullopt;
}

std::optional<int> CountDaysOf(const Pattern& pattern, local_days start) {
  if (!pattern.occurrences && !pattern.until) return std::nullopt;
  return static_cast<int>(SeriesDays(pattern, start).size());
}

}  // namespace calendar
