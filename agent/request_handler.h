// The shape of every request handler.
#pragma once

#include "platform/types.h"

namespace corvane {

class CorvaneStream;

// `input` is borrowed. A buffered request is called with a null stream; it may allocate its output
// with LocalAlloc and leaves it to the caller to free, also when it fails. A streamed request reads
// and writes `stream`, which stays the caller's.
// The status: 0, a negative failure, or a positive Win32 code, which counts as success.
using RequestHandler = ce::HRESULT (*)(ce::DWORD inputCount, const ce::BYTE* input,
                                       ce::DWORD* outputCount, ce::BYTE** output,
                                       CorvaneStream* stream);

}  // namespace corvane
