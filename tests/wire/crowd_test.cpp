// Many at a time, and many after each other, who do not keep to the protocol: others are served
// beside them, and when they have gone the agent has no more descriptors, threads and memory than
// before.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/wire/agent_holding.h"
#include "tests/support/wire/agent_process.h"
#include "tests/support/wire/latencies.h"

namespace corvane::testing {
namespace {

constexpr std::uint32_t kBusy = 0x800700AA;

// Connections at a time; CORVANE_CROWD makes it a longer run.
int CrowdSize() {
  const char* const wanted = std::getenv("CORVANE_CROWD");
  return wanted ? std::atoi(wanted) : 100;
}

std::string UploadRequest() {
  return Record(Invoke{.function = "UploadPIMRecords", .streamFlag = 1}.Body());
}

class Crowd : public WireTest {
 protected:
  Crowd() {
    ExpectServing();
    before_ = HeldBy(agentProcess());
  }

  void ExpectAllGivenBack() {
    ExpectGivenBack(agentProcess(), before_);
    ExpectServing();
    beside_.Tell("beside the crowd");
  }
  void ExpectServingBeside() {
    beside_.Time([&] { ExpectServing(); });
  }
  // So many that say this and then nothing.
  void ExpectServingBesideThoseWhoSay(const std::string& bytes) {
    {
      std::vector<RawConnection> crowd;
      for (int i = 0; i < CrowdSize(); ++i) {
        crowd.push_back(Connect());
        try {
          crowd.back().Send(bytes);
        } catch (const std::runtime_error&) {
          // The agent has done without it.
        }
        if (i % 50 == 0) ExpectServingBeside();
      }
      ExpectServingBeside();
    }
    ExpectAllGivenBack();
  }
  std::vector<RawConnection> Connections() {
    std::vector<RawConnection> crowd;
    for (int i = 0; i < CrowdSize(); ++i) crowd.push_back(Connect());
    return crowd;
  }
  // To each of them the next byte, and so on; one a second in the long form.
  void SendByteByByte(std::vector<RawConnection>& crowd, const std::string& bytes) {
    const auto pause = std::chrono::seconds(std::getenv("CORVANE_CROWD") ? 1 : 0);
    auto next = std::chrono::steady_clock::now();
    for (const char byte : bytes) {
      for (RawConnection& connection : crowd) connection.Send({&byte, 1});
      ExpectServingBeside();
      std::this_thread::sleep_until(next += pause);
    }
  }
  void SendAndVanish(std::string_view bytes) {
    RawConnection connection = Connect();
    if (!bytes.empty()) connection.Send(bytes);
  }

  Holding before_;
  Latencies beside_;
};

TEST_F(Crowd, OfSilentOnes) {
  ExpectServingBesideThoseWhoSay("");
}

TEST_F(Crowd, OfThoseWhoStopInTheMiddle) {
  const std::string request = UploadRequest();
  ExpectServingBesideThoseWhoSay(request.substr(0, 2));
  ExpectServingBesideThoseWhoSay(request.substr(0, request.size() / 2));
}

TEST_F(Crowd, OfThoseWhoAnnounceWhatTheyDoNotSend) {
  ExpectServingBesideThoseWhoSay(Word(0xFFFFFFFF));
  ExpectServingBesideThoseWhoSay(Word(1024) + "too short");
  ExpectServingBesideThoseWhoSay(UploadRequest() + Word(1 << 20) + "<root>");
}

// A request that comes in pieces is dropped; its connection stays until the desktop ends it.
TEST_F(Crowd, OfThoseWhoSendTheirRequestAByteAtATime) {
  std::vector<RawConnection> crowd = Connections();
  SendByteByByte(crowd, UploadRequest());
  for (RawConnection& connection : crowd) connection.FinishSending();
  for (RawConnection& connection : crowd) EXPECT_EQ(connection.ReceiveToEnd(), "");
  crowd.clear();
  ExpectAllGivenBack();
}

TEST_F(Crowd, OfThoseWhoSendTheirDocumentAByteAtATime) {
  std::vector<RawConnection> crowd = Connections();
  for (RawConnection& connection : crowd) connection.Send(UploadRequest());
  SendByteByByte(crowd,
                 Chunk("<root><CONTACT><FIRST_NAME>x</FIRST_NAME></CONTACT></root>") + Word(0));
  std::vector<std::uint32_t> oids;
  for (RawConnection& connection : crowd) {
    EXPECT_EQ(connection.ReceiveWord(), 0u);
    const std::uint32_t oid = connection.ReceiveWord();
    // All want to write at the same moment, and some have waited for their turn too long.
    if (const std::uint32_t result = connection.ReceiveWord(); result != 0)
      EXPECT_EQ(result, kBusy);
    else
      oids.push_back(oid);
    EXPECT_EQ(connection.ReceiveToEnd(), "");
  }
  EXPECT_FALSE(oids.empty());
  EXPECT_THAT(OidsOf(AllContacts()), ::testing::UnorderedElementsAreArray(oids));
  crowd.clear();
  ExpectAllGivenBack();
}

TEST_F(Crowd, OfThoseWhoVanishAtEveryByte) {
  const std::string upload = UploadRequest() +
                             Chunk("<root><CONTACT><FIRST_NAME>x</FIRST_NAME></CONTACT></root>") +
                             Word(0);
  for (std::size_t sent = 0; sent <= upload.size(); ++sent) SendAndVanish(upload.substr(0, sent));
  const std::string download =
      Record(Invoke{.function = "DownloadAllPIMRecords", .input = Word(kContacts), .streamFlag = 1}
                 .Body());
  for (std::size_t sent = 0; sent <= download.size(); ++sent) {
    SendAndVanish(download.substr(0, sent));
  }
  ExpectAllGivenBack();
}

TEST_F(Crowd, OfThoseWhoComeAfterEachOther) {
  const int requests = std::getenv("CORVANE_CROWD") ? 500'000 : 2'500;
  const int warm = requests / 10;
  std::size_t resident = 0;
  for (int i = 0; i < requests; ++i) {
    if (i == warm) resident = ResidentBytes(agentProcess());
    ASSERT_EQ(beside_.Time([&] { return CallBuffered({.function = "GetVolumeCount"}); }).status, 0u)
        << i;
  }
  ExpectAllGivenBack();
  EXPECT_LT(ResidentBytes(agentProcess()), resident + (4u << 20) + kHeldBackBytes);
}

}  // namespace
}  // namespace corvane::testing
