#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "tests/agent/core/core_support.h"

namespace corvane::testing {

namespace {

// -1 when nobody listens.
int Connect(std::uint16_t port, const std::string& address) {
  const int fd = ::socket(PF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const ::timeval patience{60, 0};
  ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
  ::sockaddr_in peer{};
  peer.sin_family = PF_INET;
  peer.sin_port = htons(port);
  ::inet_pton(PF_INET, address.c_str(), &peer.sin_addr);
  if (::connect(fd, reinterpret_cast<sockaddr*>(&peer), sizeof(peer)) == 0) return fd;
  ::close(fd);
  return -1;
}

}  // namespace

Client::Client(std::uint16_t port, const std::string& address) : fd_(Connect(port, address)) {
  EXPECT_GE(fd_, 0) << "no listener at " << address << ':' << port;
}

bool Client::Reaches(std::uint16_t port, const std::string& address) {
  const int fd = Connect(port, address);
  if (fd >= 0) ::close(fd);
  return fd >= 0;
}

void Client::Send(const std::string& bytes) {
  EXPECT_EQ(::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL),
            static_cast<ssize_t>(bytes.size()));
}

std::string Client::Receive(std::size_t bytes) {
  std::string received(bytes, '\0');
  const ssize_t count = ::recv(fd_, received.data(), bytes, MSG_WAITALL);
  received.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  EXPECT_EQ(received.size(), bytes);
  return received;
}

std::string Client::ReceiveToEnd() {
  std::string received;
  char buffer[4096];
  for (;;) {
    const ssize_t count = ::recv(fd_, buffer, sizeof(buffer), 0);
    // Bytes that the agent has not read turn its closing into a reset.
    EXPECT_TRUE(count >= 0 || errno == ECONNRESET) << "errno " << errno;
    if (count <= 0) return received;
    received.append(buffer, static_cast<std::size_t>(count));
  }
}

void Client::EndSending() {
  ::shutdown(fd_, SHUT_WR);
}

void Client::Close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

}  // namespace corvane::testing
