// Every call below fails once at each place where it can; what was answered must be true.
#include <functional>

#include "handheld/outlook/import_ledger.h"
#include "handheld/outlook/outlook_app.h"
#include "handheld/store/store_check.h"
#include "handheld/store/store_error.h"
#include "tests/handheld/outlook/fault_walks.h"

namespace ce::host::testing {
namespace {

HRESULT OpenItems(ComPtr<IPOutlookApp>& app, ComPtr<IPOutlookItemCollection2>& items) {
  RETURN_IF_FAILED(Open(app));
  ComPtr<IFolder> folder;
  RETURN_IF_FAILED(app->GetDefaultFolder(olFolderContacts, folder.put()));
  ComPtr<IPOutlookItemCollection> plain;
  RETURN_IF_FAILED(folder->get_Items(plain.put()));
  return plain->QueryInterface(IPOutlookItemCollection2::kIid, items.put_void());
}

HRESULT AsContact(const ComPtr<IDispatch>& item, ComPtr<IContact>& contact) {
  return item->QueryInterface(IContact::kIid, contact.put_void());
}

HRESULT AddOne(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IPOutlookItemCollection2> items;
  RETURN_IF_FAILED(OpenItems(app, items));
  ComPtr<IDispatch> item;
  RETURN_IF_FAILED(items->Add(item.put()));
  ComPtr<IContact> contact;
  RETURN_IF_FAILED(AsContact(item, contact));
  RETURN_IF_FAILED(contact->put_FirstName(nullptr));
  RETURN_IF_FAILED(contact->put_Birthday(30000.0));
  RETURN_IF_FAILED(contact->put_BodyInk(0, nullptr));
  RETURN_IF_FAILED(contact->Save());
  ++accepted;
  LONG oid = 0;
  RETURN_IF_FAILED(contact->get_Oid(&oid));
  return app->Logoff();
}

HRESULT OpenFirst(ComPtr<IPOutlookApp>& app, ComPtr<IContact>& contact) {
  RETURN_IF_FAILED(Open(app));
  ComPtr<IDispatch> item;
  RETURN_IF_FAILED(app->GetItemFromOid(1, item.put()));
  return AsContact(item, contact);
}

HRESULT ModifyFirst(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IContact> contact;
  RETURN_IF_FAILED(OpenFirst(app, contact));
  RETURN_IF_FAILED(contact->put_FirstName(nullptr));
  RETURN_IF_FAILED(contact->Save());
  ++accepted;
  return app->Logoff();
}

HRESULT DeleteFirst(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IContact> contact;
  RETURN_IF_FAILED(OpenFirst(app, contact));
  RETURN_IF_FAILED(contact->Delete());
  ++accepted;
  return app->Logoff();
}

HRESULT DeleteAll(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IPOutlookItemCollection2> items;
  RETURN_IF_FAILED(OpenItems(app, items));
  INT count = 0;
  RETURN_IF_FAILED(items->get_Count(&count));
  for (INT i = count; i >= 1; --i) {
    ComPtr<IDispatch> item;
    RETURN_IF_FAILED(items->Item(i, item.put()));
    ComPtr<IContact> contact;
    RETURN_IF_FAILED(AsContact(item, contact));
    RETURN_IF_FAILED(contact->Delete());
    ++accepted;
  }
  return app->Logoff();
}

HRESULT RemoveAll(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IPOutlookItemCollection2> items;
  RETURN_IF_FAILED(OpenItems(app, items));
  INT count = 0;
  RETURN_IF_FAILED(items->get_Count(&count));
  for (INT i = count; i >= 1; --i) {
    RETURN_IF_FAILED(items->Remove(i));
    ++accepted;
  }
  return app->Logoff();
}

HRESULT ReadOne(const ComPtr<IContact>& contact) {
  for (const TextProperty& property : TextProperties()) {
    Bstr text;
    RETURN_IF_FAILED((contact.get()->*property.get)(text.put()));
  }
  DATE date = 0;
  RETURN_IF_FAILED(contact->get_Birthday(&date));
  RETURN_IF_FAILED(contact->get_Anniversary(&date));
  DWORD bytes = 0;
  const BYTE* block = nullptr;
  const HRESULT ink = contact->get_BodyInk(&bytes, &block);
  return ink == E_NOTIMPL ? S_OK : ink;
}

HRESULT DownloadContacts(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IPOutlookItemCollection2> items;
  RETURN_IF_FAILED(OpenItems(app, items));
  INT count = 0;
  RETURN_IF_FAILED(items->get_Count(&count));
  for (INT i = 1; i <= count; ++i) {
    ComPtr<IDispatch> item;
    RETURN_IF_FAILED(items->Item(i, item.put()));
    ComPtr<IContact> contact;
    RETURN_IF_FAILED(AsContact(item, contact));
    RETURN_IF_FAILED(ReadOne(contact));
  }
  accepted += count;
  return app->Logoff();
}

HRESULT ImportBatch(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IPOutlookItemCollection2> items;
  RETURN_IF_FAILED(OpenItems(app, items));
  StoreBatch batch;
  RETURN_IF_FAILED(batch.Begin(app.get()));
  ImportLedger ledger;
  RETURN_IF_FAILED(ledger.Open(app.get()));
  int pending = 0;
  for (const char* uid : {"one", "two"}) {
    std::optional<ImportLedger::Entry> known;
    RETURN_IF_FAILED(ledger.Find(olContactItem, uid, known));
    ComPtr<IDispatch> item;
    RETURN_IF_FAILED(items->Add(item.put()));
    ComPtr<IContact> contact;
    RETURN_IF_FAILED(AsContact(item, contact));
    RETURN_IF_FAILED(contact->Save());
    LONG oid = 0;
    RETURN_IF_FAILED(contact->get_Oid(&oid));
    RETURN_IF_FAILED(ledger.Remember(olContactItem, uid, {oid, "hash"}));
    ++pending;
  }
  RETURN_IF_FAILED(batch.Commit());
  accepted += pending;
  return app->Logoff();
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
      EXPECT_EQ(outcome.status, StatusOf(fired));
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
      DownloadContacts, [] {},
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

}  // namespace
}  // namespace ce::host::testing
