// Whole blocks and 32-bit words on the connection's stream, whose own write may be short.
#pragma once

#include "platform/types.h"

namespace corvane {

class CorvaneStream;

// Writes all of it unless the stream reports an error or takes nothing more; the status of the last
// write (positive on a broken connection).
ce::HRESULT WriteBlock(CorvaneStream* stream, const void* block, ce::DWORD bytes);

// Four bytes, little-endian.
ce::HRESULT WriteWord(CorvaneStream* stream, ce::DWORD word);

}  // namespace corvane
