#include "handheld/network/silent_connections.h"

#include <gtest/gtest.h>

#include <thread>

#include "handheld/network/socket_watcher.h"
#include "handheld/system/threads.h"
#include "tests/handheld/network/descriptor_limit.h"
#include "tests/handheld/network/loopback.h"

namespace corvane::testing {
namespace {

using ce::host::EndOldestSilentConnection;
using ce::host::EndSilentConnections;
using std::chrono::milliseconds;

// As a request's thread that gives up when its peer has ended, and answers otherwise.
ce::DWORD AnswerOneByte(void* parameter) {
  const auto socket = reinterpret_cast<ce::SOCKET>(parameter);
  char byte = 0;
  if (ce::recv(socket, &byte, 1, 0) == 1) ce::send(socket, "!", 1, 0);
  return 0;
}

void StartThread(ce::SOCKET socket) {
  ce::CreateThread(nullptr, 0, AnswerOneByte, reinterpret_cast<void*>(socket), 0, nullptr);
}

class SilentConnections : public LoopbackTest {
 protected:
  struct Connection {
    Peer peer;
    ce::SOCKET socket;
  };

  SilentConnections() : listener_(Listen()) {}
  void TearDown() override {
    ce::closesocket(listener_);
    LoopbackTest::TearDown();
  }
  Connection Connect() {
    Peer peer(Port());
    return {std::move(peer), Accept(listener_)};
  }
  // What the next byte is; 0 at the connection's end.
  static char Next(ce::SOCKET socket) {
    char byte = 0;
    return ce::recv(socket, &byte, 1, 0) == 1 ? byte : '\0';
  }
  static void ExpectAlive(Connection& connection) {
    connection.peer.Send("?");
    EXPECT_EQ(Next(connection.socket), '?');
    EXPECT_EQ(ce::send(connection.socket, "!", 1, 0), 1);
    EXPECT_EQ(connection.peer.Receive(1), "!");
    ce::closesocket(connection.socket);
  }
  static void ExpectEnded(Connection& connection) {
    EXPECT_EQ(Next(connection.socket), '\0');
    ce::closesocket(connection.socket);
    EXPECT_TRUE(connection.peer.SeesEnd());
  }

  // As when descriptors begin to be short though there is one for this connection.
  Connection ConnectWithFewDescriptorsLeft() {
    std::vector<ce::SOCKET> unused;
    for (int i = 0; i < 50; ++i) unused.push_back(NewSocket());
    Peer peer(Port());
    ce::SOCKET accepted = ce::INVALID_SOCKET;
    {
      const DescriptorLimit limit(DescriptorLimit::NoMore() + 1);
      accepted = Accept(listener_);
    }
    for (const ce::SOCKET socket : unused) ce::closesocket(socket);
    return {std::move(peer), accepted};
  }

  const ce::SOCKET listener_;
};

TEST_F(SilentConnections, EndInTheOrderOfTheirAge) {
  Connection oldest = Connect();
  Connection second = Connect();
  Connection newest = Connect();
  EXPECT_TRUE(EndOldestSilentConnection());
  EXPECT_TRUE(EndOldestSilentConnection());
  ExpectEnded(oldest);
  ExpectEnded(second);
  ExpectAlive(newest);
}

TEST_F(SilentConnections, AreNotThoseThatHaveBeenHeard) {
  Connection heard = Connect();
  heard.peer.Send("a");
  EXPECT_EQ(Next(heard.socket), 'a');
  EXPECT_FALSE(EndOldestSilentConnection());
  EndSilentConnections(milliseconds(0));
  ExpectAlive(heard);
}

TEST_F(SilentConnections, AreNotThoseWhoseBytesNobodyHasReadYet) {
  Connection waiting = Connect();
  waiting.peer.Send("a");
  ASSERT_TRUE(Eventually([&] {
    ce::fd_set read{1, {waiting.socket}};
    return ce::select(0, &read, nullptr, nullptr, nullptr) == 1;
  }));
  EXPECT_FALSE(EndOldestSilentConnection());
  EXPECT_EQ(Next(waiting.socket), 'a');
  ExpectAlive(waiting);
}

TEST_F(SilentConnections, AreNotThoseThatAreClosed) {
  Connection closed = Connect();
  ce::closesocket(closed.socket);
  closed.peer.Close();
  ASSERT_TRUE(Eventually([] { return ce::host::AbandonedSocketCount() == 0; }));
  EXPECT_FALSE(EndOldestSilentConnection());
}

TEST_F(SilentConnections, EndForTheCallUnderWay) {
  Connection connection = Connect();
  StartThread(connection.socket);
  EXPECT_TRUE(EndOldestSilentConnection());
  ce::host::WaitForRequestThreads();
  EXPECT_TRUE(connection.peer.SeesEnd());
}

TEST_F(SilentConnections, EndForACallThatBeginsLater) {
  Connection first = Connect();
  Connection second = Connect();
  EndSilentConnections(milliseconds(0));
  StartThread(first.socket);
  StartThread(second.socket);
  ce::host::WaitForRequestThreads();
  EXPECT_TRUE(first.peer.SeesEnd());
  EXPECT_TRUE(second.peer.SeesEnd());
  EXPECT_FALSE(EndOldestSilentConnection());
}

TEST_F(SilentConnections, AreServedWhenTheySpeakWithinTheirGrace) {
  Connection connection = Connect();
  StartThread(connection.socket);
  std::thread speaking([&] { connection.peer.Send("?"); });
  EndSilentConnections(std::chrono::minutes(10));
  speaking.join();
  EXPECT_EQ(connection.peer.Receive(1), "!");
}

TEST_F(SilentConnections, TheOldestMakesRoomBeforeDescriptorsHaveRunOut) {
  Connection heard = Connect();
  heard.peer.Send("a");
  EXPECT_EQ(Next(heard.socket), 'a');
  Connection oldest = Connect();
  Connection newer = Connect();
  Connection newest = ConnectWithFewDescriptorsLeft();
  ExpectEnded(oldest);
  ExpectAlive(heard);
  ExpectAlive(newer);
  ExpectAlive(newest);
}

TEST_F(SilentConnections, KeepTheirPlacesWhileDescriptorsAbound) {
  std::vector<Connection> connections;
  for (int i = 0; i < 20; ++i) connections.push_back(Connect());
  for (Connection& connection : connections) ExpectAlive(connection);
}

TEST_F(SilentConnections, MakeRoomAfterThoseThatAreAbandoned) {
  Connection silent = Connect();
  Connection abandoned = Connect();
  ce::host::AbandonSocket(abandoned.socket);
  Connection newest = ConnectWithFewDescriptorsLeft();
  EXPECT_TRUE(abandoned.peer.SeesEnd());
  ExpectAlive(silent);
  ExpectAlive(newest);
}

TEST_F(SilentConnections, MakeRoomWhenDescriptorsHaveRunOut) {
  Connection silent = Connect();
  StartThread(silent.socket);
  Peer waiting(Port());
  ce::SOCKET accepted = ce::INVALID_SOCKET;
  {
    const DescriptorLimit limit(DescriptorLimit::NoMore());
    // The first attempt fails when the silent connection's thread is slow to let go of it.
    EXPECT_TRUE(Eventually([&] {
      accepted = ce::accept(listener_, nullptr, nullptr);
      return accepted != ce::INVALID_SOCKET;
    }));
  }
  EXPECT_TRUE(silent.peer.SeesEnd());
  Connection newest{std::move(waiting), accepted};
  ExpectAlive(newest);
}

}  // namespace
}  // namespace corvane::testing
