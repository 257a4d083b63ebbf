#include "common/calendar/wall_time.h"

#include <fmt/format.h>

#include "common/calendar/pattern.h"

namespace formats {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

std::string DateText(year_month_day date, std::string_view separator) {
  return fmt::format("{:04}{}{:02}{}{:02}", static_cast<int>(date.year()), separator,
                     static_cast<unsigned>(date.month()), separator,
                     static_cast<unsigned>(date.day()));
}

std::string ClockText(local_seconds time, std::string_view separator) {
  const std::chrono::hh_mm_ss clock{time - DayOf(time)};
  return fmt::format("T{:02}{}{:02}{}{:02}", clock.hours().count(), separator,
                     clock.minutes().count(), separator, clock.seconds().count());
}

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

bool TakeOffset(std::string_view& text, std::optional<minutes>& offset) {
  if (text.empty()) return true;
  if (Take(text, "Zz")) {
    offset = minutes(0);
    return true;
  }
  const bool west = text.front() == '-';
  int hour = 0;
  int minute = 0;
  if (!Take(text, "+-") || !TakeNumber(text, 2, hour)) return false;
  if (!text.empty()) {
    Take(text, ":");
    if (!TakeNumber(text, 2, minute)) return false;
  }
  if (hour > 23 || minute > 59) return false;
  offset = (west ? -1 : 1) * (hours(hour) + minutes(minute));
  return true;
}

}  // namespace

bool IsKeepableDay(local_days day) {
  return day >= calendar::kFirstDay && day <= calendar::kLastDay;
}

std::string IsoDate(year_month_day date) {
  return DateText(date, "-");
}

std::string IsoDate(local_days day) {
  return IsoDate(year_month_day(day));
}

std::string IsoDateTime(local_seconds time) {
  return IsoDate(DayOf(time)) + ClockText(time, ":");
}

std::string BasicDate(year_month_day date) {
  return DateText(date, "");
}

std::string BasicDate(local_days day) {
  return BasicDate(year_month_day(day));
}

std::string BasicDateTime(local_seconds time) {
  return BasicDate(DayOf(time)) + ClockText(time, "");
}

std::string BasicUtc(sys_seconds time) {
  return BasicDateTime(local_seconds(time.time_since_epoch())) + "Z";
}

std::optional<IsoTime> ParseIsoTime(std::string_view text) {
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  if (!TakeNumber(text, 4, year) || !Take(text, "-") || !TakeNumber(text, 2, month) ||
      !Take(text, "-") || !TakeNumber(text, 2, day) || !Take(text, "Tt ") ||
      !TakeNumber(text, 2, hour) || !Take(text, ":") || !TakeNumber(text, 2, minute))
    return std::nullopt;
  if (Take(text, ":") && !TakeNumber(text, 2, second)) return std::nullopt;
  IsoTime time;
  if (!TakeOffset(text, time.offset) || !text.empty()) return std::nullopt;
  const year_month_day date = std::chrono::year(year) / month / day;
  if (!date.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
  time.local = local_days(date) + hours(hour) + minutes(minute) + seconds(second);
  return time;
}

}  // namespace formats
