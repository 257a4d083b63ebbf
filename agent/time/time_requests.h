// The requests that read and set the handheld's clock.
#pragma once

#include "agent/request_handler.h"

namespace corvane {

// Sets the clock to a UTC time, moved by the daylight bias when the daylight state at that time is
// not the present one. Both states are judged on the UTC times as if they were local, as the
// desktop expects. Nonzero on success; otherwise the last error tells why.
ce::BOOL MySetSystemTime(const ce::SYSTEMTIME& utc);

// No input. Output: the current UTC time, a SYSTEMTIME of 16 bytes.
ce::HRESULT CVCeGetSystemTime(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                              ce::BYTE** output, CorvaneStream* stream);

// Input: a UTC SYSTEMTIME of 16 bytes. No output.
ce::HRESULT CVCeSetSystemTime(ce::DWORD inputCount, const ce::BYTE* input, ce::DWORD* outputCount,
                              ce::BYTE** output, CorvaneStream* stream);

}  // namespace corvane
