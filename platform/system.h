// What the system says of itself and of the running program.
#pragma once

#include "platform/types.h"

namespace ce {

struct OSVERSIONINFO {
  DWORD dwOSVersionInfoSize;  // 276, set by the caller
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;  // 3: Windows CE
  WCHAR szCSDVersion[128];
};
static_assert(sizeof(OSVERSIONINFO) == 276);

BOOL GetVersionExW(OSVERSIONINFO* version);
LANGID GetSystemDefaultLangID();
inline constexpr LANGID kLangJapanese = 0x0411;

// Characters written without the terminator; 0 on failure. `module` 0 is the running program.
DWORD GetModuleFileNameW(HANDLE module, WCHAR* name, DWORD characters);
DWORD GetCurrentProcessId();

}  // namespace ce
