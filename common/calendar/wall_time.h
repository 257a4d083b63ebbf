// Days and wall-clock times as calendars, people and programs write them.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace formats {

using std::chrono::local_days;
using std::chrono::local_seconds;
using std::chrono::sys_seconds;
using std::chrono::year_month_day;

// Whether an appointment or a task can be on it: the years 1900 to 2999.
bool IsKeepableDay(local_days day);
inline local_days DayOf(local_seconds time) {
  return std::chrono::floor<std::chrono::days>(time);
}

std::string IsoDate(year_month_day date);  // "2008-02-15", of a day that does not exist, too
std::string IsoDate(local_days day);
std::string IsoDateTime(local_seconds time);  // "2008-02-15T13:45:00"
std::string BasicDate(year_month_day date);   // "20080215"
std::string BasicDate(local_days day);
std::string BasicDateTime(local_seconds time);  // "20080215T134500"
std::string BasicUtc(sys_seconds time);         // "20080215T124500Z"

struct IsoTime {
  local_seconds local;
  std::optional<std::chrono::minutes> offset;  // east of UTC; nothing when the text names none

  // A time without an offset is taken as UTC.
  sys_seconds Utc() const {
    return sys_seconds(local.time_since_epoch()) - offset.value_or(std::chrono::minutes(0));
  }
};
// "2008-02-15T13:45", "2008-02-15 13:45:01", with "Z" or "+01:00" behind or nothing. Nothing for
// other text and for a day or time that does not exist.
std::optional<IsoTime> ParseIsoTime(std::string_view text);

}  // namespace formats
