#include "handheld/base/fault.h"
#include "handheld/tool/remove_records.h"
#include "tests/handheld/tool/maintenance_support.h"
#include "tests/support/json_lines.h"

namespace tool::testing {
namespace {

using ce::host::FaultPlan;

std::string Card(const std::string& lines) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\n" + lines + "END:VCARD\r\n";
}

class ImportContacts : public MaintenanceTest {
 protected:
  ImportContacts() { Init(); }

  std::string Contacts() { return Shown<formats::Contact>(); }
};

TEST_F(ImportContacts, AddsEachCardAndSaysSo) {
  const auto file = WriteFile("two.vcf", Card("N:Doe;John;;;\r\n") + Card("N:Roe;Jane;;;\r\n"));
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_EQ(out_, "added             1  Doe, John\nadded             2  Roe, Jane\n" +
                      file.string() + ": 2 added, 0 changed, 0 unchanged, 0 failed; 0 notices\n");
  EXPECT_EQ(err_, "");
  EXPECT_NE(Contacts().find(R"("FirstName":"Jane")"), std::string::npos);
}

TEST_F(ImportContacts, SaysALineAFileUnlessEachCardIsWanted) {
  std::string cards;
  for (int i = 0; i < 1200; ++i) cards += Card("N:Doe;" + std::to_string(i) + ";;;\r\n");
  verbosity_ = Verbosity::kSummary;
  const auto file = WriteFile("many.vcf", cards);
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_EQ(out_, file.string() + ": 1,200 added, 0 changed, 0 unchanged, 0 failed; 0 notices\n");
  EXPECT_EQ(err_, "") << "no bar where there is no terminal";
}

TEST_F(ImportContacts, SumsNoticesByWhatTheyAreAbout) {
  verbosity_ = Verbosity::kSummary;
  const auto file = WriteFile(
      "a.vcf", Card("N:Doe;John;;;\r\nPHOTO:x\r\nPHOTO:y\r\n") +
                   Card("N:Roe;;;;\r\nPHOTO:x\r\nBDAY:--0917\r\n") + "rubbish\r\n" +
                   "BEGIN:VCARD\r\nN:Poe\r\nEND:VCARD\r\nBEGIN:VCARD\r\nN:Moe\r\nEND:VCARD\r\n");
  EXPECT_EQ(Import({file}), Outcome::kDone);
  const std::string name = file.string();
  EXPECT_EQ(err_, name + ":13: 1 line outside any vCard left out\n" + name +
                      ": VERSION is missing, read as 3.0: 2 times\n" + name +
                      ": PHOTO: 2 contacts (a contact holds no pictures)\n" + name +
                      ": BDAY: 1 contact (a date without a year cannot be kept: --0917)\n" +
                      "-v names each of them with its line\n");
  EXPECT_NE(out_.find("; 7 notices\n"), std::string::npos) << out_;
}

TEST_F(ImportContacts, SaysNothingButErrorsWhenThatIsWanted) {
  verbosity_ = Verbosity::kErrors;
  const auto file = WriteFile("a.vcf", Card("N:Doe;John;;;\r\nPHOTO:x\r\n"));
  EXPECT_EQ(Import({file, directory_ / "absent.vcf"}), Outcome::kPartlyDone);
  EXPECT_EQ(out_, "");
  EXPECT_EQ(err_, "corvane-device: " + (directory_ / "absent.vcf").string() + " cannot be read\n");
}

TEST_F(ImportContacts, TellsProgramsAnObjectALine) {
  const auto file = WriteFile("a.vcf", Card("N:Doe;John;;;\r\nPHOTO:x\r\n"));
  Run([&](Session& session, const Report& report) {
    return ImportFiles(session, {file}, {}, AsJson(report));
  });
  const auto lines = corvane::testing::JsonLines(out_);
  ASSERT_EQ(lines.size(), 2u) << out_;
  EXPECT_EQ(lines[0], (nlohmann::json{{"outcome", "added"}, {"oid", 1}, {"name", "Doe, John"}}));
  EXPECT_EQ(lines[1], (nlohmann::json{{"file", file.string()},
                                      {"added", 1},
                                      {"changed", 0},
                                      {"unchanged", 0},
                                      {"failed", 0},
                                      {"notices", 1}}));
}

TEST_F(ImportContacts, ChangesNothingWhenTheSameFileComesAgain) {
  const auto file = WriteFile("a.vcf", Card("UID:1\r\nN:Doe;John;;;\r\n") + Card("N:Roe;;;;\r\n"));
  Import({file});
  const std::string before = Contacts();
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_NE(out_.find("0 added, 0 changed, 2 unchanged"), std::string::npos) << out_;
  EXPECT_EQ(Contacts(), before);
}

TEST_F(ImportContacts, ChangesTheItemWhenItsCardWithAUidChanged) {
  Import({WriteFile("a.vcf", Card("UID:1\r\nN:Doe;John;;;\r\n"))});
  Import({WriteFile("a.vcf", Card("UID:1\r\nN:Doe;Johnny;;;\r\n"))});
  EXPECT_EQ(out_.substr(0, 21), "changed           1  ");
  EXPECT_EQ(Count(Contacts(), "\"oid\""), 1u);
  EXPECT_NE(Contacts().find("Johnny"), std::string::npos);
}

TEST_F(ImportContacts, AddsAgainWhatWasRemovedSince) {
  const auto file = WriteFile("a.vcf", Card("UID:1\r\nN:Doe;John;;;\r\n"));
  Import({file});
  Run([](Session& session, const Report& report) { return RemoveItems(session, {1}, report); });
  Import({file});
  EXPECT_NE(Contacts().find("\"oid\":2"), std::string::npos) << Contacts();
}

TEST_F(ImportContacts, AddsTheSameCardOnceWithinAFile) {
  const std::string card = Card("N:Doe;John;;;\r\n");
  Import({WriteFile("a.vcf", card + card)});
  EXPECT_NE(out_.find("1 added, 0 changed, 1 unchanged"), std::string::npos) << out_;
}

TEST_F(ImportContacts, AddsOnceMoreWhenADuplicateIsForced) {
  const auto file = WriteFile("a.vcf", Card("UID:1\r\nN:Doe;John;;;\r\n"));
  Import({file});
  Import({file}, {.dryRun = false, .duplicate = true});
  EXPECT_EQ(Count(Contacts(), "\"oid\""), 2u);
}

TEST_F(ImportContacts, StoresNothingInADryRunAndCountsAsItWould) {
  const std::string card = Card("N:Doe;John;;;\r\n");
  const auto file = WriteFile("a.vcf", card + card + Card("PHOTO:x\r\nN:Roe;;;;\r\n"));
  EXPECT_EQ(Import({file}, {.dryRun = true}), Outcome::kDone);
  EXPECT_NE(out_.find("would be added    Doe, John\n"), std::string::npos) << out_;
  EXPECT_NE(out_.find("would be 2 added, 0 changed, 1 unchanged"), std::string::npos) << out_;
  EXPECT_NE(err_.find("PHOTO"), std::string::npos);
  EXPECT_EQ(Contacts(), "");
}

TEST_F(ImportContacts, NamesTheLineOfWhatItCannotKeep) {
  const auto file = WriteFile("a.vcf", Card("N:Doe;John;;;\r\nPHOTO:x\r\n"));
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_EQ(err_.rfind(file.string() + ":4: PHOTO: ", 0), 0u) << err_;
}

TEST_F(ImportContacts, CutsATextThatIsTooLongAndSaysSo) {
  const auto file = WriteFile("a.vcf", Card("N:" + std::string(2000, 'x') + ";;;;\r\n"));
  EXPECT_EQ(Import({file}), Outcome::kDone);
  EXPECT_NE(err_.find("LastName: cut from 2000 to 1023 characters"), std::string::npos) << err_;
  EXPECT_NE(Contacts().find("\"" + std::string(1023, 'x') + "\""), std::string::npos);
}

TEST_F(ImportContacts, NamesInADryRunWhatItWouldNotKeep) {
  const auto file = WriteFile("a.vcf", Card("N:" + std::string(2000, 'x') + ";;;;\r\n"));
  Import({file}, {.dryRun = true});
  EXPECT_NE(err_.find("LastName: cut from 2000 to 1023 characters"), std::string::npos) << err_;
}

TEST_F(ImportContacts, CutsNoCharacterInHalves) {
  std::string text(1022, 'x');
  text += "\xF0\x9F\x98\x80";  // two UTF-16 units: the second would be the 1024th
  Import({WriteFile("a.vcf", Card("N:" + text + ";;;;\r\n"))});
  EXPECT_NE(Contacts().find("\"" + std::string(1022, 'x') + "\""), std::string::npos);
}

TEST_F(ImportContacts, LeavesOutCategoriesThatDoNotFitAsAWhole) {
  std::string names;
  for (int i = 0; i < 200; ++i) names += (i ? "," : "") + ("category" + std::to_string(i));
  Import({WriteFile("a.vcf", Card("N:Doe;;;;\r\nCATEGORIES:" + names + "\r\n"))});
  EXPECT_NE(err_.find("Categories: no room for \"category199\""), std::string::npos) << err_;
  EXPECT_NE(Contacts().find("\"category0\",\"category1\""), std::string::npos);
}

TEST_F(ImportContacts, FailsForAFileThatCannotBeReadAndGoesOnWithTheNext) {
  const auto good = WriteFile("good.vcf", Card("N:Doe;;;;\r\n"));
  EXPECT_EQ(Import({directory_ / "absent.vcf", good}), Outcome::kPartlyDone);
  EXPECT_NE(err_.find("absent.vcf cannot be read"), std::string::npos);
  EXPECT_EQ(Import({directory_ / "absent.vcf"}), Outcome::kFailed);
  EXPECT_EQ(Import({directory_}), Outcome::kFailed);
}

TEST_F(ImportContacts, SaysThatAFileHoldsNoContacts) {
  EXPECT_EQ(Import({WriteFile("a.vcf", "nothing of the kind\n")}), Outcome::kFailed);
  EXPECT_NE(err_.find("a.vcf:1: "), std::string::npos) << err_;
  EXPECT_NE(err_.find("no contacts in it"), std::string::npos);
}

TEST_F(ImportContacts, KeepsWhatTheWireNeverCarries) {
  Import({WriteFile("a.vcf", Card("N:Doe;;;;\r\nTEL;TYPE=car:+1 555 0100\r\n"))});
  EXPECT_NE(Contacts().find("\"CarTelephoneNumber\":\"+1 555 0100\""), std::string::npos)
      << Contacts();
}

TEST_F(ImportContacts, StoresLineBreaksAsAHandheldDoesAndGivesThemBackAsPeopleDo) {
  Import({WriteFile("a.vcf", Card("N:Doe;;;;\r\nNOTE:one\\ntwo\r\n"))});
  EXPECT_NE(Contacts().find(R"("Body":"one\ntwo")"), std::string::npos) << Contacts();
  Session session(HandheldPath());
  ce::ComPtr<ce::IDispatch> item;
  ASSERT_EQ(session.Outlook()->GetItemFromOid(1, item.put()), ce::S_OK);
  ce::Bstr body;
  ASSERT_EQ(item.query<ce::IContact>()->get_Body(body.put()), ce::S_OK);
  EXPECT_EQ(body.view(), u"one\r\ntwo");
}

TEST_F(ImportContacts, StoresNoTextAsEmptyForWantOfMemory) {
  Capture capture;
  Session session(HandheldPath());
  session.Outlook();
  const auto plan = FaultPlan::FailCalls("SysAllocStringLen", ce::ERROR_NOT_ENOUGH_MEMORY);
  const auto file = WriteFile("a.vcf", Card("N:Doe;John;;;\r\n"));
  EXPECT_EQ(ImportFiles(session, {file}, {}, capture.report()), Outcome::kFailed);
  EXPECT_NE(capture.Err().find("a.vcf:1: Doe, John: "), std::string::npos) << capture.Err();
}

TEST_F(ImportContacts, SaysThatItAddedACardOnlyOnceItIsStored) {
  const auto file = WriteFile("two.vcf", Card("N:Doe;John;;;\r\n") + Card("N:Roe;Jane;;;\r\n"));
  {
    const auto plan = FaultPlan::FailCalls("sqlite3_step:commit", ce::ERROR_DISK_FULL);
    EXPECT_EQ(Import({file}), Outcome::kFailed);
  }
  EXPECT_EQ(out_, "");
  EXPECT_NE(err_.find("not all of it is stored: import the file again"), std::string::npos) << err_;
  EXPECT_EQ(Stored<formats::Contact>(), 0u);
}

TEST_F(ImportContacts, SaysOfNoneThatWasStoredThatItWasNot) {
  std::string cards;
  for (int i = 0; i < 600; ++i) cards += Card("N:Doe;" + std::to_string(i) + ";;;\r\n");
  const auto file = WriteFile("many.vcf", cards);
  Session session(HandheldPath());
  session.Outlook();
  const auto plan = FaultPlan::FailNthCall("sqlite3_step:commit", 2, ce::ERROR_DISK_FULL);
  EXPECT_EQ(
      RunIn(session,
            [&](Session& in, const Report& report) { return ImportFiles(in, {file}, {}, report); }),
      Outcome::kFailed);
  EXPECT_EQ(Count(out_, "added "), 500u);
}

TEST_F(ImportContacts, IsHonestWhenAnyPlatformCallFails) {
  const auto file = WriteFile("a.vcf", Card("UID:1\r\nN:Doe;John;;;\r\n") + Card("N:Roe;;;;\r\n"));
  const auto calls = ImportFailingEachCall(file, {}, [&](Outcome outcome) {
    EXPECT_TRUE(outcome != Outcome::kDone || Stored<formats::Contact>() == 2u);
  });
  EXPECT_GE(calls, 100u);
}

}  // namespace
}  // namespace tool::testing
