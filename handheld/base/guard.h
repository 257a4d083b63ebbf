// The frame of every COM method here: its fault point, and the end of every exception.
#pragma once

#include <new>
#include <utility>

#include "handheld/base/fault.h"
#include "platform/types.h"

namespace ce::host {

template <typename Body>
HRESULT Guarded(const char* call, Body&& body) noexcept {
  try {
    if (const HRESULT fault = FaultStatus(call); Failed(fault)) return fault;
    return std::forward<Body>(body)();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_UNEXPECTED;
  }
}

}  // namespace ce::host
