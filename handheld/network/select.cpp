#include "handheld/network/select.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>

#include "handheld/base/fault.h"
#include "handheld/network/socket_errors.h"
#include "handheld/network/socket_table.h"

namespace ce {
namespace host {
namespace {

using SteadyClock = std::chrono::steady_clock;

std::atomic<double> g_timeLapse{1.0};
std::atomic<int> g_endFd{-1};

// The host calls a socket ready that neither listens nor has a connection; nothing will ever happen
// to it here.
int PollableFd(const Socket& socket) {
  const SocketState state = socket.state;
  const bool live = state == SocketState::kListening || state == SocketState::kConnected;
  return live ? socket.fd.get() : -1;
}

Deadline DeadlineOf(const timeval* timeout) {
  if (!timeout) return std::nullopt;
  const std::chrono::duration<double> wait =
      std::chrono::seconds(timeout->tv_sec) + std::chrono::microseconds(timeout->tv_usec);
  return SteadyClock::now() +
         std::chrono::duration_cast<SteadyClock::duration>(wait / g_timeLapse.load());
}

INT Select(fd_set& read, const timeval* timeout) {
  std::array<SocketPtr, FD_SETSIZE> sockets;  // keeps the descriptors open meanwhile
  std::array<::pollfd, FD_SETSIZE + 1> polls;
  const UINT count = std::min(read.fd_count, FD_SETSIZE);
  for (UINT i = 0; i < count; ++i) {
    sockets[i] = Sockets().Find(read.fd_array[i]);
    if (!sockets[i]) {
      PauseAfterFailure();
      return FailSocketCall(WSAENOTSOCK);
    }
    polls[i] = {PollableFd(*sockets[i]), POLLIN, 0};
  }
  const bool badTime = timeout && (timeout->tv_sec < 0 || timeout->tv_usec < 0);
  if (count == 0 || badTime) return FailSocketCall(kWsaInvalid);
  polls[count] = {g_endFd, POLLIN, 0};
  if (PollUntil({polls.data(), count + 1}, DeadlineOf(timeout)) < 0) {
    return FailSocketCall(SocketErrorFromErrno(errno));
  }
  UINT ready = 0;
  const bool ended = polls[count].revents != 0;
  for (UINT i = 0; i < count && !ended; ++i) {
    if (polls[i].revents != 0) read.fd_array[ready++] = read.fd_array[i];
  }
  read.fd_count = ready;
  return static_cast<INT>(ready);
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

void EndSelectsBy(int fd) {
  g_endFd = fd;
}

void SetTimeLapse(double factor) {
  g_timeLapse = factor;
}

}  // namespace host

INT select(INT, fd_set* read, fd_set*, fd_set*, const timeval* timeout) {
  if (const DWORD fault = host::FaultFor("select")) return host::FailSocketCall(fault);
  return read ? host::Select(*read, timeout) : host::FailSocketCall(host::kWsaInvalid);
}

}  // namespace ce
