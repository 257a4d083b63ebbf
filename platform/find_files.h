// What is in a directory of the handheld. Paths are those of files.h.
#pragma once

#include "platform/types.h"

namespace ce {

inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;

// A storage card is an entry of the root with the attributes directory and temporary.
struct WIN32_FIND_DATAW {
  DWORD dwFileAttributes = 0;
  FILETIME ftCreationTime{};    // 0: not known
  FILETIME ftLastAccessTime{};  // 0: not known
  FILETIME ftLastWriteTime{};
  DWORD nFileSizeHigh = 0;
  DWORD nFileSizeLow = 0;
  DWORD dwOID = 0;
  WCHAR cFileName[260] = {};
};
static_assert(sizeof(WIN32_FIND_DATAW) == 560);

// `pattern` is a directory's path, a separator and a name in which '*' and '?' stand for any text
// and any character; "\\*" is all of the root. Entries come by name, letter case aside, so that the
// order is the same as long as the entries are, and as they were when the search began. Neither "."
// nor ".." is among them. INVALID_HANDLE_VALUE with the last error, ERROR_FILE_NOT_FOUND when
// nothing matches.
HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* data);
// FALSE with ERROR_NO_MORE_FILES behind the last; the search stays open.
BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data);
BOOL FindClose(HANDLE search);

}  // namespace ce
