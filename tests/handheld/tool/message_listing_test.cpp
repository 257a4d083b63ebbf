#include <algorithm>
#include <set>
#include <vector>

#include "common/files/error.h"
#include "handheld/base/fault.h"
#include "handheld/tool/export_messages.h"
#include "handheld/tool/message_walk.h"
#include "handheld/tool/output.h"
#include "handheld/tool/remove_messages.h"
#include "tests/handheld/tool/message_support.h"

namespace tool::testing {
namespace {

using ce::host::FaultPlan;

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
  // On a handheld of its own.
  std::string ListingOfAnother(const std::filesystem::path& file, bool calls) {
    Capture capture;
    InitHandheld(directory_ / "other", {.zone = "UTC"}, capture.report());
    std::string listing;
    {
      Session session(directory_ / "other");
      EXPECT_EQ(ImportFiles(session, {file}, {}, capture.report()), Outcome::kDone);
      Capture shown;
      calls ? ShowCalls(session, true, shown.report())
            : ShowMessages(session, true, shown.report());
      listing = shown.Out();
    }
    std::filesystem::remove_all(directory_ / "other");
    return listing;
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
  {
    Capture capture;
    Session session(HandheldPath());
    SetSetting(session, "zone", "Asia/Tokyo", capture.report());
  }
  EXPECT_NE(Messages(false).find("2008-02-15 22:45"), std::string::npos) << Messages(false);
  EXPECT_NE(Calls(false).find("2008-02-15 22:43"), std::string::npos);
}

TEST_F(MessageListing, ListsJsonWithTheNumbers) {
  const std::string messages = Messages();
  EXPECT_EQ(messages.rfind("[\n{\"oid\":\"8\",\"folder\":\"/Inbox\",\"class\":\"sms\",", 0), 0u)
      << messages;
  EXPECT_EQ(messages.substr(messages.size() - 4), "}\n]\n");
  EXPECT_EQ(Count(messages, "\"text\":\"Hello\\nthere\""), 1u);
  EXPECT_EQ(Calls().rfind("[\n{\"oid\":\"2\",\"number\":\"+462\",", 0), 0u) << Calls();
}

TEST_F(MessageListing, ExportsWhatImportsAsUnchangedAndMakesTheSameElsewhere) {
  for (const auto format : {MessageFormat::kBackup, MessageFormat::kJsonLines}) {
    const auto messages = directory_ / "messages.out";
    const auto calls = directory_ / "calls.out";
    {
      Session session(HandheldPath());
      EXPECT_EQ(Run([&](const Report& report) {
                  return ExportMessages(session, messages, format, report);
                }),
                Outcome::kDone);
      EXPECT_EQ(out_, messages.string() + ": 4 messages\n");
      EXPECT_EQ(
          Run([&](const Report& report) { return ExportCalls(session, calls, format, report); }),
          Outcome::kDone);
      EXPECT_EQ(out_, calls.string() + ": 3 calls\n");
    }
    EXPECT_EQ(Import({messages, calls}), Outcome::kDone);
    EXPECT_EQ(Count(out_, "0 added"), 2u) << out_;
    EXPECT_EQ(err_, "");
    ASSERT_EQ(Lines(Messages()).size(), 4u);
    ASSERT_EQ(Lines(Calls()).size(), 3u);
    EXPECT_EQ(Lines(ListingOfAnother(messages, false)), Lines(Messages()));
    EXPECT_EQ(Lines(ListingOfAnother(calls, true)), Lines(Calls()));
  }
}

TEST_F(MessageListing, ExportsToTheReportsOutput) {
  Session session(HandheldPath());
  Run([&](const Report& report) {
    return ExportMessages(session, std::nullopt, MessageFormat::kBackup, report);
  });
  EXPECT_EQ(out_.rfind("<?xml ", 0), 0u);
  EXPECT_NE(out_.find("<smses count=\"4\""), std::string::npos) << out_;
  Run([&](const Report& report) {
    return ExportCalls(session, std::nullopt, MessageFormat::kJsonLines, report);
  });
  EXPECT_EQ(Count(out_, "\n"), 3u);
  EXPECT_EQ(Count(out_, "oid"), 0u) << "numbers mean nothing elsewhere";
}

TEST_F(MessageListing, LeavesNoPartOfAFileThatCannotBeWritten) {
  Session session(HandheldPath());
  Capture capture;
  EXPECT_THROW(
      ExportMessages(session, directory_ / "no" / "out", MessageFormat::kBackup, capture.report()),
      files::Error);
  EXPECT_THROW(
      {
        Output output("/dev/full", capture.report());
        OutputStream stream(output);
        stream << std::string(4 << 20, 'x');
        output.Finish();
      },
      files::Error);
}

TEST_F(MessageListing, ExportsAllOrNothingWhenAnyPlatformCallFails) {
  const auto file = directory_ / "out.json";
  for (std::uint64_t n = 1;; ++n) {
    std::filesystem::remove(file);
    Capture capture;
    Session session(HandheldPath());
    const FaultPlan plan = FaultPlan::FailNth(n, ce::ERROR_NOT_ENOUGH_MEMORY);
    bool failed = false;
    try {
      ExportMessages(session, file, MessageFormat::kJsonLines, capture.report());
    } catch (const std::exception&) {
      failed = true;
    }
    EXPECT_EQ(failed, !std::filesystem::exists(file)) << n << " " << plan.firedCall();
    EXPECT_EQ(Count(ReadFile(file), "\n"), failed ? 0u : 4u) << n << " " << plan.firedCall();
    if (plan.fired()) continue;
    EXPECT_FALSE(failed);
    EXPECT_GT(n, 10u);
    break;
  }
}

TEST_F(MessageListing, RemovesAllOrNothingWhenAnyPlatformCallFails) {
  for (std::uint64_t n = 1;; ++n) {
    bool done = false;
    bool fired = false;
    {
      Capture capture;
      Session session(HandheldPath());
      const FaultPlan plan = FaultPlan::FailNth(n, ce::ERROR_NOT_ENOUGH_MEMORY);
      try {
        done = RemoveAllMessages(session, capture.report()) == Outcome::kDone;
      } catch (const std::exception&) {
        done = false;
      }
      fired = plan.fired();
    }
    EXPECT_EQ(Count(Messages(), "\"oid\""), done ? 0u : 4u) << n;
    if (fired && !done) continue;
    EXPECT_TRUE(done);
    EXPECT_GT(n, 10u);
    break;
  }
}

TEST_F(MessageListing, RemovesByNumber) {
  Session session(HandheldPath());
  EXPECT_EQ(Run([&](const Report& report) {
              return RemoveMessages(session, {8, 99}, report);
            }),
            Outcome::kPartlyDone);
  EXPECT_EQ(out_, "removed          8\n");
  EXPECT_EQ(err_, "corvane-device: 99: no such message\n");
  EXPECT_EQ(Run([&](const Report& report) { return RemoveMessages(session, {8}, report); }),
            Outcome::kFailed);
  EXPECT_EQ(Run([&](const Report& report) {
              return RemoveCalls(session, {1, 3}, report);
            }),
            Outcome::kDone);
  EXPECT_EQ(Run([&](const Report& report) { return RemoveCalls(session, {1}, report); }),
            Outcome::kFailed);
  EXPECT_EQ(err_, "corvane-device: 1: no such call\n");
  EXPECT_EQ(CountRecords<formats::TextMessage>(session), 3u);
  EXPECT_EQ(CountRecords<formats::Call>(session), 1u);
}

TEST_F(MessageListing, RemovesAFoldersMessagesAlone) {
  Session session(HandheldPath());
  const auto remove = [&](const std::string& path) {
    return Run([&](const Report& report) { return RemoveMessagesOfFolder(session, path, report); });
  };
  EXPECT_EQ(remove("/Inbox"), Outcome::kDone);
  EXPECT_EQ(out_, "removed 2 messages\n");
  EXPECT_EQ(remove("/Inbox"), Outcome::kDone);
  EXPECT_EQ(out_, "removed 0 messages\n");
  EXPECT_EQ(remove("/inbox"), Outcome::kFailed);
  EXPECT_EQ(err_, "corvane-device: /inbox: no such folder\n");
  EXPECT_EQ(CountRecords<formats::TextMessage>(session), 2u);
}

TEST_F(MessageListing, RemovesAll) {
  Session session(HandheldPath());
  EXPECT_EQ(Run([&](const Report& report) { return RemoveAllMessages(session, report); }),
            Outcome::kDone);
  EXPECT_EQ(out_, "removed 4 messages\n");
  EXPECT_EQ(Run([&](const Report& report) { return RemoveAllCalls(session, report); }),
            Outcome::kDone);
  EXPECT_EQ(out_, "removed 3 calls\n");
  EXPECT_EQ(CountRecords<formats::TextMessage>(session), 0u);
  EXPECT_EQ(CountRecords<formats::Call>(session), 0u);
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
  ForEachRecord<formats::TextMessage>(
      session, [&](std::int64_t id, const formats::TextMessage&) { messages.insert(id); });
  EXPECT_EQ(messages.size(), 1204u);
  std::set<std::int64_t> calls;
  ForEachRecord<formats::Call>(session,
                               [&](std::int64_t id, const formats::Call&) { calls.insert(id); });
  EXPECT_EQ(calls.size(), 1203u);
}

}  // namespace
}  // namespace tool::testing
