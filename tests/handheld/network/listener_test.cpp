#include <fcntl.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "handheld/base/fault.h"
#include "handheld/network/socket_errors.h"
#include "platform/status.h"
#include "tests/handheld/network/loopback.h"

namespace corvane::testing {
namespace {

using ce::host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr ce::DWORD kLoopback2 = 0x0200007F;  // 127.0.0.2

class Listener : public LoopbackTest {
 protected:
  static ce::INT BindAgent(ce::SOCKET socket) {
    const ce::sockaddr_in agent = AgentAddress();
    return ce::bind(socket, &agent, sizeof(agent));
  }
};

TEST_F(Listener, TakesAnyAddressForTheLoopbackUnlessTheUserOpensMore) {
  Listen();
  EXPECT_THAT(listening_, ElementsAre("127.0.0.1:" + std::to_string(Port())));
  EXPECT_NE(Port(), 0);
  EXPECT_THAT(failures_, IsEmpty());
}

TEST_F(Listener, ListensWhereTheUserSays) {
  UseOptions("0.0.0.0", false);
  Listen();
  EXPECT_THAT(listening_, ElementsAre("0.0.0.0:" + std::to_string(Port())));
}

TEST_F(Listener, ListensOnTheAddressThatTheAgentNames) {
  UseOptions("0.0.0.0", false);
  Listen(kLoopback2);
  EXPECT_THAT(listening_, ElementsAre("127.0.0.2:" + std::to_string(Port())));
}

TEST_F(Listener, BindsAnotherPortAsNamed) {
  const ce::SOCKET socket = NewSocket();
  ce::sockaddr_in address = AgentAddress(kLoopback2);
  address.sin_port = 0;
  EXPECT_EQ(ce::bind(socket, &address, sizeof(address)), 0);
  EXPECT_EQ(ce::listen(socket, 1), 0);
  EXPECT_THAT(listening_, IsEmpty()) << "only the agent's own listener is announced";
}

TEST_F(Listener, TellsThatThePortIsTaken) {
  Listen();
  ce::host::ListenOptions options = ce::host::CurrentListenOptions();
  options.port = Port();
  ce::host::SetListenOptions(options);

  const ce::SOCKET second = NewSocket();
  EXPECT_EQ(BindAgent(second), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAEADDRINUSE);
  EXPECT_THAT(failures_, ElementsAre("cannot listen on 127.0.0.1:" + std::to_string(Port()) +
                                     ": Address already in use"));
}

TEST_F(Listener, TellsThatTheAddressIsNotThisHosts) {
  const ce::SOCKET socket = NewSocket();
  const ce::sockaddr_in elsewhere = AgentAddress(0x010200C0);  // 192.0.2.1, for documentation
  EXPECT_EQ(ce::bind(socket, &elsewhere, sizeof(elsewhere)), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAEADDRNOTAVAIL);
  EXPECT_THAT(failures_, ElementsAre("cannot listen on 192.0.2.1:0: "
                                     "Cannot assign requested address"));
}

TEST_F(Listener, TellsThatTheUsersAddressIsNone) {
  UseOptions("here", false);
  const ce::SOCKET socket = NewSocket();
  EXPECT_EQ(BindAgent(socket), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAEADDRNOTAVAIL);
  EXPECT_THAT(failures_, ElementsAre("cannot listen on here:0: not an IPv4 address"));
}

TEST_F(Listener, TellsOnceWhenThereIsNoSocketToBind) {
  EXPECT_EQ(BindAgent(ce::INVALID_SOCKET), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAENOTSOCK);
  EXPECT_EQ(ce::listen(ce::INVALID_SOCKET, 1), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAENOTSOCK);
  EXPECT_THAT(failures_, SizeIs(1));
}

TEST_F(Listener, DoesNotListenWithoutAnAddress) {
  const ce::SOCKET socket = NewSocket();
  EXPECT_EQ(ce::listen(socket, 1), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaInvalid);
  EXPECT_THAT(listening_, IsEmpty());
}

TEST_F(Listener, IsBoundOnce) {
  const ce::SOCKET listener = Listen();
  EXPECT_EQ(BindAgent(listener), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaInvalid);
}

TEST_F(Listener, NeedsAWholeAddress) {
  const ce::SOCKET socket = NewSocket();
  const ce::sockaddr_in agent = AgentAddress();
  EXPECT_EQ(ce::bind(socket, &agent, sizeof(agent) - 1), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaFault);
  EXPECT_EQ(ce::bind(socket, nullptr, 16), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaFault);
}

TEST_F(Listener, TellsOfABindThatFailsOnPurpose) {
  const ce::SOCKET socket = NewSocket();
  const FaultPlan plan = FaultPlan::FailCalls("bind", ce::WSAEADDRINUSE);
  EXPECT_EQ(BindAgent(socket), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAEADDRINUSE);
  EXPECT_EQ(ce::listen(socket, 1), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaInvalid);
  EXPECT_THAT(failures_, ElementsAre("cannot listen on 127.0.0.1:0: error 10048"));
}

TEST_F(Listener, TellsOfAListenThatFailsOnPurpose) {
  const ce::SOCKET socket = NewSocket();
  EXPECT_EQ(BindAgent(socket), 0);
  const FaultPlan plan = FaultPlan::FailCalls("listen", ce::WSAEADDRINUSE);
  EXPECT_EQ(ce::listen(socket, 1), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAEADDRINUSE);
  EXPECT_THAT(failures_, ElementsAre(StartsWith("cannot listen on 127.0.0.1:")));
  EXPECT_THAT(listening_, IsEmpty());
}

TEST_F(Listener, RefusesConnectionsOnceClosed) {
  ce::closesocket(Listen());
  EXPECT_THROW(Peer{Port()}, std::system_error);
}

TEST_F(Listener, ThatIsKeptServesWhoConnectsBeforeTheNextOneListens) {
  UseOptions("127.0.0.1", true);
  const ce::SOCKET first = Listen();
  EXPECT_EQ(ce::closesocket(first), 0);
  EXPECT_EQ(ce::listen(first, 1), ce::SOCKET_ERROR) << "the closed value stays closed";
  Peer peer(Port());

  const ce::SOCKET second = Listen();
  const ce::SOCKET accepted = Accept(second);
  EXPECT_EQ(ce::send(accepted, "served", 6, 0), 6);
  EXPECT_EQ(peer.Receive(6), "served");
  EXPECT_THAT(listening_, SizeIs(1)) << "it is the same listener, announced before";
}

TEST_F(Listener, ThatIsKeptEndsWhenAsked) {
  UseOptions("127.0.0.1", true);
  ce::closesocket(Listen());
  ce::host::CloseKeptListener();
  EXPECT_THROW(Peer{Port()}, std::system_error);
  Listen();
  EXPECT_THAT(listening_, SizeIs(2));
}

// What the service manager does: a socket as descriptor 3, and variables that say so.
class HandedOverListener : public Listener {
 protected:
  static constexpr int kFirstFd = 3;

  HandedOverListener() : former_(::fcntl(kFirstFd, F_DUPFD_CLOEXEC, 100)) {}
  ~HandedOverListener() override {
    for (const char* name : {"LISTEN_PID", "LISTEN_FDS"}) ::unsetenv(name);
    if (former_) {
      ::dup2(former_.get(), kFirstFd);
    } else {
      ::close(kFirstFd);
    }
  }

  // Gives the port.
  static std::uint16_t HandOver(int family, bool listens) {
    const ce::host::UniqueFd socket(::socket(family, SOCK_STREAM, 0));
    ::sockaddr_storage address{};
    address.ss_family = static_cast<sa_family_t>(family);
    socklen_t length = family == PF_INET ? sizeof(::sockaddr_in) : sizeof(::sockaddr_in6);
    auto* const generic = reinterpret_cast<::sockaddr*>(&address);
    EXPECT_EQ(::bind(socket.get(), generic, length), 0);
    if (listens) {
      EXPECT_EQ(::listen(socket.get(), 1), 0);
    }
    EXPECT_EQ(::getsockname(socket.get(), generic, &length), 0);
    EXPECT_EQ(::dup2(socket.get(), kFirstFd), kFirstFd);
    ::sockaddr_in asIp4{};
    std::memcpy(&asIp4, &address, sizeof(asIp4));
    return ntohs(asIp4.sin_port);
  }
  static void Announce(int process, const char* count) {
    ::setenv("LISTEN_PID", std::to_string(process).c_str(), 1);
    ::setenv("LISTEN_FDS", count, 1);
  }

 private:
  ce::host::UniqueFd former_;
};

TEST_F(HandedOverListener, IsTakenInsteadOfANewOne) {
  const std::uint16_t port = HandOver(PF_INET, true);
  Announce(::getpid(), "1");
  const ce::SOCKET listener = Listen();
  EXPECT_THAT(listening_, ElementsAre("0.0.0.0:" + std::to_string(port)));
  EXPECT_EQ(std::getenv("LISTEN_PID"), nullptr);
  EXPECT_EQ(std::getenv("LISTEN_FDS"), nullptr);
  EXPECT_EQ(::fcntl(kFirstFd, F_GETFD), FD_CLOEXEC);

  Peer peer(port);
  const ce::SOCKET accepted = Accept(listener);
  EXPECT_EQ(ce::send(accepted, "!", 1, 0), 1);
  EXPECT_EQ(peer.Receive(1), "!");
}

TEST_F(HandedOverListener, MayBeOneForBothFamilies) {
  const std::uint16_t port = HandOver(PF_INET6, true);
  Announce(::getpid(), "1");
  const ce::SOCKET listener = Listen();
  EXPECT_THAT(listening_, ElementsAre("[::]:" + std::to_string(port)));
  Peer peer(port);
  ce::sockaddr_in from{};
  ce::INT length = sizeof(from);
  ce::closesocket(ce::accept(listener, &from, &length));
  EXPECT_EQ(from.sin_family, kInternet);
  EXPECT_EQ(from.sin_addr.s_addr, 0x0100007Fu);
}

TEST_F(HandedOverListener, ForAnotherProcessIsLeftAlone) {
  const std::uint16_t port = HandOver(PF_INET, true);
  Announce(::getppid(), "1");
  Listen();
  EXPECT_NE(Port(), port);
  EXPECT_NE(std::getenv("LISTEN_PID"), nullptr);
}

TEST_F(HandedOverListener, MustListen) {
  HandOver(PF_INET, false);
  Announce(::getpid(), "1");
  const ce::SOCKET socket = NewSocket();
  EXPECT_EQ(BindAgent(socket), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAENOTSOCK);
  EXPECT_THAT(failures_, ElementsAre("cannot listen on 127.0.0.1:0: what the service manager "
                                     "handed over is no listening TCP socket"));
}

TEST_F(HandedOverListener, MustBeTheOnlyOne) {
  HandOver(PF_INET, true);
  Announce(::getpid(), "2");
  const ce::SOCKET socket = NewSocket();
  EXPECT_EQ(BindAgent(socket), ce::SOCKET_ERROR);
  EXPECT_THAT(failures_, ElementsAre("cannot listen on 127.0.0.1:0: the service manager handed "
                                     "over 2 sockets instead of one"));
}

}  // namespace
}  // namespace corvane::testing
