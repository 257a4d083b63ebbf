#include "tests/support/desktop_end.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <memory>
#include <system_error>

#include "handheld/network/socket_table.h"

namespace corvane::testing {

using ce::host::Socket;
using ce::host::SocketState;
using ce::host::UniqueFd;

DesktopEnd::DesktopEnd(std::vector<std::string> pieces, AfterSending after) {
  // Packets keep the pieces apart.
  const int type = pieces.size() > 1 ? SOCK_SEQPACKET : ::SOCK_STREAM;
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  fd_.reset(ends[0]);
  socket_ =
      ce::host::Sockets().Add(std::make_shared<Socket>(UniqueFd(ends[1]), SocketState::kConnected));
  sender_ = std::thread([this, pieces = std::move(pieces), after] { Send(pieces, after); });
  collector_ = std::thread([this] { Collect(); });
}

DesktopEnd::~DesktopEnd() {
  if (sender_.joinable()) static_cast<void>(Received());
}

std::string DesktopEnd::Received() {
  if (sender_.joinable()) {
    sender_.join();
    // Where the agent has failed to close its end, the platform closes it after the desktop's.
    ::shutdown(fd_.get(), SHUT_WR);
    collector_.join();
  }
  return received_;
}

void DesktopEnd::Send(const std::vector<std::string>& pieces, AfterSending after) {
  for (const std::string& piece : pieces) {
    for (std::size_t sent = 0; sent < piece.size();) {
      const ssize_t count =
          ::send(fd_.get(), piece.data() + sent, piece.size() - sent, MSG_NOSIGNAL);
      if (count < 0) return;  // the agent has closed its end
      sent += static_cast<std::size_t>(count);
    }
  }
  if (after == AfterSending::kClose) ::shutdown(fd_.get(), SHUT_WR);
}

void DesktopEnd::Collect() {
  std::array<char, 65536> buffer;
  for (;;) {
    const ssize_t count = ::recv(fd_.get(), buffer.data(), buffer.size(), 0);
    if (count <= 0) return;
    received_.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace corvane::testing
