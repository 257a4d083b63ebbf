#include "desktop/merge/field_words.h"

#include <fmt/format.h>

#include <cctype>

#include "common/calendar/wall_time.h"
#include "common/text/text.h"
#include "desktop/merge/item.h"

namespace desktop {
namespace {

using formats::ContactField;
using formats::IsoDate;
using std::chrono::days;
using std::chrono::local_days;
using std::chrono::local_seconds;

bool IsUpperAscii(char c) {
  return c >= 'A' && c <= 'Z';
}

bool IsDigitAscii(char c) {
  return c >= '0' && c <= '9';
}

std::string MinuteWords(local_seconds time) {
  std::string words = formats::IsoDateTime(time).substr(0, 16);
  words[10] = ' ';
  return words;
}

}  // namespace

std::string FieldWords(ContactField field) {
  switch (field) {
    case ContactField::kEmail1Address:
      return "E-mail 1";
    case ContactField::kEmail2Address:
      return "E-mail 2";
    case ContactField::kEmail3Address:
      return "E-mail 3";
    case ContactField::kBody:
      return "Note";
    default:
      break;
  }
  std::string words;
  for (const char c : formats::ContactFieldName(field)) {
    const bool begins = IsUpperAscii(c) || IsDigitAscii(c);
    if (begins && !words.empty()) words += ' ';
    words += words.empty() ? c : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return words;
}

std::string Words(const std::string& text) {
  return CommonText(text);
}

std::string Words(bool value) {
  return value ? "yes" : "no";
}

std::string Words(const std::optional<std::chrono::year_month_day>& date) {
  return date ? IsoDate(*date) : std::string();
}

std::string Words(const std::optional<local_days>& day) {
  return day ? IsoDate(*day) : std::string();
}

std::string Words(const std::optional<local_seconds>& time) {
  return time ? MinuteWords(*time) : std::string();
}

std::string WhenWords(const formats::Occurrence& occurrence) {
  if (!occurrence.start) return {};
  const local_seconds end = occurrence.end.value_or(*occurrence.start);
  if (!occurrence.allDay) {
    return fmt::format("{} to {}", MinuteWords(*occurrence.start), MinuteWords(end));
  }
  const local_days first = formats::DayOf(*occurrence.start);
  const local_days last = std::max(first, formats::DayOf(end) - days{1});
  if (first == last) return IsoDate(first) + ", all day";
  return fmt::format("{} to {}, all day", IsoDate(first), IsoDate(last));
}

std::string ReminderWords(const std::optional<int>& minutes) {
  if (!minutes) return {};
  return *minutes < 0 ? fmt::format("{} minutes after the start", -static_cast<long>(*minutes))
                      : fmt::format("{} minutes before", *minutes);
}

std::string BusyWords(int status) {
  switch (static_cast<formats::BusyStatus>(status)) {
    case formats::BusyStatus::kFree:
      return "free";
    case formats::BusyStatus::kTentative:
      return "tentative";
    case formats::BusyStatus::kBusy:
      return "busy";
    case formats::BusyStatus::kOutOfOffice:
      return "out of office";
  }
  return std::to_string(status);
}

}  // namespace desktop
