#include "agent/core/corvane_stream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "handheld/base/fault.h"
#include "tests/agent/core/core_support.h"

namespace corvane {
namespace {

using testing::AgentTest;
using testing::Connection;
using ::testing::ElementsAre;

class CorvaneStreams : public AgentTest {
 protected:
  CorvaneStreams() { stream_.Attach(connection_.socket()); }

  Connection connection_;
  CorvaneStream stream_;
  char buffer_[16] = {};
  ce::DWORD count_ = 99;
};

TEST_F(CorvaneStreams, ReadsWhatOneReceiveDelivers) {
  connection_.client().Send("hello");
  EXPECT_EQ(stream_.Read(buffer_, 3, &count_), ce::S_OK);
  EXPECT_EQ(count_, 3u);
  EXPECT_EQ(std::string(buffer_, 3), "hel");
  EXPECT_EQ(stream_.Read(buffer_, sizeof(buffer_), &count_), ce::S_OK);
  EXPECT_EQ(count_, 2u);
  EXPECT_FALSE(stream_.Ended());
}

TEST_F(CorvaneStreams, ReadsNothingAtTheEndAndThenKnowsIt) {
  connection_.client().FinishSending();
  EXPECT_FALSE(stream_.Ended());
  EXPECT_EQ(stream_.Read(buffer_, 4, &count_), ce::S_OK);
  EXPECT_EQ(count_, 0u);
  EXPECT_TRUE(stream_.Ended());
}

TEST_F(CorvaneStreams, AskingForNothingIsNoEnd) {
  connection_.client().Send("x");
  EXPECT_EQ(stream_.Read(buffer_, 0, &count_), ce::S_OK);
  EXPECT_EQ(count_, 0u);
  EXPECT_FALSE(stream_.Ended());
}

TEST_F(CorvaneStreams, FailedReadAnswersTheLastErrorAndNoBytes) {
  const auto plan = ce::host::FaultPlan::FailCalls("recv", ce::WSAECONNRESET);
  EXPECT_EQ(stream_.Read(buffer_, 4, &count_), static_cast<ce::HRESULT>(ce::WSAECONNRESET));
  EXPECT_EQ(count_, 0u);
  EXPECT_TRUE(stream_.Ended());
  EXPECT_EQ(stream_.Read(buffer_, 4, nullptr), static_cast<ce::HRESULT>(ce::WSAECONNRESET));
}

TEST_F(CorvaneStreams, WritesWithOneSend) {
  EXPECT_EQ(stream_.Write("answer", 6, &count_), ce::S_OK);
  EXPECT_EQ(count_, 6u);
  EXPECT_EQ(stream_.Write("!", 1, nullptr), ce::S_OK);
  EXPECT_EQ(connection_.client().Receive(7), "answer!");
  EXPECT_FALSE(stream_.Ended());
}

TEST_F(CorvaneStreams, FailedWriteAnswersTheLastErrorAndNoBytes) {
  const auto plan = ce::host::FaultPlan::FailCalls("send", ce::WSAECONNRESET);
  EXPECT_EQ(stream_.Write("x", 1, &count_), static_cast<ce::HRESULT>(ce::WSAECONNRESET));
  EXPECT_EQ(count_, 0u);
  EXPECT_TRUE(stream_.Ended());
}

TEST_F(CorvaneStreams, HoldsBackWhatIsWrittenUntilItIsSent) {
  const auto sends = ce::host::FaultPlan::CountOnly("send");
  stream_.Hold();
  EXPECT_EQ(stream_.Write("ans", 3, &count_), ce::S_OK);
  EXPECT_EQ(count_, 3u);
  EXPECT_EQ(stream_.Write("wer", 3, nullptr), ce::S_OK);
  EXPECT_EQ(sends.calls(), 0u);
  EXPECT_EQ(stream_.SendHeld(), ce::S_OK);
  EXPECT_EQ(sends.calls(), 1u);
  EXPECT_EQ(stream_.Write("!", 1, nullptr), ce::S_OK);
  EXPECT_EQ(connection_.client().Receive(7), "answer!");
}

TEST_F(CorvaneStreams, ForgetsWhatIsDropped) {
  stream_.Hold();
  EXPECT_EQ(stream_.Write("no", 2, nullptr), ce::S_OK);
  stream_.DropHeld();
  stream_.Hold();
  EXPECT_EQ(stream_.Write("never", 5, nullptr), ce::S_OK);
  stream_.Release();
  EXPECT_EQ(connection_.client().ReceiveToEnd(), "");
}

TEST_F(CorvaneStreams, HoldsNoMoreThanItsRoom) {
  const std::string most(CorvaneStream::kMostHeld, 'x');
  stream_.Hold();
  EXPECT_EQ(stream_.Write(most.data(), CorvaneStream::kMostHeld, nullptr), ce::S_OK);
  EXPECT_EQ(stream_.Write("y", 1, &count_), ce::E_OUTOFMEMORY);
  EXPECT_EQ(count_, 0u);
  EXPECT_EQ(stream_.SendHeld(), ce::S_OK);
  stream_.Release();
  EXPECT_EQ(connection_.client().ReceiveToEnd(), most);
}

TEST_F(CorvaneStreams, KnowsThatWhatItHeldCouldNotBeSent) {
  stream_.Hold();
  EXPECT_EQ(stream_.Write("x", 1, nullptr), ce::S_OK);
  const auto plan = ce::host::FaultPlan::FailCalls("send", ce::WSAECONNRESET);
  EXPECT_EQ(stream_.SendHeld(), static_cast<ce::HRESULT>(ce::WSAECONNRESET));
  EXPECT_TRUE(stream_.Ended());
}

TEST_F(CorvaneStreams, ReleaseClosesTheSocketOnce) {
  const auto closings = ce::host::FaultPlan::FailNthCall("closesocket", 99, 1);
  stream_.Release();
  EXPECT_EQ(connection_.client().ReceiveToEnd(), "");
  stream_.Release();
  EXPECT_EQ(closings.calls(), 1u);
}

TEST_F(CorvaneStreams, ReleasingADetachedStreamDoesNothing) {
  const auto closings = ce::host::FaultPlan::FailNthCall("closesocket", 99, 1);
  CorvaneStream detached;
  detached.Release();
  EXPECT_EQ(closings.calls(), 0u);
}

TEST_F(CorvaneStreams, DestructionReleases) {
  {
    CorvaneStream owner;
    owner.Attach(connection_.socket());
    stream_.Attach(0);
  }
  EXPECT_EQ(connection_.client().ReceiveToEnd(), "");
}

TEST_F(CorvaneStreams, UseWithoutASocketFails) {
  CorvaneStream detached;
  EXPECT_EQ(detached.Read(buffer_, 1, &count_), static_cast<ce::HRESULT>(ce::WSAENOTSOCK));
  EXPECT_EQ(detached.Write("x", 1, &count_), static_cast<ce::HRESULT>(ce::WSAENOTSOCK));
}

TEST_F(CorvaneStreams, AttachingAnotherSocketStartsAnew) {
  {
    const auto plan = ce::host::FaultPlan::FailCalls("recv", ce::WSAECONNRESET);
    EXPECT_NE(stream_.Read(buffer_, 1, nullptr), ce::S_OK);
  }
  stream_.Attach(connection_.socket());
  EXPECT_FALSE(stream_.Ended());
}

TEST_F(CorvaneStreams, LogsEachOperation) {
  SwitchLogOn();
  connection_.client().Send("x");
  EXPECT_EQ(stream_.Read(buffer_, 1, nullptr), ce::S_OK);
  EXPECT_EQ(stream_.Write("abc", 3, nullptr), ce::S_OK);
  stream_.Release();
  stream_.Release();
  EXPECT_THAT(Messages(), ElementsAre("CorvaneStream::Read", "CorvaneStream::Write for 3 bytes",
                                      "CorvaneStream::Release", "CorvaneStream::Release"));
}

}  // namespace
}  // namespace corvane
