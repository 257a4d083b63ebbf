// Tells when other programs have changed what a folder of the desk holds.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "desktop/folder/desk_folder.h"

namespace desktop {

// Only files that DeskFolder reads count, and folders for them.
class FolderWatch {
 public:
  // Nothing is watched yet. Throws files::Error when the system has no more watches.
  FolderWatch(std::filesystem::path root, const DeskParts& parts);
  ~FolderWatch();
  FolderWatch(const FolderWatch&) = delete;
  FolderWatch& operator=(const FolderWatch&) = delete;

  // From now on, as far as the folder and its subfolders are there. Returns whether one of them
  // was not watched before: what was written there has not been seen. Throws files::Error.
  bool Watch();

  // Whether something has changed since the last call. Does not wait; one change may be told of
  // several times.
  bool TakeChanges();

  // Readable once there is something to take.
  [[nodiscard]] int fd() const { return fd_; }

 private:
  bool WatchDirectory(const std::string& subfolder);
  [[nodiscard]] bool Matters(int watch, unsigned what, const char* name);

  std::filesystem::path root_;
  DeskParts parts_;
  int fd_ = -1;
  std::map<int, std::string> subfolders_;  // by their watch; empty for the folder itself
};

}  // namespace desktop
