#include <unistd.h>

#include "handheld/base/fault.h"
#include "handheld/tool/remove_records.h"
#include "tests/handheld/tool/message_support.h"

namespace tool::testing {
namespace {

using ce::host::FaultPlan;

class ImportMessages : public MessageTest {};

TEST_F(ImportMessages, PutsEachWhereItBelongs) {
  const auto file = WriteFile("sms.xml", Backup(Sms(1, "+461", "in") + Sms(2, "+462", "out") +
                                                Sms(3, "+463", "draft") + Sms(4, "+464", "away")));
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_EQ(out_, file.string() + ": 4 added, 0 changed, 0 unchanged, 0 failed; 0 notices\n");
  EXPECT_EQ(err_, "");
  const std::string messages = Messages();
  EXPECT_EQ(Count(messages, R"("folder":"/Inbox")"), 1u) << messages;
  EXPECT_EQ(Count(messages, R"("folder":"/Sent Items")"), 1u);
  EXPECT_EQ(Count(messages, R"("folder":"/Drafts")"), 1u);
  EXPECT_EQ(Count(messages, R"("flags":["read","submitted","unsent","from-me"])"), 1u);
}

TEST_F(ImportMessages, PutsCallsInTheLog) {
  const auto file =
      WriteFile("calls.xml", CallBackup(CallElement(1, "+461") + CallElement(3, "+462")));
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_EQ(out_, file.string() + ": 2 added, 0 changed, 0 unchanged, 0 failed; 0 notices\n");
  EXPECT_EQ(Count(Calls(), R"("missed":true)"), 1u) << Calls();
}

TEST_F(ImportMessages, TakesLinesOfJsonOfBothKinds) {
  const auto file = WriteFile("all", R"({"folder":"/Inbox/Old","text":"one"}
{"number":"+461","start":"2008-02-15T13:45:00Z"}
{"folder":"/Drafts","text":"two"}
)");
  EXPECT_EQ(Import({file}), Outcome::kDone) << err_;
  EXPECT_NE(out_.find("3 added"), std::string::npos) << out_;
  EXPECT_NE(Messages().find(R"("folder":"/Inbox/Old")"), std::string::npos);
  EXPECT_NE(Calls().find(R"("number":"+461")"), std::string::npos);
}

TEST_F(ImportMessages, ChangesNothingWhenTheSameFileComesAgain) {
  const auto messages = WriteFile("sms.xml", Backup(Sms(1, "+461", "a") + Sms(2, "+462", "b")));
  const auto calls = WriteFile("calls.xml", CallBackup(CallElement(1, "+461")));
  Import({messages, calls});
  const std::string before = Messages() + Calls();
  EXPECT_EQ(Import({messages, calls, messages}), Outcome::kDone);
  EXPECT_EQ(Count(out_, "0 added"), 3u) << out_;
  EXPECT_EQ(Messages() + Calls(), before);
}

TEST_F(ImportMessages, KnowsAMessageFromHowItIsWrittenElsewhere) {
  Import({WriteFile("sms.xml", Backup(Sms(1, "+46 (70) 555", "hello")))});
  Import({WriteFile("sms.json", R"({"folder":"/Inbox/Old","time":"2008-02-15T13:45:01Z",)"
                                R"("from":"+4670555","text":"hello"})")});
  EXPECT_NE(out_.find("0 added, 0 changed, 1 unchanged"), std::string::npos) << out_;
}

TEST_F(ImportMessages, AddsAsManyOfTheSameAsTheFileHasMore) {
  const std::string same = Sms(1, "+461", "yes");
  Import({WriteFile("one.xml", Backup(same))});
  Import({WriteFile("three.xml", Backup(same + same + same))});
  EXPECT_NE(out_.find("2 added, 0 changed, 1 unchanged"), std::string::npos) << out_;
  Import({WriteFile("two.xml", Backup(same + same))});
  EXPECT_NE(out_.find("0 added, 0 changed, 2 unchanged"), std::string::npos) << out_;
  EXPECT_EQ(Count(Messages(), "\"oid\""), 3u);
}

TEST_F(ImportMessages, AddsAgainWhatWasRemovedSince) {
  const auto file = WriteFile("sms.xml", Backup(Sms(1, "+461", "a") + Sms(2, "+462", "b")));
  Import({file});
  Run([](Session& session, const Report& report) {
    return RemoveMessagesOfFolder(session, "/Inbox", report);
  });
  Import({file});
  EXPECT_NE(out_.find("1 added, 0 changed, 1 unchanged"), std::string::npos) << out_;
}

TEST_F(ImportMessages, AddsOnceMoreWhenADuplicateIsForced) {
  const auto file = WriteFile("sms.xml", Backup(Sms(1, "+461", "a")));
  const auto calls = WriteFile("calls.xml", CallBackup(CallElement(1, "+461")));
  Import({file, calls});
  Import({file, calls}, {.dryRun = false, .duplicate = true});
  EXPECT_EQ(Count(Messages(), "\"oid\""), 2u);
  EXPECT_EQ(Count(Calls(), "\"oid\""), 2u);
}

TEST_F(ImportMessages, StoresNothingInADryRunAndCountsAsItWould) {
  const auto sms = WriteFile("sms.xml", Backup(Sms(1, "+461", "a") + Sms(1, "+461", "a")));
  const auto json = WriteFile("all.json", R"({"folder":"/New","text":"one"}
{"folder":"//","text":"two"}
{"number":"+461"})");
  EXPECT_EQ(Import({sms, sms, json}, {.dryRun = true}), Outcome::kPartlyDone);
  EXPECT_NE(out_.find("would be 2 added, 0 changed, 0 unchanged"), std::string::npos) << out_;
  EXPECT_NE(out_.find("would be 0 added, 0 changed, 2 unchanged"), std::string::npos) << out_;
  EXPECT_NE(out_.find("would be 2 added, 0 changed, 0 unchanged, 1 failed"), std::string::npos);
  EXPECT_EQ(Messages() + Calls(), "");
  {
    Session session(HandheldPath());
    for (const auto& folder : SmsFolders(session)) EXPECT_NE(folder.path, u"/New");
  }
  EXPECT_EQ(Import({sms}), Outcome::kDone);
  EXPECT_NE(out_.find("2 added"), std::string::npos) << "nothing was remembered as done";
}

TEST_F(ImportMessages, NamesTheLineOfWhatItCannotKeep) {
  const auto file = WriteFile(
      "sms.xml", Backup(Sms(1, "+461", "a") + "  <sms address=\"+462\" date=\"1203083101250\" "
                                              "type=\"1\" body=\"b\" locked=\"1\" />\n"));
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_EQ(err_.rfind(file.string() + ":4: locked: ", 0), 0u) << err_;
  EXPECT_NE(out_.find("2 added, 0 changed, 0 unchanged, 0 failed; 1 notices"), std::string::npos);
}

TEST_F(ImportMessages, NamesAMessageWhoseFolderCannotBe) {
  std::string deep;
  for (int i = 0; i < 65; ++i) deep += "/x";
  const auto file = WriteFile("a.json", R"({"folder":"Inbox","text":"one"}
{"folder":")" + deep +
                                            R"(","text":"two"}
{"folder":"/Inbox","text":"three"}
)");
  EXPECT_EQ(Import({file}), Outcome::kPartlyDone);
  EXPECT_NE(out_.find("1 added, 0 changed, 0 unchanged, 2 failed"), std::string::npos) << out_;
  EXPECT_EQ(err_.rfind(file.string() + ":1: folder: ", 0), 0u) << err_;
  EXPECT_NE(err_.find(file.string() + ":2: folder: "), std::string::npos);
  EXPECT_EQ(Count(Messages(), "\"oid\""), 1u);
}

TEST_F(ImportMessages, KeepsWhatStandsBeforeDamage) {
  const auto file = WriteFile("sms.xml", "<smses>\n" + Sms(1, "+461", "a") + "  <sms address=\"");
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_NE(err_.find(file.string() + ":"), std::string::npos) << err_;
  EXPECT_EQ(Count(Messages(), "\"oid\""), 1u);
}

TEST_F(ImportMessages, ReadsAPipe) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const std::string backup = Backup(Sms(1, "+461", "a") + Sms(2, "+462", "b"));
  EXPECT_EQ(::write(ends[1], backup.data(), backup.size()), static_cast<ssize_t>(backup.size()));
  ::close(ends[1]);
  EXPECT_EQ(Import({"/dev/fd/" + std::to_string(ends[0])}), Outcome::kDone) << err_;
  ::close(ends[0]);
  EXPECT_NE(out_.find("2 added"), std::string::npos) << out_;
}

TEST_F(ImportMessages, SaysThatAFileHoldsNoMessages) {
  EXPECT_EQ(Import({WriteFile("a.xml", "<smses/>")}), Outcome::kFailed);
  EXPECT_NE(err_.find("a.xml: no messages or calls in it"), std::string::npos) << err_;
}

TEST_F(ImportMessages, TakesContactsAndMessagesOfOneCommand) {
  const auto card = WriteFile("a.vcf", "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Doe;;;;\r\nEND:VCARD\r\n");
  const auto sms = WriteFile("sms.xml", Backup(Sms(1, "+461", "a")));
  const auto other = WriteFile("b.vcf", "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Roe;;;;\r\nEND:VCARD\r\n");
  EXPECT_EQ(Import({card, sms, other}), Outcome::kDone) << err_;
  EXPECT_EQ(Count(Messages(), "\"oid\""), 1u);
  EXPECT_EQ(Count(out_, "1 added"), 3u) << out_;
}

TEST_F(ImportMessages, StoresManyInSeveralTransactions) {
  std::string json;
  for (int i = 0; i < 2500; ++i) {
    json += R"({"folder":"/Inbox","text":")" + std::to_string(i) + "\"}\n";
    json += R"({"number":")" + std::to_string(i) + "\"}\n";
  }
  const auto file = WriteFile("many.json", json);
  const std::string all = "5,000 added, 0 changed, 0 unchanged";
  EXPECT_EQ(Import({file}, {.dryRun = true}), Outcome::kDone);
  EXPECT_NE(out_.find("would be " + all), std::string::npos) << out_;
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_NE(out_.find(all), std::string::npos) << out_;
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_NE(out_.find("0 added, 0 changed, 5,000 unchanged"), std::string::npos) << out_;
}

TEST_F(ImportMessages, MakesTheTelephonesStoreWhereItIsMissing) {
  {
    Session session(HandheldPath());
    ASSERT_EQ(session.Messages().DeleteStore(SmsStore(session).value()), ce::S_OK);
    EXPECT_EQ(CountRecords<formats::TextMessage>(session), 0u);
  }
  EXPECT_EQ(Import({WriteFile("sms.xml", Backup(Sms(1, "+461", "a")))}), Outcome::kDone);
  EXPECT_EQ(Count(Messages(), R"("folder":"/Inbox")"), 1u);
}

TEST_F(ImportMessages, LeavesWhatWasStoredBeforeTheDiskWasFull) {
  const auto file = WriteFile("sms.xml", Backup(Sms(1, "+461", "a") + Sms(2, "+462", "b")));
  {
    const auto plan = FaultPlan::FailCalls("StoreWriter::Commit", ce::ERROR_DISK_FULL);
    EXPECT_EQ(Import({file}), Outcome::kFailed);
  }
  EXPECT_NE(err_.find("the disk is full; not all of it is stored: import the file again"),
            std::string::npos)
      << err_;
  EXPECT_EQ(Messages(), "");
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_EQ(Count(Messages(), "\"oid\""), 2u);
}

TEST_F(ImportMessages, IsHonestWhenAnyPlatformCallFails) {
  const auto file = WriteFile("all.json", R"({"folder":"/New","text":"one"}
{"number":"+461"}
{"folder":"/Inbox","text":"two","to":["+462"]}
)");
  const auto calls = ImportFailingEachCall(file, {}, [&](Outcome outcome) {
    const std::size_t stored = Stored<formats::TextMessage>() + Stored<formats::Call>();
    EXPECT_TRUE(outcome != Outcome::kDone || stored == 3u);
  });
  EXPECT_GE(calls, 30u);
}

}  // namespace
}  // namespace tool::testing
