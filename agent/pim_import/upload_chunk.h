// One length-prefixed document of an upload, as it comes off the connection.
#pragma once

#include "platform/com_ptr.h"
#include "platform/types.h"

namespace corvane {

class CorvaneStream;

// The four bytes in front of a document. 0 also when the connection ends before all four came. The
// status is that of the last read, positive when it failed.
ce::HRESULT ReadChunkCount(CorvaneStream* stream, ce::DWORD* count);

// Grows with the bytes that arrive, whatever count was announced.
class UploadChunk {
 public:
  // Reads `count` bytes. False ends the request: memory ran out or a count is beyond the
  // handheld's bound on blocks (`*status` is the last error), or the connection ended first.
  [[nodiscard]] bool Receive(CorvaneStream* stream, ce::DWORD count, ce::HRESULT* status);

  const ce::BYTE* data() const { return buffer_.get(); }  // with a 0 byte behind the last
  ce::DWORD size() const { return size_; }

 private:
  // Room for at least one more byte and the 0 byte.
  bool Grow(std::size_t whole);

  ce::LocalPtr<ce::BYTE> buffer_;
  std::size_t capacity_ = 0;
  ce::DWORD size_ = 0;
};

}  // namespace corvane
