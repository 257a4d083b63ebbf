#include "handheld/system/device_path.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "common/text/unicode.h"
#include "handheld/base/host_error.h"
#include "handheld/directory/handheld.h"

namespace ce::host {
namespace {

constexpr std::size_t kMaxName = 255;
constexpr std::u16string_view kSeparators = u"\\/";
constexpr std::u16string_view kForbidden = u":*?\"<>|";

bool IsDeviceName(std::u16string_view name) {
  const std::u16string folded = text::Fold(name.substr(0, name.find(u'.')));
  constexpr std::array<std::u16string_view, 4> kPlain = {u"CON", u"PRN", u"AUX", u"NUL"};
  if (std::find(kPlain.begin(), kPlain.end(), folded) != kPlain.end()) return true;
  const bool numbered = folded.starts_with(u"COM") || folded.starts_with(u"LPT");
  return numbered && folded.size() == 4 && folded[3] >= u'0' && folded[3] <= u'9';
}

// The host's spelling of a name that the device allows.
std::optional<std::string> HostName(std::u16string_view name) {
  if (name.empty() || name.size() > kMaxName || name == u"." || name == u"..") return std::nullopt;
  if (name.find_first_of(kForbidden) != std::u16string_view::npos) return std::nullopt;
  if (std::any_of(name.begin(), name.end(), [](char16_t unit) { return unit < 0x20; })) {
    return std::nullopt;
  }
  if (IsDeviceName(name)) return std::nullopt;
  std::optional<std::string> utf8 = text::ToUtf8(name);
  if (utf8 && utf8->size() > kMaxName) return std::nullopt;
  return utf8;
}

std::vector<std::u16string_view> SplitPath(std::u16string_view path) {
  std::vector<std::u16string_view> names;
  if (!path.empty() && kSeparators.find(path.front()) != kSeparators.npos) path.remove_prefix(1);
  while (true) {
    const std::size_t end = path.find_first_of(kSeparators);
    names.push_back(path.substr(0, end));
    if (end == std::u16string_view::npos) return names;
    path.remove_prefix(end + 1);
  }
}

// The first of the directory's entries, in the order of their bytes, that the name matches.
std::optional<std::string> FindAnyCase(int directory, std::u16string_view name) {
  const int copy = ::openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (copy < 0) return std::nullopt;
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(copy), &::closedir);
  if (!entries) {
    ::close(copy);
    return std::nullopt;
  }
  const std::u16string folded = text::Fold(name);
  std::optional<std::string> best;
  while (const dirent* entry = ::readdir(entries.get())) {
    const std::string_view spelling = entry->d_name;
    const std::optional<std::u16string> decoded = text::FromUtf8(spelling);
    if (decoded && text::Fold(*decoded) == folded && (!best || spelling < *best)) best = spelling;
  }
  return best;
}

// Sets `found.name` and `found.exists` for a name within `found.directory`.
DWORD FindEntry(std::u16string_view name, DevicePath& found, struct stat& status) {
  const std::optional<std::string> wanted = HostName(name);
  if (!wanted) return ERROR_INVALID_NAME;
  const int directory = found.directory.get();
  found.name = *wanted;
  found.exists = ::fstatat(directory, found.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
  if (found.exists) return ERROR_SUCCESS;
  if (errno != ENOENT) return ErrorFromErrno(errno, ERROR_ACCESS_DENIED);
  if (std::optional<std::string> spelling = FindAnyCase(directory, name)) {
    found.name = *std::move(spelling);
    found.exists = ::fstatat(directory, found.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
  }
  return ERROR_SUCCESS;
}

// Goes into the entry that was found, which must be a directory, or a card at the root.
DWORD Enter(DevicePath& found, const struct stat& status, bool atRoot) {
  if (!found.exists) return ERROR_PATH_NOT_FOUND;
  const bool isLink = S_ISLNK(status.st_mode);
  if (isLink && !atRoot) return ERROR_ACCESS_DENIED;
  if (!isLink && !S_ISDIR(status.st_mode)) return ERROR_PATH_NOT_FOUND;
  const int flags = O_PATH | O_DIRECTORY | O_CLOEXEC | (isLink ? 0 : O_NOFOLLOW);
  UniqueFd next(::openat(found.directory.get(), found.name.c_str(), flags));
  if (!next) return isLink ? ERROR_ACCESS_DENIED : ErrorFromErrno(errno, ERROR_ACCESS_DENIED);
  found.directory = std::move(next);
  return ERROR_SUCCESS;
}

}  // namespace

DWORD ResolveDevicePath(const UniqueFd& root, std::u16string_view path, DevicePath& result) {
  const std::vector<std::u16string_view> names = SplitPath(path);
  if (names.size() == 1 && names.front().empty()) return ERROR_PATH_NOT_FOUND;
  DevicePath found;
  found.directory.reset(::fcntl(root.get(), F_DUPFD_CLOEXEC, 0));
  if (!found.directory) return ErrorFromErrno(errno, ERROR_ACCESS_DENIED);
  for (std::size_t i = 0; i < names.size(); ++i) {
    struct stat status = {};
    if (const DWORD error = FindEntry(names[i], found, status)) return error;
    if (i + 1 == names.size()) {
      if (found.exists && S_ISLNK(status.st_mode)) return ERROR_ACCESS_DENIED;
      break;
    }
    if (const DWORD error = Enter(found, status, i == 0)) return error;
  }
  result = std::move(found);
  return ERROR_SUCCESS;
}

DWORD OpenDeviceDirectory(const UniqueFd& root, std::u16string_view path, UniqueFd& directory) {
  if (path.empty()) return ERROR_PATH_NOT_FOUND;
  if (kSeparators.find(path.back()) != kSeparators.npos) path.remove_suffix(1);
  DevicePath found;
  found.directory.reset(::fcntl(root.get(), F_DUPFD_CLOEXEC, 0));
  if (!found.directory) return ErrorFromErrno(errno, ERROR_ACCESS_DENIED);
  bool atRoot = true;
  if (!path.empty()) {
    for (const std::u16string_view name : SplitPath(path)) {
      struct stat status = {};
      if (const DWORD error = FindEntry(name, found, status)) return error;
      if (const DWORD error = Enter(found, status, atRoot)) return error;
      atRoot = false;
    }
  }
  directory = std::move(found.directory);
  return ERROR_SUCCESS;
}

bool IsDeviceFileName(std::u16string_view name) {
  return HostName(name).has_value();
}

DWORD ResolveDevicePath(const WCHAR* path, DevicePath& result) {
  if (!path) return ERROR_INVALID_PARAMETER;
  UniqueFd root;
  if (const DWORD error = OpenFilesRoot(root)) return error;
  return ResolveDevicePath(root, path, result);
}

DWORD OpenFilesRoot(UniqueFd& root) {
  const Handheld* handheld = Handheld::Current();
  if (!handheld) return ERROR_NOT_READY;
  root.reset(::open(handheld->filesRoot().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  return root ? ERROR_SUCCESS : ErrorFromErrno(errno, ERROR_ACCESS_DENIED);
}

}  // namespace ce::host
