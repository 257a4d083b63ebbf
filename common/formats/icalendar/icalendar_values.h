// Values of iCalendar properties: points in time, spans, numbers.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "common/calendar/wall_time.h"
#include "common/formats/lines/vcard_property.h"

namespace formats {

// A DATE or DATE-TIME as it stands.
struct TimeValue {
  local_seconds time = {};  // midnight of a date
  bool isDate = false;
  bool isUtc = false;
  std::string tzid = {};  // empty for none
};

// "20080215", "20080215T134500", "20080215T124500Z", blanks around, seconds missing, and the same
// with hyphens and colons. TZID and VALUE=DATE are the property's. Nothing for other text and for a
// day or time that does not exist.
std::optional<TimeValue> ParseTimeValue(const Property& property, std::string_view text);

// A DURATION: whole days as the clock shows them, then exact seconds; both of one sign.
struct Span {
  std::chrono::days days{0};
  std::chrono::seconds seconds{0};
  std::chrono::seconds total() const { return days + seconds; }
};

// "PT15M", "-P1DT2H", "P2W", parts in any order; at most 1,500,000 days. Nothing for other text.
std::optional<Span> ParseSpan(std::string_view text);

// Whole, non-negative, at most 999,999,999; nothing for other text.
std::optional<int> ParseNumber(std::string_view text);

}  // namespace formats
