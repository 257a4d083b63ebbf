// Shows, exports and removes contacts.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "formats/vcard.h"
#include "maintenance/report.h"
#include "maintenance/session.h"

namespace maintenance {

Outcome ShowContacts(Session& session, bool json, const Report& report);

// Writes vCards to `file`, or to the report's output. A contact that has no UID gets one, which is
// remembered, so that importing the file again changes nothing.
Outcome ExportContacts(Session& session, const std::optional<std::filesystem::path>& file,
                       formats::VCardVersion version, const Report& report);

// Removes items of any kind by identifier.
Outcome RemoveItems(Session& session, const std::vector<std::uint32_t>& oids, const Report& report);

}  // namespace maintenance
