// The agent's end: when it is asked to, by a desktop or a signal, and when it is killed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <map>
#include <stdexcept>
#include <thread>

#include "tests/programs/tool_test.h"
#include "tests/support/wire/raw_connection.h"
#include "tests/support/wire/wire_bytes.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;

class AgentEnd : public ToolTest {};

TEST_F(AgentEnd, EndsWithZeroWhenAskedTo) {
  StartAgent(MakeHandheld());
  const Ended quit = Desktop({"quit"});
  EXPECT_EQ(quit.code, 0);
  EXPECT_EQ(quit.err, "");
  EXPECT_EQ(quit.out,
            "the agent at 127.0.0.1:" + std::to_string(port()) + " has been asked to end\n");
  EXPECT_EQ(EndAgent().code, 0);
}

TEST_F(AgentEnd, EndsWhenAskedToAlsoWhenItIsToStay) {
  StartAgent(MakeHandheld(), {"--stay"});
  EXPECT_EQ(Desktop({"time", "get"}).code, 0);
  EXPECT_EQ(Desktop({"quit"}).code, 0);
  const Ended ended = EndAgent();
  EXPECT_EQ(ended.code, 0);
  EXPECT_EQ(ended.out, "") << "it has not announced itself again";
  EXPECT_EQ(Desktop({"time", "get"}).code, 1) << "nobody listens any more";
}

TEST_F(AgentEnd, LeavesTheHandheldToTheNextProgram) {
  const std::string handheld = MakeHandheld();
  StartAgent(handheld);
  EXPECT_EQ(Desktop({"push", Sample("people.vcf")}).code, 0);
  EXPECT_EQ(Desktop({"quit"}).code, 0);
  EXPECT_EQ(EndAgent().code, 0);
  EXPECT_EQ(Device({"check", handheld}).out, "The store is sound.\n");
  EXPECT_THAT(Contacts(handheld), HasSubstr("\"LastName\":\"Okafor\""));
}

// An upload under way: what has been acknowledged of it, by identifier.
class HalfAnUpload {
 public:
  explicit HalfAnUpload(std::uint16_t port) : connection_(port) {
    connection_.Send(Record(Invoke{.function = "UploadPIMRecords", .streamFlag = 1}.Body()));
    EXPECT_EQ(connection_.ReceiveWord(), 0u);
  }

  void SendContacts(const std::string& prefix, int first, int count) {
    std::string document = "<root>";
    for (int i = first; i < first + count; ++i) {
      const std::string name = prefix + std::to_string(i) + "end";
      document += "<CONTACT><FIRST_NAME>" + name + "</FIRST_NAME></CONTACT>";
      sent_.push_back(name);
    }
    connection_.Send(Chunk(document + "</root>"));
  }

  // Reads so many of the answers, which come in the order of the records.
  void ReadReplies(int count, std::map<std::uint32_t, std::string>& acknowledged) {
    for (int i = 0; i < count; ++i) {
      const std::uint32_t oid = connection_.ReceiveWord();
      ASSERT_EQ(connection_.ReceiveWord(), 0u);
      EXPECT_TRUE(acknowledged.emplace(oid, sent_.at(answered_++)).second) << oid;
    }
  }

 private:
  RawConnection connection_;
  std::vector<std::string> sent_;
  std::size_t answered_ = 0;
};

class AgentEndBySignal : public AgentEnd, public ::testing::WithParamInterface<int> {
 protected:
  // True once nobody listens any more.
  bool ListenerHasClosed() {
    for (int attempt = 0; attempt < 600; ++attempt) {
      try {
        const RawConnection connection(port());
      } catch (const std::runtime_error&) {
        return true;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
  }
};

TEST_P(AgentEndBySignal, ComesAtOnceAndInOrder) {
  const std::string handheld = MakeHandheld();
  StartAgent(handheld);
  EXPECT_EQ(Desktop({"logging", "on"}).code, 0);
  agent().Kill(GetParam());
  const Ended ended = EndAgent();
  EXPECT_EQ(ended.code, 0);
  EXPECT_EQ(ended.out, "");
  EXPECT_EQ(ended.err, "");
  const std::string log = directory_.Read("handheld/files/CorvaneLog.txt");
  EXPECT_THAT(log, HasSubstr(" : Corvane App Ending\r\n"));
  EXPECT_THAT(log, ::testing::EndsWith(" : Log finished\r\n"));
}

TEST_P(AgentEndBySignal, IsForGoodThoughItIsToStay) {
  StartAgent(MakeHandheld(), {"--stay"});
  agent().Kill(GetParam());
  const Ended ended = EndAgent();
  EXPECT_EQ(ended.code, 0);
  EXPECT_EQ(ended.out, "") << "it has not announced itself again";
}

TEST_P(AgentEndBySignal, WaitsForTheRequestsUnderWay) {
  const std::string handheld = MakeHandheld();
  StartAgent(handheld);
  {
    HalfAnUpload upload(port());
    const RawConnection silent(port());
    agent().Kill(GetParam());
    EXPECT_TRUE(ListenerHasClosed());
    std::map<std::uint32_t, std::string> acknowledged;
    upload.SendContacts("Last", 0, 1);
    upload.ReadReplies(1, acknowledged);
  }
  EXPECT_EQ(EndAgent().code, 0);
  EXPECT_THAT(Contacts(handheld), HasSubstr("\"FirstName\":\"Last0end\""));
}

TEST_P(AgentEndBySignal, ComesAtOnceWithTheSecondOne) {
  StartAgent(MakeHandheld());
  const HalfAnUpload upload(port());
  agent().Kill(GetParam() == SIGINT ? SIGTERM : SIGINT);
  EXPECT_TRUE(ListenerHasClosed());
  agent().Kill(GetParam());
  EXPECT_EQ(EndAgent().code, -GetParam());
}

INSTANTIATE_TEST_SUITE_P(Signals, AgentEndBySignal, ::testing::Values(SIGINT, SIGTERM),
                         [](const auto& each) { return each.param == SIGINT ? "INT" : "TERM"; });

TEST_F(AgentEnd, KeepsEveryAcknowledgedContactWhenKilledDuringAnUpload) {
  const std::string handheld = MakeHandheld();
  std::map<std::uint32_t, std::string> acknowledged;
  const int replies[] = {1, 20, 33, 90};
  for (int run = 0; run < 4; ++run) {
    StartAgent(handheld);
    HalfAnUpload upload(port());
    // More documents than are answered, so that the agent is busy when it is killed.
    for (int document = 0; document < 6; ++document)
      upload.SendContacts("Run" + std::to_string(run) + "Contact", 20 * document, 20);
    upload.ReadReplies(replies[run], acknowledged);
    StopAgent(SIGKILL);

    const Ended check = Device({"check", handheld});
    EXPECT_EQ(check.code, 0) << check.err;
    const std::string contacts = Contacts(handheld);
    for (const auto& [oid, name] : acknowledged) {
      EXPECT_THAT(contacts,
                  HasSubstr("{\"oid\":" + std::to_string(oid) + ",\"FirstName\":\"" + name + "\""));
    }
  }
  EXPECT_EQ(acknowledged.size(), 144u);
}

}  // namespace
}  // namespace corvane::testing
