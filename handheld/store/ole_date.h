// The dates that items take, and the times that they stand for.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "platform/automation.h"

namespace ce::host {

using std::chrono::local_days;
using std::chrono::local_seconds;

inline constexpr local_days kOleEpoch{std::chrono::year{1899} / 12 / 30};
inline constexpr local_days kFirstItemDay{std::chrono::year{1900} / 1 / 1};
inline constexpr local_days kLastItemDay{std::chrono::year{2999} / 12 / 31};

constexpr std::int64_t DayNumber(local_days day) {
  return (day - kOleEpoch).count();
}

constexpr DATE OleDate(local_days day) {
  return static_cast<DATE>(DayNumber(day));
}

constexpr DATE OleDate(int year, unsigned month, unsigned day) {
  return OleDate(
      local_days{std::chrono::year{year} / std::chrono::month{month} / std::chrono::day{day}});
}
static_assert(OleDate(4501, 1, 1) == kNoDate);

// The same number as SystemTimeToVariantTime gives.
constexpr DATE OleDate(local_seconds time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  return OleDate(day) + static_cast<double>((time - day).count()) / 86400;
}

// "None", or a time from 1900-01-01 to 2999-12-31.
constexpr bool IsItemDate(DATE date) {
  return date == kNoDate || (date >= OleDate(1900, 1, 1) && date < OleDate(3000, 1, 1));
}

constexpr bool IsItemTime(local_seconds time) {
  return time >= kFirstItemDay && time < kLastItemDay + std::chrono::days{1};
}

// To the nearest second; nothing for "none" and for what is no item's date.
std::optional<local_seconds> TimeOfDate(DATE date);
std::optional<local_days> DayOfDate(DATE date);
// Since midnight; 0 for "none".
std::chrono::seconds TimeOfDay(DATE date);

// What an item keeps of a date that it is given: whole seconds, or the whole day that it lies in.
// False, and nothing changed, for one that it cannot take.
[[nodiscard]] bool TakeTime(DATE& kept, DATE date);
[[nodiscard]] bool TakeDay(DATE& kept, DATE date);

// A reminder's time runs on to the year 9999: an agent counts one back from a due date, and from
// "none" where there is no due date.
constexpr bool IsReminderDate(DATE date) {
  return IsItemDate(date) || (date >= OleDate(3000, 1, 1) && date < OleDate(10000, 1, 1));
}
[[nodiscard]] bool TakeReminder(DATE& kept, DATE date);

}  // namespace ce::host
