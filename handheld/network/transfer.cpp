#include "handheld/network/transfer.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <cerrno>
#include <cstddef>

#include "handheld/base/fault.h"
#include "handheld/base/upload_memory.h"
#include "handheld/network/socket_errors.h"

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

// The peer may be waited for only as long as others who need its share of memory have patience.
class WaitForPeer {
 public:
  explicit WaitForPeer(Socket& socket) : wait_(SharedUploadMemory(), CutOff, &socket) {}

 private:
  static void CutOff(void* socket) {
    ::shutdown(static_cast<Socket*>(socket)->fd.get(), SHUT_RDWR);
  }

  const UploadMemory::PeerWait wait_;
};

using Bytes = std::span<const std::byte>;

::iovec VectorOf(Bytes bytes) {
  return {const_cast<std::byte*>(bytes.data()), bytes.size()};
}

// Sends what the socket holds, then `bytes`; 0, or an errno. A call ends with part of them when its
// time is up; that part is progress, and the time begins anew.
int SendAll(Socket& socket, Bytes bytes) {
  const WaitForPeer wait(socket);
  Bytes held = socket.held.bytes();
  socket.held.Clear();
  do {
    ::iovec vectors[] = {VectorOf(held), VectorOf(bytes)};
    ::msghdr message{};
    message.msg_iov = vectors;
    message.msg_iovlen = std::size(vectors);
    const ssize_t count = ::sendmsg(socket.fd.get(), &message, MSG_NOSIGNAL);
    if (count < 0) {
      if (errno != EINTR) return errno;
      continue;
    }
    const auto sent = static_cast<std::size_t>(count);
    const std::size_t sentHeld = std::min(sent, held.size());
    held = held.subspan(sentHeld);
    bytes = bytes.subspan(sent - sentHeld);
  } while (!held.empty() || !bytes.empty());
  return 0;
}

INT Send(Socket& socket, Bytes bytes, bool moreFollows) {
  if (!moreFollows || !socket.held.Hold(bytes)) {
    if (const int error = SendAll(socket, bytes)) return FailTransfer(socket, error);
  }
  return static_cast<INT>(bytes.size());
}

}  // namespace

void SendHeld(Socket& socket) {
  if (!socket.held.bytes().empty()) static_cast<void>(SendAll(socket, {}));
}

}  // namespace host

INT recv(SOCKET socket, void* buffer, INT bytes, INT flags) {
  DWORD error = host::FaultFor("recv");
  if (error != 0) return host::FailSocketCall(error);
  const host::SocketPtr source = host::UsableSocket(socket, bytes, flags, &error);
  if (!source) return host::FailSocketCall(error);
  host::SendHeld(*source);
  if (bytes == 0) return 0;  // the host would wait for bytes that it is not to take
  if (source->awaited.Hear()) {
    // A request has mostly come when it is asked for.
    const ssize_t count =
        ::recv(source->fd.get(), buffer, static_cast<std::size_t>(bytes), MSG_DONTWAIT);
    if (count >= 0) return static_cast<INT>(count);
    if (errno != EAGAIN && errno != EINTR) return host::FailTransfer(*source, errno);
  }
  const host::WaitForPeer wait(*source);
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
  const host::SocketPtr target = host::UsableSocket(socket, bytes, flags & ~MSG_PARTIAL, &error);
  if (!target) return host::FailSocketCall(error);
  target->awaited.End();
  return host::Send(*target,
                    {static_cast<const std::byte*>(buffer), static_cast<std::size_t>(bytes)},
                    (flags & MSG_PARTIAL) != 0);
}

}  // namespace ce
