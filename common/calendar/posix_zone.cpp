#include "common/calendar/posix_zone.h"

#include <cctype>

namespace calendar {

using std::chrono::days;
using std::chrono::local_days;
using std::chrono::year_month_day;

namespace {

class Parser {
 public:
  explicit Parser(std::string_view rule) : rest_(rule) {}

  std::optional<PosixZone> Parse() {
    PosixZone zone;
    if (!Name(zone.standardName) || !Time(24, zone.standardWest)) return std::nullopt;
    if (rest_.empty()) return zone;
    if (!Name(zone.daylightName)) return std::nullopt;
    zone.daylightWest = zone.standardWest - 3600;
    if (!rest_.empty() && rest_.front() != ',' && !Time(24, zone.daylightWest)) return std::nullopt;
    if (rest_.empty()) return zone;
    PosixDate start;
    PosixDate end;
    if (!Take(',') || !Date(start) || !Take(',') || !Date(end) || !rest_.empty()) {
      return std::nullopt;
    }
    zone.daylightStart = start;
    zone.daylightEnd = end;
    return zone;
  }

 private:
  bool Take(char expected) {
    if (rest_.empty() || rest_.front() != expected) return false;
    rest_.remove_prefix(1);
    return true;
  }

  bool Name(std::string& name) {
    const bool quoted = Take('<');
    std::size_t length = 0;
    while (length < rest_.size() && InName(rest_[length], quoted)) ++length;
    name = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return length >= 3 && (!quoted || Take('>'));
  }

  static bool InName(char c, bool quoted) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalpha(byte)) return true;
    return quoted && (std::isdigit(byte) || c == '+' || c == '-');
  }

  bool Number(int least, int most, int& number) {
    int value = 0;
    std::size_t digits = 0;
    for (; digits < 3 && digits < rest_.size() && rest_[digits] >= '0' && rest_[digits] <= '9';
         ++digits) {
      value = value * 10 + (rest_[digits] - '0');
    }
    rest_.remove_prefix(digits);
    number = value;
    return digits != 0 && value >= least && value <= most;
  }

  // [+|-]hh[:mm[:ss]] in seconds.
  bool Time(int mostHours, int& time) {
    const bool negative = Take('-');
    if (!negative) Take('+');
    int hours = 0;
    int minutes = 0;
    int rest = 0;
    if (!Number(0, mostHours, hours)) return false;
    if (Take(':')) {
      if (!Number(0, 59, minutes)) return false;
      if (Take(':') && !Number(0, 59, rest)) return false;
    }
    time = (hours * 60 + minutes) * 60 + rest;
    if (negative) time = -time;
    return true;
  }

  bool Date(PosixDate& date) {
    if (!Day(date)) return false;
    return !Take('/') || Time(167, date.seconds);
  }

  bool Day(PosixDate& date) {
    if (Take('M')) {
      date.kind = PosixDate::Kind::kMonthWeekDay;
      return Number(1, 12, date.month) && Take('.') && Number(1, 5, date.week) && Take('.') &&
             Number(0, 6, date.weekday);
    }
    if (Take('J')) {
      date.kind = PosixDate::Kind::kDayNoLeap;
      return Number(1, 365, date.day);
    }
    date.kind = PosixDate::Kind::kDayFromZero;
    return Number(0, 365, date.day);
  }

  std::string_view rest_;
};

}  // namespace

std::optional<PosixZone> ParsePosixZone(std::string_view rule) {
  return Parser(rule).Parse();
}

local_days WeekdayOfMonth(int year, int month, int week, int weekday) {
  const year_month_day first = std::chrono::year{year} / month / 1;
  const std::chrono::weekday wanted{static_cast<unsigned>(weekday)};
  const local_days firstSuch =
      local_days{first} + (wanted - std::chrono::weekday{local_days{first}});
  local_days day = firstSuch + days{7 * (week - 1)};
  if (year_month_day{day}.month() != first.month()) day -= days{7};
  return day;
}

local_days DayInYear(const PosixDate& date, int year) {
  const local_days newYear{std::chrono::year{year} / 1 / 1};
  switch (date.kind) {
    case PosixDate::Kind::kMonthWeekDay:
      return WeekdayOfMonth(year, date.month, date.week, date.weekday);
    case PosixDate::Kind::kDayNoLeap: {
      const bool afterLeapDay = std::chrono::year{year}.is_leap() && date.day > 31 + 28;
      return newYear + days{date.day - 1 + (afterLeapDay ? 1 : 0)};
    }
    case PosixDate::Kind::kDayFromZero:
      break;
  }
  return newYear + days{date.day};
}

}  // namespace calendar
