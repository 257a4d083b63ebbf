// Connections that outlast their use, and those that never had one.
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string_view>

#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

class LifecycleWire : public WireTest {
 protected:
  void Quit() {
    RawConnection quit = Connect();
    quit.Send(Record(Word(kQuit)));
    quit.FinishSending();
    EXPECT_EQ(quit.ReceiveToEnd(), "");
  }
  // Each is accepted by the time a request is answered that comes after it.
  std::vector<RawConnection> ConnectAndStop(int count, std::string_view afterBytes = {}) {
    std::vector<RawConnection> silent;
    for (int i = 0; i < count; ++i) {
      SCOPED_TRACE(i);
      silent.push_back(Connect());
      if (!afterBytes.empty()) silent.back().Send(afterBytes);
      ExpectServing();
    }
    return silent;
  }
};

TEST_F(LifecycleWire, ASilentConnectionDoesNotKeepTheAgentAfterAQuit) {
  RawConnection silent = Connect();
  Quit();
  const std::optional<RawConnection> wake = Wake();
  EXPECT_EQ(silent.ReceiveToEnd(), "");
  EXPECT_EQ(WaitForAgent(), 0);
}

TEST_F(LifecycleWire, ARequestUnderWayIsFinishedAfterAQuit) {
  const std::vector<std::uint32_t> oids = AddContacts(1);
  RawConnection upload = Connect();
  upload.Send(Record(Invoke{.function = "UploadPIMRecords", .streamFlag = 1}.Body()));
  EXPECT_EQ(upload.ReceiveWord(), 0u);
  RawConnection silent = Connect();
  Quit();
  Wake();
  EXPECT_EQ(silent.ReceiveToEnd(), "") << "by now the agent has stopped listening";
  upload.Send(Chunk("<root><CONTACT><FIRST_NAME>Last</FIRST_NAME></CONTACT></root>") + Word(0));
  EXPECT_GT(upload.ReceiveWord(), oids[0]);
  EXPECT_EQ(upload.ReceiveWord(), 0u);
  EXPECT_EQ(upload.ReceiveToEnd(), "");
  EXPECT_EQ(WaitForAgent(), 0);
}

TEST_F(LifecycleWire, ServesRequestsThoughSilentConnectionsHaveTakenTheDescriptors) {
  options_.descriptorLimit = 48;
  std::vector<RawConnection> silent = ConnectAndStop(60);
  EXPECT_EQ(AddContacts(3).size(), 3u) << "there are descriptors for the store as well";
  EXPECT_EQ(CountElements(AllContacts(), "CONTACT"), 3u);
  EXPECT_EQ(silent.front().ReceiveToEnd(), "") << "the oldest makes room";
}

TEST_F(LifecycleWire, ServesRequestsThoughHalfRequestsHaveTakenTheDescriptors) {
  options_.descriptorLimit = 48;
  std::vector<RawConnection> half = ConnectAndStop(60, Word(100));
  EXPECT_EQ(AddContacts(3).size(), 3u);
  EXPECT_EQ(half.front().ReceiveToEnd(), "");
}

TEST_F(LifecycleWire, KeepsARequestUnderWayThoughSilentConnectionsTakeTheDescriptors) {
  options_.descriptorLimit = 48;
  RawConnection upload = Connect();
  upload.Send(Record(Invoke{.function = "UploadPIMRecords", .streamFlag = 1}.Body()));
  EXPECT_EQ(upload.ReceiveWord(), 0u);
  const std::vector<RawConnection> silent = ConnectAndStop(60);
  upload.Send(Chunk("<root><CONTACT><FIRST_NAME>Kept</FIRST_NAME></CONTACT></root>") + Word(0));
  EXPECT_GT(upload.ReceiveWord(), 0u);
  EXPECT_EQ(upload.ReceiveWord(), 0u);
  EXPECT_EQ(upload.ReceiveToEnd(), "");
}

TEST_F(LifecycleWire, AfterEveryDownloadTheAgentClosesTheConnection) {
  const std::vector<std::uint32_t> oids = AddContacts(7);
  const struct {
    const char* function;
    std::string input;
  } downloads[] = {
      {"DownloadAllPIMRecords", Word(1)},
      {"DownloadAllPIMRecords", Word(9)},
      {"DownloadSpecificPIMRecords", Word(1) + Word(oids[0])},
      {"DownloadSpecificPIMRecords", Word(1) + Word(0xFFFFFFF0)},
      {"DownloadSpecificPIMRecords", "abc"},
  };
  for (const auto& [function, input] : downloads) {
    SCOPED_TRACE(function);
    RawConnection connection = Connect();
    connection.Send(Record(Invoke{.function = function, .input = input, .streamFlag = 1}.Body()));
    EXPECT_EQ(connection.ReceiveWord(), 0u);
    // Bytes that nobody reads must not turn the end into a reset.
    connection.Send("more than was asked for");
    EXPECT_EQ(ReadDownload(connection).rest, "");
  }
}

}  // namespace
}  // namespace corvane::testing
