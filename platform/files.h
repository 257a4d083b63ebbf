// Files of the handheld. Paths are the device's: "\\Name" or "Name", both from the root, names
// matched without regard to case. No path leads out of the handheld's files and its cards.
#pragma once

#include "platform/types.h"

namespace ce {

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;

// INVALID_HANDLE_VALUE and the last error on failure: ERROR_SHARING_VIOLATION when `share` does not
// allow what the file is open for already, or the other way round. `security` and `templateFile`
// are not used.
HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, void* security, DWORD disposition,
                   DWORD attributes, HANDLE templateFile);
BOOL ReadFile(HANDLE file, void* buffer, DWORD bytes, DWORD* read, void* overlapped);
BOOL WriteFile(HANDLE file, const void* buffer, DWORD bytes, DWORD* written, void* overlapped);
// INVALID_FILE_SIZE and the last error on failure. `sizeHigh` may be null; then a file of 4 GiB or
// more fails with ERROR_INVALID_PARAMETER.
DWORD GetFileSize(HANDLE file, DWORD* sizeHigh);
// The new position, or INVALID_SET_FILE_POINTER. `distanceHigh` may be null.
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method);
BOOL FlushFileBuffers(HANDLE file);
// ERROR_SHARING_VIOLATION while the file is open, whatever it shares.
BOOL DeleteFileW(const WCHAR* path);
// As DeleteFileW. ERROR_ALREADY_EXISTS when the target exists.
BOOL MoveFileW(const WCHAR* from, const WCHAR* to);
// Closes a file or thread handle.
BOOL CloseHandle(HANDLE handle);

}  // namespace ce
