#include "common/formats/icalendar/icalendar_values.h"

#include <algorithm>

#include "common/text/text.h"

namespace formats {
namespace {

using std::chrono::days;
using std::chrono::seconds;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Takes exactly `digits` digits off the front.
std::optional<int> TakeDigits(std::string_view& text, std::size_t digits) {
  if (text.size() < digits) return std::nullopt;
  int number = 0;
  for (const char c : text.substr(0, digits)) {
    if (!IsDigit(c)) return std::nullopt;
    number = number * 10 + (c - '0');
  }
  text.remove_prefix(digits);
  return number;
}

std::optional<local_days> TakeDay(std::string_view& text) {
  const std::optional<int> year = TakeDigits(text, 4);
  const std::optional<int> month = year ? TakeDigits(text, 2) : std::nullopt;
  const std::optional<int> day = month ? TakeDigits(text, 2) : std::nullopt;
  if (!day) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(*year),
                                         std::chrono::month(static_cast<unsigned>(*month)),
                                         std::chrono::day(static_cast<unsigned>(*day))};
  if (!date.ok()) return std::nullopt;
  return local_days(date);
}

std::optional<seconds> TakeClock(std::string_view& text) {
  const std::optional<int> hour = TakeDigits(text, 2);
  const std::optional<int> minute = hour ? TakeDigits(text, 2) : std::nullopt;
  if (!minute || *minute > 59) return std::nullopt;
  int second = 0;
  if (!text.empty() && IsDigit(text.front())) {
    const std::optional<int> taken = TakeDigits(text, 2);
    if (!taken || *taken > 60) return std::nullopt;
    second = std::min(*taken, 59);  // a leap second
  }
  // Midnight is sometimes the 24th hour.
  if (*hour > 24 || (*hour == 24 && (*minute > 0 || second > 0))) return std::nullopt;
  return std::chrono::hours(*hour) + std::chrono::minutes(*minute) + seconds(second);
}

std::optional<TimeValue> ParseBasic(std::string_view text) {
  TimeValue value;
  const std::optional<local_days> day = TakeDay(text);
  if (!day) return std::nullopt;
  value.time = *day;
  if (text.empty()) {
    value.isDate = true;
    return value;
  }
  if (text.front() != 'T' && text.front() != 't') return std::nullopt;
  text.remove_prefix(1);
  const std::optional<seconds> clock = TakeClock(text);
  if (!clock) return std::nullopt;
  value.time += *clock;
  value.isUtc = text == "Z" || text == "z";
  if (!text.empty() && !value.isUtc) return std::nullopt;
  return value;
}

std::optional<TimeValue> ParseExtended(std::string_view text) {
  TimeValue value;
  if (text.size() == 10 && text[4] == '-' && text[7] == '-') {
    std::string basic(text.substr(0, 4));
    basic += text.substr(5, 2);
    basic += text.substr(8, 2);
    return ParseBasic(basic);
  }
  const std::optional<IsoTime> time = ParseIsoTime(text);
  if (!time) return std::nullopt;
  value.time = time->local;
  if (time->offset) {
    value.time -= *time->offset;
    value.isUtc = true;
  }
  return value;
}

// A name with commas came as a list unless it was quoted.
std::string ZoneNameOf(const Property& property) {
  std::string name;
  for (const auto& [key, text] : property.parameters) {
    if (key != "TZID") continue;
    if (!name.empty()) name += ", ";
    name += text;
  }
  return name;
}

bool IsDateByName(const Property& property) {
  const std::string* kind = property.Parameter("VALUE");
  return kind != nullptr && text::EqualsNoCase(*kind, "DATE");
}

// How long each letter of a duration is.
struct Unit {
  char letter;
  bool ofTime;
  long long size;  // days, or seconds of time
};
constexpr Unit kUnits[] = {
    {'W', false, 7}, {'D', false, 1}, {'H', true, 3600}, {'M', true, 60}, {'S', true, 1}};
constexpr seconds kLongestSpan = days(1'500'000);

}  // namespace

std::optional<TimeValue> ParseTimeValue(const Property& property, std::string_view text) {
  text = text::TrimBlanks(text);
  std::optional<TimeValue> value = ParseBasic(text);
  if (!value) value = ParseExtended(text);
  if (!value) return std::nullopt;
  if (IsDateByName(property) && !value->isDate) {
    value->time = DayOf(value->time);
    value->isDate = true;
    value->isUtc = false;
  }
  if (!value->isDate && !value->isUtc) value->tzid = ZoneNameOf(property);
  return value;
}

std::optional<Span> ParseSpan(std::string_view text) {
  text = text::TrimBlanks(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  if (!text.starts_with('P') && !text.starts_with('p')) return std::nullopt;
  text.remove_prefix(1);
  Span span;
  bool inTime = false;
  bool any = false;
  while (!text.empty()) {
    if (text.front() == 'T' || text.front() == 't') {
      inTime = true;
      text.remove_prefix(1);
      continue;
    }
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    if (digits == 0 || digits == text.size() || digits > 10) return std::nullopt;
    const long long number = std::stoll(std::string(text.substr(0, digits)));
    const char letter = text::ToUpperAscii(text.substr(digits, 1)).front();
    const auto* unit = std::find_if(std::begin(kUnits), std::end(kUnits), [&](const Unit& u) {
      return u.letter == letter && u.ofTime == inTime;
    });
    if (unit == std::end(kUnits)) return std::nullopt;
    const long long size = number * unit->size;
    if (size > kLongestSpan.count()) return std::nullopt;
    if (inTime) {
      span.seconds += seconds(size);
    } else {
      span.days += days(size);
    }
    if (span.days > kLongestSpan || span.total() > kLongestSpan) return std::nullopt;
    any = true;
    text.remove_prefix(digits + 1);
  }
  if (!any) return std::nullopt;
  return negative ? Span{-span.days, -span.seconds} : span;
}

std::optional<int> ParseNumber(std::string_view text) {
  text = text::TrimBlanks(text);
  if (text.size() > 9) return std::nullopt;
  const std::size_t size = text.size();
  return size == 0 ? std::nullopt : TakeDigits(text, size);
}

}  // namespace formats
