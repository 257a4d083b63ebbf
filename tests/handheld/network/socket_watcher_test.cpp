#include "handheld/network/socket_watcher.h"

#include <gtest/gtest.h>

#include "handheld/base/fault.h"
#include "handheld/system/threads.h"
#include "platform/status.h"
#include "tests/handheld/network/descriptor_limit.h"
#include "tests/handheld/network/loopback.h"

namespace corvane::testing {
namespace {

using ce::host::AbandonedSocketCount;
using ce::host::AbandonSocket;
using ce::host::FaultPlan;

void* AsParameter(ce::SOCKET socket) {
  return reinterpret_cast<void*>(socket);
}
ce::SOCKET AsSocket(void* parameter) {
  return reinterpret_cast<ce::SOCKET>(parameter);
}

// Connections whose near ends are still in use.
class SocketWatcher : public ConnectionTest {};

TEST_F(SocketWatcher, ClosesWhenThePeerHasClosed) {
  Connection connection = Connect();
  AbandonSocket(connection.socket);
  connection.peer.FinishSending();
  EXPECT_TRUE(connection.peer.SeesEnd());
  EXPECT_TRUE(Eventually([] { return AbandonedSocketCount() == 0; }));
}

TEST_F(SocketWatcher, DoesNotCloseBefore) {
  Connection open = Connect();
  Connection ended = Connect();
  AbandonSocket(open.socket);
  AbandonSocket(ended.socket);
  open.peer.Send("still here");
  ended.peer.FinishSending();
  EXPECT_TRUE(ended.peer.SeesEnd());  // by now the watcher has had its turn
  EXPECT_TRUE(Eventually([] { return AbandonedSocketCount() == 1; }));
  EXPECT_FALSE(open.peer.EndHasArrived());
  open.peer.FinishSending();
  EXPECT_TRUE(open.peer.SeesEnd());
}

TEST_F(SocketWatcher, ThrowsAwayWhatStillComes) {
  Connection connection = Connect();
  connection.peer.Send(std::string(1000, 'a'));
  AbandonSocket(connection.socket);
  connection.peer.Send(std::string(8 << 20, 'b'));
  connection.peer.FinishSending();
  EXPECT_TRUE(connection.peer.SeesEnd()) << "unread bytes would make it a reset";
}

TEST_F(SocketWatcher, ClosesAfterAReset) {
  Connection connection = Connect();
  AbandonSocket(connection.socket);
  connection.peer.Reset();
  EXPECT_TRUE(Eventually([] { return AbandonedSocketCount() == 0; }));
}

TEST_F(SocketWatcher, DeliversWhatWasSentBefore) {
  Connection connection = Connect();
  EXPECT_EQ(ce::send(connection.socket, "reply", 5, 0), 5);
  AbandonSocket(connection.socket);
  connection.peer.FinishSending();
  EXPECT_EQ(connection.peer.Receive(100), "reply");
}

TEST_F(SocketWatcher, EndsTheValueAtOnce) {
  Connection connection = Connect();
  AbandonSocket(connection.socket);
  EXPECT_FALSE(ce::host::IsOpenSocket(connection.socket));
  EXPECT_EQ(ce::closesocket(connection.socket), ce::SOCKET_ERROR);
  EXPECT_EQ(AbandonedSocketCount(), 1u);
  AbandonSocket(connection.socket);
  AbandonSocket(ce::INVALID_SOCKET);
  EXPECT_EQ(AbandonedSocketCount(), 1u);
}

TEST_F(SocketWatcher, StopsAndStartsAgain) {
  Connection first = Connect();
  AbandonSocket(first.socket);
  ce::host::StopSocketWatcher();
  EXPECT_TRUE(first.peer.SeesEnd());
  EXPECT_EQ(AbandonedSocketCount(), 0u);
  ce::host::StopSocketWatcher();

  Connection second = Connect();
  AbandonSocket(second.socket);
  second.peer.FinishSending();
  EXPECT_TRUE(second.peer.SeesEnd());
}

TEST_F(SocketWatcher, ClosesTheOldestFirst) {
  Connection older = Connect();
  Connection newer = Connect();
  AbandonSocket(older.socket);
  AbandonSocket(newer.socket);
  EXPECT_TRUE(ce::host::CloseOldestAbandonedSocket());
  EXPECT_TRUE(older.peer.SeesEnd());
  EXPECT_FALSE(newer.peer.EndHasArrived());
  EXPECT_TRUE(ce::host::CloseOldestAbandonedSocket());
  EXPECT_TRUE(newer.peer.SeesEnd());
  EXPECT_FALSE(ce::host::CloseOldestAbandonedSocket());
}

TEST_F(SocketWatcher, KeepsAtMostHalfOfTheDescriptors) {
  std::vector<Connection> connections;
  for (int i = 0; i < 6; ++i) connections.push_back(Connect());
  AbandonSocket(connections[0].socket);  // starts the watcher while there are descriptors
  const DescriptorLimit limit(8);
  for (int i = 1; i < 6; ++i) AbandonSocket(connections[static_cast<std::size_t>(i)].socket);
  EXPECT_EQ(AbandonedSocketCount(), 4u);
  EXPECT_TRUE(connections[0].peer.SeesEnd());
  EXPECT_TRUE(connections[1].peer.SeesEnd());
  for (std::size_t i = 2; i < 6; ++i) EXPECT_FALSE(connections[i].peer.EndHasArrived());
}

TEST_F(SocketWatcher, ThatCouldNotStartCatchesUp) {
  Connection early = Connect();
  Connection late = Connect();
  {
    const DescriptorLimit limit(DescriptorLimit::NoMore());
    AbandonSocket(early.socket);
  }
  EXPECT_EQ(AbandonedSocketCount(), 1u);
  AbandonSocket(late.socket);
  early.peer.FinishSending();
  EXPECT_TRUE(early.peer.SeesEnd());
}

TEST_F(SocketWatcher, TakesWhatAThreadLeavesOpen) {
  Connection connection = Connect();
  ce::CreateThread(
      nullptr, 0,
      [](void* parameter) -> ce::DWORD {
        return static_cast<ce::DWORD>(ce::send(AsSocket(parameter), "reply", 5, 0));
      },
      AsParameter(connection.socket), 0, nullptr);
  EXPECT_EQ(connection.peer.Receive(5), "reply");
  ce::host::WaitForRequestThreads();
  EXPECT_FALSE(ce::host::IsOpenSocket(connection.socket));
  EXPECT_FALSE(connection.peer.EndHasArrived());
  connection.peer.FinishSending();
  EXPECT_TRUE(connection.peer.SeesEnd());
}

TEST_F(SocketWatcher, KeepsAClosedConnectionUntilThePeerHasSeenItsEnd) {
  Connection connection = Connect();
  ce::CreateThread(
      nullptr, 0,
      [](void* parameter) -> ce::DWORD {
        return static_cast<ce::DWORD>(ce::closesocket(AsSocket(parameter)));
      },
      AsParameter(connection.socket), 0, nullptr);
  EXPECT_TRUE(connection.peer.SeesEnd());
  ce::host::WaitForRequestThreads();
  EXPECT_EQ(AbandonedSocketCount(), 1u);
  connection.peer.Close();
  EXPECT_TRUE(Eventually([] { return AbandonedSocketCount() == 0; }));
}

TEST_F(SocketWatcher, LetsThePeerReadToTheEndThoughItsOwnBytesWereNotRead) {
  Connection connection = Connect();
  connection.peer.Send("more than anybody reads");
  char first = 0;
  EXPECT_EQ(ce::recv(connection.socket, &first, 1, 0), 1);
  EXPECT_EQ(ce::send(connection.socket, "answer", 6, 0), 6);
  EXPECT_EQ(ce::closesocket(connection.socket), 0);
  connection.peer.Send("and more");
  EXPECT_EQ(connection.peer.Receive(6), "answer");
  EXPECT_TRUE(connection.peer.SeesEnd());
}

TEST_F(SocketWatcher, TakesTheSocketOfAThreadThatCannotBeStarted) {
  Connection connection = Connect();
  {
    const FaultPlan plan = FaultPlan::FailCalls("CreateThread", ce::ERROR_NOT_ENOUGH_MEMORY);
    const ce::HANDLE thread = ce::CreateThread(
        nullptr, 0, [](void*) -> ce::DWORD { return 0; }, AsParameter(connection.socket), 0,
        nullptr);
    EXPECT_EQ(thread, ce::HANDLE{0});
    EXPECT_EQ(ce::GetLastError(), ce::ERROR_NOT_ENOUGH_MEMORY);
  }
  EXPECT_FALSE(ce::host::IsOpenSocket(connection.socket));
  EXPECT_EQ(AbandonedSocketCount(), 1u);
  connection.peer.FinishSending();
  EXPECT_TRUE(connection.peer.SeesEnd());
}

}  // namespace
}  // namespace corvane::testing
