// A file that appears as a whole or not at all, or a stream that is there already.
#pragma once

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string_view>

namespace maintenance {

class OutputFile {
 public:
  // Without a path what is written goes to `otherwise`, which is borrowed.
  OutputFile(std::optional<std::filesystem::path> path, std::FILE* otherwise);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();  // what was not finished leaves nothing behind

  void Write(std::string_view bytes);
  // False when anything could not be written; the file that stood there before is then untouched.
  [[nodiscard]] bool Finish();

 private:
  const std::optional<std::filesystem::path> path_;
  std::filesystem::path partial_;  // written first, in the same directory
  std::FILE* stream_;
  bool failed_;
};

}  // namespace maintenance
