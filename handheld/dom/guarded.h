// The frame of every COM method: its fault point, and no exception beyond it.
#pragma once

#include <new>
#include <stdexcept>

#include "handheld/base/fault.h"
#include "platform/types.h"

namespace ce::host::dom {

template <typename Work>
[[nodiscard]] HRESULT Guarded(const char* call, Work work) noexcept {
  try {
    if (const HRESULT fault = FaultStatus(call); Failed(fault)) return fault;
    return work();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::length_error&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace ce::host::dom
