// The handheld's registry. Every call returns a Win32 code (0 is success), as the device does.
#pragma once

#include "platform/types.h"

namespace ce {

using HKEY = HANDLE;
inline constexpr HKEY HKEY_LOCAL_MACHINE = 0x80000002;

inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

// Key and value names match without regard to case.
LONG RegOpenKeyExW(HKEY parent, const WCHAR* subKey, DWORD options, DWORD access, HKEY* result);
// Creates every missing key on the way. `disposition` may be null.
LONG RegCreateKeyExW(HKEY parent, const WCHAR* subKey, DWORD reserved, WCHAR* className,
                     DWORD options, DWORD access, void* security, HKEY* result, DWORD* disposition);
// `*size` holds the buffer's bytes on entry and the value's on return; a short buffer gives
// ERROR_MORE_DATA and is left alone. `type`, `data` may be null.
LONG RegQueryValueExW(HKEY key, const WCHAR* name, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* size);
// Durable when it returns 0.
LONG RegSetValueExW(HKEY key, const WCHAR* name, DWORD reserved, DWORD type, const BYTE* data,
                    DWORD size);
LONG RegCloseKey(HKEY key);

}  // namespace ce
