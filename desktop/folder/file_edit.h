// The edits of one file, carried out together.
#pragma once

#include <chrono>
#include <filesystem>
#include <vector>

#include "common/calendar/zone.h"
#include "desktop/folder/desk_folder.h"

namespace desktop {

struct DeskPlace {
  const std::filesystem::path& root;
  const calendar::Zone& zone;
  const std::filesystem::path& trash;
  std::chrono::sys_seconds now;
};

struct FileWish {
  const DeskEdit* edit;
  DeskOutcome* outcome;  // its item is the one that was read
};

// `file` is below the root. Throws files::Error.
void EditDeskFile(const DeskPlace& place, const std::filesystem::path& file,
                  std::vector<FileWish> wishes);

}  // namespace desktop
