#include "handheld/outlook/import_ledger.h"
#include "handheld/store/store_check.h"
#include "handheld/store/store_error.h"
#include "handheld/store/store_schema.h"
#include "tests/handheld/outlook/calendar_support.h"
#include "tests/support/fault_runs.h"

namespace ce::host::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Three contacts and a ledger entry, in a store of format 1: that is what later formats build on.
class StoreMigration : public HandheldTest {
 protected:
  void SetUp() override {
    const auto app = LoggedOn();
    AddContacts(app, 3);
    EXPECT_EQ(ContactByOid(app, 2)->Delete(), S_OK);
    ImportLedger ledger;
    EXPECT_EQ(ledger.Open(app.get()), S_OK);
    EXPECT_EQ(ledger.Remember(olContactItem, "uid", {3, "hash"}), S_OK);
    EXPECT_EQ(app->Logoff(), S_OK);
    corvane::testing::TakeBackToTheFirstFormat(*handheld_);
    before_ = Contacts();
  }
  std::string Format() { return QuerySql(*handheld_, "PRAGMA user_version"); }
  std::string Contacts() {
    return QuerySql(*handheld_,
                    "SELECT oid || '/' || quote(FirstName) || quote(FileAs) || Birthday ||"
                    " quote(BodyInk) FROM contacts UNION ALL SELECT next_oid FROM oid_counter"
                    " UNION ALL SELECT identity || oid || content FROM import_ledger");
  }

  std::string before_;
};

TEST_F(StoreMigration, KeepsTheContactsAndTakesAppointmentsAndTasks) {
  const auto app = LoggedOn();
  EXPECT_EQ(Format(), std::to_string(kStoreFormat));
  EXPECT_EQ(Contacts(), before_);
  EXPECT_EQ(StoredNames(), std::vector<std::u16string>({u"1", u"3"}));
  const auto item = NewAppointment(app);
  EXPECT_EQ(item->Save(), S_OK);
  EXPECT_EQ(Value(item, &IAppointment::get_Oid), 4);
  const auto task = NewTask(app);
  EXPECT_EQ(task->Save(), S_OK);
  EXPECT_EQ(Value(task, &ITask::get_Oid), 5);
  EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
}

TEST_F(StoreMigration, KeepsACopyOfTheOlderFormatBesideTheStore) {
  const auto app = LoggedOn();
  const std::filesystem::path store = handheld_->storePath();
  std::filesystem::path copy = store;
  copy += ".format-1";
  ASSERT_TRUE(std::filesystem::exists(copy));
  EXPECT_EQ(std::filesystem::status(copy).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_EQ(app->Logoff(), S_OK);
  std::filesystem::remove(store);
  std::filesystem::rename(copy, store);
  EXPECT_EQ(Format(), "1");
  EXPECT_EQ(Contacts(), before_);
  LoggedOn();
  EXPECT_EQ(Contacts(), before_);
}

TEST_F(StoreMigration, IsRefusedWhenItsCopyFindsNoRoom) {
  const auto plan = FaultPlan::FailCalls("sqlite3_backup_step", ERROR_DISK_FULL);
  EXPECT_EQ(NewApp()->Logon(0), kStoreDiskFull);
  EXPECT_EQ(Format(), "1");
}

TEST_F(StoreMigration, ThatFailsLeavesTheStoreAsItWas) {
  const auto app = NewApp();
  int ofSchema = 0;
  corvane::testing::FailEachCall(
      ERROR_DISK_FULL, [&] { return app->Logon(0); },
      [&](HRESULT status, const std::string& call) {
        EXPECT_EQ(Failed(status), !call.empty());
        EXPECT_EQ(Contacts(), before_);
        if (call != "sqlite3_step:schema") return;
        ++ofSchema;
        EXPECT_EQ(status, kStoreDiskFull);
        // The step behind the first three brings it up to date, or leaves it as it was.
        EXPECT_EQ(Format(), ofSchema <= 4 ? "1" : std::to_string(kStoreFormat));
      });
  EXPECT_GT(ofSchema, 4);
  EXPECT_EQ(Format(), std::to_string(kStoreFormat));
}

TEST_F(StoreMigration, IsLeftToTheNextLogonByTheCheck) {
  EXPECT_THAT(CheckStore(*handheld_), ElementsAre(HasSubstr("has the older format 1")));
  EXPECT_EQ(Format(), "1");
}

}  // namespace
}  // namespace ce::host::testing
