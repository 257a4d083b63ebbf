// Connections whose requests have not come whole.
//
// A connection is awaited from its accept on, and again whenever a call waits to receive from it,
// until something is sent: what is received after that belongs to a request that is being served.
// The agent can do without an awaited connection: without the oldest when descriptors run short,
// without any when it ends, without one whose time is up. One that is ended is over for the call
// that receives from it, now or later; bytes that have come before are still received. Everything
// is thread-safe.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>

#include "handheld/network/select.h"

namespace ce::host {

// A connection's place among them. It must be over before the descriptor is closed.
class AwaitedRequest {
 public:
  // How long the peer may take; 0 for as long as it likes.
  struct Patience {
    std::chrono::seconds whole;    // for the whole request, from accept on
    std::chrono::seconds silence;  // without a byte
  };

  AwaitedRequest() = default;
  AwaitedRequest(const AwaitedRequest&) = delete;
  AwaitedRequest& operator=(const AwaitedRequest&) = delete;
  ~AwaitedRequest() { End(); }

  // Once at most, by accept. May throw std::bad_alloc.
  void Begin(int fd, Patience patience);
  // Whether the request is awaited still. What has come of it can be received without waiting: the
  // connection counts as heard.
  [[nodiscard]] bool Hear();
  // For a call that is to receive. Returns at once when the request is not awaited, otherwise when
  // there is something to receive; false when the peer's time is up.
  [[nodiscard]] bool WaitForBytes();
  // Something is sent. Cheap when something was before.
  void End();

 private:
  std::atomic<std::uint64_t> id_{0};  // 0 before and after
  int fd_ = -1;
  std::chrono::seconds silence_{0};
  Deadline deadline_;
  bool heard_ = false;  // of the thread that receives
};

// Waits a moment for the connection's own thread to let go of it. False when there is none.
bool EndOldestAwaitedRequest();

// Ends those that are still awaited after `grace`; returns earlier when none is left.
void EndAwaitedRequests(std::chrono::milliseconds grace);

}  // namespace ce::host
