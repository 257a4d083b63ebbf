#include "handheld/store/store_check.h"
#include "handheld/store/store_error.h"
#include "tests/handheld/outlook/calendar_support.h"
#include "tests/support/file_size_limit.h"

namespace ce::host::testing {
namespace {

using corvane::testing::FileSizeLimit;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

ComPtr<IPOutlookTransactions> Transactions(const ComPtr<IPOutlookApp>& app) {
  return app.query<IPOutlookTransactions>();
}

class Transaction : public CalendarTest {
 protected:
  void TearDown() override {
    transactions_.reset();
    CalendarTest::TearDown();
  }
  void Begin() { EXPECT_EQ(transactions_->BeginTransaction(), S_OK); }
  HRESULT Commit() { return transactions_->CommitTransaction(); }

  ComPtr<IPOutlookTransactions> transactions_ = Transactions(app_);
};

TEST_F(Transaction, IsStoredByItsCommit) {
  Begin();
  AddContact(app_, u"Ada");
  AddContact(app_, u"Grace");
  EXPECT_THAT(StoredNames(), IsEmpty());
  EXPECT_EQ(Commit(), S_OK);
  EXPECT_THAT(StoredNames(), ElementsAre(u"Ada", u"Grace"));
}

TEST_F(Transaction, CostsOneSynchronisation) {
  const auto commits = FaultPlan::CountOnly("sqlite3_step:commit");
  Begin();
  AddContacts(app_, 100);
  EXPECT_EQ(Commit(), S_OK);
  EXPECT_EQ(commits.calls(), 1u);
}

TEST_F(Transaction, WithoutAChangeCostsNothing) {
  const auto commits = FaultPlan::CountOnly("sqlite3_step:commit");
  Begin();
  EXPECT_EQ(Commit(), S_OK);
  EXPECT_EQ(commits.calls(), 0u);
}

TEST_F(Transaction, ShowsItsOwnChanges) {
  const LONG deleted = AddContact(app_, u"Ada");
  Begin();
  const LONG added = AddContact(app_, u"Grace");
  EXPECT_EQ(FirstName(ContactByOid(app_, added)), u"Grace");
  EXPECT_EQ(ContactByOid(app_, deleted)->Delete(), S_OK);
  EXPECT_FALSE(ContactByOid(app_, deleted));
  EXPECT_EQ(Commit(), S_OK);
  EXPECT_THAT(StoredNames(), ElementsAre(u"Grace"));
}

TEST_F(Transaction, KeepsASeriesAndItsExceptionsTogether) {
  const ComPtr<IAppointment> series = WeeklySeries();
  const LONG oid = Value(series, &IAppointment::get_Oid);
  Begin();
  EXPECT_EQ(OccurrenceAt(PatternOf(series), At(2026, 3, 9, 10))->Delete(), S_OK);
  EXPECT_EQ(OccurrenceAt(PatternOf(series), At(2026, 3, 16, 10))->Delete(), S_OK);
  EXPECT_THAT(StoredExceptions(oid), IsEmpty());
  EXPECT_EQ(Commit(), S_OK);
  EXPECT_THAT(StoredExceptions(oid), ElementsAre("-2026-03-09", "-2026-03-16"));
}

TEST_F(Transaction, IsUndoneByALogoff) {
  Begin();
  AddContact(app_, u"Ada");
  EXPECT_EQ(app_->Logoff(), S_OK);
  EXPECT_EQ(Commit(), E_FAIL);
  EXPECT_THAT(StoredNames(), IsEmpty());
}

TEST_F(Transaction, IsUndoneWhenTheApplicationGoes) {
  const ComPtr<IContact> contact = NewContact(app_);
  Begin();
  EXPECT_EQ(contact->Save(), S_OK);
  transactions_.reset();
  app_.reset();
  EXPECT_THAT(StoredNames(), IsEmpty());
}

TEST_F(Transaction, CanBeginAndEndOnlyOnceAndWhileLoggedOn) {
  EXPECT_EQ(Transactions(NewApp())->BeginTransaction(), E_FAIL);
  EXPECT_EQ(Transactions(NewApp())->CommitTransaction(), E_FAIL);
  EXPECT_EQ(Commit(), E_FAIL);
  Begin();
  EXPECT_EQ(transactions_->BeginTransaction(), E_FAIL);
  EXPECT_EQ(Commit(), S_OK);
  EXPECT_EQ(Commit(), E_FAIL);
  Begin();
  EXPECT_EQ(Commit(), S_OK);
}

TEST_F(Transaction, LeavesWhatComesBehindItDurableByItself) {
  Begin();
  EXPECT_EQ(Commit(), S_OK);
  AddContact(app_, u"Ada");
  EXPECT_THAT(StoredNames(), ElementsAre(u"Ada"));
}

TEST_F(Transaction, LosesNothingOfTheStepsBesideOneThatFails) {
  for (const char* call :
       {"IContact::Save", "sqlite3_step:savepoint", "sqlite3_step:write", "sqlite3_step:release"}) {
    Begin();
    AddContact(app_, u"before");
    const ComPtr<IContact> failed = NewContact(app_);
    {
      // Of a new item's writes the first two give it its identifier.
      const auto plan = FaultPlan::FailNthCall(
          call, call == std::string_view("sqlite3_step:write") ? 3 : 1, ERROR_DISK_FULL);
      EXPECT_EQ(failed->Save(), kStoreDiskFull) << call;
    }
    EXPECT_EQ(OidOf(failed), 0);
    AddContact(app_, u"behind");
    EXPECT_EQ(Commit(), S_OK);
    EXPECT_THAT(StoredNames(), ElementsAre(u"before", u"behind")) << call;
    const auto items = Items(app_);
    for (INT left = CountOf(items); left > 0; --left) ASSERT_EQ(items->Remove(left), S_OK);
  }
  EXPECT_EQ(AddContact(app_, u"Ada"), 9) << "a failed step takes no identifier";
}

TEST_F(Transaction, StoresNothingWhenItsCommitFails) {
  for (const char* call : {"IPOutlookApp::CommitTransaction", "sqlite3_step:commit"}) {
    Begin();
    const LONG oid = AddContact(app_, u"Ada");
    {
      const auto plan = FaultPlan::FailCalls(call, ERROR_DISK_FULL);
      EXPECT_EQ(Commit(), kStoreDiskFull) << call;
    }
    EXPECT_THAT(StoredNames(), IsEmpty());
    Begin();
    EXPECT_EQ(AddContact(app_, u"Grace"), oid) << "nobody ever saw the identifier";
    EXPECT_EQ(Commit(), S_OK);
    EXPECT_EQ(ContactByOid(app_, oid)->Delete(), S_OK);
  }
}

TEST_F(Transaction, ThatTheDatabaseUndidFailsToItsEnd) {
  AddContact(app_, u"Ada");
  Begin();
  HRESULT full = S_OK;
  {
    const FileSizeLimit limit(1 << 20);
    for (int i = 0; i < 1000 && full == S_OK; ++i) {
      const ComPtr<IContact> contact = NewContact(app_);
      ASSERT_EQ(Put(contact, &IContact::put_Body, std::u16string(30000, u'x')), S_OK);
      full = contact->Save();
    }
  }
  EXPECT_TRUE(full == kStoreWriteFault || full == kStoreDiskFull) << std::hex << full;
  EXPECT_EQ(NewContact(app_)->Save(), full) << "it would be stored without those before it";
  EXPECT_EQ(Commit(), full);
  EXPECT_THAT(StoredNames(), ElementsAre(u"Ada"));
  Begin();
  AddContact(app_, u"Grace");
  EXPECT_EQ(Commit(), S_OK);
  EXPECT_THAT(StoredNames(), ElementsAre(u"Ada", u"Grace"));
  EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
}

}  // namespace
}  // namespace ce::host::testing
