#include "handheld/network/socket_watcher.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <map>
#include <mutex>
#include <new>
#include <thread>

#include "handheld/network/transfer.h"

namespace ce::host {
namespace {

constexpr std::uint64_t kWake = 0;

class SocketWatcher {
 public:
  void Add(SocketPtr socket);
  bool CloseOldest();
  std::size_t Count();
  void Stop();

 private:
  using Abandoned = std::map<std::uint64_t, SocketPtr>;  // by age, the oldest first

  // The callers of these hold lock_.

  // When the system refuses, the sockets wait for the next attempt, or for their turn as oldest.
  void Start();
  void Watch(std::uint64_t id, const Socket& socket);
  void Close(Abandoned::iterator abandoned);
  void Serve(std::uint64_t id);

  void Run(int poll);

  std::mutex lock_;
  Abandoned abandoned_;
  std::uint64_t lastId_ = kWake;
  UniqueFd poll_;
  UniqueFd wake_;
  std::thread thread_;
};

SocketWatcher& Watcher() {
  // Outlives every thread that may still abandon a socket while the process ends.
  static SocketWatcher* const watcher = new SocketWatcher;
  return *watcher;
}

bool AddToPoll(int poll, int fd, std::uint64_t id) {
  epoll_event event{};
  event.events = EPOLLIN | EPOLLRDHUP;
  event.data.u64 = id;
  return ::epoll_ctl(poll, EPOLL_CTL_ADD, fd, &event) == 0;
}

// True once the connection is over. What still comes is thrown away, a bounded part at a time.
bool Drained(int fd) {
  std::array<std::byte, 16384> bytes;
  for (int part = 0; part < 64; ++part) {
    const ssize_t count = ::recv(fd, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count == 0) return true;
    if (count < 0 && errno != EINTR) return errno != EAGAIN;
  }
  return false;
}

std::size_t Budget() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return SIZE_MAX;
  return limit.rlim_cur / 2;
}

void SocketWatcher::Add(SocketPtr socket) {
  const std::lock_guard guard(lock_);
  const std::uint64_t id = ++lastId_;
  abandoned_.emplace(id, std::move(socket));
  if (thread_.joinable()) {
    Watch(id, *abandoned_.at(id));
  } else {
    Start();
  }
  for (const std::size_t budget = Budget(); abandoned_.size() > budget;) Close(abandoned_.begin());
}

void SocketWatcher::Start() {
  UniqueFd poll(::epoll_create1(EPOLL_CLOEXEC));
  UniqueFd wake(::eventfd(0, EFD_CLOEXEC));
  if (!poll || !wake || !AddToPoll(poll.get(), wake.get(), kWake)) return;
  try {
    thread_ = std::thread(&SocketWatcher::Run, this, poll.get());
  } catch (const std::exception&) {
    return;
  }
  poll_ = std::move(poll);
  wake_ = std::move(wake);
  for (const auto& [id, socket] : abandoned_) Watch(id, *socket);
}

void SocketWatcher::Watch(std::uint64_t id, const Socket& socket) {
  // One that the system does not take is closed in its turn, as the oldest.
  static_cast<void>(AddToPoll(poll_.get(), socket.fd.get(), id));
}

void SocketWatcher::Close(Abandoned::iterator abandoned) {
  // Closing takes it out of the poll, unless another thread's call keeps it open.
  const SocketPtr& socket = abandoned->second;
  if (poll_ && socket.use_count() > 1) {
    ::epoll_ctl(poll_.get(), EPOLL_CTL_DEL, socket->fd.get(), nullptr);
  }
  CloseNow(std::move(abandoned->second));
  abandoned_.erase(abandoned);
}

void SocketWatcher::Serve(std::uint64_t id) {
  const auto found = abandoned_.find(id);
  if (found != abandoned_.end() && Drained(found->second->fd.get())) Close(found);
}

void SocketWatcher::Run(int poll) {
  std::array<epoll_event, 64> events;
  for (;;) {
    const int count = ::epoll_wait(poll, events.data(), static_cast<int>(events.size()), -1);
    for (int i = 0; i < count; ++i) {
      const std::uint64_t id = events[static_cast<std::size_t>(i)].data.u64;
      if (id == kWake) return;
      const std::lock_guard guard(lock_);
      Serve(id);
    }
  }
}

bool SocketWatcher::CloseOldest() {
  const std::lock_guard guard(lock_);
  if (abandoned_.empty()) return false;
  Close(abandoned_.begin());
  return true;
}

std::size_t SocketWatcher::Count() {
  const std::lock_guard guard(lock_);
  return abandoned_.size();
}

void SocketWatcher::Stop() {
  std::thread thread;
  UniqueFd poll;  // the thread's until it is over
  UniqueFd wake;
  {
    const std::lock_guard guard(lock_);
    while (!abandoned_.empty()) Close(abandoned_.begin());
    thread = std::move(thread_);
    poll = std::move(poll_);
    wake = std::move(wake_);
  }
  if (!thread.joinable()) return;
  ::eventfd_write(wake.get(), 1);
  thread.join();
}

}  // namespace

bool IsOpenSocket(SOCKET handle) {
  return Sockets().Find(handle) != nullptr;
}

void AbandonSocket(SOCKET handle) {
  if (SocketPtr socket = Sockets().Remove(handle)) AbandonSocket(std::move(socket));
}

void AbandonSocket(SocketPtr socket) {
  if (socket->state != SocketState::kConnected || socket->peerGone) {
    CloseNow(std::move(socket));
    return;
  }
  SendHeld(*socket);
  try {
    Watcher().Add(std::move(socket));
  } catch (const std::bad_alloc&) {  // then it is closed instead
  }
}

bool CloseOldestAbandonedSocket() {
  return Watcher().CloseOldest();
}

std::size_t AbandonedSocketCount() {
  return Watcher().Count();
}

void StopSocketWatcher() {
  Watcher().Stop();
}

}  // namespace ce::host
