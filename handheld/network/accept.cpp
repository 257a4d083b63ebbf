#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <new>
#include <utility>

#include "handheld/base/fault.h"
#include "handheld/directory/handheld.h"
#include "handheld/network/awaited_requests.h"
#include "handheld/network/listen_options.h"
#include "handheld/network/socket_errors.h"
#include "handheld/network/socket_table.h"
#include "handheld/network/socket_watcher.h"
#include "platform/status.h"

namespace ce {
namespace host {
namespace {

// For what the process always has open, and for the store and files of the requests under way.
constexpr rlim_t kReservedDescriptors = 24;

AwaitedRequest::Patience CurrentPatience() {
  const Handheld* handheld = Handheld::Current();
  return {std::chrono::seconds(handheld ? handheld->RequestTimeout()
                                        : Handheld::kDefaultRequestTimeout),
          std::chrono::seconds(handheld ? handheld->PeerTimeout() : Handheld::kDefaultPeerTimeout)};
}

// None of these options is worth refusing a connection for.
void Prepare(int fd, std::chrono::seconds silence) {
  const int on = 1;
  const ::timeval timeout{static_cast<time_t>(silence.count()), 0};  // 0 is no limit
  ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  ::setsockopt(fd, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof(on));
  ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
  ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof(timeout));
}

bool WantOfDescriptors(int error) {
  return error == EMFILE || error == ENFILE;
}

bool DescriptorsAreShort() {
  ::rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return false;
  const rlim_t reserve = std::min(kReservedDescriptors, limit.rlim_cur / 2);
  return OpenSocketCount() >= limit.rlim_cur - reserve;
}

// Ends a connection that has no request under way; false when there is none.
bool MakeRoom() {
  return CloseOldestAbandonedSocket() || EndOldestAwaitedRequest();
}

// The descriptor, or -1 and errno. A connection that comes when descriptors are short costs another
// one its place, so that some are left for more than sockets.
int AcceptDescriptor(int listener, ::sockaddr_storage* peer) {
  for (;;) {
    socklen_t length = sizeof(*peer);
    const int fd = ::accept4(listener, reinterpret_cast<sockaddr*>(peer), &length, SOCK_CLOEXEC);
    if (fd >= 0) {
      if (DescriptorsAreShort()) MakeRoom();
      return fd;
    }
    const int error = errno;
    if (error == EINTR || (WantOfDescriptors(error) && MakeRoom())) continue;
    errno = error;
    return -1;
  }
}

// Whether another connection waits.
bool HasAnother(int listener) {
  ::pollfd poll{listener, POLLIN, 0};
  return ::poll(&poll, 1, 0) == 1;
}

// As AcceptDescriptor, for somebody who may connect; others are shown the door.
UniqueFd AcceptAllowed(const Socket& listener, ::sockaddr_storage* peer) {
  for (;;) {
    UniqueFd fd(AcceptDescriptor(listener.fd.get(), peer));
    if (!fd || !listener.agentPort || MayConnect(AnyAddressOf(*peer))) return fd;
    fd.reset();
    if (HasAnother(listener.fd.get())) continue;
    errno = ECONNABORTED;
    return fd;
  }
}

// The device's form of an IPv4 address, also of one that an IPv6 socket shows in its own form; all
// zero for others.
sockaddr_in DeviceAddress(const ::sockaddr_storage& address) {
  sockaddr_in device{};
  if (address.ss_family == PF_INET) {
    ::sockaddr_in ip4{};
    std::memcpy(&ip4, &address, sizeof(ip4));
    device.sin_port = ip4.sin_port;
    device.sin_addr.s_addr = ip4.sin_addr.s_addr;
  } else if (address.ss_family == PF_INET6) {
    sockaddr_in6 ip6{};
    std::memcpy(&ip6, &address, sizeof(ip6));
    if (!IN6_IS_ADDR_V4MAPPED(&ip6.sin6_addr)) return device;
    device.sin_port = ip6.sin6_port;
    std::memcpy(&device.sin_addr.s_addr, &ip6.sin6_addr.s6_addr[12], 4);
  } else {
    return device;
  }
  device.sin_family = static_cast<WORD>(AF_INET);
  return device;
}

SOCKET Accept(SOCKET listener, sockaddr_in* address, DWORD* error) {
  const SocketPtr socket = Sockets().Find(listener);
  *error = WSAENOTSOCK;
  if (!socket) return INVALID_SOCKET;
  *error = kWsaInvalid;
  if (socket->state != SocketState::kListening) return INVALID_SOCKET;
  ::sockaddr_storage peer{};
  UniqueFd fd = AcceptAllowed(*socket, &peer);
  *error = SocketErrorFromErrno(errno);
  if (!fd) return INVALID_SOCKET;
  const AwaitedRequest::Patience patience = CurrentPatience();
  Prepare(fd.get(), patience.silence);
  if (address) *address = DeviceAddress(peer);
  *error = kWsaNoBuffers;
  auto connection = std::make_shared<Socket>(std::move(fd), SocketState::kConnected);
  connection->awaited.Begin(connection->fd.get(), patience);
  return Sockets().Add(std::move(connection));
}

}  // namespace
}  // namespace host

SOCKET accept(SOCKET socket, sockaddr_in* address, INT* length) {
  DWORD error = host::FaultFor("accept");
  SOCKET accepted = INVALID_SOCKET;
  if (error == 0 && address && (!length || *length < static_cast<INT>(sizeof(*address)))) {
    error = host::kWsaFault;
  }
  if (error == 0) {
    try {
      accepted = host::Accept(socket, address, &error);
    } catch (const std::bad_alloc&) {  // `error` says so
    }
  }
  if (accepted == INVALID_SOCKET) {
    host::PauseAfterFailure();
    SetLastError(error);
  } else if (length) {
    *length = sizeof(sockaddr_in);
  }
  return accepted;
}

}  // namespace ce
