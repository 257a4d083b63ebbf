// Who uses a handheld's directory: one program at a time.
#pragma once

#include <filesystem>
#include <string_view>

#include "handheld/base/unique_fd.h"

namespace ce::host {

// Held from construction on; let go by destruction or the end of the process. The directory itself
// is locked, and the file in it, which names the holder for whoever finds it so: to remove the file
// lets nobody in.
class DirectoryLock {
 public:
  // Throws HandheldInUse, "DIRECTORY is in use by corvane (process 123)", or HandheldError.
  DirectoryLock(const std::filesystem::path& directory, std::string_view program);
  ~DirectoryLock();

 private:
  UniqueFd directory_;
  UniqueFd file_;
};

}  // namespace ce::host
