#include "tests/desktop/fixtures.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "common/text/little_endian.h"

namespace desktop::testing {
namespace {

int ListenOnFreePort(std::string& port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, generic, size) != 0 || listen(listener, 8) != 0 ||
      getsockname(listener, generic, &size) != 0) {
    std::abort();
  }
  port = std::to_string(ntohs(address.sin_port));
  return listener;
}

}  // namespace

std::string Peer::Receive(std::size_t count) {
  std::string bytes(count, '\0');
  std::size_t filled = 0;
  while (filled < count) {
    const ssize_t got = recv(socket_, bytes.data() + filled, count - filled, 0);
    if (got <= 0) break;
    filled += static_cast<std::size_t>(got);
  }
  bytes.resize(filled);
  return bytes;
}

std::string Peer::ReceiveCounted() {
  const std::string count = Receive(4);
  return count.size() < 4 ? std::string() : Receive(text::WordAt(count, 0));
}

std::string Peer::ReceiveOnce() {
  std::string bytes(64 * 1024, '\0');
  const ssize_t got = recv(socket_, bytes.data(), bytes.size(), 0);
  bytes.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
  return bytes;
}

void Peer::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

void Peer::Close() {
  if (socket_ >= 0) close(socket_);
  socket_ = -1;
}

void Peer::Reset() {
  const linger hard{1, 0};
  setsockopt(socket_, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
  Close();
}

void Peer::AwaitEnd() {
  while (!ReceiveOnce().empty()) {
  }
}

FakeAgent::FakeAgent(std::vector<Script> scripts) : listener_(ListenOnFreePort(port_)) {
  thread_ = std::thread([this, scripts = std::move(scripts)] { Serve(scripts); });
}

FakeAgent::~FakeAgent() {
  shutdown(listener_, SHUT_RDWR);  // wakes an accept that nobody came for
  if (thread_.joinable()) thread_.join();
  close(listener_);
}

void FakeAgent::Serve(const std::vector<Script>& scripts) {
  for (const Script& script : scripts) {
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) return;
    // Whoever comes after the last script is refused.
    if (++connections_ == scripts.size()) shutdown(listener_, SHUT_RDWR);
    // An answer of several small pieces does not wait for what the desktop has acknowledged.
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    Peer peer(socket);
    script(peer);
    peer.Close();
  }
}

void FakeAgent::Join() {
  thread_.join();
}

ConnectionOptions FakeAgent::options() const {
  ConnectionOptions options;
  options.target = {"127.0.0.1", port_};
  return options;
}

ConnectionOptions NobodyThere() {
  ConnectionOptions options;
  const int listener = ListenOnFreePort(options.target.port);
  close(listener);
  return options;
}

std::vector<std::string> Names(const TemporaryDirectory& directory) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string Counted(std::string_view bytes) {
  return Word(static_cast<std::uint32_t>(bytes.size())).append(bytes);
}

std::string Document(std::string_view records) {
  return std::string(R"(<?XML version="1.0" encoding="UTF-8"?><root>)")
      .append(records)
      .append("</root>");
}

std::string ReplyRecord(std::uint32_t status, std::string_view output) {
  const auto count = static_cast<std::uint32_t>(output.size());
  return (Word(16 + count) + Word(0) + Word(status) + Word(status) + Word(count)).append(output);
}

ConfigHome::ConfigHome(const std::string& directory) {
  if (const char* const value = std::getenv("XDG_CONFIG_HOME")) before_ = value;
  setenv("XDG_CONFIG_HOME", directory.c_str(), 1);
}

ConfigHome::~ConfigHome() {
  before_ ? setenv("XDG_CONFIG_HOME", before_->c_str(), 1) : unsetenv("XDG_CONFIG_HOME");
}

SeenRequest ReadRequest(std::string_view body) {
  SeenRequest seen;
  const std::size_t library = text::WordAt(body, 12);
  const std::size_t name = 24 + 2 * library;
  const std::size_t length = text::WordAt(body, name - 4);
  for (std::size_t i = 0; i + 1 < length; ++i) {
    seen.function += static_cast<char>(text::HalfWordAt(body, name + 2 * i));
  }
  const std::size_t input = name + 2 * length + 4;
  seen.input = body.substr(input, text::WordAt(body, input - 4));
  seen.streamed = text::WordAt(body, input + seen.input.size());
  return seen;
}

}  // namespace desktop::testing
