#include "platform/find_files.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/text/utf.h"
#include "handheld/base/guarded.h"
#include "handheld/base/handle_table.h"
#include "handheld/system/device_path.h"
#include "handheld/system/directory_entries.h"

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
  const std::u16string wanted = host::Fold(pattern.substr(begin));
  std::erase_if(matches, [&](const DirectoryEntry& entry) {
    return !Matches(host::Fold(entry.name), wanted);
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

}  // namespace ce
