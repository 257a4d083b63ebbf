// Writes what is on a handheld for other programs.
#pragma once

#include <filesystem>
#include <optional>

#include "common/formats/vcard/vcard.h"
#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

struct ExportOptions {
  std::optional<std::filesystem::path> file = {};  // the report's output without one
  formats::VCardVersion vcardVersion = formats::VCardVersion::k30;  // of contacts
  bool jsonLines = false;  // messages and calls so, not as a backup
  bool csv = false;        // contacts and calls so
  formats::Overflow overflow = formats::Overflow::kLeftOut;  // of contacts
};

// `Record` is one of records.h. Importing what was written changes nothing, and makes the same
// messages and calls on another handheld. An item that has no UID gets one, which is remembered for
// that. Appointments and tasks are written as iCalendar: what no event or task can say is named on
// the error stream; kPartlyDone when that is a whole item.
template <typename Record>
Outcome ExportRecords(Session& session, const ExportOptions& options, const Report& report);

// The birthdays and anniversaries of its contacts as iCalendar.
Outcome ExportBirthdays(Session& session, const ExportOptions& options, const Report& report);

}  // namespace tool
