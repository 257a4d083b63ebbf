// Paths of the device as entries of the host's file system.
//
// A path is walked name by name from the handheld's files, so that no name can lead out of them.
// The only links that are followed are storage cards: entries of the root that point to a
// directory.
#pragma once

#include <string>
#include <string_view>

#include "handheld/base/unique_fd.h"
#include "platform/types.h"

namespace ce::host {

struct DevicePath {
  UniqueFd directory;  // that the entry is in
  std::string name;    // as it is spelt there; the asked spelling when there is no such entry
  bool exists = false;
};

// Names match without regard to case; an exact match goes first. '\\' and '/' part names, and one
// may lead. 0, or:
//   ERROR_INVALID_NAME    a name that the device does not allow: empty, ".", "..", over 255
//                         characters, with one of :*?"<>| or a control character, or a device's
//   ERROR_PATH_NOT_FOUND  a directory on the way is not there; no name at all
//   ERROR_ACCESS_DENIED   a link that is no storage card, or an entry that may not be looked at
//   ERROR_NOT_READY       no handheld
[[nodiscard]] DWORD ResolveDevicePath(const WCHAR* path, DevicePath& result);

// As above, within the given root.
[[nodiscard]] DWORD ResolveDevicePath(const UniqueFd& root, std::u16string_view path,
                                      DevicePath& result);

// The directory that a path means, opened for a look at it: the root for a separator alone, a card
// for its name. One separator may end the path. ERROR_PATH_NOT_FOUND also for what is no directory.
[[nodiscard]] DWORD OpenDeviceDirectory(const UniqueFd& root, std::u16string_view path,
                                        UniqueFd& directory);

// Whether the device allows an entry of this name.
bool IsDeviceFileName(std::u16string_view name);

// The root of the current handheld's files.
[[nodiscard]] DWORD OpenFilesRoot(UniqueFd& root);

}  // namespace ce::host
