#include <algorithm>
#include <set>
#include <vector>

#include "common/files/error.h"
#include "handheld/base/fault.h"
#include "handheld/tool/export_records.h"
#include "handheld/tool/output.h"
#include "handheld/tool/remove_records.h"
#include "tests/handheld/tool/message_support.h"

namespace tool::testing {
namespace {

using corvane::testing::FailEachCall;
using formats::Call;
using formats::TextMessage;

class MessageListing : public MessageTest {
 protected:
  MessageListing() {
    Import(
        {WriteFile("sms.xml",
                   Backup(Sms(1, "+461", "Hello&#10;there") + Sms(2, "+462", "Hi") +
                          Sms(3, "+463", std::string(80, 'x')) +
                          "<mms date=\"1203083101000\" msg_box=\"1\" address=\"+464\" read=\"0\">"
                          "<parts><part seq=\"0\" ct=\"text/plain\" text=\"Cake\" /></parts>"
                          "<addrs><addr address=\"+464\" type=\"137\" /></addrs></mms>\n")),
         WriteFile("calls.xml", CallBackup(CallElement(1, "+461") + CallElement(2, "+462") +
                                           CallElement(3, "+463", "1203083000000")))});
  }
  template <typename Record>
  Outcome Export(const ExportOptions& options) {
    return Run([&](Session& session, const Report& report) {
      return ExportRecords<Record>(session, options, report);
    });
  }
  // On a handheld of its own.
  template <typename Record>
  std::string ListingOfAnother(const std::filesystem::path& file) {
    const std::filesystem::path other = directory_ / "other";
    Capture capture;
    InitHandheld(other, {.zone = "UTC"}, capture.report());
    Capture shown;
    {
      Session session(other);
      EXPECT_EQ(ImportFiles(session, {file}, {}, capture.report()), Outcome::kDone);
      ShowRecords<Record>(session, true, shown.report());
    }
    std::filesystem::remove_all(other);
    return shown.Out();
  }
  // Without the numbers, in the order of the texts.
  static std::vector<std::string> Lines(const std::string& listing) {
    std::vector<std::string> lines;
    for (std::size_t at = listing.find("\",\""); at != listing.npos;) {
      const std::size_t end = listing.find('\n', at);
      std::string line = listing.substr(at, end - at);
      if (line.back() == ',') line.pop_back();
      lines.push_back(std::move(line));
      at = listing.find("{\"oid\":", end);
      if (at != listing.npos) at = listing.find("\",\"", at);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
  }
};

TEST_F(MessageListing, ListsAMessageALine) {
  EXPECT_EQ(Messages(false),
            "        ID  Folder         Time             From or to           Text\n"
            "         8  /Inbox         2008-02-15 13:45 +461                 Hello there\n"
            "        11  /Inbox         2008-02-15 13:45 +464                 Cake\n"
            "         9  /Sent Items    2008-02-15 13:45 +462                 Hi\n"
            "        10  /Drafts        2008-02-15 13:45 +463                 " +
                std::string(59, 'x') + "…\n4 messages\n");
}

TEST_F(MessageListing, ListsACallALineNewestFirst) {
  EXPECT_EQ(Calls(false),
            "        ID  Time             Kind     Duration  Number               Name\n"
            "         2  2008-02-15 13:45 outgoing 0:01:15   +462\n"
            "         1  2008-02-15 13:45 incoming 0:01:15   +461\n"
            "         3  2008-02-15 13:43 missed   0:01:15   +463\n"
            "3 calls\n");
}

TEST_F(MessageListing, ShowsTheHandheldsTime) {
  Run([](Session& session, const Report& report) {
    return SetSetting(session, "zone", "Asia/Tokyo", report);
  });
  EXPECT_NE(Messages(false).find("2008-02-15 22:45"), std::string::npos) << Messages(false);
  EXPECT_NE(Calls(false).find("2008-02-15 22:43"), std::string::npos);
}

TEST_F(MessageListing, ListsJsonWithTheNumbers) {
  const std::string messages = Messages();
  EXPECT_EQ(messages.rfind("{\"oid\":\"8\",\"folder\":\"/Inbox\",\"class\":\"sms\",", 0), 0u)
      << messages;
  EXPECT_EQ(messages.substr(messages.size() - 2), "}\n");
  EXPECT_EQ(Count(messages, "\"text\":\"Hello\\nthere\""), 1u);
  EXPECT_EQ(Calls().rfind("{\"oid\":\"2\",\"number\":\"+462\",", 0), 0u) << Calls();
}

TEST_F(MessageListing, ExportsWhatImportsAsUnchangedAndMakesTheSameElsewhere) {
  for (const bool jsonLines : {false, true}) {
    const auto messages = directory_ / "messages.out";
    const auto calls = directory_ / "calls.out";
    EXPECT_EQ(Export<TextMessage>({.file = messages, .jsonLines = jsonLines}), Outcome::kDone);
    EXPECT_EQ(out_, messages.string() + ": 4 messages\n");
    EXPECT_EQ(Export<Call>({.file = calls, .jsonLines = jsonLines}), Outcome::kDone);
    EXPECT_EQ(out_, calls.string() + ": 3 calls\n");
    EXPECT_EQ(Import({messages, calls}), Outcome::kDone);
    EXPECT_EQ(Count(out_, "0 added"), 2u) << out_;
    EXPECT_EQ(err_, "");
    ASSERT_EQ(Lines(Messages()).size(), 4u);
    ASSERT_EQ(Lines(Calls()).size(), 3u);
    EXPECT_EQ(Lines(ListingOfAnother<TextMessage>(messages)), Lines(Messages()));
    EXPECT_EQ(Lines(ListingOfAnother<Call>(calls)), Lines(Calls()));
  }
}

TEST_F(MessageListing, ExportsToTheReportsOutput) {
  Export<TextMessage>({});
  EXPECT_EQ(out_.rfind("<?xml ", 0), 0u);
  EXPECT_NE(out_.find("<smses count=\"4\""), std::string::npos) << out_;
  Export<Call>({.jsonLines = true});
  EXPECT_EQ(Count(out_, "\n"), 3u);
  EXPECT_EQ(Count(out_, "oid"), 0u) << "numbers mean nothing elsewhere";
}

TEST_F(MessageListing, LeavesNoPartOfAFileThatCannotBeWritten) {
  EXPECT_THROW(Export<TextMessage>({.file = directory_ / "no" / "out"}), files::Error);
  EXPECT_THROW(
      {
        Output output("/dev/full", Report{});
        output << std::string(4 << 20, 'x');
        output.Finish();
      },
      files::Error);
}

TEST_F(MessageListing, ExportsAllOrNothingWhenAnyPlatformCallFails) {
  const auto file = directory_ / "out.json";
  std::optional<Session> session;
  const auto prepare = [&] {
    std::filesystem::remove(file);
    session.reset();
    session.emplace(HandheldPath());
  };
  const auto run = [&] {
    Capture capture;
    try {
      ExportRecords<TextMessage>(*session, {.file = file, .jsonLines = true}, capture.report());
      return true;
    } catch (const std::exception&) {
      return false;
    }
  };
  const auto check = [&](bool done, const std::string& failedCall) {
    EXPECT_EQ(done, std::filesystem::exists(file));
    EXPECT_EQ(Count(ReadFile(file), "\n"), done ? 4u : 0u);
    EXPECT_TRUE(done || !failedCall.empty());
  };
  EXPECT_GE(FailEachCall(ce::ERROR_NOT_ENOUGH_MEMORY, prepare, run, check), 10u);
}

TEST_F(MessageListing, RemovesAllOrNothingWhenAnyPlatformCallFails) {
  std::optional<Session> session;
  const auto run = [&] {
    Capture capture;
    try {
      return RemoveAllMessages(*session, capture.report()) == Outcome::kDone;
    } catch (const std::exception&) {
      return false;
    }
  };
  bool removed = false;
  const auto check = [&](bool done, const std::string& failedCall) {
    session.reset();
    removed = removed || done;
    EXPECT_EQ(Stored<TextMessage>(), removed ? 0u : 4u);
    EXPECT_TRUE(done || !failedCall.empty());
  };
  const auto calls = FailEachCall(
      ce::ERROR_NOT_ENOUGH_MEMORY, [&] { session.emplace(HandheldPath()); }, run, check);
  EXPECT_GE(calls, 10u);
}

TEST_F(MessageListing, RemovesByNumber) {
  const auto removeMessages = [&](const std::vector<std::int64_t>& ids) {
    return Run([&](Session& session, const Report& report) {
      return RemoveMessages(session, ids, report);
    });
  };
  const auto removeCalls = [&](const std::vector<std::int64_t>& ids) {
    return Run(
        [&](Session& session, const Report& report) { return RemoveCalls(session, ids, report); });
  };
  EXPECT_EQ(removeMessages({8, 99}), Outcome::kPartlyDone);
  EXPECT_EQ(out_, "removed          8\n");
  EXPECT_EQ(err_, "corvane-device: 99: no such message\n");
  EXPECT_EQ(removeMessages({8}), Outcome::kFailed);
  EXPECT_EQ(removeCalls({1, 3}), Outcome::kDone);
  EXPECT_EQ(removeCalls({1}), Outcome::kFailed);
  EXPECT_EQ(err_, "corvane-device: 1: no such call\n");
  EXPECT_EQ(Stored<TextMessage>(), 3u);
  EXPECT_EQ(Stored<Call>(), 1u);
}

TEST_F(MessageListing, RemovesAFoldersMessagesAlone) {
  const auto remove = [&](const std::string& path) {
    return Run([&](Session& session, const Report& report) {
      return RemoveMessagesOfFolder(session, path, report);
    });
  };
  EXPECT_EQ(remove("/Inbox"), Outcome::kDone);
  EXPECT_EQ(out_, "removed 2 messages\n");
  EXPECT_EQ(remove("/Inbox"), Outcome::kDone);
  EXPECT_EQ(out_, "removed 0 messages\n");
  EXPECT_EQ(remove("/inbox"), Outcome::kFailed);
  EXPECT_EQ(err_, "corvane-device: /inbox: no such folder\n");
  EXPECT_EQ(Stored<TextMessage>(), 2u);
}

TEST_F(MessageListing, RemovesAll) {
  EXPECT_EQ(Run(RemoveAllMessages), Outcome::kDone);
  EXPECT_EQ(out_, "removed 4 messages\n");
  EXPECT_EQ(Run(RemoveAllCalls), Outcome::kDone);
  EXPECT_EQ(out_, "removed 3 calls\n");
  EXPECT_EQ(Stored<TextMessage>() + Stored<Call>(), 0u);
}

TEST_F(MessageListing, ReadsMoreThanOnePieceOfAFolder) {
  Session session(HandheldPath());
  std::int64_t folder = 0;
  ASSERT_EQ(session.Messages().EnsureFolder(SmsStore(session).value(), u"/Many", folder), ce::S_OK);
  session.Messages().Begin();
  session.Calls();
  for (int i = 0; i < 1200; ++i) ASSERT_EQ(session.Messages().Insert(folder, {}), ce::S_OK);
  ASSERT_EQ(session.Messages().Commit(), ce::S_OK);
  session.Calls().Begin();
  for (int i = 0; i < 1200; ++i) ASSERT_EQ(session.Calls().Insert({}), ce::S_OK);
  ASSERT_EQ(session.Calls().Commit(), ce::S_OK);
  std::set<std::int64_t> messages;
  ForEachRecord<TextMessage>(session,
                             [&](std::int64_t id, const TextMessage&) { messages.insert(id); });
  EXPECT_EQ(messages.size(), 1204u);
  std::set<std::int64_t> calls;
  ForEachRecord<Call>(session, [&](std::int64_t id, const Call&) { calls.insert(id); });
  EXPECT_EQ(calls.size(), 1203u);
}

}  // namespace
}  // namespace tool::testing
