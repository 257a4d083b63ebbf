#include "common/calendar/pattern.h"

namespace calendar {
namespace {

using std::chrono::year_month_day;

bool InRange(int value, int first, int last) {
  return value >= first && value <= last;
}

// Which members a type has, beside the interval.
struct Members {
  bool interval;  // other than 1
  bool daysOfWeek;
  bool dayOfMonth;
  bool instance;
  bool monthOfYear;
};

std::optional<Members> MembersOf(PatternType type) {
  switch (type) {
    case PatternType::kDaily:
      return Members{true, false, false, false, false};
    case PatternType::kWeekly:
      return Members{true, true, false, false, false};
    case PatternType::kMonthly:
      return Members{true, false, true, false, false};
    case PatternType::kMonthNth:
      return Members{true, true, false, true, false};
    case PatternType::kYearly:
      return Members{false, false, true, false, true};
    case PatternType::kYearNth:
      return Members{false, true, false, true, true};
  }
  return std::nullopt;
}

bool IsMember(bool has, int value, int last) {
  return has ? InRange(value, 1, last) : value == 0;
}

}  // namespace

bool IsValid(const Pattern& pattern) {
  const std::optional<Members> members = MembersOf(pattern.type);
  if (!members) return false;
  if (!InRange(pattern.interval, 1, members->interval ? kMaxInterval : 1)) return false;
  if (pattern.occurrences && (pattern.until || *pattern.occurrences < 1)) return false;
  return IsMember(members->daysOfWeek, pattern.daysOfWeek, 127) &&
         IsMember(members->dayOfMonth, pattern.dayOfMonth, 31) &&
         IsMember(members->instance, pattern.instance, 5) &&
         IsMember(members->monthOfYear, pattern.monthOfYear, 12);
}

Pattern PatternFrom(PatternType type, local_days start) {
  Pattern pattern;
  pattern.type = type;
  const std::optional<Members> members = MembersOf(type);
  if (!members) return pattern;
  const year_month_day date{start};
  const auto day = static_cast<int>(static_cast<unsigned>(date.day()));
  if (members->daysOfWeek) {
    pattern.daysOfWeek = 1 << std::chrono::weekday{start}.c_encoding();
  }
  if (members->dayOfMonth) pattern.dayOfMonth = day;
  if (members->instance) pattern.instance = (day - 1) / 7 + 1;
  if (members->monthOfYear) {
    pattern.monthOfYear = static_cast<int>(static_cast<unsigned>(date.month()));
  }
  return pattern;
}

}  // namespace calendar
