#include "handheld/store/ole_date.h"

#include <cmath>

namespace ce::host {

namespace {

// Of a number that is a date.
local_seconds NearestSecond(DATE date) {
  return kOleEpoch + std::chrono::seconds{std::llround(date * 86400)};
}

}  // namespace

std::optional<local_seconds> TimeOfDate(DATE date) {
  if (date == kNoDate || !IsItemDate(date)) return std::nullopt;
  const local_seconds time = NearestSecond(date);
  // Less than half a second before the year 3000.
  if (!IsItemTime(time)) return std::nullopt;
  return time;
}

std::optional<local_days> DayOfDate(DATE date) {
  const std::optional<local_seconds> time = TimeOfDate(date);
  if (!time) return std::nullopt;
  return std::chrono::floor<std::chrono::days>(*time);
}

std::chrono::seconds TimeOfDay(DATE date) {
  const std::optional<local_seconds> time = TimeOfDate(date);
  return time ? *time - std::chrono::floor<std::chrono::days>(*time) : std::chrono::seconds{};
}

bool TakeTime(DATE& kept, DATE date) {
  const std::optional<local_seconds> time = TimeOfDate(date);
  if (!time && date != kNoDate) return false;
  kept = time ? OleDate(*time) : kNoDate;
  return true;
}

bool TakeDay(DATE& kept, DATE date) {
  const std::optional<local_days> day = DayOfDate(date);
  if (!day && date != kNoDate) return false;
  kept = day ? OleDate(*day) : kNoDate;
  return true;
}

bool TakeReminder(DATE& kept, DATE date) {
  if (TakeTime(kept, date)) return true;
  if (!IsReminderDate(date)) return false;
  kept = OleDate(NearestSecond(date));
  return true;
}

}  // namespace ce::host
