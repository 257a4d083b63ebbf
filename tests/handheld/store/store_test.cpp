#include "handheld/store/store.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <fstream>
#include <random>

#include "handheld/store/store_check.h"
#include "handheld/store/store_error.h"
#include "handheld/store/store_schema.h"
#include "tests/handheld/outlook/outlook_support.h"
#include "tests/support/file_size_limit.h"

namespace ce::host::testing {
namespace {

namespace fs = std::filesystem;
using corvane::testing::FileSizeLimit;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class StoreFile : public HandheldTest {
 protected:
  fs::path path() const { return handheld_.directory() / "store.db"; }
  void Write(std::string_view bytes) const { std::ofstream(path(), std::ios::binary) << bytes; }
  std::string Content() const {
    std::ifstream file(path(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  HRESULT LogonStatus() const { return NewApp()->Logon(0); }
  void ExpectRefused(HRESULT status, const char* words) {
    EXPECT_EQ(LogonStatus(), status);
    const std::string problem = DescribeStoreProblem(*handheld_);
    EXPECT_THAT(problem, StartsWith(path().string()));
    EXPECT_THAT(problem, HasSubstr(words));
    EXPECT_THAT(CheckStore(*handheld_), ::testing::ElementsAre(HasSubstr(words)));
  }
};

TEST_F(StoreFile, IsMadeAtTheFirstLogonInItsFormat) {
  EXPECT_FALSE(fs::exists(path()));
  LoggedOn();
  EXPECT_EQ(QuerySql(*handheld_, "PRAGMA user_version"), std::to_string(kStoreFormat));
  EXPECT_EQ(QuerySql(*handheld_, "PRAGMA application_id"), std::to_string(kStoreApplicationId));
  EXPECT_EQ(QuerySql(*handheld_, "PRAGMA journal_mode"), "wal");
  EXPECT_EQ(DescribeStoreProblem(*handheld_), "");
}

TEST_F(StoreFile, HasAColumnForEveryTextProperty) {
  LoggedOn();
  const std::string columns =
      QuerySql(*handheld_, "SELECT group_concat(name) FROM pragma_table_info('contacts')");
  std::string expected = "oid,Birthday,Anniversary";
  for (const TextProperty& property : TextProperties())
    expected += std::string(",") + property.name;
  EXPECT_EQ(columns, expected + ",BodyInk");
}

TEST_F(StoreFile, IsOpenedForFullSynchronisationWithABoundedCache) {
  std::unique_ptr<Store> store;
  std::string problem;
  ASSERT_EQ(Store::Open(*handheld_, store, problem), S_OK);
  const auto number = [&store](const char* sql) {
    Statement statement;
    bool row = false;
    EXPECT_EQ(store->Prepare(sql, statement), S_OK);
    EXPECT_EQ(statement.Step("test", row), S_OK);
    return statement.Integer(0);
  };
  EXPECT_EQ(number("PRAGMA synchronous"), 2);
  EXPECT_EQ(number("PRAGMA foreign_keys"), 1);
  EXPECT_EQ(number("PRAGMA cache_size"), -512);
  EXPECT_EQ(number("PRAGMA busy_timeout"), 10000);
}

TEST_F(StoreFile, OfANewerFormatIsRefusedAndLeftAlone) {
  AddContact(LoggedOn(), u"Ada");
  const std::string newer = std::to_string(kStoreFormat + 1);
  ASSERT_TRUE(RunSql(*handheld_, ("PRAGMA user_version = " + newer).c_str()));
  const std::string before = Content();
  ExpectRefused(kStoreNewerFormat, ("newer version of this program (format " + newer).c_str());
  EXPECT_EQ(Content(), before);
}

TEST_F(StoreFile, ThatIsNoDatabaseIsRefusedAndLeftAlone) {
  const std::string text(5000, 'x');
  Write(text);
  ExpectRefused(kStoreDamaged, "is damaged or not a store");
  EXPECT_EQ(Content(), text);
}

TEST_F(StoreFile, OfAnotherProgramIsRefusedAndLeftAlone) {
  ASSERT_TRUE(RunSql(*handheld_, "CREATE TABLE contacts (name TEXT)"));
  const std::string before = Content();
  ExpectRefused(kStoreDamaged, "is another program's database");
  EXPECT_EQ(Content(), before);
}

TEST_F(StoreFile, WithoutOneOfItsTablesIsRefused) {
  for (const char* table : {"oid_counter", "contacts", "appointments", "exceptions", "tasks"}) {
    LoggedOn();
    const std::string hide = std::string("ALTER TABLE ") + table + " RENAME TO hidden";
    ASSERT_TRUE(RunSql(*handheld_, hide.c_str()));
    EXPECT_TRUE(Failed(LogonStatus())) << table;
    EXPECT_NE(DescribeStoreProblem(*handheld_), "") << table;
    const std::string show = std::string("ALTER TABLE hidden RENAME TO ") + table;
    ASSERT_TRUE(RunSql(*handheld_, show.c_str()));
  }
}

TEST_F(StoreFile, CutShortIsRefusedOrReportedByTheCheck) {
  AddContacts(LoggedOn(), 100);
  fs::resize_file(path(), fs::file_size(path()) / 2);
  EXPECT_NE(CheckStore(*handheld_).size(), 0u);
}

TEST_F(StoreFile, ThatWentMissingIsNotReplacedByAnEmptyOne) {
  AddContact(LoggedOn(), u"Ada");
  fs::remove(path());
  ExpectRefused(kStoreMissing, "is missing or empty although this handheld had one");
  EXPECT_FALSE(fs::exists(path()));
  for (const char* content : {"", "x"}) {
    Write(content);
    EXPECT_TRUE(Failed(LogonStatus())) << content;
    EXPECT_THAT(DescribeStoreProblem(*handheld_), HasSubstr(path().string())) << content;
    EXPECT_EQ(Content(), content);
  }
}

TEST_F(StoreFile, ThatWasEmptiedIsNotFilledAnew) {
  AddContact(LoggedOn(), u"Ada");
  fs::remove(path());
  ASSERT_TRUE(RunSql(*handheld_, "CREATE TABLE t (x); DROP TABLE t; VACUUM"));
  const std::string before = Content();
  EXPECT_FALSE(before.empty());
  ExpectRefused(kStoreMissing, "Put back a copy of the file");
  EXPECT_EQ(Content(), before);
}

TEST_F(StoreFile, OfAHandheldThatDoesNotKnowOfItIsServedAndKnownThen) {
  AddContact(LoggedOn(), u"Ada");
  handheld_->Set(kStoreCreated, DWORD{0});
  EXPECT_EQ(LogonStatus(), S_OK);
  EXPECT_EQ(handheld_->Number(kStoreCreated, 0), 1u);
  fs::remove(path());
  ExpectRefused(kStoreMissing, "is missing or empty");
  // Its owner may begin anew.
  handheld_->Set(kStoreCreated, DWORD{0});
  EXPECT_EQ(LogonStatus(), S_OK);
}

TEST_F(StoreFile, ThatIsADirectoryIsRefused) {
  fs::create_directory(path());
  EXPECT_EQ(LogonStatus(), kStoreCannotOpen);
  EXPECT_THAT(DescribeStoreProblem(*handheld_), HasSubstr("cannot be opened"));
}

TEST_F(StoreFile, InADirectoryThatWentAwayIsRefused) {
  fs::rename(handheld_.directory(), handheld_.directory().string() + "-moved");
  EXPECT_TRUE(Failed(LogonStatus()));
  fs::rename(handheld_.directory().string() + "-moved", handheld_.directory());
  EXPECT_EQ(LogonStatus(), S_OK);
}

// Runs `child` in a process of its own and answers its exit status or, negative, its signal.
template <typename Child>
int InAnotherProcess(Child&& child) {
  const pid_t pid = fork();
  if (pid == 0) _exit(child());
  int status = 0;
  if (pid < 0 || waitpid(pid, &status, 0) != pid) return 255;
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

TEST_F(StoreFile, ThatMayNotBeWrittenIsRefused) {
  AddContact(LoggedOn(), u"Ada");
  ASSERT_EQ(chmod(path().c_str(), 0444), 0);
  ASSERT_EQ(chmod(handheld_.directory().c_str(), 0555), 0);
  const int result = InAnotherProcess([] {
    if (geteuid() == 0 && setuid(65534) != 0) return 1;
    ComPtr<IPOutlookApp> app;
    if (Failed(CoCreateInstance(CLSID_Application, nullptr, CLSCTX_INPROC_SERVER,
                                IPOutlookApp::kIid, app.put_void()))) {
      return 2;
    }
    return app->Logon(0) == E_ACCESSDENIED ? 0 : 3;
  });
  ASSERT_EQ(chmod(handheld_.directory().c_str(), 0755), 0);
  EXPECT_EQ(result, 0);
}

TEST_F(StoreFile, KeepsWhatWasSavedBeforeTheProcessWasKilled) {
  for (int round = 1; round <= 3; ++round) {
    const int result = InAnotherProcess([] {
      ComPtr<IPOutlookApp> app;
      if (Failed(CoCreateInstance(CLSID_Application, nullptr, CLSCTX_INPROC_SERVER,
                                  IPOutlookApp::kIid, app.put_void())) ||
          Failed(app->Logon(0))) {
        return 1;
      }
      ComPtr<IFolder> folder;
      ComPtr<IPOutlookItemCollection> items;
      ComPtr<IDispatch> item;
      if (Failed(app->GetDefaultFolder(olFolderContacts, folder.put())) ||
          Failed(folder->get_Items(items.put())) || Failed(items->Add(item.put()))) {
        return 2;
      }
      const ComPtr<IContact> contact = item.query<IContact>();
      const Bstr name(u"survivor");
      if (Failed(contact->put_FirstName(name.get())) || Failed(contact->Save())) return 3;
      return raise(SIGKILL);
    });
    ASSERT_EQ(result, -SIGKILL);
    EXPECT_EQ(StoredNames(), std::vector<std::u16string>(round, u"survivor"));
    EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
  }
}

TEST_F(StoreFile, SurvivesAKillInTheMiddleOfADeletion) {
  AddContacts(LoggedOn(), 10);
  const int result = InAnotherProcess([] {
    ComPtr<IPOutlookApp> app;
    ComPtr<IFolder> folder;
    ComPtr<IPOutlookItemCollection> items;
    if (Failed(CoCreateInstance(CLSID_Application, nullptr, CLSCTX_INPROC_SERVER,
                                IPOutlookApp::kIid, app.put_void())) ||
        Failed(app->Logon(0)) || Failed(app->GetDefaultFolder(olFolderContacts, folder.put())) ||
        Failed(folder->get_Items(items.put()))) {
      return 1;
    }
    for (INT i = 10; i > 5; --i) {
      if (Failed(items->Remove(i))) return 2;
    }
    return raise(SIGKILL);
  });
  ASSERT_EQ(result, -SIGKILL);
  EXPECT_EQ(StoredCount(), 10);
  EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
}

TEST_F(StoreFile, FailsASaveThatTheDiskHasNoRoomForAndGoesOnAfterwards) {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  AddContact(app, u"Ada");
  const ComPtr<IContact> contact = NewContact(app);
  ASSERT_EQ(Put(contact, &IContact::put_Body, std::u16string(30000, u'x')), S_OK);

  const HRESULT full = [&] {
    const FileSizeLimit limit(fs::file_size(path().string() + "-wal") + 8192);
    return contact->Save();
  }();
  EXPECT_TRUE(full == kStoreWriteFault || full == kStoreDiskFull) << std::hex << full;
  EXPECT_EQ(OidOf(contact), 0);
  EXPECT_EQ(StoredCount(), 1);
  EXPECT_EQ(contact->Save(), S_OK);
  EXPECT_EQ(StoredCount(), 2);
  EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
}

// Whatever the bytes: statuses, never a crash; and what the walk read without failure is bounded.
TEST_F(StoreFile, DamagedAnywhereNeverCrashes) {
  AddContacts(LoggedOn(), 60);
  const std::string sound = Content();
  std::mt19937 random(7);
  int refused = 0;
  for (int round = 0; round < 200; ++round) {
    std::string damaged = sound;
    const int bytes = 1 << (random() % 10);
    for (int i = 0; i < bytes; ++i)
      damaged[random() % damaged.size()] = static_cast<char>(random());
    Write(damaged);
    HRESULT status = S_OK;
    {
      const ComPtr<IPOutlookApp> app = NewApp();
      status = app->Logon(0);
      const ComPtr<IPOutlookItemCollection> items =
          Succeeded(status) ? Items(app) : ComPtr<IPOutlookItemCollection>{};
      INT count = 0;
      if (items) status = items->get_Count(&count);
      for (INT i = count; i > 0 && Succeeded(status); --i) {
        ComPtr<IDispatch> item;
        status = items->Item(i, item.put());
        if (Succeeded(status)) status = item.query<IContact>()->Delete();
      }
    }
    refused += Failed(status);
    fs::remove(path().string() + "-wal");
    fs::remove(path().string() + "-shm");
  }
  EXPECT_GT(refused, 0);
}

TEST(StoreStatus, MapsPlainAndExtendedCodes) {
  EXPECT_EQ(StoreStatus(0), S_OK);
  EXPECT_EQ(StoreStatus(100), S_OK);
  EXPECT_EQ(StoreStatus(101), S_OK);
  EXPECT_EQ(StoreStatus(13), kStoreDiskFull);
  EXPECT_EQ(StoreStatus(5), kStoreBusy);
  EXPECT_EQ(StoreStatus(5 | 2 << 8), kStoreBusy);
  EXPECT_EQ(StoreStatus(11), kStoreDamaged);
  EXPECT_EQ(StoreStatus(26), kStoreDamaged);
  EXPECT_EQ(StoreStatus(10 | 1 << 8), kStoreReadFault);
  EXPECT_EQ(StoreStatus(10 | 3 << 8), kStoreWriteFault);
  EXPECT_EQ(StoreStatus(7), E_OUTOFMEMORY);
  EXPECT_EQ(StoreStatus(1), E_FAIL);
}

TEST(StoreStatus, IsWordedForEveryStatus) {
  EXPECT_EQ(StoreStatusText(kStoreDiskFull), "cannot grow: the disk is full");
  EXPECT_EQ(StoreStatusText(E_FAIL), "fails with 0x80004005");
}

}  // namespace
}  // namespace ce::host::testing
