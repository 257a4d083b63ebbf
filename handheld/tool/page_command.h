// A handheld as a page for people to look at.
#pragma once

#include <filesystem>
#include <optional>

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// Writes all that is on it, as it is at one moment, also while its agent serves. Without a file, or
// with "-", to the report's output. What cannot be read is named there and on the page; kPartlyDone
// then. Afterwards the session's handheld is the current one, as before.
Outcome MakePage(Session& session, const std::optional<std::filesystem::path>& file,
                 const Report& report);

}  // namespace tool
