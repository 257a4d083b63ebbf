#include "common/formats/vcard/vcard_dates.h"

#include <algorithm>

#include "common/text/text.h"

namespace formats {
namespace {

constexpr std::string_view kNoYear = "a date without a year cannot be kept";
constexpr std::string_view kPartial = "a date without a day cannot be kept";
constexpr std::string_view kNoDate = "not a date";
constexpr std::string_view kOutside = "no day of the years 1900 to 2999";

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Takes up to `most` digits off the front; -1 when there is none.
int TakeNumber(std::string_view& text, std::size_t most) {
  int number = -1;
  for (std::size_t i = 0; i < most && !text.empty() && IsDigit(text.front()); ++i) {
    number = std::max(number, 0) * 10 + (text.front() - '0');
    text.remove_prefix(1);
  }
  return number;
}

bool TakeSeparator(std::string_view& text) {
  if (text.empty() || std::string_view("-/.").find(text.front()) == std::string_view::npos) {
    return false;
  }
  text.remove_prefix(1);
  return true;
}

}  // namespace

bool IsKeepableDate(year_month_day date) {
  return date.ok() && IsKeepableDay(local_days(date));
}

DateReading ReadDate(std::string_view text) {
  text = text::TrimBlanks(text);
  if (text.starts_with("--")) return {std::nullopt, kNoYear};
  const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
  if (digits != 4 && digits != 8 && digits != 6) return {std::nullopt, kNoDate};

  const int year = TakeNumber(text, 4);
  if (digits == 4 && text.empty()) return {std::nullopt, kPartial};
  const bool separated = TakeSeparator(text);
  if (digits == 4 && !separated) return {std::nullopt, kNoDate};
  const int month = TakeNumber(text, 2);
  if (text.empty() && month >= 0) return {std::nullopt, kPartial};
  if (separated && !TakeSeparator(text)) return {std::nullopt, kNoDate};
  const int day = TakeNumber(text, 2);
  const bool timeFollows = text.starts_with('T') || text.starts_with('t') || text.starts_with(' ');
  if (month < 0 || day < 0 || !(text.empty() || timeFollows || text == "Z")) {
    return {std::nullopt, kNoDate};
  }
  const year_month_day date = std::chrono::year(year) / month / day;
  if (!IsKeepableDate(date)) return {std::nullopt, kOutside};
  return {date, {}};
}

}  // namespace formats
