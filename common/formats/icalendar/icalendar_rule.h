// Recurrence rules as text, and the times that they give.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/calendar/wall_time.h"

namespace formats {

// What one file may cost beyond the reading of its lines; a file that has used it up has its
// further series cut short. A unit is about 100 nanoseconds.
struct WorkBudget {
  long long units = 60'000'000;
  long long bytes = 256LL << 20;  // of texts that are copied for the occurrences of a series
  bool isUsedUp() const { return units <= 0 || bytes <= 0; }
};

// One RRULE or EXRULE (RFC 5545, 3.3.10), its parts in upper case, unknown ones (X-…) left out.
class RecurrenceRule {
 public:
  // Nothing for text that is no rule.
  static std::optional<RecurrenceRule> Parse(std::string_view text);

  std::string Text() const;
  // The value of a part, null without it.
  const std::string* Part(std::string_view name) const;
  void Drop(std::string_view name);

  bool IsOfDays() const;  // FREQ is DAILY or longer
  std::optional<int> Count() const;
  // Drops BYHOUR, BYMINUTE and BYSECOND as far as they say what a start at this time of day says.
  void DropTimeOfDay(std::chrono::seconds timeOfDay);

 private:
  std::vector<std::pair<std::string, std::string>> parts_;  // FREQ is the first
};

struct RuleTimes {
  std::vector<local_seconds> times;
  int skipped = 0;  // those before `from`
  // Whether there may be further times behind; none of them is before `end`.
  bool cut = false;
  local_seconds end = {};
};

// The times of a rule that begins at `start`, which is on the clock that the rule's are on and may
// itself be none of them: those at or after `from`, up to and with `until` if there is one, before
// `end`, and `most` at the most. UNTIL within the rule does not count.
RuleTimes TimesOfRule(const RecurrenceRule& rule, local_seconds start,
                      std::optional<local_seconds> until, local_seconds from, local_seconds end,
                      std::size_t most, WorkBudget& budget);

}  // namespace formats
