#include "handheld/network/awaited_requests.h"

#include <gtest/gtest.h>

#include <thread>

#include "handheld/network/socket_watcher.h"
#include "handheld/system/threads.h"
#include "platform/status.h"
#include "tests/handheld/network/descriptor_limit.h"
#include "tests/handheld/network/loopback.h"

namespace corvane::testing {
namespace {

using ce::host::EndAwaitedRequests;
using ce::host::EndOldestAwaitedRequest;
using std::chrono::milliseconds;

// As a request's thread that gives up when its peer has ended, and answers what it has received.
template <int kBytes>
ce::DWORD AnswerBytes(void* parameter) {
  const auto socket = reinterpret_cast<ce::SOCKET>(parameter);
  char byte = 0;
  for (int i = 0; i < kBytes; ++i) {
    if (ce::recv(socket, &byte, 1, 0) != 1) return 0;
  }
  ce::send(socket, "!", 1, 0);
  return 0;
}

void StartThread(ce::SOCKET socket, ce::ThreadRoutine routine = AnswerBytes<1>) {
  ce::CreateThread(nullptr, 0, routine, reinterpret_cast<void*>(socket), 0, nullptr);
}

class AwaitedRequests : public ConnectionTest {
 protected:
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
};

TEST_F(AwaitedRequests, EndInTheOrderOfTheirAge) {
  Connection oldest = Connect();
  Connection second = Connect();
  Connection newest = Connect();
  EXPECT_TRUE(EndOldestAwaitedRequest());
  EXPECT_TRUE(EndOldestAwaitedRequest());
  ExpectEnded(oldest);
  ExpectEnded(second);
  ExpectAlive(newest);
}

TEST_F(AwaitedRequests, AreNotThoseWhoseBytesAreBeingWorkedOn) {
  Connection heard = Connect();
  heard.peer.Send("a");
  EXPECT_EQ(Next(heard.socket), 'a');
  EXPECT_FALSE(EndOldestAwaitedRequest());
  EndAwaitedRequests(milliseconds(0));
  ExpectAlive(heard);
}

TEST_F(AwaitedRequests, AreNotThoseWhoseBytesNobodyHasReadYet) {
  Connection waiting = Connect();
  waiting.peer.Send("a");
  ASSERT_TRUE(Eventually([&] {
    ce::fd_set read{1, {waiting.socket}};
    return ce::select(0, &read, nullptr, nullptr, nullptr) == 1;
  }));
  EXPECT_FALSE(EndOldestAwaitedRequest());
  EXPECT_EQ(Next(waiting.socket), 'a');
  ExpectAlive(waiting);
}

TEST_F(AwaitedRequests, AreThoseOfWhichTheRestDoesNotCome) {
  Connection half = Connect();
  half.peer.Send("a");
  StartThread(half.socket, AnswerBytes<2>);
  EXPECT_TRUE(Eventually([] { return EndOldestAwaitedRequest(); }));
  ce::host::WaitForRequestThreads();
  EXPECT_TRUE(half.peer.SeesEnd());
}

TEST_F(AwaitedRequests, AreNotThoseThatAreServedWhileMoreIsReceived) {
  Connection served = Connect();
  served.peer.Send("a");
  EXPECT_EQ(Next(served.socket), 'a');
  EXPECT_EQ(ce::send(served.socket, "!", 1, 0), 1);
  Connection half = Connect();
  half.peer.Send("a");
  StartThread(served.socket);
  StartThread(half.socket, AnswerBytes<2>);
  EXPECT_TRUE(Eventually([] { return EndOldestAwaitedRequest(); }));
  EXPECT_TRUE(half.peer.SeesEnd());
  EXPECT_FALSE(EndOldestAwaitedRequest());
  served.peer.Send("b");
  EXPECT_EQ(served.peer.Receive(2), "!!");
}

TEST_F(AwaitedRequests, AreNotThoseThatAreClosed) {
  Connection closed = Connect();
  ce::closesocket(closed.socket);
  closed.peer.Close();
  ASSERT_TRUE(Eventually([] { return ce::host::AbandonedSocketCount() == 0; }));
  EXPECT_FALSE(EndOldestAwaitedRequest());
}

TEST_F(AwaitedRequests, EndForTheCallUnderWay) {
  Connection connection = Connect();
  StartThread(connection.socket);
  EXPECT_TRUE(EndOldestAwaitedRequest());
  ce::host::WaitForRequestThreads();
  EXPECT_TRUE(connection.peer.SeesEnd());
}

TEST_F(AwaitedRequests, EndForACallThatBeginsLater) {
  Connection first = Connect();
  Connection second = Connect();
  EndAwaitedRequests(milliseconds(0));
  StartThread(first.socket);
  StartThread(second.socket);
  ce::host::WaitForRequestThreads();
  EXPECT_TRUE(first.peer.SeesEnd());
  EXPECT_TRUE(second.peer.SeesEnd());
  EXPECT_FALSE(EndOldestAwaitedRequest());
}

TEST_F(AwaitedRequests, AreServedWhenTheySpeakWithinTheirGrace) {
  Connection connection = Connect();
  StartThread(connection.socket);
  std::thread speaking([&] { connection.peer.Send("?"); });
  EndAwaitedRequests(std::chrono::minutes(10));
  speaking.join();
  EXPECT_EQ(connection.peer.Receive(1), "!");
}

TEST_F(AwaitedRequests, TheOldestMakesRoomBeforeDescriptorsHaveRunOut) {
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

TEST_F(AwaitedRequests, KeepTheirPlacesWhileDescriptorsAbound) {
  std::vector<Connection> connections;
  for (int i = 0; i < 20; ++i) connections.push_back(Connect());
  for (Connection& connection : connections) ExpectAlive(connection);
}

TEST_F(AwaitedRequests, MakeRoomAfterThoseThatAreAbandoned) {
  Connection silent = Connect();
  Connection abandoned = Connect();
  ce::host::AbandonSocket(abandoned.socket);
  Connection newest = ConnectWithFewDescriptorsLeft();
  EXPECT_TRUE(abandoned.peer.SeesEnd());
  ExpectAlive(silent);
  ExpectAlive(newest);
}

TEST_F(AwaitedRequests, MakeRoomWhenDescriptorsHaveRunOut) {
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

class RequestTimeout : public AwaitedRequests {
 protected:
  RequestTimeout() { handheld_->Set(ce::host::setting::kRequestTimeout, 1); }
  // Another connection's time is the clock.
  void LetTimePass() {
    Connection clock = Connect();
    ExpectTooLate(clock);
  }
  static void ExpectTooLate(Connection& connection) {
    char byte = 0;
    EXPECT_EQ(ce::recv(connection.socket, &byte, 1, 0), ce::SOCKET_ERROR);
    EXPECT_EQ(ce::GetLastError(), ce::WSAETIMEDOUT);
    ce::host::AbandonSocket(connection.socket);
    EXPECT_TRUE(connection.peer.SeesEnd());
  }
};

TEST_F(RequestTimeout, EndsAConnectionOfWhichTheRestDoesNotCome) {
  Connection half = Connect();
  half.peer.Send("a");
  EXPECT_EQ(Next(half.socket), 'a');
  ExpectTooLate(half);
}

TEST_F(RequestTimeout, CountsFromTheConnectionsBeginning) {
  handheld_->Set(ce::host::setting::kRequestTimeout, 2);
  Connection slow = Connect();
  handheld_->Set(ce::host::setting::kRequestTimeout, 1);
  LetTimePass();
  slow.peer.Send("a");
  EXPECT_EQ(Next(slow.socket), 'a') << "slow, but within the time";
  LetTimePass();
  ExpectTooLate(slow);
}

TEST_F(RequestTimeout, IsNothingToBytesThatCameInTime) {
  Connection connection = Connect();
  connection.peer.Send("ab");
  LetTimePass();
  EXPECT_EQ(Next(connection.socket), 'a');
  EXPECT_EQ(Next(connection.socket), 'b');
  EXPECT_EQ(ce::send(connection.socket, "!", 1, 0), 1);
  EXPECT_EQ(connection.peer.Receive(1), "!");
  ce::closesocket(connection.socket);
}

TEST_F(RequestTimeout, IsNothingToARequestThatIsServed) {
  Connection served = Connect();
  EXPECT_EQ(ce::send(served.socket, "!", 1, 0), 1);
  EXPECT_EQ(served.peer.Receive(1), "!");
  LetTimePass();
  StartThread(served.socket);
  LetTimePass();
  served.peer.Send("a");
  EXPECT_EQ(served.peer.Receive(1), "!");
}

TEST_F(RequestTimeout, OfZeroIsNone) {
  handheld_->Set(ce::host::setting::kRequestTimeout, 0);
  Connection patient = Connect();
  handheld_->Set(ce::host::setting::kRequestTimeout, 1);
  StartThread(patient.socket);
  LetTimePass();
  patient.peer.Send("a");
  EXPECT_EQ(patient.peer.Receive(1), "!");
}

}  // namespace
}  // namespace corvane::testing
