// Puts notes among a handheld's files.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// `name` is a name in "\My Documents", which is made when it is missing, or a path of the device
// that begins with a separator; the file's own name when it is not given. What is there already
// stays as it is and is a UsageError, as is a name or a directory that the handheld does not have,
// and a file of more than 16 MiB, which no handheld takes for a note. Throws files::Error for a
// file that cannot be read.
Outcome AddNote(Session& session, const std::filesystem::path& file,
                const std::optional<std::string>& name, const Report& report);

}  // namespace tool
