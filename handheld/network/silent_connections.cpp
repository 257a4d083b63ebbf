#include "handheld/network/silent_connections.h"

#include <sys/socket.h>

#include <condition_variable>
#include <map>
#include <mutex>

namespace ce::host {
namespace {

// Enough for a thread that only has to return; nobody depends on it.
constexpr std::chrono::milliseconds kLetGo{50};

bool HasBytes(int fd) {
  char byte;
  return ::recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
}

// Descriptors by the age of their connections. One that is listed is open, since its Silence
// takes it out before it is closed.
class SilentConnections {
 public:
  std::uint64_t Add(int fd);
  void Remove(std::uint64_t id);
  bool EndOldest();
  void EndAll(std::chrono::milliseconds grace);

 private:
  using ByAge = std::map<std::uint64_t, int>;

  // False when the oldest has just been heard. The caller holds lock_.
  bool End(ByAge::iterator oldest);

  std::mutex lock_;
  std::condition_variable removed_;
  ByAge silent_;
  ByAge ended_;  // until their threads let go of them
  std::uint64_t lastId_ = 0;
};

SilentConnections& Silent() {
  // Outlives every thread that may still use a socket while the process ends.
  static SilentConnections* const silent = new SilentConnections;
  return *silent;
}

std::uint64_t SilentConnections::Add(int fd) {
  const std::lock_guard guard(lock_);
  silent_.emplace(lastId_ + 1, fd);
  return ++lastId_;
}

void SilentConnections::Remove(std::uint64_t id) {
  const std::lock_guard guard(lock_);
  if (silent_.erase(id) + ended_.erase(id) > 0) removed_.notify_all();
}

bool SilentConnections::End(ByAge::iterator oldest) {
  if (HasBytes(oldest->second)) {
    silent_.erase(oldest);
    return false;
  }
  // Only receiving ends: a request that comes at this very moment can still be answered.
  ::shutdown(oldest->second, SHUT_RD);
  ended_.insert(silent_.extract(oldest));
  return true;
}

bool SilentConnections::EndOldest() {
  std::unique_lock guard(lock_);
  while (!silent_.empty()) {
    const std::uint64_t id = silent_.begin()->first;
    if (!End(silent_.begin())) continue;
    removed_.wait_for(guard, kLetGo, [&] { return ended_.count(id) == 0; });
    return true;
  }
  return false;
}

void SilentConnections::EndAll(std::chrono::milliseconds grace) {
  std::unique_lock guard(lock_);
  removed_.wait_for(guard, grace, [&] { return silent_.empty(); });
  while (!silent_.empty()) End(silent_.begin());
}

}  // namespace

Silence::~Silence() {
  Break();
}

void Silence::Begin(int fd) {
  id_ = Silent().Add(fd);
}

void Silence::Break() {
  if (id_.load(std::memory_order_relaxed) == 0) return;
  if (const std::uint64_t id = id_.exchange(0)) Silent().Remove(id);
}

bool EndOldestSilentConnection() {
  return Silent().EndOldest();
}

void EndSilentConnections(std::chrono::milliseconds grace) {
  Silent().EndAll(grace);
}

}  // namespace ce::host
