// The agent in the care of a service manager, and open to a network.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

#include "tests/programs/tool_test.h"
#include "tests/support/wire/raw_connection.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;

// What a service manager is told at NOTIFY_SOCKET, which is set while this lives.
class NotifySocket {
 public:
  explicit NotifySocket(const std::string& path) : fd_(::socket(AF_UNIX, SOCK_DGRAM, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    if (bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0)
      throw std::runtime_error("the test cannot be told");
    ::setenv("NOTIFY_SOCKET", path.c_str(), 1);
  }
  ~NotifySocket() {
    ::unsetenv("NOTIFY_SOCKET");
    ::close(fd_);
  }
  NotifySocket(const NotifySocket&) = delete;
  NotifySocket& operator=(const NotifySocket&) = delete;

  // What has been told and not been read; empty for nothing.
  std::string Read() {
    char text[64];
    const ssize_t length = ::recv(fd_, text, sizeof(text), MSG_DONTWAIT);
    return {text, length > 0 ? static_cast<std::size_t>(length) : 0};
  }

 private:
  const int fd_;
};

class AgentService : public ToolTest {};

TEST_F(AgentService, TellsItsManagerWhenItIsReadyAndWhenItEnds) {
  NotifySocket manager(Path("notify"));
  StartAgent(MakeHandheld());
  EXPECT_EQ(Desktop({"time", "get"}).code, 0);
  EXPECT_EQ(manager.Read(), "READY=1");
  EXPECT_EQ(manager.Read(), "");
  agent().Kill(SIGTERM);
  EXPECT_EQ(EndAgent().code, 0);
  EXPECT_EQ(manager.Read(), "STOPPING=1");
}

TEST_F(AgentService, GoesOnWithoutAManagerThatListens) {
  { const NotifySocket gone(Path("notify")); }
  ::setenv("NOTIFY_SOCKET", Path("notify").c_str(), 1);
  StartAgent(MakeHandheld());
  ::unsetenv("NOTIFY_SOCKET");
  EXPECT_EQ(Desktop({"quit"}).code, 0);
  EXPECT_EQ(EndAgent().code, 0);
}

TEST_F(AgentService, GivesAJournalThePriorityOfItsLines) {
  const std::string start = "2> said; JOURNAL_STREAM=$(stat -c %d:%i said) corvane --handheld ";
  EXPECT_EQ(Shell("cd '" + Path("") + "'; : > said; exec " + start + "nowhere").code, 1);
  EXPECT_THAT(directory_.Read("said"), ::testing::StartsWith("<3>corvane: nowhere cannot be"));
}

TEST_F(AgentService, GivesNobodyElseAPriority) {
  const Ended ended = Shell("JOURNAL_STREAM=1:1 corvane --handheld nowhere");
  EXPECT_THAT(ended.err, ::testing::StartsWith("corvane: nowhere"));
}

TEST_F(AgentService, EndsWhenNothingHasComeForTheTimeItIsGiven) {
  StartAgent(MakeHandheld(), {"--idle", "1"});
  EXPECT_EQ(EndAgent().code, 0);
}

TEST_F(AgentService, LeavesTheListenerOfItsManagerListening) {
  const ListeningSocket listener;
  const std::string handheld = MakeHandheld();
  for (int start = 0; start < 2; ++start) {
    StartAgent(handheld, {"--idle", "1"}, listener.fd());
    EXPECT_EQ(Desktop({"time", "get"}).code, 0);
    EXPECT_EQ(EndAgent().code, 0);
  }
}

TEST_F(AgentService, SaysThatItIsOpenToANetworkAndToWhom) {
  StartAgent(MakeHandheld(), {"--allow", "127.0.0.1", "--allow", "192.0.2.0/24"}, -1, "0.0.0.0:0");
  EXPECT_EQ(greeting(), "corvane: listening on 0.0.0.0:" + std::to_string(port()));
  EXPECT_EQ(Desktop({"quit"}).code, 0);
  EXPECT_EQ(EndAgent().err, "corvane: 0.0.0.0:" + std::to_string(port()) +
                                " is open to the network, without password or encryption, to "
                                "127.0.0.1, 192.0.2.0/24\n");
}

TEST_F(AgentService, SaysThatItIsOpenToEverybody) {
  StartAgent(MakeHandheld(), {}, -1, "0.0.0.0:0");
  agent().Kill(SIGTERM);
  EXPECT_THAT(EndAgent().err, HasSubstr("without password or encryption, to everybody\n"));
}

TEST_F(AgentService, HangsUpOnThoseWhoMayNotConnect) {
  StartAgent(MakeHandheld(), {"--allow", "192.0.2.0/24"});
  for (int attempt = 0; attempt < 3; ++attempt) EXPECT_EQ(RawConnection(port()).ReceiveToEnd(), "");
  agent().Kill(SIGTERM);
  const Ended ended = EndAgent();
  EXPECT_EQ(ended.code, 0);
  EXPECT_EQ(ended.err, "corvane: 127.0.0.1 may not connect\n") << "once for three";
}

}  // namespace
}  // namespace corvane::testing
