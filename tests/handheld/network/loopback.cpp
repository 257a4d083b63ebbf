#include "tests/handheld/network/loopback.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "handheld/network/select.h"
#include "handheld/network/socket_watcher.h"
#include "handheld/system/threads.h"

namespace corvane::testing {
namespace {

void Require(bool done, const char* what) {
  if (!done) throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

Peer::Peer(std::uint16_t port) : fd_(::socket(PF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  Require(static_cast<bool>(fd_), "socket");
  const ::timeval patience{30, 0};
  ::setsockopt(fd_.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
  ::sockaddr_in address{};
  address.sin_family = PF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  Require(::connect(fd_.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0,
          "connect");
}

void Peer::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(fd_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    Require(sent > 0, "send");
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

std::string Peer::Receive(std::size_t bytes) {
  std::string received(bytes, '\0');
  const ssize_t count = ::recv(fd_.get(), received.data(), bytes, MSG_WAITALL);
  Require(count >= 0, "recv");
  received.resize(static_cast<std::size_t>(count));
  return received;
}

bool Peer::SeesEnd() {
  char byte;
  return ::recv(fd_.get(), &byte, 1, 0) == 0;
}

bool Peer::EndHasArrived() const {
  ::pollfd poll{fd_.get(), POLLRDHUP, 0};
  return ::poll(&poll, 1, 0) == 1;
}

void Peer::FinishSending() {
  Require(::shutdown(fd_.get(), SHUT_WR) == 0, "shutdown");
}

void Peer::Reset() {
  const ::linger reset{1, 0};
  ::setsockopt(fd_.get(), SOL_SOCKET, SO_LINGER, &reset, sizeof(reset));
  fd_.reset();
}

LoopbackTest::LoopbackTest() {
  UseOptions("127.0.0.1", false);
}

void LoopbackTest::TearDown() {
  for (const ce::SOCKET socket : sockets_) ce::closesocket(socket);
  ce::host::WaitForRequestThreads();
  ce::host::CloseKeptListener();
  ce::host::StopSocketWatcher();
  ce::host::SetListenOptions({});
  ce::host::SetTimeLapse(1.0);
  HandheldTest::TearDown();
}

void LoopbackTest::UseOptions(const std::string& address, bool keepListening) {
  ce::host::ListenOptions options;
  options.address = address;
  options.keepListening = keepListening;
  options.port = 0;
  options.onListening = [this](const std::string& real) { listening_.push_back(real); };
  options.onFailure = [this](const std::string& message) { failures_.push_back(message); };
  ce::host::SetListenOptions(std::move(options));
}

ce::SOCKET LoopbackTest::Listen(ce::DWORD address) {
  const ce::SOCKET listener = NewSocket();
  const ce::sockaddr_in agent = AgentAddress(address);
  EXPECT_EQ(ce::bind(listener, &agent, sizeof(agent)), 0);
  EXPECT_EQ(ce::listen(listener, 1), 0);
  return listener;
}

ce::SOCKET LoopbackTest::Accept(ce::SOCKET listener) {
  const ce::SOCKET accepted = ce::accept(listener, nullptr, nullptr);
  EXPECT_NE(accepted, ce::INVALID_SOCKET);
  return sockets_.emplace_back(accepted);
}

ce::SOCKET LoopbackTest::NewSocket() {
  return sockets_.emplace_back(testing::NewSocket());
}

std::uint16_t LoopbackTest::Port() const {
  const std::string& address = listening_.at(listening_.size() - 1);
  return static_cast<std::uint16_t>(std::stoi(address.substr(address.rfind(':') + 1)));
}

ce::SOCKET NewSocket() {
  return ce::socket(kInternet, ce::SOCK_STREAM, 0);
}

ce::sockaddr_in AgentAddress(ce::DWORD address) {
  ce::sockaddr_in agent{};
  agent.sin_family = static_cast<ce::WORD>(kInternet);
  agent.sin_port = ce::HostToNetworkShort(2005);
  agent.sin_addr.s_addr = address;
  return agent;
}

}  // namespace corvane::testing
