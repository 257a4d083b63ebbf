// When something recurs, as a handheld can say it, and the days on which it then falls.
//
// A day of the month that a month does not have is the last one of that month: the 31st falls on 30
// April, 29 February on the 28th. A week begins on Sunday. Days run from 1900-01-01 to 2999-12-31.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace calendar {

using std::chrono::local_days;

// The numbers are Pocket Outlook's and the store's.
enum class PatternType {
  kDaily = 0,
  kWeekly = 1,    // on the days of the mask
  kMonthly = 2,   // on a day of the month
  kMonthNth = 3,  // on the n-th day of a month that the mask has
  kYearly = 5,
  kYearNth = 6,
};

// Members that a type does not use are as they are here.
struct Pattern {
  PatternType type = PatternType::kDaily;
  int interval = 1;     // 1 to 999; yearly types have 1
  int daysOfWeek = 0;   // 1 to 127: Sunday is 1, Saturday 64
  int dayOfMonth = 0;   // 1 to 31
  int instance = 0;     // 1 to 5; 5 is the last one
  int monthOfYear = 0;  // 1 to 12
  // The end; neither for a series without one, not both.
  std::optional<int> occurrences = {};   // at least 1
  std::optional<local_days> until = {};  // the last day that can be one

  friend bool operator==(const Pattern&, const Pattern&) = default;
};

inline constexpr local_days kFirstDay{std::chrono::year{1900} / 1 / 1};
inline constexpr local_days kLastDay{std::chrono::year{2999} / 12 / 31};
inline constexpr int kMaxInterval = 999;

// Whether every member is within its bounds and unused ones are as in a new Pattern.
bool IsValid(const Pattern& pattern);

// The pattern of a type that a start implies: its weekday, its day of the month and so on.
Pattern PatternFrom(PatternType type, local_days start);

// The days of a series in their order, each known without a walk to it. None is before `start`,
// which need not be one itself. The pattern is valid.
class SeriesDays {
 public:
  SeriesDays(const Pattern& pattern, local_days start);

  // A series without an end goes on to the last day that can be told.
  std::int64_t size() const { return end_ - first_; }
  local_days operator[](std::int64_t n) const { return DayAt(first_ + n); }
  std::int64_t CountBefore(local_days day) const;

 private:
  // Counted from the first day of the week or month that the start lies in.
  local_days DayAt(std::int64_t index) const;
  std::int64_t IndexFrom(
      local_days day) const;  // the first at or after a day, not before the start

  Pattern pattern_;
  local_days start_;
  std::int64_t first_ = 0;
  std::int64_t end_ = 0;
};

bool IsDayOf(const Pattern& pattern, local_days start, local_days day);
// The first one at or after `day`.
std::optional<local_days> NextDayOf(const Pattern& pattern, local_days start, local_days day);
// Nothing for a series without an end, or without a day.
std::optional<local_days> LastDayOf(const Pattern& pattern, local_days start);
// How many days a series that ends has; nothing for one without an end.
std::optional<int> CountDaysOf(const Pattern& pattern, local_days start);

}  // namespace calendar
