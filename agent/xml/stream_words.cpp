#include "agent/xml/stream_words.h"

#include "agent/core/corvane_stream.h"

namespace corvane {

using namespace ce;

HRESULT WriteBlock(CorvaneStream* stream, const void* block, DWORD bytes) {
  const BYTE* next = static_cast<const BYTE*>(block);
  HRESULT status = S_OK;
  while (bytes > 0) {
    DWORD written = 0;
    status = stream->Write(next, bytes, &written);
    if (status != S_OK || written == 0 || written > bytes) break;
    next += written;
    bytes -= written;
  }
  return status;
}

HRESULT WriteWord(CorvaneStream* stream, DWORD word) {
  const BYTE bytes[4] = {static_cast<BYTE>(word), static_cast<BYTE>(word >> 8),
                         static_cast<BYTE>(word >> 16), static_cast<BYTE>(word >> 24)};
  return WriteBlock(stream, bytes, sizeof(bytes));
}

}  // namespace corvane
