#include "tests/support/wire/raw_connection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <utility>

#include "tests/support/words.h"

namespace corvane::testing {

RawConnection::RawConnection(std::uint16_t port, const std::string& address)
    : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in peer{};
  peer.sin_family = AF_INET;
  peer.sin_port = htons(port);
  inet_pton(AF_INET, address.c_str(), &peer.sin_addr);
  if (connect(socket_, reinterpret_cast<sockaddr*>(&peer), sizeof(peer)) != 0) {
    close(socket_);
    throw std::runtime_error("nobody listens at " + address + ":" + std::to_string(port));
  }
  // A reply that never comes fails the test instead of hanging it.
  const ::timeval patience{60, 0};
  setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
  const int on = 1;
  setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
}

RawConnection::RawConnection(RawConnection&& other) noexcept
    : socket_(std::exchange(other.socket_, -1)) {}

RawConnection::~RawConnection() {
  if (socket_ >= 0) close(socket_);
}

void RawConnection::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return;  // the agent has closed; what it answered before can still be read
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

void RawConnection::FinishSending() {
  shutdown(socket_, SHUT_WR);
}

std::string RawConnection::Receive(std::size_t bytes) {
  std::string result(bytes, '\0');
  std::size_t total = 0;
  while (total < bytes) {
    const std::size_t got = ReceiveSome(result.data() + total, bytes - total);
    if (got == 0) break;
    total += got;
  }
  result.resize(total);
  return result;
}

std::string RawConnection::ReceiveToEnd() {
  std::string result;
  char buffer[65536];
  for (;;) {
    const std::size_t got = ReceiveSome(buffer, sizeof(buffer));
    if (got == 0) return result;
    result.append(buffer, got);
  }
}

std::size_t RawConnection::ReceiveSome(char* to, std::size_t room) {
  const ssize_t got = recv(socket_, to, room, 0);
  if (got < 0 && errno == ECONNRESET) return 0;
  if (got < 0) throw std::runtime_error("no answer");
  return static_cast<std::size_t>(got);
}

std::uint32_t RawConnection::ReceiveWord() {
  const std::string bytes = Receive(4);
  if (bytes.size() != 4) throw std::runtime_error("the connection ended within a word");
  return WordAt(bytes, 0);
}

}  // namespace corvane::testing
