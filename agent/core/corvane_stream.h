// The socket of a streamed request, as its handler sees it.
#pragma once

#include <array>

#include "platform/sockets.h"
#include "platform/types.h"

namespace corvane {

// Owns the socket that is attached to it. Belongs to one thread.
//
// A failed Read or Write answers the last error, which is positive and so passes the sign test:
// who needs the whole block looks at the count.
class CorvaneStream {
 public:
  CorvaneStream() = default;
  CorvaneStream(const CorvaneStream&) = delete;
  CorvaneStream& operator=(const CorvaneStream&) = delete;
  ~CorvaneStream();

  void Attach(ce::SOCKET socket);
  // One recv: may deliver less than asked, and 0 at the end of the connection. The out pointer may
  // be null; the count is 0 on failure.
  ce::HRESULT Read(void* buffer, ce::DWORD count, ce::DWORD* countRead);
  // One send: a short one is not completed.
  ce::HRESULT Write(const void* buffer, ce::DWORD count, ce::DWORD* countWritten) {
    return Put(buffer, count, countWritten, 0);
  }
  // As Write, for bytes that the next Write continues at once.
  ce::HRESULT WritePart(const void* buffer, ce::DWORD count, ce::DWORD* countWritten) {
    return Put(buffer, count, countWritten, ce::MSG_PARTIAL);
  }
  // Closes the socket; nothing when none is attached. What is held back is forgotten.
  void Release();

  // What is written from here on is held back, up to kMostHeld bytes; a write beyond that fails.
  // SendHeld lets it go in the order in which it was written, DropHeld forgets it; both end the
  // holding. The status of SendHeld is that of the last send.
  static constexpr ce::DWORD kMostHeld = 1024;
  void Hold();
  ce::HRESULT SendHeld();
  void DropHeld();

  // The connection has come to its end or has failed: no more bytes will come or go.
  bool Ended() const { return ended_; }

 private:
  ce::HRESULT Put(const void* buffer, ce::DWORD count, ce::DWORD* countWritten, ce::INT flags);
  ce::HRESULT Send(const void* buffer, ce::DWORD count, ce::DWORD* countSent, ce::INT flags);

  ce::SOCKET socket_ = 0;
  bool ended_ = false;
  bool holding_ = false;
  ce::DWORD heldCount_ = 0;
  std::array<ce::BYTE, kMostHeld> held_{};
};

// Writes all of it unless the stream reports an error or takes nothing more; the status of the last
// write (positive on a broken connection).
ce::HRESULT WriteBlock(CorvaneStream* stream, const void* block, ce::DWORD bytes);

// Four bytes, little-endian.
ce::HRESULT WriteWord(CorvaneStream* stream, ce::DWORD word);
// The same for a word that what it speaks of follows at once.
ce::HRESULT WriteWordAhead(CorvaneStream* stream, ce::DWORD word);

}  // namespace corvane
