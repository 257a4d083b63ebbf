// What a directory of the handheld holds, as the device sees it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "handheld/base/unique_fd.h"
#include "platform/types.h"

namespace ce::host {

struct DirectoryEntry {
  std::u16string name;
  DWORD attributes = 0;         // FILE_ATTRIBUTE_...
  std::uint64_t size = 0;       // of a file
  std::uint64_t lastWrite = 0;  // file time, on the host's clock
};

// By name, letter case aside, so that the order is the same every time. Left out is what the device
// could not open: a name that it does not allow, a link that is no storage card, anything that is
// neither file nor directory, and an entry that is gone before it could be looked at.
[[nodiscard]] DWORD ListDirectory(const UniqueFd& directory, bool isRoot,
                                  std::vector<DirectoryEntry>& entries);

// Whether another volume is mounted on the directory of this name.
bool IsMountPoint(int directory, const char* name);

}  // namespace ce::host
