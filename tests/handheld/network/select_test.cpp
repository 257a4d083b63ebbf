#include <gtest/gtest.h>
#include <sys/eventfd.h>

#include "handheld/base/fault.h"
#include "handheld/network/select.h"
#include "handheld/network/socket_errors.h"
#include "platform/status.h"
#include "tests/handheld/network/loopback.h"

namespace corvane::testing {
namespace {

using ce::host::FaultPlan;

constexpr ce::timeval kNow{0, 0};
constexpr ce::timeval kMinute{60, 1};

ce::fd_set SetOf(std::initializer_list<ce::SOCKET> sockets) {
  ce::fd_set set{};
  for (const ce::SOCKET socket : sockets) set.fd_array[set.fd_count++] = socket;
  return set;
}

class Select : public LoopbackTest {};

TEST_F(Select, WaitsForAConnection) {
  const ce::SOCKET listener = Listen();
  Peer peer(Port());
  ce::fd_set read = SetOf({listener});
  EXPECT_EQ(ce::select(0, &read, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(read.fd_count, 1u);
  EXPECT_EQ(read.fd_array[0], listener);
}

TEST_F(Select, EmptiesTheSetWhenItsTimeIsUp) {
  ce::host::SetTimeLapse(1e6);
  const ce::SOCKET listener = Listen();
  ce::fd_set read = SetOf({listener});
  EXPECT_EQ(ce::select(0, &read, nullptr, nullptr, &kMinute), 0);
  EXPECT_EQ(read.fd_count, 0u);
}

TEST_F(Select, KeepsTheReadyOnes) {
  const ce::SOCKET listener = Listen();
  Peer quietPeer(Port());
  const ce::SOCKET quiet = Accept(listener);
  Peer busyPeer(Port());
  const ce::SOCKET busy = Accept(listener);
  busyPeer.Send("!");
  ce::fd_set read = SetOf({quiet, busy, listener});
  EXPECT_EQ(ce::select(0, &read, nullptr, nullptr, &kMinute), 1);
  EXPECT_EQ(read.fd_count, 1u);
  EXPECT_EQ(read.fd_array[0], busy);
}

TEST_F(Select, CallsAConnectionThatHasEndedReadable) {
  const ce::SOCKET listener = Listen();
  Peer peer(Port());
  const ce::SOCKET accepted = Accept(listener);
  peer.Close();
  ce::fd_set read = SetOf({accepted});
  EXPECT_EQ(ce::select(0, &read, nullptr, nullptr, &kMinute), 1);
}

TEST_F(Select, NeverCallsASocketReadyThatNothingCanHappenTo) {
  const ce::SOCKET unbound = NewSocket();
  ce::fd_set read = SetOf({unbound});
  EXPECT_EQ(ce::select(0, &read, nullptr, nullptr, &kNow), 0);
}

TEST_F(Select, RefusesAClosedSocketAndLeavesTheSetAsItIs) {
  const ce::SOCKET closed = Listen();
  ce::closesocket(closed);
  for (const ce::SOCKET none : {closed, ce::INVALID_SOCKET}) {
    ce::fd_set read = SetOf({none});
    EXPECT_EQ(ce::select(0, &read, nullptr, nullptr, &kMinute), ce::SOCKET_ERROR);
    EXPECT_EQ(ce::GetLastError(), ce::WSAENOTSOCK);
    EXPECT_EQ(read.fd_count, 1u);
  }
}

TEST_F(Select, RefusesToWaitForNothingOrForANegativeTime) {
  ce::fd_set none{};
  for (ce::fd_set* nothing : {&none, static_cast<ce::fd_set*>(nullptr)}) {
    EXPECT_EQ(ce::select(0, nothing, nullptr, nullptr, nullptr), ce::SOCKET_ERROR);
    EXPECT_EQ(ce::GetLastError(), ce::host::kWsaInvalid);
  }
  const ce::SOCKET listener = Listen();
  ce::fd_set read = SetOf({listener});
  const ce::timeval past{-1, 0};
  EXPECT_EQ(ce::select(0, &read, nullptr, nullptr, &past), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaInvalid);
}

TEST_F(Select, EndsAsIfItsTimeWereUp) {
  const ce::host::UniqueFd end(::eventfd(0, EFD_CLOEXEC));
  ce::host::EndSelectsBy(end.get());
  const ce::SOCKET listener = Listen();
  std::thread ending([&] { ::eventfd_write(end.get(), 1); });
  ce::fd_set read = SetOf({listener});
  EXPECT_EQ(ce::select(0, &read, nullptr, nullptr, nullptr), 0);
  ending.join();
  Peer peer(Port());
  read = SetOf({listener});
  EXPECT_EQ(ce::select(0, &read, nullptr, nullptr, nullptr), 0) << "whoever connects";
  EXPECT_EQ(read.fd_count, 0u);
  ce::host::EndSelectsBy(-1);
}

TEST_F(Select, FailsOnPurpose) {
  const ce::SOCKET listener = Listen();
  ce::fd_set read = SetOf({listener});
  const FaultPlan plan = FaultPlan::FailCalls("select", 10050);
  EXPECT_EQ(ce::select(0, &read, nullptr, nullptr, &kMinute), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), 10050u);
  EXPECT_EQ(read.fd_count, 1u);
}

}  // namespace
}  // namespace corvane::testing
