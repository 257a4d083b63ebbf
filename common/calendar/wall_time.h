// Days and wall-clock times as calendars write them.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace formats {

using std::chrono::local_days;
using std::chrono::local_seconds;
using std::chrono::sys_seconds;

// Whether an appointment or a task can be on it: the years 1900 to 2999.
bool IsKeepableDay(local_days day);
inline local_days DayOf(local_seconds time) {
  return std::chrono::floor<std::chrono::days>(time);
}

std::string IsoDate(local_days day);            // "2008-02-15"
std::string IsoDateTime(local_seconds time);    // "2008-02-15T13:45:00"
std::string BasicDate(local_days day);          // "20080215"
std::string BasicDateTime(local_seconds time);  // "20080215T134500"
std::string BasicUtc(sys_seconds time);         // "20080215T124500Z"

}  // namespace formats
