#include "handheld/outlook/import_ledger.h"
#include "handheld/outlook/outlook_app.h"
#include "handheld/store/store_check.h"
#include "handheld/store/store_error.h"
#include "tests/handheld/outlook/calendar_support.h"

namespace ce::host::testing {
namespace {

using Entry = ImportLedger::Entry;

class StoreTools : public HandheldTest {
 protected:
  std::optional<Entry> Find(const ComPtr<IPOutlookApp>& app, INT type, std::string_view identity) {
    std::optional<Entry> entry;
    ImportLedger ledger;
    EXPECT_EQ(ledger.Open(app.get()), S_OK);
    EXPECT_EQ(ledger.Find(type, identity, entry), S_OK);
    return entry;
  }
  std::vector<std::string> Problems(const char* sql) {
    LoggedOn();
    EXPECT_TRUE(RunSql(*handheld_, sql)) << sql;
    return CheckStore(*handheld_);
  }
};

class ImportLedgerTest : public StoreTools {};
class StoreBatchTest : public StoreTools {};
class CheckStoreTest : public StoreTools {};

TEST_F(ImportLedgerTest, RemembersReplacesAndForgets) {
  const auto app = LoggedOn();
  ImportLedger ledger;
  ASSERT_EQ(ledger.Open(app.get()), S_OK);
  EXPECT_EQ(Find(app, olContactItem, "uid"), std::nullopt);
  EXPECT_EQ(ledger.Remember(olContactItem, "uid", {7, "hash"}), S_OK);
  EXPECT_EQ(Find(app, olContactItem, "uid"), (Entry{7, "hash"}));
  EXPECT_EQ(ledger.Remember(olContactItem, "uid", {-8, "other"}), S_OK);
  EXPECT_EQ(Find(LoggedOn(), olContactItem, "uid"), (Entry{-8, "other"}));
  EXPECT_EQ(ledger.Forget(olContactItem, "uid"), S_OK);
  EXPECT_EQ(ledger.Forget(olContactItem, "uid"), S_OK);
  EXPECT_EQ(Find(app, olContactItem, "uid"), std::nullopt);
}

TEST_F(ImportLedgerTest, KeepsKindsAndSimilarIdentitiesApart) {
  const auto app = LoggedOn();
  ImportLedger ledger;
  ASSERT_EQ(ledger.Open(app.get()), S_OK);
  EXPECT_EQ(ledger.Remember(olContactItem, "uid", {1, "a"}), S_OK);
  EXPECT_EQ(ledger.Remember(olTaskItem, "uid", {2, "b"}), S_OK);
  EXPECT_EQ(ledger.Remember(olContactItem, "UID", {3, "c"}), S_OK);
  EXPECT_EQ(ledger.Remember(olContactItem, "", {4, ""}), S_OK);
  EXPECT_EQ(Find(app, olContactItem, "uid"), (Entry{1, "a"}));
  EXPECT_EQ(Find(app, olTaskItem, "uid"), (Entry{2, "b"}));
  EXPECT_EQ(Find(app, olContactItem, "UID"), (Entry{3, "c"}));
  EXPECT_EQ(Find(app, olContactItem, ""), (Entry{4, ""}));
}

TEST_F(ImportLedgerTest, NeedsALoggedOnApplication) {
  std::optional<Entry> entry = Entry{};
  ImportLedger ledger;
  EXPECT_EQ(ledger.Open(NewApp().get()), E_FAIL);
  EXPECT_EQ(ledger.Find(olContactItem, "uid", entry), E_FAIL);
  EXPECT_EQ(entry, std::nullopt);
  EXPECT_EQ(ledger.Remember(olContactItem, "uid", {}), E_FAIL);
  EXPECT_EQ(ledger.Forget(olContactItem, "uid"), E_FAIL);
}

TEST_F(StoreBatchTest, CommitsEverySoManyWritesAndTheRestByCommit) {
  const auto app = LoggedOn();
  StoreBatch batch(10);
  ASSERT_EQ(batch.Begin(app.get()), S_OK);
  const auto commits = FaultPlan::FailNthCall("sqlite3_step:commit", FaultPlan::kNever, 0);
  AddContacts(app, 25);
  EXPECT_EQ(commits.calls(), 2u);
  EXPECT_EQ(StoredCount(), 20);
  EXPECT_EQ(batch.Commit(), S_OK);
  EXPECT_EQ(StoredCount(), 25);
  EXPECT_EQ(batch.Commit(), S_OK);
  EXPECT_EQ(commits.calls(), 3u);
}

TEST_F(StoreBatchTest, UndoesWhatIsPendingWhenItGoes) {
  const auto app = LoggedOn();
  {
    StoreBatch batch(10);
    ASSERT_EQ(batch.Begin(app.get()), S_OK);
    AddContacts(app, 15);
  }
  EXPECT_EQ(StoredCount(), 10);
  AddContact(app, u"alone");
  EXPECT_EQ(StoredCount(), 11);
}

TEST_F(StoreBatchTest, TakesInDeletionsAndTheLedger) {
  const auto app = LoggedOn();
  const std::vector<LONG> oids = AddContacts(app, 3);
  {
    StoreBatch batch;
    ASSERT_EQ(batch.Begin(app.get()), S_OK);
    const auto items = Items(app);
    ASSERT_EQ(items->Remove(3), S_OK);
    EXPECT_EQ(CountOf(items), 2);
    ASSERT_EQ(ContactByOid(app, oids[0])->Delete(), S_OK);
    ImportLedger ledger;
    ASSERT_EQ(ledger.Open(app.get()), S_OK);
    ASSERT_EQ(ledger.Remember(olContactItem, "uid", {oids[1], "x"}), S_OK);
    EXPECT_EQ(StoredCount(), 3);
    EXPECT_EQ(Find(LoggedOn(), olContactItem, "uid"), std::nullopt);
    EXPECT_EQ(batch.Commit(), S_OK);
  }
  EXPECT_EQ(StoredNames(), std::vector<std::u16string>{u"2"});
  EXPECT_EQ(Find(app, olContactItem, "uid"), (Entry{oids[1], "x"}));
}

TEST_F(StoreBatchTest, ReportsAFailedCommitAndGoesOn) {
  const auto app = LoggedOn();
  StoreBatch batch;
  ASSERT_EQ(batch.Begin(app.get()), S_OK);
  AddContacts(app, 3);
  {
    const auto fault = FaultPlan::FailCalls("sqlite3_step:commit", ERROR_DISK_FULL);
    EXPECT_EQ(batch.Commit(), kStoreDiskFull);
  }
  EXPECT_EQ(StoredCount(), 0);
  EXPECT_EQ(AddContact(app, u"again"), 1);  // nobody ever saw the identifiers that were undone
  EXPECT_EQ(batch.Commit(), S_OK);
  EXPECT_EQ(StoredCount(), 1);
}

TEST_F(StoreBatchTest, FailsWithoutALogon) {
  StoreBatch batch;
  EXPECT_EQ(batch.Commit(), E_FAIL);
  EXPECT_EQ(batch.Begin(NewApp().get()), E_FAIL);
  const auto app = LoggedOn();
  ASSERT_EQ(batch.Begin(app.get()), S_OK);
  AddContact(app, u"Ada");
  EXPECT_EQ(app->Logoff(), S_OK);  // which commits
  EXPECT_EQ(batch.Commit(), E_FAIL);
  EXPECT_EQ(StoredCount(), 1);
}

TEST_F(CheckStoreTest, FindsNothingInASoundStoreOrBeforeThereIsOne) {
  EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
  EXPECT_FALSE(std::filesystem::exists(handheld_->storePath()));
  const auto app = LoggedOn();
  AddContacts(app, 10);
  EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
}

TEST_F(CheckStoreTest, ReportsIdentifiersThatWereNeverGivenAway) {
  const LONG oid = AddContact(LoggedOn(), u"Ada");
  ASSERT_EQ(oid, 1);
  EXPECT_THAT(Problems("UPDATE contacts SET oid = 5"),
              ::testing::ElementsAre("contacts 5: the identifier was never given away"));
  EXPECT_THAT(Problems("UPDATE oid_counter SET next_oid = 0"),
              ::testing::Contains("the identifier counter is damaged"));
}

TEST_F(CheckStoreTest, ReportsImpossibleDatesLongTextsAndBytesThatAreNoText) {
  AddContact(LoggedOn(), u"Ada");
  EXPECT_THAT(Problems("UPDATE contacts SET Birthday = -3, Anniversary = 9e9"),
              ::testing::ElementsAre("contact 1: Birthday is not a possible date",
                                     "contact 1: Anniversary is not a possible date"));
  EXPECT_THAT(Problems("UPDATE contacts SET Birthday = 2, Anniversary = 949998,"
                       " Title = printf('%.1024c', 'x')"),
              ::testing::ElementsAre("contact 1: Title is longer than this handheld's 1023"
                                     " characters"));
  EXPECT_THAT(Problems("UPDATE contacts SET Title = CAST(x'41FF' AS TEXT)"),
              ::testing::ElementsAre("contact 1: Title is not text"));
}

TEST_F(CheckStoreTest, ReportsFoldersBelowThemselvesAndTooDeep) {
  EXPECT_THAT(Problems("UPDATE message_folders SET parent = 3 WHERE id = 2"),
              ::testing::ElementsAre("message folder 2: it lies below itself"));
  EXPECT_THAT(
      Problems(
          "UPDATE message_folders SET parent = NULL WHERE id = 2;"
          "UPDATE message_id_counter SET next_id = 30000;"
          "WITH RECURSIVE n (id) AS (SELECT 100 UNION ALL SELECT id + 1 FROM n"
          " WHERE id < 20099) INSERT INTO message_folders"
          " SELECT id, 1, CASE id WHEN 100 THEN 3 ELSE id - 1 END, CAST(id AS BLOB), 'x' FROM n"),
      ::testing::ElementsAre("message folder 163: it lies more than 64 folders below the top"));
}

TEST_F(CheckStoreTest, ReportsDamagedMessagesAndCalls) {
  EXPECT_THAT(Problems("UPDATE message_id_counter SET next_id = 12;"
                       "INSERT INTO messages (id, folder, subject) VALUES"
                       " (10, 3, 'x'), (11, 99, CAST(x'FF' AS TEXT)), (12, 3, NULL);"
                       "INSERT INTO message_recipients VALUES (10, 0, 'x', CAST(x'FE' AS TEXT));"
                       "INSERT INTO calls VALUES (1, 0, 0, 0, 0, 0, NULL, CAST(x'C0' AS TEXT), 'w',"
                       " NULL)"),
              ::testing::ElementsAre("messages 11: it lies in none of message_folders",
                                     "messages 12: the identifier was never given away",
                                     "message 11: subject is not text",
                                     "recipient of message 10: address is not text",
                                     "call 1: name is not text"));
}

// A weekly series with one changed occurrence, and a task.
void AddCalendar() {
  const auto app = LoggedOn();
  const auto item = NewAppointment(app);
  EXPECT_EQ(item->put_Start(At(2026, 3, 2, 10)), S_OK);
  const auto pattern = PatternOf(item);
  EXPECT_EQ(pattern->put_Occurrences(3), S_OK);
  EXPECT_EQ(item->Save(), S_OK);
  EXPECT_EQ(OccurrenceAt(pattern, At(2026, 3, 9, 10))->Save(), S_OK);
  EXPECT_EQ(NewTask(app)->Save(), S_OK);
}

TEST_F(CheckStoreTest, ReportsAppointmentsThatDoNotKeepTheirPromises) {
  AddCalendar();
  EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
  EXPECT_THAT(Problems("UPDATE appointments SET \"End\" = \"End\" + 1, Sensitivity = 9"),
              ::testing::ElementsAre("appointment 1: Start, End and Duration do not agree",
                                     "appointment 1: Sensitivity has an unknown value"));
  EXPECT_THAT(Problems("UPDATE appointments SET \"End\" = 0, Sensitivity = 0,"
                       " Subject = printf('%.4096c', 'x')"),
              ::testing::ElementsAre("appointment 1: End is not a possible date",
                                     "appointment 1: Subject is longer than this handheld's 4095"
                                     " characters"));
}

TEST_F(CheckStoreTest, ReportsSeriesAndExceptionsThatCannotBe) {
  AddCalendar();
  EXPECT_THAT(Problems("UPDATE appointments SET Occurrences = 4"),
              ::testing::ElementsAre("appointment 1: its Occurrences and PatternEndDate do not"
                                     " agree"));
  EXPECT_THAT(Problems("UPDATE appointments SET Occurrences = 3; UPDATE exceptions SET"
                       " OriginalDay = OriginalDay + 1, Sensitivity = 7"),
              ::testing::ElementsAre("appointment 1, exception of 2026-03-10: its series has no"
                                     " such day",
                                     "appointment 1, exception of 2026-03-10: Sensitivity has an"
                                     " unknown value"));
  EXPECT_THAT(Problems("UPDATE exceptions SET OriginalDay = -5"),
              ::testing::ElementsAre("appointment 1, exception of day -5: it is not a possible"
                                     " date"));
  EXPECT_THAT(Problems("UPDATE exceptions SET OriginalDay = 46090, Deleted = 1;"
                       "UPDATE appointments SET RecurrenceType = 4"),
              ::testing::ElementsAre("appointment 1: its recurrence pattern is not a possible one",
                                     "appointment 1, exception of 2026-03-09: its series has no"
                                     " such day"));
  EXPECT_THAT(Problems("UPDATE appointments SET RecurrenceType = 1; UPDATE exceptions SET oid = 2"),
              ::testing::ElementsAre("exception of appointment 2: there is no such appointment"));
}

TEST_F(CheckStoreTest, ReportsTasksThatDoNotKeepTheirPromises) {
  AddCalendar();
  EXPECT_THAT(Problems("UPDATE tasks SET DueDate = 5e6, Importance = 3"),
              ::testing::ElementsAre("task 2: DueDate is not a possible date",
                                     "task 2: Importance has an unknown value"));
  EXPECT_THAT(Problems("UPDATE tasks SET DueDate = 949998, Importance = 1, oid = 1"),
              ::testing::Contains("appointments 1: the identifier is also one of tasks"));
}

TEST_F(CheckStoreTest, AStoreWithImpossibleSeriesCanStillBeRead) {
  AddCalendar();
  for (const char* sql :
       {"UPDATE appointments SET RecurrenceType = 99, DayOfWeekMask = 1e12",
        "UPDATE appointments SET RecurrenceType = 1, DayOfWeekMask = 0, Interval = -1",
        "UPDATE appointments SET Start = 9e300, PatternStartDate = -9e300",
        "UPDATE appointments SET RecurrenceType = 'x', PatternEndDate = 'y', Start = 'z'"}) {
    ASSERT_TRUE(RunSql(*handheld_, sql));
    EXPECT_NE(CheckStore(*handheld_), std::vector<std::string>{}) << sql;
    const auto app = LoggedOn();
    const auto item = AppointmentByOid(app, 1);
    ASSERT_TRUE(item) << sql;
    const auto pattern = PatternOf(item);
    Value(pattern, &IRecurrencePattern::get_RecurrenceType);
    EXPECT_EQ(ExceptionsOf(pattern).size(), 1u) << sql;
    EXPECT_FALSE(OccurrenceAt(pattern, At(2026, 3, 9, 10))) << sql;
  }
}

TEST_F(CheckStoreTest, ReportsLedgerEntriesOfUnknownIdentifiers) {
  EXPECT_THAT(
      Problems("INSERT INTO import_ledger VALUES (2, 'uid', 9, '')"),
      ::testing::ElementsAre("import ledger: uid names the identifier 9, which was never given"
                             " away"));
}

TEST_F(CheckStoreTest, ReportsABoundedNumberOfProblems) {
  AddContacts(LoggedOn(), 300);
  EXPECT_EQ(Problems("UPDATE contacts SET Birthday = -3").size(), 200u);
}

TEST_F(CheckStoreTest, ReadsBytesThatAreNoTextAsReplacementCharacters) {
  const LONG oid = AddContact(LoggedOn(), u"Ada");
  ASSERT_TRUE(RunSql(*handheld_, "UPDATE contacts SET Title = CAST(x'41FF80E282' AS TEXT)"));
  EXPECT_EQ(Get(ContactByOid(LoggedOn(), oid), &IContact::get_Title), u"A\uFFFD\uFFFD\uFFFD\uFFFD");
}

}  // namespace
}  // namespace ce::host::testing
