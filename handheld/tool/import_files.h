// Puts files of other programs on a handheld: vCards, iCalendar, messages and calls.
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "handheld/tool/item_import.h"
#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

enum class FileKind { kCards, kCalendar, kBackup, kJsonLines };

// What a file holds, of which the beginning is enough: the name says it (.vcf, .ics), else the
// content, else the rest of the names (.xml, .json). What cannot be told is taken for cards.
FileKind FileKindOf(const std::filesystem::path& file, std::string_view beginning);

// Prints a line for each contact, appointment and task
// that was added or changed, and for each file what became of its records; names on the error
// stream each line of a file that could not be kept, and why.
Outcome ImportFiles(Session& session, const std::vector<std::filesystem::path>& files,
                    const ImportOptions& options, const Report& report);

}  // namespace tool
