// Errors of the host system as the device's codes.
#pragma once

#include "platform/types.h"

namespace ce::host {

// `fallback` for an errno without a counterpart.
DWORD ErrorFromErrno(int error, DWORD fallback);

}  // namespace ce::host
