// One length-prefixed document of an upload, as it comes off the connection.
#pragma once

#include "platform/com_ptr.h"
#include "platform/types.h"

namespace corvane {

class CorvaneStream;

// The four bytes in front of a document. 0 also when the connection ends before all four came. The
// status is that of the last read, positive when it failed.
ce::HRESULT ReadChunkCount(CorvaneStream* stream, ce::DWORD* count);

// Lies in the array that a document is loaded from. Bytes that have not come cost nothing, whatever
// count was announced.
class UploadChunk {
 public:
  // Reads `count` bytes. False ends the request: memory ran out or a count is beyond the
  // handheld's bound on blocks (`*status` is the last error), or the connection ended first.
  [[nodiscard]] bool Receive(CorvaneStream* stream, ce::DWORD count, ce::HRESULT* status);

  const ce::BYTE* data() const { return data_; }
  ce::DWORD size() const { return size_; }
  // All of it, once it has been received.
  const ce::VARIANT& array() const { return array_.get(); }

 private:
  ce::HRESULT Allocate(ce::DWORD count);

  ce::Variant array_;
  ce::BYTE* data_ = nullptr;
  ce::DWORD size_ = 0;
};

}  // namespace corvane
