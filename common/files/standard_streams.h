// Files that a person names, where "-" stands for the standard input or output.
#pragma once

#include <filesystem>
#include <string>

namespace files {

inline bool IsStandard(const std::filesystem::path& file) {
  return file == "-";
}

// All that is in it, or that comes from the standard input. Throws Error.
std::string ReadWholeInput(const std::filesystem::path& file);

}  // namespace files
