#include "common/formats/items/iso_time.h"

#include <chrono>

namespace formats {
namespace {

// Takes exactly `digits` digits off the front.
bool TakeNumber(std::string_view& text, std::size_t digits, int& number) {
  if (text.size() < digits) return false;
  number = 0;
  for (const char c : text.substr(0, digits)) {
    if (c < '0' || c > '9') return false;
    number = number * 10 + (c - '0');
  }
  text.remove_prefix(digits);
  return true;
}

bool Take(std::string_view& text, std::string_view anyOf) {
  if (text.empty() || anyOf.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

bool TakeOffset(std::string_view& text, std::optional<int>& offset) {
  if (text.empty()) return true;
  if (Take(text, "Zz")) {
    offset = 0;
    return true;
  }
  const bool west = text.front() == '-';
  int hours = 0;
  int minutes = 0;
  if (!Take(text, "+-") || !TakeNumber(text, 2, hours)) return false;
  if (!text.empty()) {
    Take(text, ":");
    if (!TakeNumber(text, 2, minutes)) return false;
  }
  if (hours > 23 || minutes > 59) return false;
  offset = (west ? -1 : 1) * (hours * 60 + minutes);
  return true;
}

}  // namespace

std::optional<IsoTime> ParseIsoTime(std::string_view text) {
  IsoTime time;
  if (!TakeNumber(text, 4, time.date.year) || !Take(text, "-") ||
      !TakeNumber(text, 2, time.date.month) || !Take(text, "-") ||
      !TakeNumber(text, 2, time.date.day) || !Take(text, "Tt ") ||
      !TakeNumber(text, 2, time.hour) || !Take(text, ":") || !TakeNumber(text, 2, time.minute))
    return std::nullopt;
  if (Take(text, ":") && !TakeNumber(text, 2, time.second)) return std::nullopt;
  if (!TakeOffset(text, time.offsetMinutes) || !text.empty()) return std::nullopt;
  const std::chrono::year_month_day day{std::chrono::year(time.date.year),
                                        std::chrono::month(static_cast<unsigned>(time.date.month)),
                                        std::chrono::day(static_cast<unsigned>(time.date.day))};
  if (!day.ok() || time.hour > 23 || time.minute > 59 || time.second > 59) return std::nullopt;
  return time;
}

}  // namespace formats
