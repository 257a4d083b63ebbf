// A day's traffic: several desktops come again and again, for all that a handheld gives and takes,
// and now and then one goes away in the middle. Afterwards each record is what its desktop made of
// it last, and the agent holds no more than before.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/wire/agent_holding.h"
#include "tests/support/wire/agent_process.h"
#include "tests/support/wire/latencies.h"

namespace corvane::testing {
namespace {

constexpr std::uint32_t kDesktops = 4;

// Of each desktop: one every five minutes in the long form.
int Visits() {
  return std::getenv("CORVANE_CROWD") ? 24 * 60 / 5 : 6;
}

using Names = std::map<std::uint32_t, std::string>;  // of contacts, by their identifiers

struct RequestLatencies {
  Latencies facts, downloads, uploads;

  void Add(const RequestLatencies& other) {
    facts.Add(other.facts);
    downloads.Add(other.downloads);
    uploads.Add(other.uploads);
  }
  void Tell() const {
    facts.Tell("facts");
    downloads.Tell("downloads");
    uploads.Tell("uploads");
  }
};

// What one of the desktops put on the handheld, changed there and deleted.
class Desktop {
 public:
  explicit Desktop(std::uint32_t number) : number_(number), random_(20'081'122 + number) {}

  // Three new contacts, and a change and a deletion of those before.
  std::string NextDocument() {
    sent_.clear();
    std::string document = "<root>";
    for (int i = 0; i < 3; ++i) document += Sent(0, NewName());
    if (names_.size() > 1) {
      const std::uint32_t changed = Any();
      const std::uint32_t deleted = Any();
      document += Sent(changed, NewName());
      if (deleted != changed) document += Sent(deleted, "");
    }
    return document + "</root>";
  }
  std::size_t sentRecords() const { return sent_.size(); }

  void Take(const std::vector<UploadReply>& replies) {
    for (std::size_t i = 0; i < replies.size(); ++i) {
      EXPECT_EQ(replies[i].result, 0u);
      if (sent_[i].name.empty())
        names_.erase(sent_[i].oid);
      else
        names_[replies[i].oid] = sent_[i].name;
    }
  }

  bool GoesAwayInTheMiddle() { return random_() % 5 == 0; }
  const Names& names() const { return names_; }

  RequestLatencies latencies;

 private:
  struct SentContact {
    std::uint32_t oid;
    std::string name;  // none for a deletion
  };

  std::string Sent(std::uint32_t oid, const std::string& name) {
    sent_.push_back({oid, name});
    const std::string begin =
        oid == 0 ? "<CONTACT" : "<CONTACT Oid=\"" + std::to_string(static_cast<int>(oid)) + "\"";
    if (name.empty()) return begin + " Delete=\"1\"/>";
    return begin + "><FIRST_NAME>" + name + "</FIRST_NAME></CONTACT>";
  }
  std::string NewName() { return "of" + std::to_string(number_) + "n" + std::to_string(++count_); }
  std::uint32_t Any() { return std::next(names_.begin(), random_() % names_.size())->first; }

  const std::uint32_t number_;
  std::mt19937 random_;
  int count_ = 0;
  Names names_;
  std::vector<SentContact> sent_;
};

class Day : public WireTest {
 protected:
  void Visit(Desktop& desktop) {
    for (const char* const fact : {"CVCeGetSystemTime", "GetTotalSpace", "GetDLLVersion"}) {
      desktop.latencies.facts.Time([&] { EXPECT_EQ(CallBuffered({.function = fact}).status, 0u); });
    }
    const std::string keys = Word(kContacts);
    EXPECT_EQ(CallBuffered({.function = "GetDatabaseKeys", .input = keys}).status, 0u);
    for (std::uint32_t kind = kAppointments; kind <= kMessages; ++kind) Fetch(desktop, kind);
    const std::string document = desktop.NextDocument();
    desktop.Take(
        desktop.latencies.uploads.Time([&] { return Upload({document}, desktop.sentRecords()); }));
  }

  Names StoredNames() {
    const std::string open = "<FIRST_NAME>";
    Names names;
    for (const auto& document : CallDownload("DownloadAllPIMRecords", Word(kContacts)).documents) {
      std::size_t at = 0;
      for (const std::uint32_t oid : OidsOf(document)) {
        at = document.find(open, at) + open.size();
        names[oid] = document.substr(at, document.find('<', at) - at);
      }
    }
    return names;
  }

 private:
  static constexpr std::uint32_t kMessages = 5;

  void Fetch(Desktop& desktop, std::uint32_t kind) {
    if (desktop.GoesAwayInTheMiddle()) {
      RawConnection connection = Connect();
      connection.Send(
          Record(Invoke{.function = "DownloadAllPIMRecords", .input = Word(kind), .streamFlag = 1}
                     .Body()));
      connection.Receive(10);
      return;
    }
    const Download download = desktop.latencies.downloads.Time(
        [&] { return CallDownload("DownloadAllPIMRecords", Word(kind)); });
    EXPECT_EQ(download.finalStatus, 0u);
  }
};

TEST_F(Day, OfSeveralDesktopsLosesNothingAndLeavesNothingBehind) {
  ExpectServing();
  const Holding before = HeldBy(agentProcess());
  AddContacts(200);
  Names expected = StoredNames();
  ASSERT_EQ(expected.size(), 200u);

  std::vector<Desktop> desktops;
  for (std::uint32_t i = 0; i < kDesktops; ++i) desktops.emplace_back(i);
  const auto visit = [&](int times) {
    std::vector<std::jthread> threads;
    for (Desktop& desktop : desktops) {
      threads.emplace_back([&] {
        for (int i = 0; i < times && !HasFailure(); ++i) Visit(desktop);
      });
    }
  };
  visit(Visits() / 2);
  const std::size_t resident = ResidentBytes(agentProcess());
  visit(Visits() / 2);

  RequestLatencies latencies;
  for (const Desktop& desktop : desktops) {
    latencies.Add(desktop.latencies);
    expected.insert(desktop.names().begin(), desktop.names().end());
  }
  latencies.Tell();
  EXPECT_EQ(StoredNames(), expected);
  ExpectGivenBack(agentProcess(), before);
  EXPECT_LT(ResidentBytes(agentProcess()), resident + (4u << 20) + kHeldBackBytes);
}

}  // namespace
}  // namespace corvane::testing
