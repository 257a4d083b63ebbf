// Names for files that a folder of people's items gets.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace desktop {

// What a file of the item is called, without an extension: its UID when that is short and made of
// signs that every file system takes, else a name derived from it. Never hidden, and never more
// than a name.
std::string FileStemFor(std::string_view uid);

// "stem.vcf", "stem-2.vcf" and so on: the `attempt`-th name, from 1.
std::filesystem::path NumberedName(const std::filesystem::path& name, std::size_t attempt);

}  // namespace desktop
