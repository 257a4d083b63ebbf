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

// Says as ImportReport does what became of each file's records, and on the error stream what could
// not be kept, and why.
Outcome ImportFiles(Session& session, const std::vector<std::filesystem::path>& files,
                    const ImportOptions& options, const Report& report);

}  // namespace tool
