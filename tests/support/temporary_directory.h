// A fresh directory for one test, in memory where the system has such a place.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace corvane::testing {

class TemporaryDirectory {
 public:
  TemporaryDirectory();  // throws std::runtime_error when none can be made
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();  // removes it with all that is in it

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  // The content of a file below it, empty when it does not exist.
  std::string Read(const std::filesystem::path& name) const;
  // Makes or replaces the file; its directory must be there.
  void Write(const std::filesystem::path& name, std::string_view content) const;

 private:
  std::filesystem::path path_;
};

}  // namespace corvane::testing
