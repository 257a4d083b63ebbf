#include "agent/pim_import/upload_chunk.h"

#include <algorithm>

#include "agent/core/corvane_stream.h"
#include "agent/log/log.h"
#include "agent/request_handler.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

constexpr std::size_t kFirstCapacity = 64 * 1024;

// Whether the handheld would give out a block of this size. It is not touched, so it costs nothing.
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

bool UploadChunk::Receive(CorvaneStream* stream, DWORD count, HRESULT* status) {
  const std::size_t whole = std::size_t{count} + 1;
  if ((whole > kFirstCapacity && !IsWithinBound(whole)) || !Grow(whole)) {
    *status = LastErrorStatus();
    return false;
  }
  while (size_ < count) {
    if (size_ + std::size_t{1} == capacity_ && !Grow(whole)) {
      *status = LastErrorStatus();
      return false;
    }
    DWORD read = 0;
    *status = stream->Read(buffer_.get() + size_,
                           static_cast<DWORD>(std::min<std::size_t>(count, capacity_ - 1)) - size_,
                           &read);
    if (*status == S_OK) {
      size_ += read;
      LOG(u"cbBytes actually read %ld", size_);
    }
    if (*status != S_OK || stream->Ended()) return false;
  }
  buffer_.get()[size_] = 0;
  return true;
}

bool UploadChunk::Grow(std::size_t whole) {
  const std::size_t wanted = std::min(whole, capacity_ == 0 ? kFirstCapacity : 2 * capacity_);
  if (capacity_ == 0) {
    buffer_.reset(LocalAlloc(LMEM_FIXED, wanted));
    if (!buffer_) return false;
  } else {
    void* const grown = LocalReAlloc(buffer_.get(), wanted, LMEM_MOVEABLE);
    if (!grown) return false;
    static_cast<void>(buffer_.detach());
    buffer_.reset(grown);
  }
  capacity_ = wanted;
  return true;
}

}  // namespace corvane
