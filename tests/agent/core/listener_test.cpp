#include "agent/core/listener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <future>
#include <thread>

#include "agent/core/request_dispatcher.h"
#include "agent/log/log.h"
#include "handheld/base/fault.h"
#include "handheld/network/listen_options.h"
#include "handheld/network/select.h"
#include "handheld/system/threads.h"
#include "platform/status.h"
#include "tests/agent/core/core_support.h"

namespace corvane {
namespace {

using testing::AgentTest;
using testing::RawConnection;

using ::testing::ElementsAre;
using testing::Invoke;

using testing::Record;
using testing::Reply;
using testing::Word;

constexpr ce::DWORD kNegative = 0x80004005;

ce::DWORD AddressWord(int a, int b, int c, int d) {
  return static_cast<ce::DWORD>(a | b << 8 | c << 16) | static_cast<ce::DWORD>(d) << 24;
}

// Whether a connection is taken; it is closed at once.
bool Reaches(std::uint16_t port, const std::string& address) try {
  const RawConnection knock(port, address);
  return true;
} catch (const std::runtime_error&) {
  return false;
}

template <typename Condition>
void WaitFor(Condition condition) {
  while (!condition()) std::this_thread::yield();
}

class ListenerTest : public AgentTest {
 protected:
  void SetUp() override {
    AgentTest::SetUp();
    ListenOn("127.0.0.1");
  }
  void TearDown() override {
    if (run_.valid()) {
      QuitRequested = 1;
      Knock();
      run_.wait();
    }
    AgentTest::TearDown();
  }

  // Where an agent that binds any address listens.
  void ListenOn(const std::string& any) {
    ce::host::ListenOptions options;
    options.address = any;
    options.port = 0;
    options.onListening = [this](const std::string& address) { listening_.set_value(address); };
    ce::host::SetListenOptions(options);
  }
  void Start() {
    run_ = std::async(std::launch::async, [] { return WinMain(7, 0, nullptr, 1); });
  }
  // Starts it and waits until it listens.
  void StartListening() {
    Start();
    TakeAddress();
  }
  void TakeAddress() {
    const std::string where = listening_.get_future().get();
    address_ = where.substr(0, where.find(':'));
    port_ = static_cast<std::uint16_t>(std::stoi(where.substr(where.find(':') + 1)));
    listening_ = {};
  }
  // When everything is over that the agent has started, so that a fault plan may end as well.
  int Result() {
    const int result = run_.get();
    ce::host::WaitForRequestThreads();
    return result;
  }
  // From now on the select period is over before long.
  void PassTimeFast() { ce::host::SetTimeLapse(60'000); }

  std::string Ask(const std::string& record) {
    RawConnection client(port_, address_);
    client.Send(record);
    client.FinishSending();
    return client.Receive(20);
  }
  // Lets the accept loop look at the quit flag, if it has not already.
  bool Knock() { return Reaches(port_, address_); }
  void QuitAndWait() {
    QuitRequested = 1;
    Knock();
    EXPECT_EQ(Result(), 0);
  }

  static ce::host::FaultPlan CountSelects() { return ce::host::FaultPlan::CountOnly("select"); }

  std::promise<std::string> listening_;
  std::future<int> run_;
  std::string address_;
  std::uint16_t port_ = 0;
};

const std::string kEcho = Record(Invoke{.function = "Echo"}.Body());
const std::string kWait = Record(Invoke{.function = "Wait"}.Body());

TEST_F(ListenerTest, EndsWhenItIsIdleForAPeriod) {
  handheld_.SetAgentValue(u"Logging", 1);
  PassTimeFast();
  StartListening();
  EXPECT_EQ(Result(), 0);
  EXPECT_EQ(QuitRequested, 1u);
  EXPECT_FALSE(QuitByRequest());
  EXPECT_THAT(Messages(), ElementsAre("Corvane App Started", "Corvane App Ending"));
}

TEST_F(ListenerTest, LogsNothingWhenSwitchedOff) {
  PassTimeFast();
  StartListening();
  EXPECT_EQ(Result(), 0);
  EXPECT_EQ(handheld_.FileContent("CorvaneLog.txt"), "");
}

TEST_F(ListenerTest, WaitsSixtySecondsAndAMicrosecond) {
  EXPECT_EQ(kSelectPeriod.tv_sec, 60);
  EXPECT_EQ(kSelectPeriod.tv_usec, 1);
}

TEST_F(ListenerTest, ServesConnectionAfterConnection) {
  handheld_.SetAgentValue(u"Logging", 1);
  StartListening();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Ask(kEcho), Reply(0, ""));
  const std::vector<std::string> messages = Messages();
  EXPECT_EQ(std::count(messages.begin(), messages.end(), "Request coming in"), 3);
  QuitAndWait();
}

TEST_F(ListenerTest, ServesSeveralConnectionsAtOnce) {
  StartListening();
  RawConnection first(port_);
  RawConnection second(port_);
  RawConnection third(port_);
  for (RawConnection* client : {&first, &second, &third}) client->Send(kWait);
  WaitFor([] { return testing::g_waiting == 3; });
  EXPECT_EQ(ActiveRequestCount, 4);
  testing::g_release.release(3);
  for (RawConnection* client : {&first, &second, &third})
    EXPECT_EQ(client->Receive(20), Reply(0, ""));
  QuitAndWait();
}

TEST_F(ListenerTest, RunsOnWhileARequestIsUnderWay) {
  const auto selects = CountSelects();
  StartListening();
  RawConnection client(port_);
  client.Send(kWait);
  WaitFor([] { return testing::g_waiting == 1; });
  PassTimeFast();
  EXPECT_TRUE(Knock());  // so that the next select is a fast one
  const std::uint64_t before = selects.calls();
  WaitFor([&] { return selects.calls() > before + 10; });
  EXPECT_EQ(QuitRequested, 0u);
  testing::g_release.release();
  EXPECT_EQ(client.Receive(20), Reply(0, ""));
  EXPECT_EQ(Result(), 0);
  EXPECT_FALSE(QuitByRequest());
}

TEST_F(ListenerTest, QuitRequestEndsItWhenSelectReturnsNextAndNotAtOnce) {
  const auto selects = CountSelects();
  StartListening();
  RawConnection client(port_);
  WaitFor([&] { return selects.calls() == 2; });  // waits for another connection
  client.Send(Record(testing::QuitBody()));
  WaitFor([] { return QuitRequested == 1; });
  EXPECT_EQ(run_.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
  EXPECT_TRUE(Knock());
  EXPECT_EQ(Result(), 0);
  EXPECT_TRUE(QuitByRequest());
}

TEST_F(ListenerTest, RefusesConnectionsAfterItsEnd) {
  PassTimeFast();
  StartListening();
  EXPECT_EQ(Result(), 0);
  EXPECT_FALSE(Knock());
}

TEST_F(ListenerTest, ResetMakesAFreshStart) {
  handheld_.SetAgentValue(u"Logging", 1);
  PassTimeFast();
  StartListening();
  EXPECT_EQ(Result(), 0);
  handheld_.SetAgentValue(u"Logging", 42);
  ResetAgent();
  EXPECT_EQ(QuitRequested, 0u);
  EXPECT_FALSE(QuitByRequest());
  EXPECT_FALSE(LoggingIsOn());
  EXPECT_TRUE(handheld_.FileContent("CorvaneLog.txt").ends_with(" : Log finished\r\n"));
  StartListening();
  EXPECT_EQ(Result(), 0);
  EXPECT_EQ(LoggingLevel, 42u);
  EXPECT_THAT(Messages(), ElementsAre("Corvane App Started", "Corvane App Ending"));
}

TEST_F(ListenerTest, ListensOnAnyAddressWithoutAValue) {
  ListenOn("127.0.0.2");
  StartListening();
  EXPECT_EQ(address_, "127.0.0.2");
  QuitAndWait();
}

TEST_F(ListenerTest, ListensOnTheConfiguredAddressOfTheHost) {
  ListenOn("127.0.0.2");
  handheld_.SetAgentValue(u"Logging", 1);
  handheld_.SetAgentValue(u"IPAddr", AddressWord(127, 0, 0, 1));
  StartListening();
  EXPECT_EQ(address_, "127.0.0.1");
  EXPECT_EQ(Ask(kEcho), Reply(0, ""));
  QuitAndWait();
  const std::vector<std::string> messages = Messages();
  EXPECT_EQ(messages[1], "Got IPAddr from Registry: 0x0100007F");
  const auto match = std::find(messages.begin(), messages.end(), "Match found");
  ASSERT_NE(match, messages.end());
  EXPECT_EQ(*(match - 1), "Comparing to 0x0100007F");
  EXPECT_TRUE((match + 1)->starts_with("Request coming in"));  // the walk stops there
}

TEST_F(ListenerTest, ListensOnAnyAddressWhenTheHostLacksTheConfiguredOne) {
  char name[128];
  ASSERT_EQ(ce::gethostname(name, sizeof(name)), 0);
  const ce::hostent* host = ce::gethostbyname(name);
  ASSERT_NE(host, nullptr);
  std::vector<std::string> expected = {"Corvane App Started",
                                       "Got IPAddr from Registry: 0x4D7100CB"};
  for (char** entry = host->h_addr_list; *entry; ++entry) {
    ce::DWORD address;
    std::memcpy(&address, *entry, sizeof(address));
    char text[32];
    std::snprintf(text, sizeof(text), "Comparing to 0x%08X", address);
    expected.emplace_back(text);
  }
  expected.emplace_back("Corvane App Ending");
  ListenOn("127.0.0.2");
  handheld_.SetAgentValue(u"Logging", 1);
  handheld_.SetAgentValue(u"IPAddr", AddressWord(203, 0, 113, 77));
  PassTimeFast();
  StartListening();
  EXPECT_EQ(Result(), 0);
  EXPECT_EQ(address_, "127.0.0.2");
  EXPECT_EQ(Messages(), expected);
}

TEST_F(ListenerTest, ListensOnAnyAddressWhenTheHostsNamesFail) {
  for (const char* call : {"gethostname", "gethostbyname"}) {
    ResetAgent();
    ListenOn("127.0.0.2");
    handheld_.SetAgentValue(u"IPAddr", AddressWord(127, 0, 0, 1));
    PassTimeFast();
    const auto plan = ce::host::FaultPlan::FailCalls(call, 11001);
    StartListening();
    EXPECT_EQ(Result(), 0);
    EXPECT_TRUE(plan.fired());
    EXPECT_EQ(address_, "127.0.0.2") << call;
  }
}

TEST_F(ListenerTest, IgnoresAnAddressThatCannotBeRead) {
  handheld_.SetAgentValue(u"IPAddr", AddressWord(127, 0, 0, 1));
  for (const ce::DWORD error : {5u, kNegative}) {
    ResetAgent();
    ListenOn("127.0.0.2");
    PassTimeFast();
    const auto plan = ce::host::FaultPlan::FailCalls("RegQueryValueExW", error);
    StartListening();
    EXPECT_EQ(Result(), 0);
    EXPECT_EQ(address_, "127.0.0.2");
  }
}

TEST_F(ListenerTest, AnswersOneWhenTheSocketLibraryCannotStart) {
  handheld_.SetAgentValue(u"Logging", 1);
  const auto plan = ce::host::FaultPlan::FailCalls("WSAStartup", 10091);
  EXPECT_EQ(WinMain(0, 0, nullptr, 0), 1);
  EXPECT_THAT(Messages(), ElementsAre("Corvane App Started"));
}

struct NegativeCase {
  const char* call;
  std::uint64_t n;
};

// The sign alone decides: a negative error ends the start, closes the socket and says so.
TEST_F(ListenerTest, NegativeErrorsOfTheStartEndIt) {
  handheld_.SetAgentValue(u"Logging", 1);
  // The first opening of the key is that of the log's settings.
  for (const NegativeCase& test : {NegativeCase{"socket", 1}, NegativeCase{"RegOpenKeyExW", 2},
                                   NegativeCase{"bind", 1}, NegativeCase{"listen", 1}}) {
    ResetAgent();
    const auto plan = ce::host::FaultPlan::FailNthCall(test.call, test.n, kNegative);
    EXPECT_EQ(WinMain(0, 0, nullptr, 0), 0) << test.call;
    EXPECT_TRUE(plan.fired()) << test.call;
    EXPECT_EQ(QuitRequested, 0u) << test.call;
    EXPECT_FALSE(QuitByRequest()) << test.call;
    EXPECT_THAT(Messages(), ElementsAre("Corvane App Started", "Corvane App Ending")) << test.call;
  }
}

TEST_F(ListenerTest, MissingKeyDoesNotEndTheStart) {
  const auto plan = ce::host::FaultPlan::FailCalls("RegOpenKeyExW", ce::ERROR_FILE_NOT_FOUND);
  PassTimeFast();
  StartListening();
  EXPECT_EQ(Result(), 0);
  EXPECT_EQ(QuitRequested, 1u);
}

// Positive errors pass: without a bound socket nothing comes in, and the idle rule ends it.
TEST_F(ListenerTest, PositiveErrorsOfBindAndListenPass) {
  for (const char* call : {"bind", "listen"}) {
    ResetAgent();
    PassTimeFast();
    const auto plan = ce::host::FaultPlan::FailCalls(call, ce::WSAEADDRINUSE);
    EXPECT_EQ(WinMain(0, 0, nullptr, 0), 0);
    EXPECT_TRUE(plan.fired());
    EXPECT_EQ(QuitRequested, 1u) << call;
  }
}

TEST_F(ListenerTest, GoesOnWithAnInvalidSocket) {
  handheld_.SetAgentValue(u"Logging", 1);
  const auto plan = ce::host::FaultPlan::FailCalls("socket", ce::WSAEMFILE);
  Start();
  WaitFor([this] {
    const std::vector<std::string> messages = Messages();
    return std::count(messages.begin(), messages.end(), "Request coming in") > 1;
  });
  QuitRequested = 1;
  EXPECT_EQ(Result(), 0);
}

TEST_F(ListenerTest, NegativeErrorOfSelectEndsIt) {
  handheld_.SetAgentValue(u"Logging", 1);
  const auto plan = ce::host::FaultPlan::FailCalls("select", kNegative);
  EXPECT_EQ(WinMain(0, 0, nullptr, 0), 0);
  EXPECT_EQ(QuitRequested, 0u);
  EXPECT_THAT(Messages(), ElementsAre("Corvane App Started", "Corvane App Ending"));
}

// The read set is as it was, so the next connection is accepted without waiting for it.
TEST_F(ListenerTest, PositiveErrorOfSelectGoesOnToAccept) {
  const auto plan = ce::host::FaultPlan::FailNthCall("select", 1, ce::WSAENOTSOCK);
  StartListening();
  EXPECT_EQ(Ask(kEcho), Reply(0, ""));
  EXPECT_TRUE(plan.fired());
  QuitAndWait();
}

TEST_F(ListenerTest, AcceptThatFailsCostsOneThreadThatDoesNothing) {
  const auto plan = ce::host::FaultPlan::FailNthCall("accept", 1, ce::WSAEMFILE);
  StartListening();
  EXPECT_EQ(Ask(kEcho), Reply(0, ""));
  EXPECT_TRUE(plan.fired());
  QuitAndWait();
}

TEST_F(ListenerTest, ThreadThatCannotStartAnswersNothing) {
  const auto plan = ce::host::FaultPlan::FailNthCall("CreateThread", 1, 8);
  StartListening();
  RawConnection lost(port_);
  lost.Send(kEcho);
  EXPECT_EQ(Ask(kEcho), Reply(0, ""));
  EXPECT_TRUE(plan.fired());
  lost.FinishSending();
  EXPECT_EQ(lost.ReceiveToEnd(), "");
  QuitAndWait();
}

TEST_F(ListenerTest, NegativeErrorOfCreateThreadEndsIt) {
  const auto plan = ce::host::FaultPlan::FailCalls("CreateThread", kNegative);
  StartListening();
  Knock();
  EXPECT_EQ(Result(), 0);
  EXPECT_EQ(QuitRequested, 0u);
}

// Each call of start and idle end fails in turn: the agent ends, honestly, every time.
TEST_F(ListenerTest, SurvivesEveryFailingCall) {
  handheld_.SetAgentValue(u"Logging", 1);
  handheld_.SetAgentValue(u"IPAddr", AddressWord(127, 0, 0, 1));
  PassTimeFast();
  for (std::uint64_t n = 1;; ++n) {
    ResetAgent();
    listening_ = {};
    std::future<std::string> listening = listening_.get_future();
    const auto plan = ce::host::FaultPlan::FailNth(n, ce::WSAEMFILE);
    Start();
    WaitFor([&] {
      return plan.fired() || run_.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    const std::string failed = plan.firedCall();
    if (failed == "socket") QuitRequested = 1;  // nothing else ends it
    if (failed == "select") {
      const std::string where = listening.get();
      const int port = std::stoi(where.substr(where.find(':') + 1));
      EXPECT_TRUE(Reaches(static_cast<std::uint16_t>(port), "127.0.0.1"));
    }
    EXPECT_EQ(Result(), failed == "WSAStartup" ? 1 : 0) << failed;
    if (failed.empty()) break;
  }
}

}  // namespace
}  // namespace corvane
