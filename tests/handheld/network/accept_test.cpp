#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "handheld/base/fault.h"
#include "handheld/network/listen_options.h"
#include "handheld/network/socket_errors.h"
#include "handheld/network/socket_table.h"
#include "handheld/network/socket_watcher.h"
#include "platform/status.h"
#include "tests/handheld/network/descriptor_limit.h"
#include "tests/handheld/network/loopback.h"

namespace corvane::testing {
namespace {

using ce::host::FaultPlan;

class Accepting : public LoopbackTest {
 protected:
  void Allow(std::initializer_list<const char*> networks) {
    ce::host::ListenOptions options = ce::host::CurrentListenOptions();
    std::string error;
    for (const char* network : networks)
      options.allowed.push_back(ce::host::AddressRange::Parse(network, &error).value());
    options.onRefusal = [this](const std::string& address) { refusals_.push_back(address); };
    ce::host::SetListenOptions(std::move(options));
  }

  std::vector<std::string> refusals_;
};

TEST_F(Accepting, TellsWhoConnects) {
  const ce::SOCKET listener = Listen();
  Peer peer(Port());
  ::sockaddr_in own{};
  socklen_t ownLength = sizeof(own);
  ASSERT_EQ(::getsockname(peer.fd(), reinterpret_cast<::sockaddr*>(&own), &ownLength), 0);
  ce::sockaddr_in from{};
  ce::INT length = sizeof(from);
  ce::closesocket(ce::accept(listener, &from, &length));
  EXPECT_EQ(from.sin_family, kInternet);
  EXPECT_EQ(from.sin_addr.s_addr, own.sin_addr.s_addr);
  EXPECT_EQ(from.sin_port, own.sin_port);
  EXPECT_EQ(length, 16);
}

TEST_F(Accepting, GivesASocketThatSendsAtOnceAndIsNotInherited) {
  const ce::SOCKET listener = Listen();
  Peer peer(Port());
  const ce::SOCKET accepted = Accept(listener);
  const int fd = ce::host::Sockets().Find(accepted)->fd.get();
  int noDelay = 0;
  socklen_t length = sizeof(noDelay);
  ASSERT_EQ(::getsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &noDelay, &length), 0);
  EXPECT_NE(noDelay, 0);
  EXPECT_EQ(::fcntl(fd, F_GETFD), FD_CLOEXEC);
}

TEST_F(Accepting, HangsUpOnThoseWhoMayNotConnectAndDoesNotWaitForOthers) {
  const ce::SOCKET listener = Listen();
  Allow({"192.0.2.0/24"});
  Peer first(Port());
  Peer second(Port());
  EXPECT_EQ(ce::accept(listener, nullptr, nullptr), ce::INVALID_SOCKET);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaConnectionAborted);
  EXPECT_TRUE(first.SeesEnd());
  EXPECT_TRUE(second.SeesEnd());
  EXPECT_THAT(refusals_, ::testing::ElementsAre("127.0.0.1"));
}

TEST_F(Accepting, LetsThoseConnectWhoMay) {
  const ce::SOCKET listener = Listen();
  Allow({"192.0.2.0/24", "127.0.0.0/8"});
  Peer peer(Port());
  Accept(listener);
  EXPECT_TRUE(refusals_.empty());
}

TEST_F(Accepting, RefusesWhatDoesNotListen) {
  EXPECT_EQ(ce::accept(ce::INVALID_SOCKET, nullptr, nullptr), ce::INVALID_SOCKET);
  EXPECT_EQ(ce::GetLastError(), ce::WSAENOTSOCK);
  const ce::SOCKET unbound = NewSocket();
  EXPECT_EQ(ce::accept(unbound, nullptr, nullptr), ce::INVALID_SOCKET);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaInvalid);
}

TEST_F(Accepting, RefusesTooLittleRoomForTheAddress) {
  const ce::SOCKET listener = Listen();
  ce::sockaddr_in from{};
  ce::INT length = sizeof(from) - 1;
  EXPECT_EQ(ce::accept(listener, &from, &length), ce::INVALID_SOCKET);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaFault);
}

TEST_F(Accepting, ThatFailsOnPurposeLeavesTheConnectionWaiting) {
  const ce::SOCKET listener = Listen();
  Peer peer(Port());
  {
    const FaultPlan plan = FaultPlan::FailCalls("accept", ce::WSAECONNRESET);
    EXPECT_EQ(ce::accept(listener, nullptr, nullptr), ce::INVALID_SOCKET);
    EXPECT_EQ(ce::GetLastError(), ce::WSAECONNRESET);
  }
  ce::closesocket(Accept(listener));
  EXPECT_TRUE(peer.SeesEnd());
}

TEST_F(Accepting, ClosesTheOldestAbandonedSocketWhenDescriptorsRunShort) {
  const ce::SOCKET listener = Listen();
  Peer oldest(Port());
  ce::host::AbandonSocket(Accept(listener));
  Peer newer(Port());
  ce::host::AbandonSocket(Accept(listener));
  Peer waiting(Port());

  const DescriptorLimit limit(DescriptorLimit::NoMore());
  const ce::SOCKET accepted = Accept(listener);
  EXPECT_TRUE(oldest.SeesEnd());
  EXPECT_EQ(ce::host::AbandonedSocketCount(), 1u);
  EXPECT_FALSE(newer.EndHasArrived());
  EXPECT_EQ(ce::send(accepted, "!", 1, 0), 1);
  EXPECT_EQ(waiting.Receive(1), "!");
}

TEST_F(Accepting, FailsWhenDescriptorsRunShortAndNothingIsAbandoned) {
  const ce::SOCKET listener = Listen();
  Peer waiting(Port());
  {
    const DescriptorLimit limit(DescriptorLimit::NoMore());
    EXPECT_EQ(ce::accept(listener, nullptr, nullptr), ce::INVALID_SOCKET);
    EXPECT_EQ(ce::GetLastError(), ce::WSAEMFILE);
  }
  ce::closesocket(Accept(listener));
  EXPECT_TRUE(waiting.SeesEnd());
}

}  // namespace
}  // namespace corvane::testing
