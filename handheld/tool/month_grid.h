// A month of the calendar as a table that 80 columns have room for.
#pragma once

#include <span>
#include <string>

#include "common/page/occurrences.h"

namespace tool {

// A row a week, which is numbered, a column a day; today has a star. Of a day that has no room for
// all it says how many more there are. `month` is a whole one.
std::string MonthGrid(const page::DayRange& month, std::span<const page::PlacedOccurrence> placed,
                      formats::local_days today);

}  // namespace tool
