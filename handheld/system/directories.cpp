#include "handheld/system/directory_entries.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

#include "common/text/utf.h"
#include "handheld/base/host_error.h"
#include "handheld/system/device_path.h"
#include "platform/files.h"
#include "platform/find_files.h"

namespace ce::host {
namespace {

std::uint64_t TicksOf(const struct timespec& time) {
  constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
  const std::int64_t seconds = std::max<std::int64_t>(time.tv_sec + kSecondsFrom1601To1970, 0);
  return static_cast<std::uint64_t>(seconds) * 10'000'000 +
         static_cast<std::uint64_t>(time.tv_nsec) / 100;
}

// Nothing for an entry that the device does not have.
std::optional<DirectoryEntry> LookAt(int directory, const char* hostName, bool isRoot) {
  std::optional<std::u16string> name = FromUtf8(hostName);
  if (!name || !IsDeviceFileName(*name)) return std::nullopt;
  struct stat status = {};
  if (::fstatat(directory, hostName, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
  const bool isLink = S_ISLNK(status.st_mode);
  if (isLink && (!isRoot || ::fstatat(directory, hostName, &status, 0) != 0)) return std::nullopt;
  DirectoryEntry entry{*std::move(name), FILE_ATTRIBUTE_NORMAL, 0, TicksOf(status.st_mtim)};
  if (S_ISDIR(status.st_mode)) {
    const bool isCard = isRoot && (isLink || IsMountPoint(directory, hostName));
    entry.attributes = FILE_ATTRIBUTE_DIRECTORY | (isCard ? FILE_ATTRIBUTE_TEMPORARY : 0);
  } else if (S_ISREG(status.st_mode) && !isLink) {
    entry.size = static_cast<std::uint64_t>(status.st_size);
  } else {
    return std::nullopt;
  }
  return entry;
}

void SortByName(std::vector<DirectoryEntry>& entries) {
  std::vector<std::pair<std::u16string, DirectoryEntry>> keyed;
  keyed.reserve(entries.size());
  for (DirectoryEntry& entry : entries) keyed.emplace_back(Fold(entry.name), std::move(entry));
  std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
    return std::tie(a.first, a.second.name) < std::tie(b.first, b.second.name);
  });
  std::transform(keyed.begin(), keyed.end(), entries.begin(),
                 [](auto& entry) { return std::move(entry.second); });
}

}  // namespace

DWORD ListDirectory(const UniqueFd& directory, bool isRoot, std::vector<DirectoryEntry>& entries) {
  entries.clear();
  UniqueFd readable(::openat(directory.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!readable) return ErrorFromErrno(errno, ERROR_ACCESS_DENIED);
  const std::unique_ptr<DIR, int (*)(DIR*)> listing(::fdopendir(readable.get()), &::closedir);
  if (!listing) return ErrorFromErrno(errno, ERROR_GEN_FAILURE);
  static_cast<void>(readable.release());  // the listing's now
  for (errno = 0; const dirent* entry = ::readdir(listing.get()); errno = 0) {
    std::optional<DirectoryEntry> seen = LookAt(directory.get(), entry->d_name, isRoot);
    if (seen) entries.push_back(*std::move(seen));
  }
  if (errno != 0) return ErrorFromErrno(errno, ERROR_READ_FAULT);
  SortByName(entries);
  return ERROR_SUCCESS;
}

bool IsMountPoint(int directory, const char* name) {
  constexpr int kFlags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
  struct statx entry = {};
  struct statx parent = {};
  if (::statx(directory, name, kFlags, STATX_TYPE, &entry) != 0) return false;
  if (!S_ISDIR(entry.stx_mode)) return false;
  if ((entry.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0) {
    return (entry.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  }
  // An older kernel does not tell; then a volume of its own shows by its number.
  if (::statx(directory, "", kFlags | AT_EMPTY_PATH, STATX_TYPE, &parent) != 0) return false;
  return std::tie(entry.stx_dev_major, entry.stx_dev_minor) !=
         std::tie(parent.stx_dev_major, parent.stx_dev_minor);
}

}  // namespace ce::host
