#include <unistd.h>

#include "handheld/base/guarded.h"
#include "platform/modules.h"

namespace ce {
namespace {

// What a program calls itself without knowing its number.
constexpr HANDLE kCurrentProcess = 0x42;

}  // namespace

// The agent is the handheld's only process.
BOOL GetExitCodeProcess(HANDLE process, DWORD* exitCode) {
  return host::GuardedBool("GetExitCodeProcess", [&]() -> DWORD {
    if (!exitCode) return ERROR_INVALID_PARAMETER;
    if (process != kCurrentProcess && process != static_cast<HANDLE>(::getpid())) {
      return ERROR_INVALID_HANDLE;
    }
    *exitCode = STILL_ACTIVE;
    return ERROR_SUCCESS;
  });
}

}  // namespace ce
