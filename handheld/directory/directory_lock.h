// Who uses a handheld's directory: one program at a time.
#pragma once

#include <filesystem>
#include <string_view>

#include "handheld/base/unique_fd.h"

namespace ce::host {

// Held from construction on; let go by destruction or the end of the process. The file names the
// holder, for whoever finds the directory locked.
class DirectoryLock {
 public:
  // Throws HandheldInUse, "DIRECTORY is in use by corvane (process 123)", or HandheldError.
  DirectoryLock(const std::filesystem::path& directory, std::string_view program);
  ~DirectoryLock();

 private:
  UniqueFd file_;
};

}  // namespace ce::host
