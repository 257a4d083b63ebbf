// A handheld as one file, and back; and a second one that is the same.
#pragma once

#include <filesystem>

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// Files named "-" are the standard input and output. What is wrong with one throws files::Error.

// Writes the handheld, as it is at one moment, to a file for its owner alone; also while its agent
// serves.
Outcome BackUp(Session& session, const std::filesystem::path& file, const Report& report);
// Restores it to a place where nobody looks, and looks for damage there.
Outcome VerifyBackup(const std::filesystem::path& file, const Report& report);
// The directory must not exist or be empty. It is there as a whole or not at all.
Outcome Restore(const std::filesystem::path& file, const std::filesystem::path& directory,
                const Report& report);
// The same handheld in a new directory. Where the file system can, the two share what neither has
// changed.
Outcome Clone(Session& session, const std::filesystem::path& directory, const Report& report);

}  // namespace tool
