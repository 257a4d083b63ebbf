// Many at a time, and many after each other, who do not keep to the protocol: others are served
// beside them, and when they have gone the agent has no more descriptors, threads and memory than
// before.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/sanitizers.h"
#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

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
    before_ = Held();
  }

  struct Holding {
    std::ptrdiff_t descriptors;
    std::ptrdiff_t threads;
  };
  static std::ptrdiff_t Entries(const std::string& directory) {
    return std::distance(std::filesystem::directory_iterator(directory), {});
  }
  Holding Held() const {
    const std::string process = "/proc/" + std::to_string(agentProcess());
    return {Entries(process + "/fd"), Entries(process + "/task")};
  }
  std::size_t ResidentBytes() const {
    std::ifstream pages("/proc/" + std::to_string(agentProcess()) + "/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    EXPECT_TRUE(pages >> all >> resident);
    return resident * 4096;
  }
  // Connections that have ended are closed by and by.
  void ExpectAllGivenBack() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    Holding held = Held();
    while ((held.descriptors > before_.descriptors || held.threads > before_.threads) &&
           std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
      held = Held();
    }
    EXPECT_LE(held.descriptors, before_.descriptors);
    EXPECT_LE(held.threads, before_.threads);
    ExpectServing();
  }
  // So many that say this and then nothing.
  void ExpectServingBeside(const std::string& bytes) {
    {
      std::vector<RawConnection> crowd;
      for (int i = 0; i < CrowdSize(); ++i) {
        crowd.push_back(Connect());
        try {
          crowd.back().Send(bytes);
        } catch (const std::runtime_error&) {
          // The agent has done without it.
        }
        if (i % 50 == 0) ExpectServing();
      }
      ExpectServing();
    }
    ExpectAllGivenBack();
  }
  void SendAndVanish(std::string_view bytes) {
    RawConnection connection = Connect();
    if (!bytes.empty()) connection.Send(bytes);
  }

  Holding before_{};
};

TEST_F(Crowd, OfSilentOnes) {
  ExpectServingBeside("");
}

TEST_F(Crowd, OfThoseWhoStopInTheMiddle) {
  const std::string request = UploadRequest();
  ExpectServingBeside(request.substr(0, 2));
  ExpectServingBeside(request.substr(0, request.size() / 2));
}

TEST_F(Crowd, OfThoseWhoAnnounceWhatTheyDoNotSend) {
  ExpectServingBeside(Word(0xFFFFFFFF));
  ExpectServingBeside(Word(1024) + "too short");
  ExpectServingBeside(UploadRequest() + Word(1 << 20) + "<root>");
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

// A sanitizer holds back what is freed, up to a bound of its own.
constexpr std::size_t kHeldBack = kAddressSanitizer || kThreadSanitizer ? 256 << 20 : 0;

TEST_F(Crowd, OfThoseWhoComeAfterEachOther) {
  const int requests = std::getenv("CORVANE_CROWD") ? 500'000 : 2'500;
  const int warm = requests / 10;
  std::size_t resident = 0;
  for (int i = 0; i < requests; ++i) {
    if (i == warm) resident = ResidentBytes();
    ASSERT_EQ(CallBuffered({.function = "GetVolumeCount"}).status, 0u) << i;
  }
  ExpectAllGivenBack();
  EXPECT_LT(ResidentBytes(), resident + (4u << 20) + kHeldBack);
}

}  // namespace
}  // namespace corvane::testing
