#include "agent/pim_import/upload_chunk.h"

#include <algorithm>

#include "agent/core/corvane_stream.h"
#include "agent/log/log.h"
#include "agent/request_handler.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

constexpr DWORD kMostAtOnce = DWORD{1} << 30;

// Whether the handheld would give out a block of this size.
bool IsWithinBound(std::size_t bytes) {
  return static_cast<bool>(LocalPtr<BYTE>(LocalAlloc(LMEM_FIXED, bytes)));
}

}  // namespace

HRESULT ReadChunkCount(CorvaneStream* stream, DWORD* count) {
  *count = 0;
  BYTE bytes[4] = {};
  DWORD total = 0;
  HRESULT status = S_OK;
  while (total < sizeof(bytes)) {
    DWORD read = 0;
    status = stream->Read(bytes + total, static_cast<DWORD>(sizeof(bytes)) - total, &read);
    if (status != S_OK || stream->Ended()) return status;
    total += read;
  }
  *count = InputWord(bytes);
  return status;
}

HRESULT UploadChunk::Allocate(DWORD count) {
  if (!IsWithinBound(std::size_t{count} + 1)) return LastErrorStatus();
  VARIANT* const variant = array_.put();
  variant->parray = SafeArrayCreateVector(VT_UI1, 0, count);
  if (!variant->parray) return LastErrorStatus();
  variant->vt = VT_ARRAY | VT_UI1;
  void* memory = nullptr;
  RETURN_IF_FAILED(SafeArrayAccessData(variant->parray, &memory));
  data_ = static_cast<BYTE*>(memory);
  return SafeArrayUnaccessData(variant->parray);
}

bool UploadChunk::Receive(CorvaneStream* stream, DWORD count, HRESULT* status) {
  // Memory that ran out shows as a positive code.
  *status = Allocate(count);
  if (*status != S_OK) return false;
  while (size_ < count) {
    DWORD read = 0;
    *status = stream->Read(data_ + size_, std::min(count - size_, kMostAtOnce), &read);
    if (*status == S_OK) {
      size_ += read;
      LOG(u"cbBytes actually read %ld", size_);
    }
    if (*status != S_OK || stream->Ended()) return false;
  }
  return true;
}

}  // namespace corvane
