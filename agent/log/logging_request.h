// The request that switches the log on or off.
#pragma once

#include "agent/request_handler.h"

namespace corvane {

// Input: one 32-bit level; no output. Stores the level in the registry and starts a fresh file
// when it is nonzero. The status is that of the registry.
ce::HRESULT CVResetLoggingState(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                                ce::BYTE** output, CorvaneStream* stream);

}  // namespace corvane
