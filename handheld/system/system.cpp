#include "platform/system.h"

#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "handheld/base/guarded.h"
#include "handheld/directory/handheld.h"
#include "handheld/system/language.h"

namespace ce {
namespace {

using host::GuardedBool;
using host::GuardedCode;
using host::Handheld;

constexpr DWORD kPlatformWindowsCe = 3;
// Where the program is on the device.
constexpr std::u16string_view kModuleName = u"\\Windows\\corvane.exe";

}  // namespace

BOOL GetVersionExW(OSVERSIONINFO* version) {
  return GuardedBool("GetVersionExW", [&]() -> DWORD {
    if (!version) return ERROR_INVALID_PARAMETER;
    if (version->dwOSVersionInfoSize < sizeof *version) return ERROR_INSUFFICIENT_BUFFER;
    const Handheld* handheld = Handheld::Current();
    if (!handheld) return ERROR_NOT_READY;
    const host::HandheldSettings defaults;
    const DWORD size = version->dwOSVersionInfoSize;
    *version = {};
    version->dwOSVersionInfoSize = size;
    version->dwMajorVersion = handheld->Number(host::setting::kOsMajor, defaults.osMajor);
    version->dwMinorVersion = handheld->Number(host::setting::kOsMinor, defaults.osMinor);
    version->dwPlatformId = kPlatformWindowsCe;
    return ERROR_SUCCESS;
  });
}

LANGID GetSystemDefaultLangID() {
  LANGID language = host::kLangEnglishUs;
  GuardedBool("GetSystemDefaultLangID", [&]() -> DWORD {
    const Handheld* handheld = Handheld::Current();
    if (!handheld) return ERROR_NOT_READY;
    language = handheld->Language();
    return ERROR_SUCCESS;
  });
  return language;
}

DWORD GetModuleFileNameW(HANDLE module, WCHAR* name, DWORD characters) {
  DWORD written = 0;
  GuardedBool("GetModuleFileNameW", [&]() -> DWORD {
    if (module != 0) return ERROR_INVALID_HANDLE;
    if (!name || characters == 0) return ERROR_INVALID_PARAMETER;
    if (characters <= kModuleName.size()) return ERROR_INSUFFICIENT_BUFFER;
    *std::copy(kModuleName.begin(), kModuleName.end(), name) = 0;
    written = static_cast<DWORD>(kModuleName.size());
    return ERROR_SUCCESS;
  });
  return written;
}

DWORD GetCurrentProcessId() {
  // It cannot fail; a fault shows as a process that has no number.
  return GuardedCode("GetCurrentProcessId", [] { return ERROR_SUCCESS; }) == ERROR_SUCCESS
             ? static_cast<DWORD>(::getpid())
             : 0;
}

}  // namespace ce
