#include "handheld/system/directories.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

#include "common/text/unicode.h"
#include "handheld/base/guarded.h"
#include "handheld/base/handle_table.h"
#include "handheld/base/host_error.h"
#include "handheld/system/device_path.h"
#include "platform/disk_space.h"
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
  std::optional<std::u16string> name = text::FromUtf8(hostName);
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
  for (DirectoryEntry& entry : entries)
    keyed.emplace_back(text::Fold(entry.name), std::move(entry));
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

namespace ce {
namespace {

using host::DirectoryEntry;
using host::GuardedBool;
using host::UniqueFd;

struct Search : host::HandleObject {
  std::vector<DirectoryEntry> entries;
  std::size_t next = 0;
};

// '*' for any text, '?' for any character; both are folded.
bool Matches(std::u16string_view name, std::u16string_view pattern) {
  std::size_t at = 0;
  std::size_t in = 0;
  std::size_t star = pattern.npos;
  std::size_t resumed = 0;
  while (at < name.size()) {
    if (in < pattern.size() && pattern[in] == u'*') {
      star = in++;
      resumed = at;
    } else if (in < pattern.size() && (pattern[in] == u'?' || pattern[in] == name[at])) {
      ++in;
      ++at;
    } else if (star != pattern.npos) {
      in = star + 1;
      at = ++resumed;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of(u'*', in) == pattern.npos;
}

WIN32_FIND_DATAW FindData(const DirectoryEntry& entry) {
  WIN32_FIND_DATAW data;
  data.dwFileAttributes = entry.attributes;
  data.ftLastWriteTime = {static_cast<DWORD>(entry.lastWrite),
                          static_cast<DWORD>(entry.lastWrite >> 32)};
  data.nFileSizeHigh = static_cast<DWORD>(entry.size >> 32);
  data.nFileSizeLow = static_cast<DWORD>(entry.size);
  std::copy_n(entry.name.begin(), std::min(entry.name.size(), std::size(data.cFileName) - 1),
              data.cFileName);
  return data;
}

DWORD FindMatches(std::u16string_view pattern, std::vector<DirectoryEntry>& matches) {
  UniqueFd root;
  UniqueFd directory;
  if (const DWORD error = host::OpenFilesRoot(root)) return error;
  const std::size_t separator = pattern.find_last_of(u"\\/");
  const std::size_t begin = separator == pattern.npos ? 0 : separator + 1;
  const std::u16string_view path = begin == 0 ? u"\\" : pattern.substr(0, begin);
  if (const DWORD error = host::OpenDeviceDirectory(root, path, directory)) return error;
  const bool isRoot = path.size() == 1;
  if (const DWORD error = host::ListDirectory(directory, isRoot, matches)) return error;
  const std::u16string wanted = text::Fold(pattern.substr(begin));
  std::erase_if(matches, [&](const DirectoryEntry& entry) {
    return !Matches(text::Fold(entry.name), wanted);
  });
  return matches.empty() ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
}

}  // namespace

HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* data) {
  HANDLE handle = INVALID_HANDLE_VALUE;
  GuardedBool("FindFirstFileW", [&]() -> DWORD {
    if (!pattern || !data) return ERROR_INVALID_PARAMETER;
    const auto search = std::make_shared<Search>();
    if (const DWORD error = FindMatches(pattern, search->entries)) return error;
    *data = FindData(search->entries[search->next++]);
    handle = host::AddHandle(search);
    return ERROR_SUCCESS;
  });
  return handle;
}

BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data) {
  return GuardedBool("FindNextFileW", [&]() -> DWORD {
    const std::shared_ptr<Search> open = host::FindHandle<Search>(search);
    if (!open) return ERROR_INVALID_HANDLE;
    if (!data) return ERROR_INVALID_PARAMETER;
    if (open->next == open->entries.size()) return ERROR_NO_MORE_FILES;
    *data = FindData(open->entries[open->next++]);
    return ERROR_SUCCESS;
  });
}

BOOL FindClose(HANDLE search) {
  return GuardedBool("FindClose", [&]() -> DWORD {
    if (!host::FindHandle<Search>(search)) return ERROR_INVALID_HANDLE;
    return host::ObjectHandles().Close(search) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
  });
}

BOOL GetDiskFreeSpaceExW(const WCHAR* directory, ULONGLONG* freeToCaller, ULONGLONG* total,
                         ULONGLONG* free) {
  return host::GuardedBool("GetDiskFreeSpaceExW", [&]() -> DWORD {
    host::UniqueFd root;
    host::UniqueFd opened;
    if (const DWORD error = host::OpenFilesRoot(root)) return error;
    const std::u16string_view path = directory ? directory : u"\\";
    if (const DWORD error = host::OpenDeviceDirectory(root, path, opened)) return error;
    struct statvfs volume = {};
    if (::fstatvfs(opened.get(), &volume) != 0) return host::ErrorFromErrno(errno, ERROR_NOT_READY);
    const ULONGLONG block = volume.f_frsize;
    if (freeToCaller) *freeToCaller = volume.f_bavail * block;
    if (total) *total = volume.f_blocks * block;
    if (free) *free = volume.f_bfree * block;
    return ERROR_SUCCESS;
  });
}

}  // namespace ce
