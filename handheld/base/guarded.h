// The frame of every call of the handheld: its fault point first, and no exception out of it.
#pragma once

#include <new>
#include <stdexcept>
#include <utility>

#include "handheld/base/fault.h"
#include "platform/status.h"

namespace ce::host {

// Runs `body`, which returns an HRESULT, as the COM method `call`.
template <typename Body>
HRESULT Guarded(const char* call, Body&& body) noexcept {
  try {
    RETURN_IF_FAILED(FaultStatus(call));
    return std::forward<Body>(body)();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::length_error&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_UNEXPECTED;
  }
}

// The same for a method with a result: E_POINTER without a place for it, which is emptied before
// anything else.
template <typename Result, typename Body>
HRESULT Guarded(const char* call, Result* result, Body&& body) noexcept {
  if (!result) return E_POINTER;
  *result = Result{};
  return Guarded(call, std::forward<Body>(body));
}

// Runs `body`, which returns a Win32 code, as the call `call`.
template <typename Body>
DWORD GuardedCode(const char* call, Body&& body) noexcept {
  try {
    if (const DWORD fault = FaultFor(call)) return fault;
    return std::forward<Body>(body)();
  } catch (const std::bad_alloc&) {
    return ERROR_NOT_ENOUGH_MEMORY;
  } catch (...) {
    return ERROR_GEN_FAILURE;
  }
}

// As GuardedCode, for calls that answer TRUE, or FALSE and the last error.
template <typename Body>
BOOL GuardedBool(const char* call, Body&& body) noexcept {
  const DWORD error = GuardedCode(call, std::forward<Body>(body));
  if (error != ERROR_SUCCESS) SetLastError(error);
  return error == ERROR_SUCCESS ? TRUE : FALSE;
}

}  // namespace ce::host
