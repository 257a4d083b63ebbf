// What a file of other programs holds.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string_view>

namespace tool {

enum class FileKind { kCards, kCalendar, kBackup, kJsonLines };

// Of a file that can be told by nothing but its content this much of its beginning is enough.
inline constexpr std::size_t kFileKindBytes = 64 << 10;

// The name says it (.vcf, .ics), else the content, else the rest of the names (.xml, .json).
// What cannot be told is taken for cards.
FileKind FileKindOf(const std::filesystem::path& file, std::string_view beginning);

}  // namespace tool
