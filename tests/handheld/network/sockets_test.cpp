#include "platform/sockets.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "handheld/base/fault.h"
#include "handheld/network/socket_errors.h"
#include "handheld/network/socket_table.h"
#include "handheld/network/socket_watcher.h"
#include "platform/status.h"
#include "tests/handheld/network/loopback.h"

namespace corvane::testing {
namespace {

using ce::host::FaultPlan;

TEST(WSAStartup, StartsVersion11) {
  ce::WSADATA data{};
  EXPECT_EQ(ce::WSAStartup(0x0101, &data), 0);
  EXPECT_EQ(data.wVersion, 0x0101);
}

TEST(WSAStartup, RefusesVersion0AndNoRoom) {
  ce::WSADATA data{};
  EXPECT_EQ(ce::WSAStartup(0, &data), static_cast<ce::INT>(ce::host::kWsaVersionNotSupported));
  EXPECT_EQ(ce::WSAStartup(0x0101, nullptr), static_cast<ce::INT>(ce::host::kWsaFault));
}

TEST(WSAStartup, FailsWithTheFaultItself) {
  ce::WSADATA data{};
  const FaultPlan plan = FaultPlan::FailCalls("WSAStartup", 10091);
  EXPECT_EQ(ce::WSAStartup(0x0101, &data), 10091);
}

TEST(Socket, OpensAStreamThatProgramsStartedLaterDoNotInherit) {
  const ce::SOCKET opened = NewSocket();
  ASSERT_NE(opened, ce::INVALID_SOCKET);
  const int fd = ce::host::Sockets().Find(opened)->fd.get();
  EXPECT_EQ(::fcntl(fd, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(ce::closesocket(opened), 0);
}

TEST(Socket, RefusesOtherFamiliesAndTypes) {
  EXPECT_EQ(ce::socket(23, ce::SOCK_STREAM, 0), ce::INVALID_SOCKET);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaFamilyNotSupported);
  EXPECT_EQ(ce::socket(kInternet, 2, 0), ce::INVALID_SOCKET);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaTypeNotSupported);
}

TEST(Socket, FailsOnPurpose) {
  const FaultPlan plan = FaultPlan::FailCalls("socket", ce::WSAEMFILE);
  EXPECT_EQ(NewSocket(), ce::INVALID_SOCKET);
  EXPECT_EQ(ce::GetLastError(), ce::WSAEMFILE);
}

class CloseSocket : public LoopbackTest {};

TEST_F(CloseSocket, EndsTheConnection) {
  const ce::SOCKET listener = Listen();
  Peer peer(Port());
  EXPECT_EQ(ce::closesocket(Accept(listener)), 0);
  EXPECT_TRUE(peer.SeesEnd());
}

TEST_F(CloseSocket, RefusesAClosedSocketAndLeavesItsSuccessorAlone) {
  const ce::SOCKET listener = Listen();
  Peer first(Port());
  const ce::SOCKET stale = Accept(listener);
  EXPECT_EQ(ce::closesocket(stale), 0);
  Peer second(Port());
  const ce::SOCKET open = Accept(listener);

  EXPECT_EQ(ce::closesocket(stale), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAENOTSOCK);
  EXPECT_EQ(ce::send(stale, "x", 1, 0), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAENOTSOCK);
  char byte = 0;
  EXPECT_EQ(ce::recv(stale, &byte, 1, 0), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAENOTSOCK);

  EXPECT_EQ(ce::send(open, "y", 1, 0), 1);
  EXPECT_EQ(second.Receive(1), "y");
}

TEST_F(CloseSocket, RefusesNoSocket) {
  for (const ce::SOCKET none : {ce::SOCKET{0}, ce::INVALID_SOCKET, ce::SOCKET{3}}) {
    EXPECT_EQ(ce::closesocket(none), ce::SOCKET_ERROR);
    EXPECT_EQ(ce::GetLastError(), ce::WSAENOTSOCK);
  }
}

TEST_F(CloseSocket, EndsACallThatAnotherThreadHasUnderWay) {
  const ce::SOCKET listener = Listen();
  Peer peer(Port());
  const ce::SOCKET open = Accept(listener);
  ce::INT received = 99;
  std::thread reader([&] {
    char byte;
    peer.Send("!");
    while ((received = ce::recv(open, &byte, 1, 0)) == 1) {
    }
  });
  ce::closesocket(open);
  reader.join();
  EXPECT_LE(received, 0);
}

TEST_F(CloseSocket, ThatFailsLeavesTheSocketToTheWatcher) {
  const ce::SOCKET listener = Listen();
  Peer peer(Port());
  const ce::SOCKET open = Accept(listener);
  {
    const FaultPlan plan = FaultPlan::FailCalls("closesocket", ce::WSAEBADF);
    EXPECT_EQ(ce::closesocket(open), ce::SOCKET_ERROR);
    EXPECT_EQ(ce::GetLastError(), ce::WSAEBADF);
  }
  EXPECT_EQ(ce::host::AbandonedSocketCount(), 1u);
  EXPECT_FALSE(peer.EndHasArrived());
  peer.FinishSending();
  EXPECT_TRUE(peer.SeesEnd());
}

TEST_F(CloseSocket, ThatFailsStillEndsTheListener) {
  const ce::SOCKET listener = Listen();
  const std::uint16_t port = Port();
  const FaultPlan plan = FaultPlan::FailCalls("closesocket", ce::WSAEBADF);
  EXPECT_EQ(ce::closesocket(listener), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::host::AbandonedSocketCount(), 0u);
  EXPECT_THROW(Peer{port}, std::system_error);
}

}  // namespace
}  // namespace corvane::testing
