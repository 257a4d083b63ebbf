// Request records and buffered replies, offset by offset.
#include <gtest/gtest.h>

#include <signal.h>

#include <thread>

#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

class IntakeWire : public WireTest {
 protected:
  // Sends bytes, finishes sending, and expects the agent to answer nothing and to serve on.
  void ExpectNoReply(const std::string& bytes) {
    RawConnection connection = Connect();
    connection.Send(bytes);
    connection.FinishSending();
    EXPECT_EQ(connection.ReceiveToEnd(), "");
    ExpectServing();
  }
  void ExpectUnknown(const Invoke& invoke) {
    const BufferedReply reply = CallBuffered(invoke);
    EXPECT_EQ(reply.totalLength, 16u);
    EXPECT_EQ(reply.reserved, 0u);
    EXPECT_EQ(reply.status, 0u);
    EXPECT_EQ(reply.statusAgain, 0u);
    EXPECT_EQ(reply.outputCount, 0u);
    EXPECT_EQ(reply.output, "");
  }
};

TEST_F(IntakeWire, AnswersABufferedRequestWithHeaderAndOutput) {
  const BufferedReply reply = CallBuffered({.function = "CVCeGetSystemTime"});
  EXPECT_EQ(reply.totalLength, 16u + 16u);
  EXPECT_EQ(reply.reserved, 0u);
  EXPECT_EQ(reply.status, 0u);
  EXPECT_EQ(reply.statusAgain, 0u);
  EXPECT_EQ(reply.outputCount, 16u);
  EXPECT_EQ(reply.output.size(), 16u);
}

TEST_F(IntakeWire, ReadsABodyOfExactly1024Bytes) {
  std::string body = Invoke{.function = "CVCeGetSystemTime"}.Body();
  body.resize(1024, '\0');
  RawConnection connection = Connect();
  connection.Send(Record(body));
  EXPECT_EQ(connection.ReceiveWord(), 32u);
}

TEST_F(IntakeWire, DropsABodyOf1025BytesWithoutAReply) {
  std::string body = Invoke{.function = "CVCeGetSystemTime"}.Body();
  body.resize(1025, '\0');
  ExpectNoReply(Record(body));
}

TEST_F(IntakeWire, DropsTheLargestLength) {
  ExpectNoReply(Word(0xFFFFFFFF) + "abc");
}

TEST_F(IntakeWire, DropsALengthThatIsCutOff) {
  ExpectNoReply("\x10\x00");
}

TEST_F(IntakeWire, DropsAnEmptyConnection) {
  ExpectNoReply("");
}

TEST_F(IntakeWire, DropsABodyThatIsCutOff) {
  const std::string record = Record(Invoke{.function = "CVCeGetSystemTime"}.Body());
  ExpectNoReply(record.substr(0, record.size() / 2));
}

TEST_F(IntakeWire, AnswersNothingToAnEmptyBody) {
  ExpectNoReply(Word(0));
}

TEST_F(IntakeWire, AnswersNothingToAnUnknownKind) {
  ExpectNoReply(Record(Invoke{.function = "CVCeGetSystemTime", .kind = 70}.Body()));
}

TEST_F(IntakeWire, LeavesTheSocketOpenAfterABufferedReply) {
  RawConnection connection = Connect();
  connection.Send(Record(Invoke{.function = "CVCeGetSystemTime"}.Body()));
  EXPECT_EQ(connection.Receive(36).size(), 36u);
  // A second request on the same connection is not read; the agent serves others meanwhile.
  connection.Send(Record(Invoke{.function = "CVCeGetSystemTime"}.Body()));
  ExpectServing();
  connection.FinishSending();
  EXPECT_EQ(connection.ReceiveToEnd(), "");
}

TEST_F(IntakeWire, IgnoresReservedAndUnusedBytes) {
  const BufferedReply reply = CallBuffered({.function = "CVCeGetSystemTime",
                                            .dll = "any.dll",
                                            .reserved = "\xFF\xFE\xFD\xFC\xFB\xFA\xF9\xF8",
                                            .unused = "\x01\x02\x03\x04"});
  EXPECT_EQ(reply.output.size(), 16u);
}

TEST_F(IntakeWire, AcceptsADllNameOf32CharactersAndNoMore) {
  EXPECT_EQ(
      CallBuffered({.function = "CVCeGetSystemTime", .dll = std::string(32, 'd')}).output.size(),
      16u);
  ExpectNoReply(
      Record(Invoke{.function = "CVCeGetSystemTime", .dll = std::string(33, 'd')}.Body()));
}

TEST_F(IntakeWire, AcceptsAnEmptyDllName) {
  EXPECT_EQ(CallBuffered({.function = "CVCeGetSystemTime", .dll = ""}).output.size(), 16u);
}

TEST_F(IntakeWire, AcceptsAFunctionNameOf32CharactersAndNoMore) {
  ExpectUnknown({.function = std::string(31, 'f')});
  ExpectNoReply(Record(Invoke{.function = std::string(32, 'f')}.Body()));
}

TEST_F(IntakeWire, RefusesAnInputCountAbove1024) {
  const std::string head = Word(kInvoke) + std::string(8, '\0') + Word(0) + Word(0) + Word(18) +
                           Utf16(std::string("CVCeGetSystemTime") + '\0');
  ExpectNoReply(Record(head + Word(1025) + Word(0)));
  ExpectNoReply(Record(head + Word(0xFFFFFFFF) + Word(0)));
}

TEST_F(IntakeWire, ReadsInputBehindTheBodyAsZeros) {
  // 1024 input bytes are announced, none are sent: the handler gets zeros and the flag is 0.
  const std::string head = Word(kInvoke) + std::string(8, '\0') + Word(0) + Word(0) + Word(18) +
                           Utf16(std::string("CVCeGetSystemTime") + '\0');
  RawConnection connection = Connect();
  connection.Send(Record(head + Word(1024)));
  EXPECT_EQ(connection.ReceiveWord(), 32u);
}

TEST_F(IntakeWire, RefusesHugeNameLengths) {
  ExpectNoReply(Record(Word(kInvoke) + std::string(8, '\0') + Word(0xFFFFFFFF)));
  ExpectNoReply(
      Record(Word(kInvoke) + std::string(8, '\0') + Word(0) + Word(0) + Word(0x80000000)));
}

TEST_F(IntakeWire, ComparesAnUnterminatedNameWithWhatFollowsIt) {
  // The input count of 4 follows the name as the characters U+0004 U+0000.
  ExpectUnknown({.function = "CVCeGetSystemTime", .input = "abcd", .terminated = false});
}

TEST_F(IntakeWire, ComparesNamesCaseSensitivelyAndWhole) {
  ExpectUnknown({.function = "cvcegetsystemtime"});
  ExpectUnknown({.function = "CVCeGetSystemTim"});
  ExpectUnknown({.function = "CVCeGetSystemTimes"});
}

TEST_F(IntakeWire, AnswersAnUnknownBufferedNameWithAnEmptySuccess) {
  ExpectUnknown({.function = "NoSuchFunction", .input = "abcd"});
  ExpectUnknown({.function = ""});
}

TEST_F(IntakeWire, AnswersAStreamedNameInBufferedModeAsUnknown) {
  ExpectUnknown({.function = "DownloadAllPIMRecords", .input = Word(1)});
}

TEST_F(IntakeWire, AnswersAnUnknownStreamedNameWith127AndCloses) {
  RawConnection connection = Connect();
  connection.Send(Record(Invoke{.function = "NoSuchFunction", .streamFlag = 1}.Body()));
  EXPECT_EQ(connection.ReceiveToEnd(), Word(127));
}

TEST_F(IntakeWire, AnswersABufferedNameInStreamModeWith127) {
  RawConnection connection = Connect();
  connection.Send(Record(Invoke{.function = "CVCeGetSystemTime", .streamFlag = 0x80000000}.Body()));
  EXPECT_EQ(connection.ReceiveToEnd(), Word(127));
}

TEST_F(IntakeWire, ReportsANegativeStatusWithLength16AndNoOutput) {
  const BufferedReply reply = CallBuffered({.function = "CVCeSetSystemTime", .input = "short"});
  EXPECT_EQ(reply.totalLength, 16u);
  EXPECT_EQ(reply.status, kInvalidArgument);
  EXPECT_EQ(reply.statusAgain, kInvalidArgument);
  EXPECT_EQ(reply.outputCount, 0u);
  EXPECT_EQ(reply.output, "");
}

TEST_F(IntakeWire, ReportsAPositiveStatusAsItIs) {
  // Month 13 cannot be set: the system's code for an invalid parameter.
  const std::string impossible("\xD8\x07\x0D\0\0\0\x01\0\0\0\0\0\0\0\0\0", 16);
  const BufferedReply reply = CallBuffered({.function = "CVCeSetSystemTime", .input = impossible});
  EXPECT_EQ(reply.totalLength, 16u);
  EXPECT_EQ(reply.status, 87u);
  EXPECT_EQ(reply.statusAgain, 87u);
}

TEST_F(IntakeWire, ServesSeveralConnectionsAtOnce) {
  RawConnection waiting = Connect();  // says nothing yet
  waiting.Send(Word(1024));
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([this] {
      for (int n = 0; n < 10; ++n) ExpectServing();
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::string body = Invoke{.function = "CVCeGetSystemTime"}.Body();
  body.resize(1024, '\0');
  waiting.Send(body);
  EXPECT_EQ(waiting.ReceiveWord(), 32u);
}

TEST_F(IntakeWire, EndsAfterAQuitRequestWithTheNextConnection) {
  RawConnection quit = Connect();
  quit.Send(Record(Word(kQuit)));
  quit.FinishSending();
  EXPECT_EQ(quit.ReceiveToEnd(), "");
  Wake();
  EXPECT_EQ(WaitForAgent(), 0);
}

TEST_F(IntakeWire, SurvivesConnectionsThatGoAwayAtEveryByte) {
  const std::string record = Record(Invoke{.function = "CVCeGetSystemTime"}.Body());
  for (std::size_t bytes = 0; bytes < record.size(); bytes += 3) {
    RawConnection connection = Connect();
    connection.Send(record.substr(0, bytes));
  }
  ExpectServing();
}

}  // namespace
}  // namespace corvane::testing
