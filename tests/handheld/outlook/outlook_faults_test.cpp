// Every call below fails once at each place where it can; what was answered must be true.
#include <functional>

#include "handheld/outlook/import_ledger.h"
#include "handheld/outlook/outlook_app.h"
#include "handheld/store/store_check.h"
#include "handheld/store/store_error.h"
#include "tests/handheld/outlook/outlook_support.h"
#include "tests/support/fault_runs.h"

namespace ce::host::testing {
namespace {

#define TRY(expression) \
  if (const HRESULT tried = (expression); Failed(tried)) return tried

// What a walk answered: its status, and how many of its writes were accepted.
struct Outcome {
  HRESULT status = S_OK;
  int accepted = 0;
};

HRESULT Open(ComPtr<IPOutlookApp>& app) {
  TRY(CoCreateInstance(CLSID_Application, nullptr, CLSCTX_INPROC_SERVER, IPOutlookApp::kIid,
                       app.put_void()));
  return app->Logon(0);
}

HRESULT OpenItems(ComPtr<IPOutlookApp>& app, ComPtr<IPOutlookItemCollection2>& items) {
  TRY(Open(app));
  ComPtr<IFolder> folder;
  TRY(app->GetDefaultFolder(olFolderContacts, folder.put()));
  ComPtr<IPOutlookItemCollection> plain;
  TRY(folder->get_Items(plain.put()));
  return plain->QueryInterface(IPOutlookItemCollection2::kIid, items.put_void());
}

HRESULT AsContact(const ComPtr<IDispatch>& item, ComPtr<IContact>& contact) {
  return item->QueryInterface(IContact::kIid, contact.put_void());
}

HRESULT AddOne(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IPOutlookItemCollection2> items;
  TRY(OpenItems(app, items));
  ComPtr<IDispatch> item;
  TRY(items->Add(item.put()));
  ComPtr<IContact> contact;
  TRY(AsContact(item, contact));
  TRY(contact->put_FirstName(nullptr));
  TRY(contact->put_Birthday(30000.0));
  TRY(contact->put_BodyInk(0, nullptr));
  TRY(contact->Save());
  ++accepted;
  LONG oid = 0;
  TRY(contact->get_Oid(&oid));
  return app->Logoff();
}

HRESULT ModifyFirst(int& accepted) {
  ComPtr<IPOutlookApp> app;
  TRY(Open(app));
  ComPtr<IDispatch> item;
  TRY(app->GetItemFromOid(1, item.put()));
  ComPtr<IContact> contact;
  TRY(AsContact(item, contact));
  TRY(contact->put_FirstName(nullptr));
  TRY(contact->Save());
  ++accepted;
  return app->Logoff();
}

HRESULT DeleteFirst(int& accepted) {
  ComPtr<IPOutlookApp> app;
  TRY(Open(app));
  ComPtr<IDispatch> item;
  TRY(app->GetItemFromOid(1, item.put()));
  ComPtr<IContact> contact;
  TRY(AsContact(item, contact));
  TRY(contact->Delete());
  ++accepted;
  return app->Logoff();
}

HRESULT DeleteAll(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IPOutlookItemCollection2> items;
  TRY(OpenItems(app, items));
  INT count = 0;
  TRY(items->get_Count(&count));
  for (INT i = count; i >= 1; --i) {
    ComPtr<IDispatch> item;
    TRY(items->Item(i, item.put()));
    ComPtr<IContact> contact;
    TRY(AsContact(item, contact));
    TRY(contact->Delete());
    ++accepted;
  }
  return app->Logoff();
}

HRESULT RemoveAll(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IPOutlookItemCollection2> items;
  TRY(OpenItems(app, items));
  INT count = 0;
  TRY(items->get_Count(&count));
  for (INT i = count; i >= 1; --i) {
    TRY(items->Remove(i));
    ++accepted;
  }
  return app->Logoff();
}

HRESULT ReadOne(const ComPtr<IContact>& contact) {
  for (const TextProperty& property : TextProperties()) {
    Bstr text;
    TRY((contact.get()->*property.get)(text.put()));
  }
  DATE date = 0;
  TRY(contact->get_Birthday(&date));
  TRY(contact->get_Anniversary(&date));
  DWORD bytes = 0;
  const BYTE* block = nullptr;
  const HRESULT ink = contact->get_BodyInk(&bytes, &block);
  return ink == E_NOTIMPL ? S_OK : ink;
}

HRESULT Download(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IPOutlookItemCollection2> items;
  TRY(OpenItems(app, items));
  INT count = 0;
  TRY(items->get_Count(&count));
  for (INT i = 1; i <= count; ++i) {
    ComPtr<IDispatch> item;
    TRY(items->Item(i, item.put()));
    ComPtr<IContact> contact;
    TRY(AsContact(item, contact));
    TRY(ReadOne(contact));
  }
  accepted += count;
  return app->Logoff();
}

HRESULT ImportBatch(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IPOutlookItemCollection2> items;
  TRY(OpenItems(app, items));
  StoreBatch batch;
  TRY(batch.Begin(app.get()));
  ImportLedger ledger;
  TRY(ledger.Open(app.get()));
  int pending = 0;
  for (const char* uid : {"one", "two"}) {
    std::optional<ImportLedger::Entry> known;
    TRY(ledger.Find(olContactItem, uid, known));
    ComPtr<IDispatch> item;
    TRY(items->Add(item.put()));
    ComPtr<IContact> contact;
    TRY(AsContact(item, contact));
    TRY(contact->Save());
    LONG oid = 0;
    TRY(contact->get_Oid(&oid));
    TRY(ledger.Remember(olContactItem, uid, {oid, "hash"}));
    ++pending;
  }
  TRY(batch.Commit());
  accepted += pending;
  return app->Logoff();
}

// With which status a walk ends when this call says that the disk is full.
HRESULT StatusOf(const std::string& call) {
  if (call.starts_with("SysAlloc")) return E_OUTOFMEMORY;
  return call == "ReplaceFile" ? kStoreWriteFault : kStoreDiskFull;  // the handheld's own settings
}

class OutlookFaults : public HandheldTest {
 protected:
  // Fails `walk` at its first, second, ... call until it runs clean; `verify` judges each outcome,
  // given the name of the call that failed.
  void FailEachCall(const std::function<HRESULT(int&)>& walk, const std::function<void()>& prepare,
                    const std::function<void(const Outcome&, const std::string&)>& verify) {
    const auto run = [&] {
      Outcome outcome;
      outcome.status = walk(outcome.accepted);
      return outcome;
    };
    const auto check = [&](const Outcome& outcome, const std::string& fired) {
      EXPECT_EQ(outcome.status, fired.empty() ? S_OK : StatusOf(fired));
      EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
      verify(outcome, fired);
    };
    EXPECT_GT(corvane::testing::FailEachCall(ERROR_DISK_FULL, prepare, run, check), 4u);
  }

  void Refill(int count) {
    ComPtr<IPOutlookApp> app = LoggedOn();
    const ComPtr<IPOutlookItemCollection> items = Items(app);
    for (INT i = CountOf(items); i >= 1; --i) ASSERT_EQ(items->Remove(i), S_OK);
    AddContacts(app, count);
  }
};

TEST_F(OutlookFaults, AddIsStoredExactlyWhenSaveSucceeded) {
  int before = 0;
  FailEachCall(
      AddOne, [&] { before = StoredCount(); },
      [&](const Outcome& outcome, const std::string&) {
        EXPECT_EQ(StoredCount(), before + outcome.accepted);
      });
}

TEST_F(OutlookFaults, TheFirstLogonOfAllCanBeRepeated) {
  FailEachCall(
      AddOne, [&] {},
      [&](const Outcome& outcome, const std::string&) {
        EXPECT_EQ(StoredCount(), outcome.accepted);
        handheld_->Set(u"StoreCreated", DWORD{0});
        for (const char* suffix : {"", "-wal", "-shm"}) {
          std::filesystem::remove(handheld_->storePath().string() + suffix);
        }
      });
}

TEST_F(OutlookFaults, ModifyIsStoredExactlyWhenSaveSucceeded) {
  AddContact(LoggedOn(), u"before");
  FailEachCall(
      ModifyFirst,
      [&] {
        const auto app = LoggedOn();
        const auto contact = ContactByOid(app, 1);
        ASSERT_EQ(Put(contact, &IContact::put_FirstName, u"before"), S_OK);
        ASSERT_EQ(contact->Save(), S_OK);
      },
      [&](const Outcome& outcome, const std::string&) {
        EXPECT_EQ(StoredNames().at(0), outcome.accepted ? u"" : u"before");
      });
}

TEST_F(OutlookFaults, ADeletedContactIsGoneExactlyWhenDeleteSucceeded) {
  const auto prepare = [&] {
    // Identifiers are never reused, so the walk's contact is made by hand.
    LoggedOn();
    ASSERT_TRUE(RunSql(*handheld_,
                       "UPDATE oid_counter SET next_oid = 1 WHERE NOT EXISTS"
                       " (SELECT 1 FROM contacts)"));
    if (StoredCount() == 0) AddContact(LoggedOn(), u"Ada");
  };
  FailEachCall(DeleteFirst, prepare, [&](const Outcome& outcome, const std::string&) {
    EXPECT_EQ(StoredCount(), 1 - outcome.accepted);
  });
}

TEST_F(OutlookFaults, AFailedDeletionOfAFolderLosesNothingThatItDidNotDelete) {
  constexpr int kCount = 4;
  for (const auto& walk : {DeleteAll, RemoveAll}) {
    FailEachCall(
        walk, [&] { Refill(kCount); },
        [&](const Outcome& outcome, const std::string& fired) {
          // The commit stands for all of them.
          const bool undone = fired == "sqlite3_step:commit";
          EXPECT_EQ(StoredCount(), undone ? kCount : kCount - outcome.accepted);
        });
  }
}

TEST_F(OutlookFaults, ADownloadEndsWithTheFailureOrIsWhole) {
  AddContacts(LoggedOn(), 3);
  FailEachCall(
      Download, [] {},
      [](const Outcome& outcome, const std::string& fired) {
        EXPECT_EQ(outcome.accepted, fired.empty() || fired == "IPOutlookApp::Logoff" ? 3 : 0);
      });
}

TEST_F(OutlookFaults, ABatchIsStoredAsAWholeOrNotAtAll) {
  const auto remembered = [&] {
    return QuerySql(*handheld_, "SELECT count(*) FROM import_ledger");
  };
  FailEachCall(
      ImportBatch,
      [&] {
        Refill(0);
        ASSERT_TRUE(RunSql(*handheld_, "DELETE FROM import_ledger"));
      },
      [&](const Outcome& outcome, const std::string&) {
        EXPECT_EQ(StoredCount(), outcome.accepted);
        EXPECT_EQ(remembered(), std::to_string(outcome.accepted));
      });
}

TEST_F(OutlookFaults, ASaveThatFailedCanBeRepeated) {
  const ComPtr<IPOutlookApp> app = LoggedOn();
  for (const char* call :
       {"IContact::Save", "sqlite3_step:begin", "sqlite3_step:write", "sqlite3_step:commit"}) {
    const ComPtr<IContact> contact = NewContact(app);
    const int before = StoredCount();
    {
      const auto plan = FaultPlan::FailCalls(call, ERROR_DISK_FULL);
      EXPECT_EQ(contact->Save(), kStoreDiskFull) << call;
    }
    EXPECT_EQ(OidOf(contact), 0);
    EXPECT_EQ(StoredCount(), before);
    EXPECT_EQ(contact->Save(), S_OK);
    EXPECT_EQ(StoredCount(), before + 1);
  }
}

#undef TRY

}  // namespace
}  // namespace ce::host::testing
