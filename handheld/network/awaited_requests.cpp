#include "handheld/network/awaited_requests.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>

namespace ce::host {
namespace {

using std::chrono::steady_clock;

// Enough for a thread that only has to return; nobody depends on it.
constexpr std::chrono::milliseconds kLetGo{50};

bool HasBytes(int fd) {
  char byte;
  return ::recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
}

// Connections by age. One that is listed is open, since its AwaitedRequest takes it out before it
// is closed.
class AwaitedRequests {
 public:
  std::uint64_t Add(int fd);
  void Remove(std::uint64_t id);
  // Whether a call waits to receive from it.
  void SetAwaited(std::uint64_t id, bool awaited);
  bool EndOldest();
  void EndAll(std::chrono::milliseconds grace);

 private:
  enum class State { kAwaited, kHeard, kEnded };
  struct Connection {
    int fd;
    State state;
  };

  // False for one that is not awaited, or that has just been heard. The caller holds lock_.
  static bool End(Connection& connection);

  std::mutex lock_;
  std::condition_variable changed_;
  std::map<std::uint64_t, Connection> connections_;
  std::uint64_t lastId_ = 0;
};

AwaitedRequests& Requests() {
  // Outlives every thread that may still use a socket while the process ends.
  static AwaitedRequests* const requests = new AwaitedRequests;
  return *requests;
}

std::uint64_t AwaitedRequests::Add(int fd) {
  const std::lock_guard guard(lock_);
  connections_.emplace(lastId_ + 1, Connection{fd, State::kAwaited});
  return ++lastId_;
}

void AwaitedRequests::Remove(std::uint64_t id) {
  const std::lock_guard guard(lock_);
  connections_.erase(id);
  changed_.notify_all();
}

void AwaitedRequests::SetAwaited(std::uint64_t id, bool awaited) {
  const std::lock_guard guard(lock_);
  const auto found = connections_.find(id);
  if (found == connections_.end() || found->second.state == State::kEnded) return;
  found->second.state = awaited ? State::kAwaited : State::kHeard;
  changed_.notify_all();
}

bool AwaitedRequests::End(Connection& connection) {
  if (connection.state != State::kAwaited || HasBytes(connection.fd)) return false;
  // Only receiving ends: a request that comes at this very moment can still be answered.
  ::shutdown(connection.fd, SHUT_RD);
  connection.state = State::kEnded;
  return true;
}

bool AwaitedRequests::EndOldest() {
  std::unique_lock guard(lock_);
  for (auto& [id, connection] : connections_) {
    if (!End(connection)) continue;
    changed_.wait_for(guard, kLetGo, [&, ended = id] { return !connections_.contains(ended); });
    return true;
  }
  return false;
}

void AwaitedRequests::EndAll(std::chrono::milliseconds grace) {
  std::unique_lock guard(lock_);
  changed_.wait_for(guard, grace, [&] {
    return std::ranges::none_of(
        connections_, [](const auto& each) { return each.second.state == State::kAwaited; });
  });
  for (auto& [id, connection] : connections_) End(connection);
}

}  // namespace

void AwaitedRequest::Begin(int fd, Patience patience) {
  fd_ = fd;
  silence_ = patience.silence;
  if (patience.whole.count() != 0) deadline_ = steady_clock::now() + patience.whole;
  id_ = Requests().Add(fd);
}

bool AwaitedRequest::Hear() {
  const std::uint64_t id = id_.load(std::memory_order_relaxed);
  if (id == 0) return false;
  if (!heard_) Requests().SetAwaited(id, false);
  heard_ = true;
  return true;
}

bool AwaitedRequest::WaitForBytes() {
  const std::uint64_t id = id_.load(std::memory_order_relaxed);
  if (id == 0) return true;
  Deadline deadline = deadline_;
  if (silence_.count() != 0) {
    const auto end = steady_clock::now() + silence_;
    deadline = std::min(deadline.value_or(end), end);
  }
  ::pollfd poll{fd_, POLLIN, 0};
  Requests().SetAwaited(id, true);
  const int ready = PollUntil({&poll, 1}, deadline);
  Requests().SetAwaited(id, false);
  return ready != 0;
}

void AwaitedRequest::End() {
  if (id_.load(std::memory_order_relaxed) == 0) return;
  if (const std::uint64_t id = id_.exchange(0)) Requests().Remove(id);
}

bool EndOldestAwaitedRequest() {
  return Requests().EndOldest();
}

void EndAwaitedRequests(std::chrono::milliseconds grace) {
  Requests().EndAll(grace);
}

}  // namespace ce::host
