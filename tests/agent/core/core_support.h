// What the tests of the core share: a desktop's end of a connection, request records, and a request
// table of handlers that show what they are given.
#pragma once

#include <atomic>
#include <cstdint>
#include <semaphore>
#include <string>
#include <string_view>
#include <vector>

#include "agent/core/request_dispatcher.h"
#include "platform/sockets.h"
#include "tests/support/test_handheld.h"
#include "tests/support/wire/raw_connection.h"
#include "tests/support/wire/wire_bytes.h"

namespace corvane::testing {

RequestBody Received(const std::string& body);
std::string QuitBody();

// The reply to a buffered request.
std::string Reply(std::int32_t status, const std::string& output);

// A client and the agent's end of its connection, which Drop closes if nothing else has.
class Connection {
 public:
  Connection();
  ~Connection();

  RawConnection& client() { return *client_; }
  ce::SOCKET socket() const { return socket_; }
  // Serves what the client has sent so far.
  void Serve();
  // Everything that was sent to the client. Ends the connection.
  std::string Drop();

 private:
  std::unique_ptr<RawConnection> client_;
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
