// The calling thread's last-error value.
#pragma once

#include "platform/types.h"

namespace ce {

DWORD GetLastError();
void SetLastError(DWORD error);

}  // namespace ce
