// Writes the messages and calls of a handheld for other programs.
#pragma once

#include <filesystem>
#include <optional>

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

enum class MessageFormat {
  kBackup,     // formats/sms_backup.h
  kJsonLines,  // formats/message_json.h
};

// To `file`, or to the report's output. Importing what was written changes nothing, and makes the
// same messages and calls on another handheld.
Outcome ExportMessages(Session& session, const std::optional<std::filesystem::path>& file,
                       MessageFormat format, const Report& report);
Outcome ExportCalls(Session& session, const std::optional<std::filesystem::path>& file,
                    MessageFormat format, const Report& report);

}  // namespace tool
