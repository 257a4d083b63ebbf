#include "desktop/wire/request.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "desktop/wire/error.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

std::string Utf16(std::string_view text) {
  std::string wide;
  for (const char c : text) wide += {c, '\0'};
  return wide;
}

template <typename Action>
std::string WhyNot(const Action& action) {
  try {
    action();
  } catch (const Error& error) {
    return error.what();
  }
  return {};
}

std::string WhyNoReply(const ConnectionOptions& options) {
  return WhyNot([&] { Invoke(options, "F", {}); });
}

// One connection that takes the request and answers with these bytes.
FakeAgent::Script Answer(std::string bytes) {
  return [bytes](Peer& peer) {
    peer.ReceiveCounted();
    peer.Send(bytes);
    peer.Close();
  };
}

TEST(InvokeRecord, HasItsLengthBothNamesTheInputAndTheFlag) {
  const std::string body = Word(69) + std::string(8, '\0') + Word(8) + Utf16({"corvane\0", 8}) +
                           std::string(4, '\0') + Word(3) + Utf16({"Do\0", 3}) + Word(2) + "xy" +
                           Word(1);
  EXPECT_EQ(InvokeRecord("Do", "xy", AnswerMode::kStreamed),
            Word(static_cast<std::uint32_t>(body.size())) + body);
}

TEST(InvokeRecord, FillsABodyOf1024BytesAndNoMore) {
  const std::string name = "DownloadSpecificPIMRecords";
  const std::size_t room = InputRoom(name);
  EXPECT_EQ(room, 922U);
  EXPECT_EQ(InvokeRecord(name, std::string(room, 'x'), AnswerMode::kBuffered).size(), 4U + 1024U);
  EXPECT_THROW(InvokeRecord(name, std::string(room + 1, 'x'), AnswerMode::kBuffered), Error);
}

TEST(QuitRecord, NamesItsKind) {
  EXPECT_EQ(QuitRecord(), Word(12) + Word(0xDEADBEEF) + std::string(8, '\0'));
}

TEST(Invoke, SendsTheRecordInOnePiece) {
  std::string seen;
  FakeAgent agent({[&](Peer& peer) {
    seen = peer.ReceiveOnce();
    peer.Send(ReplyRecord(0));
  }});
  Invoke(agent.options(), "F", "input");
  agent.Join();
  EXPECT_EQ(seen, InvokeRecord("F", "input", AnswerMode::kBuffered));
}

TEST(Invoke, GivesStatusAndOutput) {
  FakeAgent agent({Answer(ReplyRecord(5, "abc")), Answer(ReplyRecord(0x80070057))});
  const Reply good = Invoke(agent.options(), "F", {});
  EXPECT_EQ(good.status, 5);
  EXPECT_EQ(good.output, "abc");
  EXPECT_EQ(Invoke(agent.options(), "F", {}).status, static_cast<std::int32_t>(0x80070057));
}

TEST(Invoke, SaysWhatMakesNoSense) {
  FakeAgent agent({Answer(Word(15) + std::string(16, '\0')),
                   Answer(Word(0xFFFFFFFF) + std::string(16, '\0')),
                   Answer(Word(17) + Word(0) + Word(0) + Word(0) + Word(2) + "ab"),
                   Answer(Word(16) + Word(0) + Word(1) + Word(2) + Word(0)),
                   Answer("HTTP/1.1 400 Bad Request\r\n")});
  const std::string start = "the answer to F makes no sense: ";
  EXPECT_EQ(WhyNoReply(agent.options()), start + "a reply of 15 bytes");
  EXPECT_EQ(WhyNoReply(agent.options()), start + "a reply of 4294967295 bytes");
  EXPECT_EQ(WhyNoReply(agent.options()), start + "a reply of 17 bytes with 2 bytes of output");
  EXPECT_EQ(WhyNoReply(agent.options()), start + "it has two statuses");
  EXPECT_EQ(WhyNoReply(agent.options()), start + "a reply of 1347703880 bytes");
}

TEST(Invoke, SaysWhereTheConnectionEndedCutOffAtEachByte) {
  const std::string whole = ReplyRecord(0, "output");
  std::vector<FakeAgent::Script> scripts;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    scripts.push_back(Answer(whole.substr(0, length)));
  }
  FakeAgent agent(std::move(scripts));
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_EQ(WhyNoReply(agent.options()), ToString(agent.options().target) +
                                               " ended the connection midway, after " +
                                               std::to_string(length) + " bytes");
  }
}

TEST(Invoke, TakesAResetForTheEnd) {
  FakeAgent agent({[](Peer& peer) {
    peer.ReceiveCounted();
    peer.Reset();
  }});
  EXPECT_NE(WhyNoReply(agent.options()).find("ended the connection midway"), std::string::npos);
}

TEST(Invoke, TakesAReplyThatComesByteByByte) {
  FakeAgent agent({[](Peer& peer) {
    peer.ReceiveCounted();
    for (const char c : ReplyRecord(0, "slow")) peer.Send({&c, 1});
  }});
  EXPECT_EQ(Invoke(agent.options(), "F", {}).output, "slow");
}

TEST(Invoke, GivesUpOnASilentAgent) {
  FakeAgent agent({[](Peer& peer) {
    peer.ReceiveCounted();
    peer.Send("abc");
    peer.AwaitEnd();
  }});
  ConnectionOptions options = agent.options();
  options.timeout = std::chrono::milliseconds(50);
  EXPECT_EQ(WhyNoReply(options),
            ToString(options.target) + " has been silent for 0.05 s (3 bytes received until then)");
}

TEST(Invoke, SaysWhenNobodyListens) {
  const ConnectionOptions options = NobodyThere();
  EXPECT_EQ(WhyNoReply(options),
            "nobody listens at " + ToString(options.target) + ": is corvane running there?");
}

TEST(Invoke, SaysWhichHostItCannotFind) {
  ConnectionOptions options;
  options.target.host = "no-such-host.invalid";
  EXPECT_EQ(WhyNoReply(options).find("cannot find the host no-such-host.invalid: "), 0U);
}

TEST(Invoke, StopsWhenInterrupted) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "", 1), 1);
  FakeAgent agent({[](Peer& peer) { peer.AwaitEnd(); }});
  ConnectionOptions options = agent.options();
  options.interruptFd = ends[0];
  EXPECT_THROW(Invoke(options, "F", {}), Interrupted);
  close(ends[0]);
  close(ends[1]);
}

TEST(AwaitStream, NamesARequestThatTheAgentDoesNotKnow) {
  FakeAgent agent({Answer(Word(127)), Answer(Word(4711))});
  const auto begin = [&] {
    Connection connection(agent.options());
    SendStreamRequest(connection, "F", {});
    AwaitStream(connection, "F");
  };
  EXPECT_EQ(WhyNot(begin), "the agent does not know the request F");
  EXPECT_EQ(WhyNot(begin), "the answer to F makes no sense: it begins with 0x00001267");
}

}  // namespace
}  // namespace desktop::testing
