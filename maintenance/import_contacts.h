// Puts vCards on a handheld.
#pragma once

#include <filesystem>
#include <vector>

#include "maintenance/report.h"
#include "maintenance/session.h"

namespace maintenance {

struct ImportOptions {
  bool dryRun = false;     // say what would be done, change nothing
  bool duplicate = false;  // add even what was imported before
};

// A contact that was imported before (its UID, else its content, is known) is changed when its
// content differs and left alone when not. Prints a line for each contact that was added or
// changed, and names on the error stream each line of a file that could not be kept, and why.
Outcome ImportFiles(Session& session, const std::vector<std::filesystem::path>& files,
                    const ImportOptions& options, const Report& report);

}  // namespace maintenance
