// Puts vCards and iCalendar files on a handheld.
#pragma once

#include <filesystem>
#include <vector>

#include "maintenance/item_import.h"
#include "maintenance/report.h"
#include "maintenance/session.h"

namespace maintenance {

// What a file holds, its name says (.vcf, .ics), else its content. Prints a line for each record
// that was added or changed, and names on the error stream each line of a file that could not be
// kept, and why.
Outcome ImportFiles(Session& session, const std::vector<std::filesystem::path>& files,
                    const ImportOptions& options, const Report& report);

}  // namespace maintenance
