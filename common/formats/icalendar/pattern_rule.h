// Patterns as recurrence rules (RFC 5545, 3.3.10) and back: the one place that knows both.
#pragma once

#include <optional>
#include <string>

#include "common/calendar/pattern.h"
#include "common/formats/icalendar/icalendar_rule.h"

namespace formats {

// "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,WE;WKST=SU": the value of an RRULE that gives the pattern's
// days, with COUNT for a number of occurrences. An UNTIL is its writer's to add: a day, or a time.
// A rule's series begins with its DTSTART, which must be a day of the pattern.
std::string RuleOf(const calendar::Pattern& pattern);

struct RuleEnd {
  std::optional<int> occurrences = {};
  std::optional<local_days> until = {};
};

// The pattern whose days are exactly those of the rule, with a DTSTART of `start` and the end that
// is given in place of the rule's own; nothing when no pattern's are, or none comes before
// the calendar's end. Rules of hours and shorter are no patterns.
std::optional<calendar::Pattern> PatternOfRule(const RecurrenceRule& rule, const RuleEnd& end,
                                               local_days start);

}  // namespace formats
