#include "platform/sockets.h"

#include <sys/socket.h>

#include <cerrno>
#include <new>
#include <utility>

#include "handheld/base/fault.h"
#include "handheld/network/listener.h"
#include "handheld/network/socket_errors.h"
#include "handheld/network/socket_table.h"
#include "handheld/network/socket_watcher.h"
#include "handheld/network/transfer.h"
#include "platform/status.h"

namespace ce {
namespace {

constexpr WORD kVersion11 = 0x0101;

SOCKET OpenSocket(INT family, INT type, INT protocol, DWORD* error) {
  *error = host::kWsaFamilyNotSupported;
  if (family != AF_INET) return INVALID_SOCKET;
  *error = host::kWsaTypeNotSupported;
  if (type != SOCK_STREAM) return INVALID_SOCKET;
  host::UniqueFd fd(::socket(family, type | SOCK_CLOEXEC, protocol));
  *error = host::SocketErrorFromErrno(errno);
  if (!fd) return INVALID_SOCKET;
  *error = host::kWsaNoBuffers;
  try {
    return host::Sockets().Add(
        std::make_shared<host::Socket>(std::move(fd), host::SocketState::kNew));
  } catch (const std::bad_alloc&) {
    return INVALID_SOCKET;
  }
}

// The peer reads to its end what was sent before, though it may still be sending: closing with
// bytes unread would reset the connection and throw away what the peer has not read yet.
void EndConnection(host::SocketPtr socket) {
  host::SendHeld(*socket);
  if (socket.use_count() > 1 || ::shutdown(socket->fd.get(), SHUT_WR) != 0) {
    host::CloseNow(std::move(socket));
  } else {
    host::AbandonSocket(std::move(socket));
  }
}

void Close(host::SocketPtr socket) {
  if (socket->state == host::SocketState::kConnected) return EndConnection(std::move(socket));
  if (!host::KeepListener(socket)) host::CloseNow(std::move(socket));
}

}  // namespace

INT WSAStartup(WORD version, WSADATA* data) {
  if (const DWORD error = host::FaultFor("WSAStartup")) return static_cast<INT>(error);
  if (!data) return static_cast<INT>(host::kWsaFault);
  *data = {kVersion11, kVersion11};
  const unsigned major = version & 0xFF;
  return major == 0 ? static_cast<INT>(host::kWsaVersionNotSupported) : 0;
}

SOCKET socket(INT family, INT type, INT protocol) {
  DWORD error = host::FaultFor("socket");
  const SOCKET opened = error == 0 ? OpenSocket(family, type, protocol, &error) : INVALID_SOCKET;
  if (opened == INVALID_SOCKET) SetLastError(error);
  return opened;
}

INT closesocket(SOCKET socket) {
  const DWORD fault = host::FaultFor("closesocket");
  host::SocketPtr closed = host::Sockets().Remove(socket);
  if (fault == 0) {
    if (!closed) return host::FailSocketCall(WSAENOTSOCK);
    Close(std::move(closed));
    return 0;
  }
  // The caller gives the socket up whether or not the call succeeds.
  if (closed) host::AbandonSocket(std::move(closed));
  return host::FailSocketCall(fault);
}

}  // namespace ce
