// Messages and calls of the handheld, kept on the desk for good: a .jsonl file a month, to which
// only what is not in it yet is added, whatever becomes of it on the handheld.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "desktop/wire/connection.h"
#include "desktop/wire/request.h"

namespace desktop {

struct ArchiveAddition {
  std::filesystem::path file;  // below the folder: "messages/2026-11.jsonl"
  std::string bytes;           // as the file will be
  std::size_t added = 0;       // lines
};

struct ArchivePlan {
  std::vector<ArchiveAddition> additions;
  std::vector<std::string> notices;
};

// Of messages or of calls. The months are those of UTC; what has no time goes to "undated.jsonl".
// An entry is known by its identity; of several with one, as many are added as the handheld has
// more. A handheld without a telephone has none. Throws Error when the handheld does not come to a
// good end, or a file cannot be read.
ArchivePlan PlanArchive(const ConnectionOptions& connection, const std::filesystem::path& folder,
                        RecordKind kind);

// The whole file or none of it. Throws Error.
void Execute(const ArchiveAddition& addition, const std::filesystem::path& folder);

}  // namespace desktop
