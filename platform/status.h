// How a call tells that it failed: by a status, or by the calling thread's last-error value.
#pragma once

#include "platform/types.h"

namespace ce {

DWORD GetLastError();
void SetLastError(DWORD error);

// The last error as a status. A plain code is positive, so that it is no failure by itself.
inline HRESULT LastErrorStatus() {
  return static_cast<HRESULT>(GetLastError());
}

}  // namespace ce

// Early return on failure. Failure is the sign alone: positive Win32 codes pass.
#define RETURN_IF_FAILED(expression)                                                   \
  do {                                                                                 \
    if (const ce::HRESULT status_ = (expression); ce::Failed(status_)) return status_; \
  } while (false)
