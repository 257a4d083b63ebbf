// Patterns as recurrence rules (RFC 5545, 3.3.10) and back: the one place that knows both.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "common/calendar/pattern.h"

namespace calendar {

// "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,WE;WKST=SU": the value of an RRULE that gives the pattern's
// days. COUNT for a number of occurrences; an end date becomes UNTIL=yyyymmdd, which a writer of
// timed events replaces by a time. A rule's series begins with its DTSTART, which must be a day of
// the pattern.
std::string RuleOf(const Pattern& pattern);

// The pattern whose days are exactly those of the rule, with a DTSTART of `start`; nothing when no
// pattern's are, or the text is no rule. An UNTIL with a time counts by its date as it stands: a
// caller with a zone turns it into a local one first. Rules of hours and shorter are no patterns.
std::optional<Pattern> PatternOfRule(std::string_view rule, local_days start);

}  // namespace calendar
