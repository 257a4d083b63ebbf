// Files that are replaced as a whole: after a power cut there is the old content or the new.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace ce::host {

// Durable when it returns 0. Otherwise what went wrong, and the old content stands; the new one may
// stand when only the directory could not be synchronised.
[[nodiscard]] DWORD ReplaceFile(const std::filesystem::path& file, std::string_view content);

// What a process leaves that is killed in ReplaceFile; the next takes its place.
std::filesystem::path UnfinishedFile(const std::filesystem::path& file);

// The content of a regular file; nothing, with errno set, when it cannot be read or is longer than
// `limit` (EFBIG).
std::optional<std::string> ReadWholeFile(const std::filesystem::path& file, std::size_t limit);

}  // namespace ce::host
