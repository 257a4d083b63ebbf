#include <gtest/gtest.h>
#include <sys/socket.h>

#include <random>

#include "handheld/base/fault.h"
#include "handheld/network/socket_errors.h"
#include "handheld/network/socket_watcher.h"
#include "platform/status.h"
#include "tests/handheld/network/loopback.h"

namespace corvane::testing {
namespace {

using ce::host::FaultPlan;

// A connection with both of its ends.
class Transfer : public LoopbackTest {
 protected:
  Peer& Connect() {
    peer_.emplace(Port());
    socket_ = Accept(listener_);
    return *peer_;
  }
  std::string Receive(ce::INT bytes) {
    std::string buffer(static_cast<std::size_t>(bytes), '\0');
    const ce::INT count = ce::recv(socket_, buffer.data(), bytes, 0);
    if (count < 0) return "failed";
    buffer.resize(static_cast<std::size_t>(count));
    return buffer;
  }
  ce::INT Send(const std::string& bytes, ce::INT flags = 0) {
    return ce::send(socket_, bytes.data(), static_cast<ce::INT>(bytes.size()), flags);
  }
  bool HasCome() const {
    char byte;
    return ::recv(peer_->fd(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
  }

  const ce::SOCKET listener_ = Listen();
  ce::SOCKET socket_ = ce::INVALID_SOCKET;
  std::optional<Peer> peer_;
};

std::string ManyBytes(std::size_t count) {
  std::string bytes(count, '\0');
  std::minstd_rand random(1);
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

TEST_F(Transfer, ReceivesWhatHasCome) {
  Connect().Send("request");
  EXPECT_EQ(Receive(4), "requ");
  EXPECT_EQ(Receive(100), "est") << "the rest that is there, not all that is asked for";
}

TEST_F(Transfer, ReceivesNothingAtTheEndOfTheConnection) {
  Connect().FinishSending();
  EXPECT_EQ(Receive(1), "");
  EXPECT_EQ(Receive(1), "");
}

TEST_F(Transfer, SendsAfterThePeerHasFinishedSending) {
  Peer& peer = Connect();
  peer.FinishSending();
  EXPECT_EQ(Send("reply"), 5);
  EXPECT_EQ(peer.Receive(5), "reply");
}

TEST_F(Transfer, SendsABlockOfAnySizeWhole) {
  const std::string block = ManyBytes(16 << 20);
  Peer& peer = Connect();
  std::string received;
  std::thread reader([&] { received = peer.Receive(block.size()); });
  EXPECT_EQ(Send(block), static_cast<ce::INT>(block.size()));
  reader.join();
  EXPECT_TRUE(received == block);
}

TEST_F(Transfer, OfNoBytesIsASuccess) {
  Connect();
  EXPECT_EQ(Send(""), 0);
  EXPECT_EQ(ce::recv(socket_, nullptr, 0, 0), 0);
}

TEST_F(Transfer, FailsOnAResetConnection) {
  Connect().Reset();
  EXPECT_EQ(Receive(1), "failed");
  EXPECT_EQ(ce::GetLastError(), ce::WSAECONNRESET);
  EXPECT_EQ(Send("x"), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAECONNRESET);
}

TEST_F(Transfer, TakesNoFlagsAndNoNegativeCount) {
  Connect();
  char byte = 0;
  EXPECT_EQ(ce::recv(socket_, &byte, 1, 2), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaInvalid);
  EXPECT_EQ(ce::send(socket_, &byte, -1, 0), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaInvalid);
}

TEST_F(Transfer, NeedsAConnection) {
  char byte = 0;
  EXPECT_EQ(ce::recv(listener_, &byte, 1, 0), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::host::kWsaNotConnected);
}

TEST_F(Transfer, APartLeavesWithWhatFollows) {
  Peer& peer = Connect();
  EXPECT_EQ(Send("ab", ce::MSG_PARTIAL), 2);
  EXPECT_EQ(Send("c", ce::MSG_PARTIAL), 1);
  EXPECT_FALSE(HasCome());
  EXPECT_EQ(Send("de"), 2);
  EXPECT_EQ(peer.Receive(5), "abcde");
  const std::string large = ManyBytes(4 << 20);
  std::string received;
  std::thread reader([&] { received = peer.Receive(large.size() + 2); });
  EXPECT_EQ(Send("fg", ce::MSG_PARTIAL), 2);
  EXPECT_EQ(Send(large), static_cast<ce::INT>(large.size()));
  reader.join();
  EXPECT_TRUE(received == "fg" + large);
}

TEST_F(Transfer, APartThatIsLargeDoesNotWait) {
  Peer& peer = Connect();
  EXPECT_EQ(Send("ab", ce::MSG_PARTIAL), 2);
  EXPECT_EQ(Send(std::string(40, 'x'), ce::MSG_PARTIAL), 40);
  EXPECT_EQ(peer.Receive(42), "ab" + std::string(40, 'x'));
}

TEST_F(Transfer, APartLeavesBeforeAnAnswerIsAwaited) {
  Peer& peer = Connect();
  EXPECT_EQ(Send("ab", ce::MSG_PARTIAL), 2);
  peer.Send("x");
  EXPECT_EQ(Receive(1), "x");
  EXPECT_EQ(peer.Receive(2), "ab");
}

TEST_F(Transfer, APartLeavesBeforeTheConnectionEnds) {
  Peer& peer = Connect();
  EXPECT_EQ(Send("ab", ce::MSG_PARTIAL), 2);
  EXPECT_EQ(ce::closesocket(socket_), 0);
  EXPECT_EQ(peer.Receive(3), "ab");
  Peer& other = Connect();
  EXPECT_EQ(Send("cd", ce::MSG_PARTIAL), 2);
  ce::host::AbandonSocket(socket_);
  EXPECT_EQ(other.Receive(2), "cd");
}

TEST_F(Transfer, FailsOnPurpose) {
  Connect().Send("x");
  {
    const FaultPlan plan = FaultPlan::FailCalls("recv", ce::WSAECONNRESET);
    EXPECT_EQ(Receive(1), "failed");
    EXPECT_EQ(ce::GetLastError(), ce::WSAECONNRESET);
  }
  {
    const FaultPlan plan = FaultPlan::FailCalls("send", ce::WSAECONNRESET);
    EXPECT_EQ(Send("x"), ce::SOCKET_ERROR);
    EXPECT_EQ(ce::GetLastError(), ce::WSAECONNRESET);
  }
  EXPECT_EQ(Receive(1), "x");
}

class SilentPeer : public Transfer {
 protected:
  SilentPeer() { handheld_->Set(ce::host::setting::kPeerTimeout, 1); }
};

TEST_F(SilentPeer, IsGoneAfterTheSettingsTime) {
  Peer& peer = Connect();
  EXPECT_EQ(Receive(1), "failed");
  EXPECT_EQ(ce::GetLastError(), ce::WSAETIMEDOUT);
  peer.Send("late");
  EXPECT_EQ(Receive(4), "failed") << "gone once, gone for good";
  EXPECT_EQ(ce::GetLastError(), ce::WSAETIMEDOUT);
  EXPECT_EQ(Send("x"), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAETIMEDOUT);
}

TEST_F(SilentPeer, ThatTakesNothingIsGoneAsWell) {
  Connect();
  EXPECT_EQ(Send(ManyBytes(64 << 20)), ce::SOCKET_ERROR);
  EXPECT_EQ(ce::GetLastError(), ce::WSAETIMEDOUT);
}

TEST_F(SilentPeer, IsNotWaitedForOnceItIsGone) {
  Peer& peer = Connect();
  EXPECT_EQ(Receive(1), "failed");
  ce::host::AbandonSocket(socket_);
  EXPECT_EQ(ce::host::AbandonedSocketCount(), 0u);
  EXPECT_TRUE(peer.SeesEnd());
}

}  // namespace
}  // namespace corvane::testing
