#include "desktop/transfer/record_count.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "common/calendar/zone.h"
#include "common/formats/backup/sms_backup.h"
#include "common/formats/icalendar/icalendar.h"
#include "common/formats/vcard/vcard.h"
#include "desktop/wire/error.h"
#include "desktop/wire/xml_records.h"

namespace desktop {
namespace {

std::size_t CountOfCalendar(std::string_view bytes) {
  if (!formats::LooksLikeICalendar(bytes)) return 0;
  const formats::CalendarFile file = formats::ReadICalendar(bytes, *calendar::Zone::Find("UTC"));
  return file.appointments.size() + file.tasks.size();
}

std::size_t CountOfXml(std::string_view bytes) {
  try {
    return ParseRecords(bytes).size();
  } catch (const Error&) {
    return 0;
  }
}

// Lines, or an array, which others may have made of them.
std::size_t CountOfJson(std::string_view bytes) {
  const auto array = nlohmann::json::parse(bytes, nullptr, false);
  if (array.is_array()) return array.size();
  return static_cast<std::size_t>(std::ranges::count(bytes, '\n'));
}

// Without the line of names.
std::size_t CountOfCsv(std::string_view bytes) {
  std::size_t lines = 0;
  bool quoted = false;
  for (const char c : bytes) {
    if (c == '"') quoted = !quoted;
    if (c == '\n' && !quoted) ++lines;
  }
  return lines > 0 ? lines - 1 : 0;
}

std::size_t CountOfBackup(std::string_view bytes) {
  std::size_t count = 0;
  formats::ReadBackup(bytes, {[&](const formats::TextMessage&, std::size_t) { ++count; },
                              [&](const formats::Call&, std::size_t) { ++count; }});
  return count;
}

}  // namespace

std::size_t CountRecords(std::string_view bytes, RecordFormat format) {
  switch (format) {
    case RecordFormat::kVcf:
      return formats::ReadVCards(bytes).contacts.size();
    case RecordFormat::kIcs:
      return CountOfCalendar(bytes);
    case RecordFormat::kXml:
      return CountOfXml(bytes);
    case RecordFormat::kJson:
      return CountOfJson(bytes);
    case RecordFormat::kCsv:
      return CountOfCsv(bytes);
    case RecordFormat::kSmsBackup:
      return CountOfBackup(bytes);
  }
  return 0;
}

}  // namespace desktop
