// A month of the calendar as a table.
#pragma once

#include <span>
#include <string>

#include "common/page/occurrences.h"
#include "handheld/tool/report.h"

namespace tool {

// A row a week, which is numbered, a column a day; today has a star. Of a day that has no room for
// all it says how many more there are. `month` is a whole one. As wide as the report, but for one
// that is too narrow for seven days.
std::string MonthGrid(const page::DayRange& month, std::span<const page::PlacedOccurrence> placed,
                      formats::local_days today, const Report& report);

}  // namespace tool
