#include "handheld/network/listener.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>

#include "handheld/base/fault.h"
#include "handheld/network/listen_options.h"
#include "handheld/network/socket_errors.h"
#include "handheld/network/socket_table.h"

namespace ce::host {
namespace {

constexpr WORD kAgentPort = HostToNetworkShort(2005);
constexpr int kHandedOverFd = 3;

std::mutex g_keptLock;
// The listener that listens on for the next one that binds. Never destroyed.
SocketPtr& Kept() {
  static SocketPtr* const kept = new SocketPtr;
  return *kept;
}

struct Failure {
  DWORD code;
  std::string reason;
};

Failure FromErrno(int error) {
  return {SocketErrorFromErrno(error), std::generic_category().message(error)};
}

Failure FromFault(DWORD code) {
  return {code, "error " + std::to_string(code)};
}

// "127.0.0.1:2005" or "[::1]:2005"; empty for an address of another family.
std::string AddressText(const ::sockaddr* address, socklen_t length) {
  char host[INET6_ADDRSTRLEN];
  char port[sizeof("65535")];
  if (::getnameinfo(address, length, host, sizeof(host), port, sizeof(port),
                    NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
    return {};
  }
  const bool isIp4 = address->sa_family == PF_INET;
  return (isIp4 ? host : "[" + std::string(host) + "]") + ":" + port;
}

// The address that the socket is bound to; of no family when it has none.
::sockaddr_storage BoundAddress(int fd) {
  ::sockaddr_storage address{};
  socklen_t length = sizeof(address);
  if (::getsockname(fd, reinterpret_cast<::sockaddr*>(&address), &length) != 0) return {};
  return address;
}

// Empty when it has none.
std::string BoundAddressText(int fd) {
  const ::sockaddr_storage address = BoundAddress(fd);
  const bool isIp4 = address.ss_family == PF_INET;
  return AddressText(reinterpret_cast<const ::sockaddr*>(&address),
                     isIp4 ? sizeof(::sockaddr_in) : sizeof(::sockaddr_in6));
}

void TellWhereItListens(int fd) {
  const ListenOptions options = CurrentListenOptions();
  const std::string address = BoundAddressText(fd);
  if (options.onOpenToNetwork && !IsLoopback(AnyAddressOf(BoundAddress(fd))))
    options.onOpenToNetwork(address);
  if (options.onListening) options.onListening(address);
}

bool IsAgentPort(const sockaddr_in* address) {
  return address && address->sin_port == kAgentPort;
}

// Where the host's user wants the agent that asks for this address; throws Failure.
::sockaddr_in HostAddress(const sockaddr_in& asked, const ListenOptions& options) {
  ::sockaddr_in address{};
  address.sin_family = PF_INET;
  address.sin_port = asked.sin_port;
  address.sin_addr.s_addr = asked.sin_addr.s_addr;
  if (asked.sin_port != kAgentPort) return address;
  address.sin_port = htons(options.port);
  if (asked.sin_addr.s_addr == 0 &&
      ::inet_pton(PF_INET, options.address.c_str(), &address.sin_addr) != 1) {
    throw Failure{WSAEADDRNOTAVAIL, "not an IPv4 address"};
  }
  return address;
}

std::string WantedAddress(const sockaddr_in& asked, const ListenOptions& options) {
  const std::string port = std::to_string(options.port);
  if (asked.sin_addr.s_addr == 0) return options.address + ":" + port;
  const ::sockaddr_in address = HostAddress(asked, options);
  return AddressText(reinterpret_cast<const ::sockaddr*>(&address), sizeof(address));
}

void TellFailure(const std::string& where, const std::string& reason) {
  const ListenOptions options = CurrentListenOptions();
  if (options.onFailure) options.onFailure("cannot listen on " + where + ": " + reason);
}

SocketPtr TakeKeptListener() {
  const std::lock_guard guard(g_keptLock);
  return std::exchange(Kept(), nullptr);
}

int Option(int fd, int option) {
  int value = -1;
  socklen_t length = sizeof(value);
  return ::getsockopt(fd, SOL_SOCKET, option, &value, &length) == 0 ? value : -1;
}

bool ListensForConnections(int fd) {
  const int domain = Option(fd, SO_DOMAIN);
  return (domain == PF_INET || domain == PF_INET6) && Option(fd, SO_TYPE) == SOCK_STREAM &&
         Option(fd, SO_ACCEPTCONN) == 1;
}

bool MakeOwn(int fd) {
  const int flags = ::fcntl(fd, F_GETFL);
  return flags >= 0 && ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) == 0 &&
         ::fcntl(fd, F_SETFD, FD_CLOEXEC) == 0;
}

// A listening socket that the service manager has opened for this process, so that neither it nor
// one that it starts takes it again. Null when none was handed over; throws Failure.
SocketPtr TakeHandedOverListener() {
  const char* process = std::getenv("LISTEN_PID");
  const char* count = std::getenv("LISTEN_FDS");
  if (!process || !count || process != std::to_string(::getpid())) return nullptr;
  const std::string handedOver = count;
  for (const char* name : {"LISTEN_PID", "LISTEN_FDS", "LISTEN_FDNAMES"}) ::unsetenv(name);
  if (handedOver != "1") {
    throw Failure{WSAENOTSOCK,
                  "the service manager handed over " + handedOver + " sockets instead of one"};
  }
  if (!ListensForConnections(kHandedOverFd) || !MakeOwn(kHandedOverFd)) {
    throw Failure{WSAENOTSOCK, "what the service manager handed over is no listening TCP socket"};
  }
  return std::make_shared<Socket>(UniqueFd(kHandedOverFd), SocketState::kListening);
}

// Puts a listener that exists already, kept or handed over, in the place of the fresh socket.
bool AdoptListener(SOCKET handle) {
  SocketPtr listener = TakeKeptListener();
  if (!listener) listener = TakeHandedOverListener();
  if (!listener) return false;
  listener->agentPort = true;
  Sockets().Replace(handle, std::move(listener));
  return true;
}

// Throws Failure.
void Bind(SOCKET handle, const sockaddr_in& asked, const ListenOptions& options) {
  const SocketPtr socket = Sockets().Find(handle);
  if (!socket) throw FromErrno(ENOTSOCK);
  if (socket->state != SocketState::kNew) throw FromErrno(EINVAL);
  socket->agentPort = IsAgentPort(&asked);
  if (socket->agentPort && AdoptListener(handle)) return;
  const ::sockaddr_in address = HostAddress(asked, options);
  const int fd = socket->fd.get();
  const int on = 1;
  if (::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) != 0 ||
      ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    throw FromErrno(errno);
  }
  socket->state = SocketState::kBound;
}

INT BindOrTell(SOCKET handle, const sockaddr_in& asked, DWORD fault) {
  const ListenOptions options = CurrentListenOptions();
  try {
    if (fault != 0) throw FromFault(fault);
    Bind(handle, asked, options);
    return 0;
  } catch (const Failure& failure) {
    if (IsAgentPort(&asked)) TellFailure(WantedAddress(asked, options), failure.reason);
    return FailSocketCall(failure.code);
  }
}

// Where a device refuses the connections beyond its backlog, this host leaves them to try again a
// second later. Nobody is served in another order for a longer queue.
int QueueOf(INT backlog) {
  return std::max<int>(backlog, SOMAXCONN);
}

INT ListenOrTell(SOCKET handle, INT backlog, DWORD fault) {
  const SocketPtr socket = Sockets().Find(handle);
  if (!socket) return FailSocketCall(fault != 0 ? fault : WSAENOTSOCK);
  // The host would choose a port for a socket without one and open it to everybody.
  const bool bound = socket->state == SocketState::kBound;
  const bool adopted = socket->state == SocketState::kListening;
  if (fault == 0 && !bound && !adopted) return FailSocketCall(kWsaInvalid);
  const int fd = socket->fd.get();
  if (fault != 0 || (bound && ::listen(fd, QueueOf(backlog)) != 0)) {
    const Failure failure = fault != 0 ? FromFault(fault) : FromErrno(errno);
    if (socket->agentPort && (bound || adopted)) TellFailure(BoundAddressText(fd), failure.reason);
    return FailSocketCall(failure.code);
  }
  socket->state = SocketState::kListening;
  if (socket->agentPort && !socket->announced.exchange(true)) TellWhereItListens(fd);
  return 0;
}

}  // namespace

bool KeepListener(const SocketPtr& socket) {
  if (socket->state != SocketState::kListening || !socket->agentPort) return false;
  if (!CurrentListenOptions().keepListening) return false;
  const std::lock_guard guard(g_keptLock);
  Kept() = socket;
  return true;
}

void CloseKeptListener() {
  if (SocketPtr kept = TakeKeptListener()) CloseNow(std::move(kept));
}

}  // namespace ce::host

namespace ce {

INT bind(SOCKET socket, const sockaddr_in* address, INT length) try {
  const DWORD fault = host::FaultFor("bind");
  if (fault == 0 && (!address || length < static_cast<INT>(sizeof(*address)))) {
    return host::FailSocketCall(host::kWsaFault);
  }
  return address ? host::BindOrTell(socket, *address, fault) : host::FailSocketCall(fault);
} catch (...) {
  return host::FailSocketCall(host::kWsaNoBuffers);
}

INT listen(SOCKET socket, INT backlog) try {
  return host::ListenOrTell(socket, backlog, host::FaultFor("listen"));
} catch (...) {
  return host::FailSocketCall(host::kWsaNoBuffers);
}

}  // namespace ce
