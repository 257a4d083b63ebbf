// What the tests of the core share: a desktop's end of a connection, request records, and a request
// table of handlers that show what they are given.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <semaphore>
#include <string>
#include <string_view>
#include <vector>

#include "agent/core/request_dispatcher.h"
#include "platform/sockets.h"
#include "tests/support/test_handheld.h"
#include "tests/support/words.h"

namespace corvane::testing {

// An invoke request, in the form that a desktop sends. What is not given is right.
struct Invoke {
  std::u16string function{};
  std::string input{};
  bool streamed = false;
  std::u16string dll = u"agent.dll";
  std::optional<std::uint32_t> dllNameLength{};
  std::optional<std::uint32_t> functionNameLength{};
  std::optional<std::uint32_t> inputCount{};

  // Names carry their terminator.
  std::string Body() const;
};
std::string Record(const std::string& body);  // with its length before it
RequestBody Received(const std::string& body);
std::string QuitBody();

// The reply to a buffered request.
std::string Reply(std::int32_t status, const std::string& output);

// A desktop's socket on the host. A wait that is too long fails the test.
class Client {
 public:
  explicit Client(std::uint16_t port, const std::string& address = "127.0.0.1");
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  ~Client() { Close(); }

  // Whether a connection is taken; it is closed at once.
  static bool Reaches(std::uint16_t port, const std::string& address);

  void Send(const std::string& bytes);
  std::string Receive(std::size_t bytes);
  std::string ReceiveToEnd();
  void EndSending();
  void Close();

 private:
  int fd_;
};

// A client and the agent's end of its connection, which Drop closes if nothing else has.
class Connection {
 public:
  Connection();
  ~Connection();

  Client& client() { return *client_; }
  ce::SOCKET socket() const { return socket_; }
  // Serves what the client has sent so far.
  void Serve();
  // Everything that was sent to the client. Ends the connection.
  std::string Drop();

 private:
  std::unique_ptr<Client> client_;
  ce::SOCKET socket_;
};

// What the last handler was given.
struct Seen {
  int calls = 0;
  std::string entry;
  std::string input;
  bool hadStream = false;
  ce::DWORD outputCount = 99;
  bool hadOutput = true;
  ce::LONG active = 0;
};
Seen LastSeen();
void ForgetSeen();

// The handler "Wait" counts itself in and waits for a release.
extern std::atomic<int> g_waiting;
extern std::counting_semaphore<> g_release;

// A fresh agent on a handheld with a free port.
class AgentTest : public HandheldTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  void SwitchLogOn();
  // The messages of the log behind its header.
  std::vector<std::string> Messages() const;
};

}  // namespace corvane::testing
