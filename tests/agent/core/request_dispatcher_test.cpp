#include "agent/core/request_dispatcher.h"
#include "common/text/unicode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "agent/core/listener.h"
#include "handheld/base/fault.h"
#include "platform/memory.h"
#include "tests/agent/core/core_support.h"
#include "tests/support/fault_runs.h"

namespace corvane {
namespace {

using testing::AgentTest;
using ::testing::AnyOf;
using testing::Connection;
using ::testing::ElementsAre;
using testing::Invoke;
using testing::LastSeen;
using testing::Received;
using testing::Record;
using testing::Reply;
using testing::Word;

class Intake : public AgentTest {
 protected:
  // What the agent sends for these bytes.
  std::string Ask(const std::string& bytes) {
    Connection connection;
    connection.client().Send(bytes);
    connection.client().FinishSending();
    connection.Serve();
    return connection.Drop();
  }
  std::string AskInvoke(const Invoke& invoke) { return Ask(Record(invoke.Body())); }
};

TEST_F(Intake, AnswersABufferedRequest) {
  EXPECT_EQ(AskInvoke({.function = "Echo", .input = "hello"}), Reply(0, "hello"));
}

TEST_F(Intake, ShowsTheHandlerItsInputAndNoStream) {
  AskInvoke({.function = "Echo", .input = "hello"});
  EXPECT_EQ(LastSeen().input, "hello");
  EXPECT_EQ(LastSeen().outputCount, 0u);
  EXPECT_FALSE(LastSeen().hadOutput);
  EXPECT_FALSE(LastSeen().hadStream);
}

TEST_F(Intake, CountsTheRequestWhileItIsServed) {
  AskInvoke({.function = "Echo"});
  EXPECT_EQ(LastSeen().active, 2);
  EXPECT_EQ(ActiveRequestCount, 1);
}

TEST_F(Intake, LeavesTheSocketOfABufferedRequestOpen) {
  Connection connection;
  connection.client().Send(Record(Invoke{.function = "Echo"}.Body()));
  connection.Serve();
  EXPECT_EQ(connection.client().Receive(20), Reply(0, ""));
  EXPECT_EQ(ce::send(connection.socket(), "more", 4, 0), 4);
  EXPECT_EQ(connection.client().Receive(4), "more");
}

TEST_F(Intake, BodyOf1024BytesIsReadAndOf1025IsDropped) {
  Invoke invoke{.function = "Echo"};
  invoke.input.assign(1024 - invoke.Body().size(), 'x');
  ASSERT_EQ(invoke.Body().size(), 1024u);
  EXPECT_EQ(AskInvoke(invoke), Reply(0, invoke.input));
  invoke.input += 'x';
  EXPECT_EQ(AskInvoke(invoke), "");
  EXPECT_EQ(LastSeen().calls, 1);
}

TEST_F(Intake, HugeLengthIsDropped) {
  EXPECT_EQ(Ask(Word(0xFFFFFFFF) + "anything"), "");
}

TEST_F(Intake, DropsAConnectionWithoutAWholeLength) {
  EXPECT_EQ(Ask(""), "");
  EXPECT_EQ(Ask("abc"), "");
  EXPECT_EQ(ActiveRequestCount, 1);
}

TEST_F(Intake, DropsABodyThatArrivesInPieces) {
  const std::string record = Record(Invoke{.function = "Echo"}.Body());
  Connection connection;
  connection.client().Send(record.substr(0, record.size() - 1));
  connection.Serve();
  connection.client().Send(record.substr(record.size() - 1));
  EXPECT_EQ(connection.Drop(), "");
  EXPECT_EQ(LastSeen().calls, 0);
}

TEST_F(Intake, TakesLengthAndBodyInTwoPieces) {
  const std::string body = Invoke{.function = "Echo", .input = "x"}.Body();
  Connection connection;
  connection.client().Send(Word(static_cast<std::uint32_t>(body.size())));
  connection.client().Send(body);
  connection.Serve();
  EXPECT_EQ(connection.Drop(), Reply(0, "x"));
}

TEST_F(Intake, QuitRequestAnswersNothingAndSetsTheFlag) {
  SwitchLogOn();
  EXPECT_EQ(Ask(Record(testing::QuitBody())), "");
  EXPECT_EQ(QuitRequested, 1u);
  EXPECT_THAT(Messages(), ElementsAre("handleRequest", "Got Quit Request"));
}

TEST_F(Intake, UnknownKindsAnswerNothing) {
  SwitchLogOn();
  for (const std::string& body : {Word(70), Word(0), std::string(), std::string("F"), Word(68)}) {
    EXPECT_EQ(Ask(Record(body)), "");
  }
  EXPECT_EQ(QuitRequested, 0u);
  std::vector<std::string> expected;
  for (int i = 0; i < 5; ++i) {
    expected.emplace_back("handleRequest");
    expected.emplace_back("Got Unknown Request");
  }
  EXPECT_EQ(Messages(), expected);
}

// A kind of one byte is read with the zeros behind it.
TEST_F(Intake, InvokeWithNothingBehindItsKindIsAnUnknownName) {
  EXPECT_EQ(Ask(Record("E")), Reply(0, ""));
}

TEST_F(Intake, UnknownBufferedNameAnswersSuccessWithoutOutput) {
  EXPECT_EQ(AskInvoke({.function = "NoSuchName", .input = "hello"}),
            Word(16) + Word(0) + Word(0) + Word(0) + Word(0));
}

TEST_F(Intake, UnknownStreamedNameAnswers127AndCloses) {
  Connection connection;
  connection.client().Send(Record(Invoke{.function = "NoSuchName", .streamFlag = 1}.Body()));
  connection.Serve();
  EXPECT_EQ(connection.client().ReceiveToEnd(), Word(127));
}

TEST_F(Intake, StreamedRequestAnswersZeroThenWhatItsHandlerWritesAndCloses) {
  Connection connection;
  connection.client().Send(
      Record(Invoke{.function = "Say", .input = "hello", .streamFlag = 1}.Body()));
  connection.Serve();
  EXPECT_EQ(connection.client().ReceiveToEnd(), Word(0) + "hello");
  EXPECT_TRUE(LastSeen().hadStream);
  EXPECT_EQ(LastSeen().outputCount, 0u);
}

TEST_F(Intake, AnyStreamFlagButZeroStreams) {
  std::string body = Invoke{.function = "Say", .input = "x", .streamFlag = 1}.Body();
  body.replace(body.size() - 4, 4, Word(0x80000000));
  EXPECT_EQ(Ask(Record(body)), Word(0) + "x");
}

TEST_F(Intake, TablesDoNotMix) {
  EXPECT_EQ(AskInvoke({.function = "Echo", .input = "x", .streamFlag = 1}), Word(127));
  EXPECT_EQ(AskInvoke({.function = "Say", .input = "x"}), Reply(0, ""));
}

TEST_F(Intake, NamesMatchWholeAndWithTheirCase) {
  for (const char* name : {"echo", "ECHO", "Ech", "Echo ", "EchoX", ""}) {
    EXPECT_EQ(AskInvoke({.function = name, .input = "x"}), Reply(0, ""));
  }
  EXPECT_EQ(LastSeen().calls, 0);
}

TEST_F(Intake, FirstOfTwoEqualNamesAnswers) {
  AskInvoke({.function = "Echo"});
  EXPECT_EQ(LastSeen().entry, "Echo");
}

TEST_F(Intake, NameEndsAtItsZeroWithinItsLength) {
  EXPECT_EQ(AskInvoke({.function = std::string("Echo\0junk", 9), .input = "x"}), Reply(0, "x"));
}

TEST_F(Intake, NameWithoutItsZeroIsComparedWithWhatFollows) {
  // The length leaves the terminator out, so the input count's place holds zeros and a count.
  EXPECT_EQ(AskInvoke({.function = "Echo", .input = "x", .terminated = false}), Reply(0, ""));
  EXPECT_EQ(LastSeen().calls, 0);
}

// No input: the count behind the name happens to be the missing terminator.
TEST_F(Intake, NameWithoutItsZeroMatchesWhenAZeroFollows) {
  EXPECT_EQ(AskInvoke({.function = "Echo", .terminated = false}), Reply(0, ""));
  EXPECT_EQ(LastSeen().calls, 1);
}

TEST_F(Intake, NamesOf32CharactersAreTaken) {
  EXPECT_EQ(AskInvoke({.function = "ANameOfThirtyOneCharactersInAll",
                       .dll = "ALibraryOfThirtyTwoCharacters.xy"}),
            Reply(0, ""));
  EXPECT_EQ(LastSeen().entry, "Second");
}

TEST_F(Intake, NamesOf33CharactersAreRefusedWithoutAReply) {
  SwitchLogOn();
  EXPECT_EQ(AskInvoke({.function = "Echo", .dll = std::string(33, 'x')}), "");
  EXPECT_EQ(AskInvoke({.function = std::string(32, 'x')}), "");
  EXPECT_THAT(Messages(), ElementsAre("handleRequest", "dllNameLength is too long", "handleRequest",
                                      "functionNameLength is too long"));
}

TEST_F(Intake, EmptyLibraryNameIsTaken) {
  EXPECT_EQ(AskInvoke({.function = "Echo", .input = "x", .dll = ""}), Reply(0, "x"));
}

TEST_F(Intake, PositiveStatusIsSentWithItsOutput) {
  EXPECT_EQ(AskInvoke({.function = "Status", .input = Word(87)}), Reply(87, "output"));
}

TEST_F(Intake, NegativeStatusIsSentWithoutItsOutput) {
  EXPECT_EQ(AskInvoke({.function = "Status", .input = Word(0x80070057)}),
            Reply(ce::E_INVALIDARG, ""));
}

TEST_F(Intake, LogsABufferedRequest) {
  SwitchLogOn();
  AskInvoke({.function = "Status", .input = Word(0x80070057)});
  EXPECT_THAT(Messages(), ElementsAre("handleRequest", "inputCount = 4", "dllName = corvane",
                                      "functionName = Status", "hr after send = -2147024809"));
}

TEST_F(Intake, LogsAStreamedRequest) {
  SwitchLogOn();
  AskInvoke({.function = "Say", .input = "abc", .streamFlag = 1});
  EXPECT_THAT(Messages(),
              ElementsAre("handleRequest", "inputCount = 3", "dllName = corvane",
                          "functionName = Say", "CorvaneStream::Write for 4 bytes",
                          "CorvaneStream::Write for 3 bytes", "CorvaneStream::Release"));
}

TEST_F(Intake, LogsNothingWhenSwitchedOff) {
  AskInvoke({.function = "Echo"});
  EXPECT_EQ(handheld_.FileContent("CorvaneLog.txt"), "");
}

TEST_F(Intake, ReceiveThatFailsDropsTheRequest) {
  for (const std::uint64_t n : {1u, 2u}) {
    const auto plan = ce::host::FaultPlan::FailNthCall("recv", n, ce::WSAECONNRESET);
    EXPECT_EQ(AskInvoke({.function = "Echo"}), "");
    EXPECT_EQ(ActiveRequestCount, 1);
  }
}

// Whatever fails, the desktop gets the whole answer, an error, or nothing, and the agent is as
// before.
class IntakeFaults : public Intake {
 protected:
  void ExpectHonest(const Invoke& invoke,
                    const std::function<void(const std::string&, const std::string&)>& verify) {
    SwitchLogOn();
    const std::string record = Record(invoke.Body());
    std::optional<Connection> connection;
    const auto prepare = [&] {
      connection.emplace();
      connection->client().Send(record);
      connection->client().FinishSending();
    };
    const auto run = [&] {
      connection->Serve();
      return 0;
    };
    testing::FailEachCall(ce::WSAECONNRESET, prepare, run, [&](int, const std::string& failed) {
      const std::string answer = connection->Drop();
      EXPECT_EQ(ActiveRequestCount, 1);
      verify(answer, failed);
    });
  }
};

// When only the header is lost, the output still goes.
TEST_F(IntakeFaults, OfABufferedRequest) {
  ExpectHonest({.function = "Echo", .input = "hello"},
               [](const std::string& answer, const std::string& failed) {
                 if (failed == "send") {
                   EXPECT_THAT(answer, AnyOf("hello", Reply(0, "hello").substr(0, 20)));
                 } else if (failed == "recv") {
                   EXPECT_EQ(answer, "");
                 } else if (failed == "LocalAlloc") {
                   EXPECT_EQ(answer, Reply(ce::E_OUTOFMEMORY, ""));
                 } else {
                   EXPECT_EQ(answer.substr(20), "hello");
                 }
               });
}

TEST_F(IntakeFaults, OfAStreamedRequest) {
  ExpectHonest({.function = "Say", .input = "hello", .streamFlag = 1},
               [](const std::string& answer, const std::string& failed) {
                 if (failed == "send") {
                   // A failed status word is a positive error, so the handler runs all the same.
                   EXPECT_THAT(answer, AnyOf("hello", Word(0)));
                 } else if (failed == "recv") {
                   EXPECT_EQ(answer, "");
                 } else {
                   EXPECT_EQ(answer, Word(0) + "hello");
                 }
               });
}

class Dispatcher : public AgentTest {
 protected:
  ce::HRESULT Dispatch(const Invoke& invoke) {
    return RequestDispatcher(connection_.socket(), Received(invoke.Body()));
  }
  Connection connection_;
};

TEST_F(Dispatcher, AnswersTheHandlersStatus) {
  EXPECT_EQ(Dispatch({.function = "Status", .input = Word(5)}), 5);
  EXPECT_EQ(Dispatch({.function = "Status", .input = Word(0x80004005)}), ce::E_FAIL);
  EXPECT_EQ(Dispatch({.function = "NoSuchName"}), 0);
}

TEST_F(Dispatcher, AnswersAStreamedHandlersStatus) {
  EXPECT_EQ(Dispatch({.function = "FailLate", .streamFlag = 1}), ce::E_UNEXPECTED);
}

TEST_F(Dispatcher, AnswersTheWritesStatusForAnUnknownStreamedName) {
  EXPECT_EQ(Dispatch({.function = "NoSuchName", .streamFlag = 1}), 0);
}

TEST_F(Dispatcher, AnswersTheWritesErrorForAnUnknownStreamedName) {
  const auto plan = ce::host::FaultPlan::FailCalls("send", ce::WSAECONNRESET);
  EXPECT_EQ(Dispatch({.function = "NoSuchName", .streamFlag = 1}),
            static_cast<ce::HRESULT>(ce::WSAECONNRESET));
}

TEST_F(Dispatcher, SkipsTheHandlerOnlyWhenTheStatusWordFailsNegatively) {
  const auto plan = ce::host::FaultPlan::FailCalls("send", 0x80004005);
  EXPECT_EQ(Dispatch({.function = "Say", .input = "x", .streamFlag = 1}), ce::E_FAIL);
  EXPECT_EQ(LastSeen().calls, 0);
  EXPECT_EQ(connection_.client().ReceiveToEnd(), "");
}

TEST_F(Dispatcher, AnswersTheLastErrorWhenTheHeaderCannotBeSent) {
  const auto plan = ce::host::FaultPlan::FailNthCall("send", 1, ce::WSAECONNRESET);
  EXPECT_EQ(Dispatch({.function = "Echo", .input = "x"}),
            static_cast<ce::HRESULT>(ce::WSAECONNRESET));
  EXPECT_EQ(connection_.client().Receive(1), "x");  // a positive error does not stop the output
}

TEST_F(Dispatcher, SendsNoOutputWhenTheHeaderFailsNegatively) {
  const auto plan = ce::host::FaultPlan::FailNthCall("send", 1, 0x80004005);
  EXPECT_EQ(Dispatch({.function = "Echo", .input = "x"}), ce::E_FAIL);
  EXPECT_EQ(plan.calls(), 1u);
}

TEST_F(Dispatcher, AnswersTheLastErrorWhenTheOutputCannotBeSent) {
  SwitchLogOn();
  const auto plan = ce::host::FaultPlan::FailNthCall("send", 2, ce::WSAECONNRESET);
  EXPECT_EQ(Dispatch({.function = "Echo", .input = "x"}),
            static_cast<ce::HRESULT>(ce::WSAECONNRESET));
  EXPECT_EQ(Messages().back(), "hr after send = 10054");
}

TEST_F(Dispatcher, SendsHeaderAndOutputWithOneSendEach) {
  const auto sends = ce::host::FaultPlan::FailNthCall("send", 99, 1);
  Dispatch({.function = "Echo", .input = "x"});
  EXPECT_EQ(sends.calls(), 2u);
  Dispatch({.function = "Echo"});
  EXPECT_EQ(sends.calls(), 3u);
  Dispatch({.function = "Status", .input = Word(0x80004005)});
  EXPECT_EQ(sends.calls(), 4u);
}

TEST_F(Dispatcher, RefusesLengthsBeyondTheirLimits) {
  SwitchLogOn();
  for (const std::uint32_t length : {33u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(Dispatch({.function = "Echo", .dllNameLength = length}), kMalformedBody);
    EXPECT_EQ(Dispatch({.function = "Echo", .functionNameLength = length}), kMalformedBody);
  }
  for (const std::uint32_t count : {1025u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(Dispatch({.function = "Echo", .inputCount = count}), kMalformedBody);
  }
  EXPECT_EQ(Messages().back(), "inputCount is too big");
  EXPECT_EQ(connection_.Drop(), "");
  EXPECT_EQ(LastSeen().calls, 0);
}

// Lengths within their limits can still point behind the body; zeros are there.
TEST_F(Dispatcher, ReadsZerosBehindTheBody) {
  EXPECT_EQ(Dispatch({.function = "Echo", .input = "x", .inputCount = 1024}), 0);
  const std::string input = LastSeen().input;
  ASSERT_EQ(input.size(), 1024u);
  EXPECT_EQ(input.substr(0, 5), std::string("x\0\0\0\0", 5));
  EXPECT_EQ(input.substr(5), std::string(1019, '\0'));
}

TEST_F(Dispatcher, TakesTheFarthestLengthsOfAFullBody) {
  std::string body(1024, '\xFF');
  body.replace(0, 4, Word(kInvokeRequest));
  body.replace(12, 4, Word(32));
  body.replace(20 + 64, 4, Word(32));
  body.replace(24 + 128, 4, Word(1024));
  EXPECT_EQ(RequestDispatcher(connection_.socket(), Received(body)), 0);
  EXPECT_EQ(connection_.Drop(), Reply(0, ""));
}

// The high half of the next field, which is within its limit, ends it at the latest.
TEST_F(Dispatcher, LogsALibraryNameWithoutItsTerminatorWithWhatFollows) {
  SwitchLogOn();
  std::string body = Invoke{.function = "Echo", .dll = std::string("abZ\0", 4)}.Body();
  body.replace(body.find(text::ToUtf16Le(u"Z")), 8, text::ToUtf16Le(u"xyzw"));
  EXPECT_EQ(RequestDispatcher(connection_.socket(), Received(body)), 0);
  EXPECT_EQ(Messages()[1], "dllName = abxyzw\x05");
}

TEST_F(Dispatcher, TakesInputAtAnyAlignment) {
  for (std::size_t size = 0; size < 9; ++size) {
    const std::string input(size, 'i');
    EXPECT_EQ(Dispatch({.function = "Echo", .input = input}), 0);
    EXPECT_EQ(connection_.client().Receive(20 + size), Reply(0, input));
  }
}

}  // namespace
}  // namespace corvane
