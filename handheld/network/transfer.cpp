#include <sys/socket.h>

#include <cerrno>
#include <cstddef>

#include "handheld/base/fault.h"
#include "handheld/network/socket_errors.h"
#include "handheld/network/socket_table.h"

namespace ce {
namespace host {
namespace {

// The open socket that a transfer may use; null and `error` otherwise.
SocketPtr UsableSocket(SOCKET handle, INT bytes, INT flags, DWORD* error) {
  SocketPtr socket = Sockets().Find(handle);
  if (!socket) {
    *error = WSAENOTSOCK;
  } else if (bytes < 0 || flags != 0) {
    *error = kWsaInvalid;
  } else if (socket->peerGone) {
    *error = WSAETIMEDOUT;
  } else {
    return socket;
  }
  return nullptr;
}

INT FailTransfer(Socket& socket, int error) {
  // The socket's own time-outs are a limit of the peer's.
  if (error == EAGAIN) socket.peerGone = true;
  return FailSocketCall(SocketErrorFromErrno(error));
}

// A call ends with part of the bytes when its time is up; that part is progress, and the time
// begins anew.
INT SendAll(Socket& socket, const std::byte* data, INT bytes) {
  INT sent = 0;
  do {
    const ssize_t count =
        ::send(socket.fd.get(), data + sent, static_cast<std::size_t>(bytes - sent), MSG_NOSIGNAL);
    if (count >= 0) {
      sent += static_cast<INT>(count);
    } else if (errno != EINTR) {
      return FailTransfer(socket, errno);
    }
  } while (sent < bytes);
  return sent;
}

}  // namespace
}  // namespace host

INT recv(SOCKET socket, void* buffer, INT bytes, INT flags) {
  DWORD error = host::FaultFor("recv");
  if (error != 0) return host::FailSocketCall(error);
  const host::SocketPtr source = host::UsableSocket(socket, bytes, flags, &error);
  if (!source) return host::FailSocketCall(error);
  if (bytes == 0) return 0;  // the host would wait for bytes that it is not to take
  if (!source->awaited.WaitForBytes()) return host::FailTransfer(*source, EAGAIN);
  for (;;) {
    const ssize_t count = ::recv(source->fd.get(), buffer, static_cast<std::size_t>(bytes), 0);
    if (count >= 0) return static_cast<INT>(count);
    if (errno != EINTR) return host::FailTransfer(*source, errno);
  }
}

INT send(SOCKET socket, const void* buffer, INT bytes, INT flags) {
  DWORD error = host::FaultFor("send");
  if (error != 0) return host::FailSocketCall(error);
  const host::SocketPtr target = host::UsableSocket(socket, bytes, flags, &error);
  if (!target) return host::FailSocketCall(error);
  target->awaited.End();
  return host::SendAll(*target, static_cast<const std::byte*>(buffer), bytes);
}

}  // namespace ce
