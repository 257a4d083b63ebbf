// The days of a recurrence rule, as RFC 5545 has them.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "common/formats/icalendar/icalendar_rule.h"

namespace formats {

using std::chrono::weekday;

// SU, MO, …
inline constexpr const char* kWeekdayNames[] = {"SU", "MO", "TU", "WE", "TH", "FR", "SA"};

// A rule of days, weeks, months or years, without its end; empty lists are those that it lacks.
struct DayRule {
  enum class Frequency { kDaily, kWeekly, kMonthly, kYearly };

  // Nothing for parts that no handheld's pattern has (weeks of the year, times of the day, other
  // calendars) and for values out of bounds.
  static std::optional<DayRule> Of(const RecurrenceRule& rule);

  Frequency frequency = Frequency::kDaily;
  int interval = 1;
  weekday weekStart = std::chrono::Monday;
  // Negative numbers count from the end.
  std::set<int> months, monthDays, yearDays, positions;
  std::set<std::pair<int, unsigned>> weekdays;  // the n-th, 0 for every one; 0 is Sunday
};

// Walks the days of a rule, ascending.
class RuleWalk {
 public:
  // `start` is the rule's DTSTART: what the rule leaves open is the start's.
  RuleWalk(DayRule rule, local_days start);

  // Nothing behind the last day of a handheld, and when there is none in so many intervals that no
  // pattern gives such a rule.
  std::optional<local_days> Next();
  // However many intervals have none; nothing behind `last`, and nothing more then.
  std::optional<local_days> NextUntil(local_days last);

 private:
  std::optional<local_days> Next(local_days last, std::int64_t mostEmpty);
  void Fill();
  bool Has(local_days day) const;
  bool HasWeekday(local_days day) const;
  local_days BeginOf(std::int64_t period) const;

  DayRule rule_;
  local_days start_;
  std::int64_t period_ = 0;  // the day, week, month or year to be looked at next
  std::vector<local_days> days_;
  std::size_t place_ = 0;
};

}  // namespace formats
