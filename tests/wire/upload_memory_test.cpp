// Uploads share a bounded memory: large documents wait for their turn, and nobody can keep it.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>

#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

class UploadMemoryWire : public WireTest {
 protected:
  // Room for one large document at a time.
  UploadMemoryWire() { Set(ce::host::setting::kUploadMemory, 1'000'000); }

  // While no agent runs.
  void Set(const char16_t* name, std::uint32_t value) {
    ce::host::Handheld::Open(handheld().path(), "a test")->Set(name, value);
  }

  RawConnection Begin() {
    RawConnection connection = Connect();
    connection.Send(Record(Invoke{.function = "UploadPIMRecords", .streamFlag = 1}.Body()));
    EXPECT_EQ(connection.ReceiveWord(), 0u);
    return connection;
  }
  static std::string LargeDocument(std::size_t bytes = 300'000) {
    return "<root><CONTACT" + std::string(bytes - 23, ' ') + "/></root>";
  }
};

TEST_F(UploadMemoryWire, LargeDocumentsAreTakenOneAfterTheOther) {
  const std::string document = LargeDocument();
  std::vector<RawConnection> desktops;
  for (int i = 0; i < 8; ++i) {
    desktops.push_back(Begin());
    desktops.back().Send(Word(static_cast<std::uint32_t>(document.size())) + document + Word(0));
  }
  for (RawConnection& desktop : desktops) EXPECT_EQ(desktop.ReceiveToEnd().size(), 8u);
}

TEST_F(UploadMemoryWire, ADesktopThatIsSilentInADocumentIsCutOffWhenOthersNeedItsRoom) {
  Set(ce::host::setting::kRequestTimeout, 1);
  RawConnection silent = Begin();
  silent.Send(Word(400'000) + "<root>");
  auto end = std::async(std::launch::async, [&] { return silent.ReceiveToEnd(); });
  // Who comes before the silent one has its room finds enough.
  do {
    EXPECT_EQ(Upload({LargeDocument()}, 1).at(0).result, 0u);
  } while (end.wait_for(std::chrono::seconds(0)) != std::future_status::ready);
  EXPECT_EQ(end.get(), "");
}

TEST_F(UploadMemoryWire, ADesktopThatIsSilentBehindADocumentStandsInNobodysWay) {
  RawConnection silent = Begin();
  const std::string document = LargeDocument();
  silent.Send(Word(static_cast<std::uint32_t>(document.size())) + document);
  EXPECT_EQ(silent.Receive(8).size(), 8u);
  EXPECT_EQ(Upload({document}, 1).at(0).result, 0u);
  silent.Send(Word(0));
  EXPECT_EQ(silent.ReceiveToEnd(), "");
}

TEST_F(UploadMemoryWire, SmallDocumentsPassThoseThatWait) {
  const std::string document = LargeDocument(400'000);
  RawConnection slow = Begin();
  slow.Send(Word(400'000) + document.substr(0, 10));
  RawConnection waiting = Begin();
  waiting.Send(Word(400'000));
  EXPECT_EQ(Upload({"<root><CONTACT/></root>"}, 1).at(0).result, 0u);
  // Either may have come first.
  std::jthread other([&] { waiting.Send(document + Word(0)); });
  slow.Send(document.substr(10) + Word(0));
  EXPECT_EQ(slow.ReceiveToEnd().size(), 8u);
  EXPECT_EQ(waiting.ReceiveToEnd().size(), 8u);
}

TEST_F(UploadMemoryWire, ADocumentBeyondAllOfItEndsItsRequest) {
  RawConnection desktop = Begin();
  desktop.Send(Word(600'000));
  EXPECT_EQ(desktop.ReceiveToEnd(), "");
  ExpectServing();
}

}  // namespace
}  // namespace corvane::testing
