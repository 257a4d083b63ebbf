#include "tests/agent/core/core_support.h"

#include "agent/core/listener.h"
#include "agent/log/log.h"
#include "handheld/network/listen_options.h"
#include "handheld/network/select.h"
#include "handheld/network/socket_watcher.h"
#include "handheld/system/threads.h"

namespace corvane::testing {

RequestBody Received(const std::string& body) {
  RequestBody received{};
  std::copy_n(body.begin(), std::min<std::size_t>(body.size(), kMaxBody), received.begin());
  return received;
}

std::string QuitBody() {
  return Word(kQuitRequest);
}

std::string Reply(std::int32_t status, const std::string& output) {
  const auto count = static_cast<std::uint32_t>(output.size());
  const auto word = static_cast<std::uint32_t>(status);
  return Word(count + 16) + Word(0) + Word(word) + Word(word) + Word(count) + output;
}

Connection::Connection() {
  std::uint16_t port = 0;
  ce::host::ListenOptions options;
  options.port = 0;
  options.onListening = [&port](const std::string& address) {
    port = static_cast<std::uint16_t>(std::stoi(address.substr(address.find(':') + 1)));
  };
  ce::host::SetListenOptions(options);
  const ce::SOCKET listener = ce::socket(ce::AF_INET, ce::SOCK_STREAM, 0);
  ce::sockaddr_in any{};
  any.sin_family = ce::AF_INET;
  any.sin_port = ce::HostToNetworkShort(AGENT_PORT);
  EXPECT_EQ(ce::bind(listener, &any, sizeof(any)), 0);
  EXPECT_EQ(ce::listen(listener, 1), 0);
  client_ = std::make_unique<RawConnection>(port);
  socket_ = ce::accept(listener, nullptr, nullptr);
  EXPECT_NE(socket_, ce::INVALID_SOCKET);
  ce::closesocket(listener);
  ce::host::SetListenOptions({});
}

Connection::~Connection() {
  ce::closesocket(socket_);
}

void Connection::Serve() {
  EXPECT_EQ(handleRequest(reinterpret_cast<void*>(socket_)), 0u);
}

std::string Connection::Drop() {
  ce::closesocket(socket_);
  return client_->ReceiveToEnd();
}

void AgentTest::SetUp() {
  ResetAgent();
  ForgetSeen();
}

void AgentTest::TearDown() {
  ce::host::WaitForRequestThreads();
  ce::host::StopSocketWatcher();
  ce::host::SetListenOptions({});
  ce::host::SetTimeLapse(1);
  EXPECT_EQ(ActiveRequestCount, 1);
  ResetAgent();
  HandheldTest::TearDown();
}

void AgentTest::SwitchLogOn() {
  handheld_.SetAgentValue(u"Logging", 1);
  LoadLogSettings();
}

std::vector<std::string> AgentTest::Messages() const {
  std::vector<std::string> messages;
  const std::string content = handheld_.FileContent("CorvaneLog.txt");
  for (std::size_t start = 0; start < content.size();) {
    const std::size_t end = content.find("\r\n", start);
    const std::string line = content.substr(start, end - start);
    messages.push_back(line.substr(line.find(" : ") + 3));
    if (messages.back().starts_with("Log is started on ")) messages.clear();
    start = end + 2;
  }
  return messages;
}

}  // namespace corvane::testing
