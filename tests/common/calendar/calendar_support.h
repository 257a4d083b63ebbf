// What the tests of the calendar share: days and patterns for messages, arbitrary patterns, and the
// definition of a pattern's days, applied day by day.
#pragma once

#include <rapidcheck.h>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "common/calendar/pattern.h"

namespace calendar {

void PrintTo(const Pattern& pattern, std::ostream* out);
// For RapidCheck's messages.
std::ostream& operator<<(std::ostream& out, const Pattern& pattern);

namespace testing {

local_days Day(int year, int month, int day);
// "2024-01-31", separated by blanks.
std::string Text(const std::vector<local_days>& days);
// "weekly interval=2 days=3": a type and the members that are not as in a new Pattern.
Pattern PatternOf(const std::string& text);

rc::Gen<Pattern> AnyEndlessPattern();
rc::Gen<local_days> AnyDay(int firstYear, int lastYear);

// Whether the day, which is not before the start, is one of the endless series.
bool FallsOn(const Pattern& pattern, local_days start, local_days day);
// The first days of the series, its end regarded, and none after `last`.
std::vector<local_days> CountedDays(const Pattern& pattern, local_days start, local_days last,
                                    std::size_t most);
// The first ones as SeriesDays has them.
std::vector<local_days> ToldDays(const Pattern& pattern, local_days start, std::size_t most);

}  // namespace testing
}  // namespace calendar
