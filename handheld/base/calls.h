// The shape of every call of this family: a fault point first, and no exception out of it.
#pragma once

#include <new>
#include <utility>

#include "handheld/base/fault.h"
#include "platform/last_error.h"
#include "platform/types.h"

namespace ce::host {

// Runs `body`, which returns a Win32 code, as the call `name`. Out of memory and whatever else is
// thrown become codes.
template <typename Body>
DWORD Guarded(const char* name, Body&& body) noexcept {
  try {
    if (const DWORD fault = FaultFor(name)) return fault;
    return std::forward<Body>(body)();
  } catch (const std::bad_alloc&) {
    return ERROR_NOT_ENOUGH_MEMORY;
  } catch (...) {
    return ERROR_GEN_FAILURE;
  }
}

// As Guarded, for calls that answer TRUE, or FALSE and the last error.
template <typename Body>
BOOL GuardedBool(const char* name, Body&& body) noexcept {
  const DWORD error = Guarded(name, std::forward<Body>(body));
  if (error != ERROR_SUCCESS) SetLastError(error);
  return error == ERROR_SUCCESS ? TRUE : FALSE;
}

}  // namespace ce::host
