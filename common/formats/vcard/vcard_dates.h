// Calendar days as vCards write them.
#pragma once

#include <optional>
#include <string_view>

#include "common/calendar/wall_time.h"

namespace formats {

// A day of the calendar between 1900-01-01 and 2999-12-31, which is what a handheld can keep.
bool IsKeepableDate(year_month_day date);

struct DateReading {
  std::optional<year_month_day> date;
  std::string_view problem;  // why there is none
};

// "19800322", "1980-03-22", "1980/3/22", each with or without a time of day behind, which is
// dropped. Not kept: a date without year ("--0322"), month or day, and free text.
DateReading ReadDate(std::string_view text);

}  // namespace formats
