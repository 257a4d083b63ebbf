// Points in time as people and programs write them: ISO 8601 with date and time of day.
#pragma once

#include <optional>
#include <string_view>

#include "common/formats/items/contact.h"

namespace formats {

struct IsoTime {
  Date date;
  int hour = 0;
  int minute = 0;
  int second = 0;
  std::optional<int> offsetMinutes;  // east of UTC; nothing when the text names none
};

// "2008-02-15T13:45", "2008-02-15 13:45:01", with "Z" or "+01:00" behind or nothing. Nothing for
// other text and for a day or time that does not exist.
std::optional<IsoTime> ParseIsoTime(std::string_view text);

}  // namespace formats
