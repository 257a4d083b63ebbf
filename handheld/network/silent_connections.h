// Connections whose peers have not sent a byte yet.
//
// No request is under way on them, so the agent can do without them: without the oldest when
// descriptors run short, without any when it ends. A connection that is ended is over for the call
// that receives from it, now or later; bytes that have come before are no longer silence, whether
// or not they have been read. Everything is thread-safe.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace ce::host {

// A connection's time among them. It must be over before the descriptor is closed.
class Silence {
 public:
  Silence() = default;
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence();

  // Once at most. May throw std::bad_alloc.
  void Begin(int fd);
  // The peer has been heard. Cheap when it had been before.
  void Break();

 private:
  std::atomic<std::uint64_t> id_{0};  // 0 while it does not last
};

// Waits a moment for the connection's own thread to let go of it. False when there is none.
bool EndOldestSilentConnection();

// Ends those that are still silent after `grace`; returns earlier when none is left.
void EndSilentConnections(std::chrono::milliseconds grace);

}  // namespace ce::host
