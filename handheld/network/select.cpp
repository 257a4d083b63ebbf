#include "handheld/network/select.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <utility>

#include "handheld/base/fault.h"
#include "handheld/network/socket_errors.h"
#include "handheld/network/socket_table.h"

namespace ce {
namespace host {
namespace {

using SteadyClock = std::chrono::steady_clock;

std::atomic<double> g_timeLapse{1.0};

// One of select's sets while it waits.
class Selection {
 public:
  Selection(fd_set* set, short events) : set_(set), events_(events) {}

  // Appends the set's sockets to `polls`; false when one is not open.
  bool Open(::pollfd* polls, std::size_t* count) {
    first_ = *count;
    for (UINT i = 0; i < Size(); ++i) {
      SocketPtr socket = Sockets().Find(set_->fd_array[i]);
      if (!socket) return false;
      polls[(*count)++] = {PollableFd(*socket), events_, 0};
      sockets_[i] = std::move(socket);
    }
    return true;
  }

  // Leaves the ready sockets in the set and gives their number.
  INT KeepReady(const ::pollfd* polls) {
    UINT kept = 0;
    const UINT size = Size();
    for (UINT i = 0; i < size; ++i) {
      if (Ready(polls[first_ + i])) set_->fd_array[kept++] = set_->fd_array[i];
    }
    if (set_) set_->fd_count = kept;
    return static_cast<INT>(kept);
  }

  UINT Size() const {
    if (!set_) return 0;
    return set_->fd_count < FD_SETSIZE ? set_->fd_count : FD_SETSIZE;
  }

 private:
  // The host calls a socket ready that neither listens nor has a connection; nothing will ever
  // happen to it here.
  static int PollableFd(const Socket& socket) {
    const SocketState state = socket.state;
    const bool live = state == SocketState::kListening || state == SocketState::kConnected;
    return live ? socket.fd.get() : -1;
  }

  bool Ready(const ::pollfd& poll) const {
    const int ends = events_ == POLLPRI ? 0 : POLLHUP | POLLERR;
    return (poll.revents & (events_ | ends)) != 0;
  }

  fd_set* const set_;
  const short events_;
  std::size_t first_ = 0;
  std::array<SocketPtr, FD_SETSIZE> sockets_;  // keeps the descriptors open meanwhile
};

Deadline DeadlineOf(const timeval* timeout) {
  if (!timeout) return std::nullopt;
  const std::chrono::duration<double> wait =
      std::chrono::seconds(timeout->tv_sec) + std::chrono::microseconds(timeout->tv_usec);
  return SteadyClock::now() +
         std::chrono::duration_cast<SteadyClock::duration>(wait / g_timeLapse.load());
}

INT Select(fd_set* read, fd_set* write, fd_set* error, const timeval* timeout) {
  std::array<Selection, 3> sets{Selection(read, POLLIN), Selection(write, POLLOUT),
                                Selection(error, POLLPRI)};
  std::array<::pollfd, 3 * FD_SETSIZE> polls;
  std::size_t count = 0;
  for (Selection& set : sets) {
    if (!set.Open(polls.data(), &count)) {
      PauseAfterFailure();
      return FailSocketCall(WSAENOTSOCK);
    }
  }
  const bool badTime = timeout && (timeout->tv_sec < 0 || timeout->tv_usec < 0);
  if (count == 0 || badTime) return FailSocketCall(kWsaInvalid);
  if (PollUntil({polls.data(), count}, DeadlineOf(timeout)) < 0) {
    return FailSocketCall(SocketErrorFromErrno(errno));
  }
  INT ready = 0;
  for (Selection& set : sets) ready += set.KeepReady(polls.data());
  return ready;
}

}  // namespace

int PollUntil(std::span<::pollfd> polls, const Deadline& deadline) {
  for (;;) {
    ::timespec left{};
    if (deadline) {
      const auto wait = std::max(*deadline - SteadyClock::now(), SteadyClock::duration::zero());
      const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(wait);
      left.tv_sec = seconds.count();
      left.tv_nsec = std::chrono::nanoseconds(wait - seconds).count();
    }
    const int ready = ::ppoll(polls.data(), polls.size(), deadline ? &left : nullptr, nullptr);
    if (ready >= 0 || errno != EINTR) return ready;
  }
}

void SetTimeLapse(double factor) {
  g_timeLapse = factor;
}

}  // namespace host

INT select(INT, fd_set* read, fd_set* write, fd_set* error, const timeval* timeout) {
  if (const DWORD fault = host::FaultFor("select")) return host::FailSocketCall(fault);
  return host::Select(read, write, error, timeout);
}

}  // namespace ce
