// Writes what is on a handheld for other programs.
//
// Writes to `file`, or to the report's output. An item that has no UID gets one, which is
// remembered, so that importing the file again changes nothing.
#pragma once

#include <filesystem>
#include <optional>

#include "common/formats/vcard/vcard.h"
#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

Outcome ExportContacts(Session& session, const std::optional<std::filesystem::path>& file,
                       formats::VCardVersion version, const Report& report);

// As iCalendar. What no event or task can say is named on the error stream; kPartlyDone when that
// is a whole item.
Outcome ExportCalendar(Session& session, const std::optional<std::filesystem::path>& file,
                       const Report& report);
Outcome ExportTasks(Session& session, const std::optional<std::filesystem::path>& file,
                    const Report& report);

}  // namespace tool
