// The open sockets of the process and the values that stand for them.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "handheld/base/unique_fd.h"
#include "handheld/network/awaited_requests.h"
#include "platform/sockets.h"

namespace ce::host {

enum class SocketState { kNew, kBound, kListening, kConnected };

// Bytes that wait for those that follow them. Of the thread that sends.
class HeldBytes {
 public:
  // False when there is no room for them.
  [[nodiscard]] bool Hold(std::span<const std::byte> bytes) {
    if (bytes.size() > bytes_.size() - count_) return false;
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + count_);
    count_ += bytes.size();
    return true;
  }
  std::span<const std::byte> bytes() const { return {bytes_.data(), count_}; }
  void Clear() { count_ = 0; }

 private:
  std::array<std::byte, 32> bytes_;
  std::size_t count_ = 0;
};

// Lives as long as the table or a call under way refers to it; its descriptor with it.
struct Socket {
  Socket(UniqueFd descriptor, SocketState initial);
  ~Socket();

  const UniqueFd fd;
  std::atomic<SocketState> state;
  std::atomic<bool> agentPort{false};  // listens, or is to listen, for the agent
  std::atomic<bool> announced{false};  // the user has been told that it listens
  std::atomic<bool> peerGone{false};   // the peer took longer than a limit allows
  HeldBytes held;
  AwaitedRequest awaited;  // behind fd, to be over before it closes
};
using SocketPtr = std::shared_ptr<Socket>;

// A value names a place in the table and the place's generation, so one that is kept beyond its
// closing finds nothing rather than somebody else's socket. Thread-safe.
class SocketTable {
 public:
  // Never 0 or INVALID_SOCKET, and odd: no object's address is mistaken for a socket. May throw
  // std::bad_alloc.
  SOCKET Add(SocketPtr socket);
  // Null when the value is unknown or closed.
  SocketPtr Find(SOCKET handle) const;
  // Lets an open value stand for another socket; the value's former socket otherwise keeps on.
  void Replace(SOCKET handle, SocketPtr socket);
  // The value ends; gives what it stood for, or null.
  SocketPtr Remove(SOCKET handle);

 private:
  struct Place {
    SOCKET generation = 1;
    SocketPtr socket;
  };
  // The place in use by this value, or null.
  const Place* At(SOCKET handle) const;

  mutable std::mutex lock_;
  std::vector<Place> places_;
  std::vector<std::size_t> free_;
};

SocketTable& Sockets();

// Of the process: those with a value, abandoned ones, and those that a call still refers to.
std::size_t OpenSocketCount();

// Ends the connection or the listening at once, also for a call that another thread has under way.
void CloseNow(SocketPtr socket);

}  // namespace ce::host
