// Connections to the agent's listener over the loopback interface.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "handheld/base/unique_fd.h"
#include "handheld/network/listen_options.h"
#include "platform/sockets.h"
#include "tests/support/test_handheld.h"

namespace corvane::testing {

// The far end of a connection. What blocks gives up after half a minute, as a failure.
class Peer {
 public:
  // Throws std::system_error when the connection is refused.
  explicit Peer(std::uint16_t port);

  void Send(std::string_view bytes);
  // Exactly this many bytes, or fewer when the connection ends before.
  std::string Receive(std::size_t bytes);
  // Waits for the connection's end; true when it ended in order and with no more bytes.
  bool SeesEnd();
  // Whether the other end has closed, as far as it has come to be known here.
  bool EndHasArrived() const;
  void FinishSending();
  // Ends the connection without ceremony, so that the other end sees a reset.
  void Reset();
  void Close() { fd_.reset(); }
  int fd() const { return fd_.get(); }

 private:
  ce::host::UniqueFd fd_;
};

// A listener bound as the agent binds it, on a free port.
class LoopbackTest : public HandheldTest {
 protected:
  LoopbackTest();
  void TearDown() override;

  // The user's options, with this test's callbacks and a free port.
  void UseOptions(const std::string& address, bool keepListening);
  // A new socket that binds and listens as the agent does. `address` in network byte order.
  ce::SOCKET Listen(ce::DWORD address = 0);
  ce::SOCKET Accept(ce::SOCKET listener);
  ce::SOCKET NewSocket();
  // The port of the listener that was announced last.
  std::uint16_t Port() const;

  std::vector<std::string> listening_;
  std::vector<std::string> failures_;

 private:
  std::vector<ce::SOCKET> sockets_;  // that this gave: closed in the end, those that are still open
};

// Connections to a listener.
class ConnectionTest : public LoopbackTest {
 protected:
  struct Connection {
    Peer peer;
    ce::SOCKET socket;
  };
  Connection Connect() {
    Peer peer(Port());
    return {std::move(peer), Accept(listener_)};
  }

  const ce::SOCKET listener_ = Listen();
};

// The family by its value, since the host's headers have a macro of its name.
inline constexpr ce::INT kInternet = ce::AF_INET;

ce::SOCKET NewSocket();
ce::sockaddr_in AgentAddress(ce::DWORD address = 0);

// For what another thread does without telling; false when it does not come to be in a minute.
template <typename Condition>
bool Eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

}  // namespace corvane::testing
