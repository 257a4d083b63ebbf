// Uploads of an agent that is killed in the middle of them, whose disk fails, and beside downloads:
// what was answered is there once, and nothing is ever half there.
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <map>
#include <random>
#include <set>
#include <stop_token>
#include <thread>

#include "tests/support/temporary_directory.h"
#include "tests/support/wire/agent_process.h"
#include "tests/support/wire/shim.h"

namespace corvane::testing {
namespace {

constexpr int kKills = 40;

std::string OidTag(std::uint32_t oid) {
  return " Oid=\"" + std::to_string(static_cast<std::int32_t>(oid)) + "\"";
}

// A daily series of twenty days. All of them but the first are changed, or deleted, and the changed
// ones have its name.
std::string SeriesRecord(const std::string& attributes, const std::string& name) {
  std::string record = "<CALENDAR" + attributes + "><SUBJECT>" + name +
                       "</SUBJECT><EVENT_START>20080201T100000</EVENT_START>"
                       "<EVENT_END>20080201T110000</EVENT_END><IS_RECURRING>TRUE</IS_RECURRING>"
                       "<RECURRENCE><TYPE>DAILY</TYPE><Occurrences>20</Occurrences>";
  for (int day = 2; day <= 20; ++day) {
    const std::string date = "200802" + std::to_string(100 + day).substr(1);
    record += day % 3 == 0 ? "<DeletedException>" + date + "</DeletedException>"
                           : "<ChangedException><SUBJECT>" + name + "</SUBJECT><EVENT_START>" +
                                 date + "T120000</EVENT_START><EVENT_END>" + date +
                                 "T130000</EVENT_END><OriginalDate>" + date +
                                 "</OriginalDate></ChangedException>";
  }
  return record + "</RECURRENCE></CALENDAR>";
}

std::string ContactRecord(const std::string& name) {
  return "<CONTACT><FIRST_NAME>" + name + "</FIRST_NAME><NOTES>" + name + "</NOTES></CONTACT>";
}

std::string NameIn(const std::string& body) {
  const std::size_t begin = body.find('>') + 1;
  return body.substr(begin, body.find('<', begin) - begin);
}

// What the record of a download holds with each `name` in it written as "@".
std::string FormOf(std::string body, const std::string& name) {
  for (std::size_t at = 0; (at = body.find('>' + name + '<', at)) != std::string::npos; ++at) {
    body.replace(at + 1, name.size(), "@");
  }
  return body;
}

// What was sent and not yet checked.
struct SentRecord {
  std::string name;
  std::uint32_t changed = 0;  // 0 for a new one
};

class KilledUpload : public WireTest {
 protected:
  RawConnection Begin() {
    RawConnection connection = Connect();
    connection.Send(Record(Invoke{.function = "UploadPIMRecords", .streamFlag = 1}.Body()));
    EXPECT_EQ(connection.ReceiveWord(), 0u);
    return connection;
  }

  // The content of each record of a kind, by its identifier.
  std::map<std::uint32_t, std::string> Stored(std::uint32_t kind, const std::string& element) {
    std::map<std::uint32_t, std::string> records;
    for (const auto& document : CallDownload("DownloadAllPIMRecords", Word(kind)).documents) {
      const std::string open = "<" + element + " ";
      const std::string close = "</" + element + ">";
      for (std::size_t at = 0; (at = document.find(open, at)) != std::string::npos;) {
        const std::size_t begin = document.find('>', at) + 1;
        const std::size_t end = document.find(close, begin);
        const std::uint32_t oid = OidsOf(document.substr(at, begin - at)).at(0);
        EXPECT_TRUE(records.emplace(oid, document.substr(begin, end - begin)).second);
        at = end;
      }
    }
    return records;
  }

  std::string NewName() { return "n" + std::to_string(++names_); }

  // Records of a chunk: contacts, new series, and changes of those that are there.
  std::string NextDocument(std::size_t records) {
    std::string document = "<root>";
    sent_.clear();
    for (std::size_t i = 0; i < records; ++i) {
      sent_.push_back({NewName()});
      SentRecord& sent = sent_.back();
      if (i % 3 == 0) {
        document += ContactRecord(sent.name);
      } else if (i % 3 == 1 && !series_.empty()) {
        sent.changed = std::next(series_.begin(), random_() % series_.size())->first;
        document += SeriesRecord(OidTag(sent.changed), sent.name);
      } else {
        document += SeriesRecord("", sent.name);
      }
    }
    return document + "</root>";
  }

  // What the replies that came say of what was sent. None tells of a failure but of a disk's.
  void TakeReplies(const std::string& replies, bool diskFails = false) {
    const std::size_t answered = replies.size() / 8;
    for (std::size_t i = 0; i < sent_.size(); ++i) {
      const SentRecord& sent = sent_[i];
      if (i >= answered) {
        (sent.changed ? unansweredChanges_[sent.changed] : unanswered_).insert(sent.name);
        continue;
      }
      const std::uint32_t oid = WordAt(replies, 8 * i);
      if (diskFails && WordAt(replies, 8 * i + 4) != 0) continue;
      EXPECT_EQ(WordAt(replies, 8 * i + 4), 0u);
      if (sent.changed) {
        EXPECT_EQ(oid, sent.changed);
      }
      (i % 3 == 0 ? contacts_ : series_)[oid] = sent.name;
    }
  }

  // Uploads until the agent has gone.
  void UploadToTheEnd(RawConnection& connection) {
    for (;;) {
      const std::size_t records = std::array{1, 5, 150}[random_() % 3];
      connection.Send(Chunk(NextDocument(records)));
      std::string replies;
      try {
        for (std::string more = "x"; !more.empty() && replies.size() < 8 * records;) {
          replies += more = connection.Receive(1);
          bytesAnswered_ += more.size();
        }
      } catch (const std::runtime_error&) {
        // The connection was reset.
      }
      TakeReplies(replies);
      if (replies.size() < 8 * records) return;
    }
  }

  // The forms of what is uploaded, as a download gives them.
  void LearnForms() {
    Upload({"<root>" + ContactRecord("@") + SeriesRecord("", "@") + "</root>"}, 2);
    contactForm_ = Stored(kContacts, "CONTACT").begin()->second;
    seriesForm_ = Stored(kAppointments, "CALENDAR").begin()->second;
    unanswered_ = {"@"};
  }
  void ExpectAllWhole() {
    ExpectWhole(contacts_, Stored(kContacts, "CONTACT"), contactForm_);
    ExpectWhole(series_, Stored(kAppointments, "CALENDAR"), seriesForm_);
  }

  // Each record that was answered is there as it was answered, each other one that is there is
  // whole, and none is there twice. Takes what is there for answered from now on.
  void ExpectWhole(std::map<std::uint32_t, std::string>& answered,
                   const std::map<std::uint32_t, std::string>& stored, const std::string& form) {
    std::set<std::string> names;
    for (const auto& [oid, body] : stored) {
      const std::string name = NameIn(body);
      EXPECT_EQ(FormOf(body, name), form);
      EXPECT_TRUE(names.insert(name).second) << name << " is there twice";
      const auto known = answered.find(oid);
      if (known == answered.end()) {
        EXPECT_TRUE(unanswered_.contains(name)) << name;
      } else if (known->second != name) {
        EXPECT_TRUE(unansweredChanges_[oid].contains(name)) << name;
      }
      answered[oid] = name;
    }
    EXPECT_EQ(answered.size(), stored.size()) << "a record that was answered is gone";
  }

  // Other ones in each round of --gtest_repeat with --gtest_shuffle.
  std::mt19937 random_{20080215u +
                       static_cast<unsigned>(::testing::UnitTest::GetInstance()->random_seed())};
  std::atomic<std::size_t> bytesAnswered_{0};
  std::string contactForm_, seriesForm_;
  int names_ = 0;
  std::vector<SentRecord> sent_;
  std::map<std::uint32_t, std::string> contacts_;  // the names that were answered last
  std::map<std::uint32_t, std::string> series_;
  std::set<std::string> unanswered_;
  std::map<std::uint32_t, std::set<std::string>> unansweredChanges_;
};

TEST_F(KilledUpload, LosesNothingThatWasAnsweredAndLeavesNothingHalf) {
  LearnForms();
  // So many more replies, and a moment, so that it is within a chunk or between two.
  std::uniform_int_distribution<std::size_t> replies(0, 30);
  std::uniform_int_distribution<int> moment(0, 5'000);
  for (int kill = 0; kill < kKills && !HasFailure(); ++kill) {
    const std::size_t enough = bytesAnswered_ + 8 * replies(random_);
    const std::chrono::microseconds wait(moment(random_));
    RawConnection connection = Begin();
    std::jthread killer([&](const std::stop_token& ended) {
      while (bytesAnswered_ < enough && !ended.stop_requested()) std::this_thread::yield();
      std::this_thread::sleep_for(wait);
      SignalAgent(SIGKILL);
    });
    UploadToTheEnd(connection);
    killer.request_stop();
    killer.join();
    StopAgent(SIGKILL);
    ExpectAllWhole();
  }
  EXPECT_GT(contacts_.size() + series_.size(), static_cast<std::size_t>(kKills));
}

// Before its n-th write, or in the middle of it: starting, opening the store, within a group of
// records, between two.
class KilledAtAnyWrite : public KilledUpload, public ::testing::WithParamInterface<const char*> {};

TEST_P(KilledAtAnyWrite, LosesNothingThatWasAnsweredAndLeavesNothingHalf) {
  const TemporaryDirectory directory;
  LearnForms();
  StopAgent(SIGTERM);
  for (const std::uint64_t write : PointsAmong(240, 24)) {
    SCOPED_TRACE("write " + std::to_string(write));
    options_.environment = ShimEnvironment({"writes", GetParam()}, write,
                                           handheld().path().string(), directory / "told");
    try {
      RawConnection connection = Begin();
      UploadToTheEnd(connection);
    } catch (const std::runtime_error&) {
      // It was killed before it listened.
    }
    EXPECT_EQ(WaitForAgent(), -SIGKILL);
    StopAgent(SIGKILL);
    options_.environment.clear();
    ExpectAllWhole();
    StopAgent(SIGTERM);
    if (HasFailure()) break;
  }
}

INSTANTIATE_TEST_SUITE_P(Ends, KilledAtAnyWrite, ::testing::Values("kill", "half"),
                         [](const auto& test) { return std::string(test.param); });

// The n-th call to the system for the store fails: what was answered with 0 is there, what was
// answered otherwise is not, and the agent goes on.
TEST_F(KilledUpload, IsToldOfADiskThatFailsOnce) {
  const TemporaryDirectory directory;
  LearnForms();
  StopAgent(SIGTERM);
  std::size_t failed = 0;
  for (const std::uint64_t call : PointsAmong(200, 24)) {
    SCOPED_TRACE("call " + std::to_string(call));
    options_.environment = ShimEnvironment({"files", "fail", EIO}, call, handheld().path().string(),
                                           directory / "told");
    options_.captureErrors = true;
    try {
      port();
    } catch (const std::runtime_error&) {
      EXPECT_EQ(WaitForAgent(), 1) << "it cannot start";
      StopAgent(SIGKILL);
      continue;
    }
    for (int upload = 0; upload < 3; ++upload) {
      RawConnection connection = Begin();
      connection.Send(Chunk(NextDocument(6)) + Word(0));
      const std::string replies = connection.ReceiveToEnd();
      TakeReplies(replies, true);
      for (std::size_t i = 0; i < 6; ++i)
        failed += replies.size() < 8 * i + 8 || WordAt(replies, 8 * i + 4) != 0;
    }
    ExpectServing();
    StopAgent(SIGTERM);
    options_.environment.clear();
    ExpectAllWhole();
    StopAgent(SIGTERM);
    if (HasFailure()) break;
  }
  EXPECT_GT(failed, 0u);
}

TEST_F(KilledUpload, ShowsNothingHalfToADownload) {
  const std::uint32_t oid = Upload({"<root>" + SeriesRecord("", "@") + "</root>"}, 1).at(0).oid;
  const std::string form = Stored(kAppointments, "CALENDAR").at(oid);
  std::atomic<bool> done = false;
  std::jthread uploader([&] {
    for (int i = 0; i < 40; ++i) {
      const auto name = [&](int j) { return "n" + std::to_string(5 * i + j); };
      std::string document = "<root>" + SeriesRecord(OidTag(oid), name(0));
      for (int j = 1; j < 5; ++j) document += SeriesRecord("", name(j));
      Upload({document + "</root>"}, 5);
    }
    done = true;
  });
  for (bool last = false; !last && !HasFailure();) {
    last = done;
    for (const auto& [stored, body] : Stored(kAppointments, "CALENDAR")) {
      EXPECT_EQ(FormOf(body, NameIn(body)), form);
    }
  }
}

}  // namespace
}  // namespace corvane::testing
