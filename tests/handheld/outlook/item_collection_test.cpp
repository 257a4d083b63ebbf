#include "handheld/outlook/item_collection.h"
#include "handheld/store/store_error.h"
#include "tests/handheld/outlook/outlook_support.h"

namespace ce::host::testing {
namespace {

using Names = std::vector<std::u16string>;

constexpr HRESULT kDiskFull = kStoreDiskFull;

class ItemCollection : public HandheldTest {
 protected:
  void TearDown() override {
    app_.reset();
    HandheldTest::TearDown();
  }
  // Gets item `index` and deletes it, as a walk over a folder does.
  static HRESULT DeleteAt(const ComPtr<IPOutlookItemCollection>& items, INT index) {
    ComPtr<IDispatch> item;
    if (const HRESULT status = items->Item(index, item.put()); Failed(status)) return status;
    return item.query<IContact>()->Delete();
  }
  static HRESULT DeleteDown(const ComPtr<IPOutlookItemCollection>& items, INT from, INT to) {
    for (INT i = from; i >= to; --i) {
      if (const HRESULT status = DeleteAt(items, i); Failed(status)) return status;
    }
    return S_OK;
  }

  ComPtr<IPOutlookApp> app_ = LoggedOn();
};

// Counts calls of one name while it lives.
FaultPlan CountCalls(const char* call) {
  return FaultPlan::FailNthCall(call, FaultPlan::kNever, 0);
}

TEST_F(ItemCollection, IsOneBasedInTheOrderOfCreation) {
  AddContact(app_, u"Zoe");
  AddContact(app_, u"Ada");
  AddContact(app_, u"Mary");
  const auto items = Items(app_);
  EXPECT_EQ(CountOf(items), 3);
  EXPECT_EQ(FirstName(ContactAt(items, 1)), u"Zoe");
  EXPECT_EQ(FirstName(ContactAt(items, 2)), u"Ada");
  EXPECT_EQ(FirstName(ContactAt(items, 3)), u"Mary");
}

TEST_F(ItemCollection, AnswersInvalidArgumentOutsideItsPositions) {
  AddContacts(app_, 2);
  const auto items = Items(app_);
  for (const INT index :
       {0, 3, -1, std::numeric_limits<INT>::min(), std::numeric_limits<INT>::max()}) {
    IDispatch* item = reinterpret_cast<IDispatch*>(1);
    EXPECT_EQ(items->Item(index, &item), E_INVALIDARG) << index;
    EXPECT_EQ(item, nullptr);
    EXPECT_EQ(items->Remove(index), E_INVALIDARG) << index;
  }
  EXPECT_EQ(StoredCount(), 2);
}

TEST_F(ItemCollection, DoesNotSeeWhatOthersAddChangeOrDeleteAfterTheFirstCount) {
  const std::vector<LONG> oids = AddContacts(app_, 3);
  const auto items = Items(app_);
  ASSERT_EQ(CountOf(items), 3);
  {
    const auto other = LoggedOn();
    AddContact(other, u"later");
    const auto changed = ContactByOid(other, oids[1]);
    ASSERT_EQ(Put(changed, &IContact::put_FirstName, u"changed"), S_OK);
    ASSERT_EQ(changed->Save(), S_OK);
    ASSERT_EQ(ContactByOid(other, oids[2])->Delete(), S_OK);
  }
  EXPECT_EQ(CountOf(items), 3);
  EXPECT_EQ(FirstName(ContactAt(items, 2)), u"2");
  EXPECT_EQ(FirstName(ContactAt(items, 3)), u"3");
  EXPECT_EQ(StoredNames(), (Names{u"1", u"changed", u"later"}));
}

TEST_F(ItemCollection, TakesItsSnapshotNotBeforeTheFirstNeed) {
  const auto items = Items(app_);
  AddContact(LoggedOn(), u"Ada");
  EXPECT_EQ(CountOf(items), 1);
}

TEST_F(ItemCollection, AWriteOfTheSameApplicationEndsTheSnapshotButKeepsThePositions) {
  const std::vector<LONG> oids = AddContacts(app_, 2);
  const auto items = Items(app_);
  ASSERT_EQ(CountOf(items), 2);
  {
    const auto other = LoggedOn();
    const auto changed = ContactByOid(other, oids[0]);
    ASSERT_EQ(Put(changed, &IContact::put_FirstName, u"changed"), S_OK);
    ASSERT_EQ(changed->Save(), S_OK);
    ASSERT_EQ(ContactByOid(other, oids[1])->Delete(), S_OK);
  }
  AddContact(app_, u"own");
  EXPECT_EQ(CountOf(items), 2);
  EXPECT_EQ(FirstName(ContactAt(items, 1)), u"changed");
  ComPtr<IDispatch> gone;
  EXPECT_EQ(items->Item(2, gone.put()), E_INVALIDARG);
}

TEST_F(ItemCollection, ModifyingEveryItemWhileWalkingWorks) {
  AddContacts(app_, 5);
  const auto items = Items(app_);
  const INT count = CountOf(items);
  for (INT i = 1; i <= count; ++i) {
    const auto contact = ContactAt(items, i);
    ASSERT_EQ(Put(contact, &IContact::put_FirstName, FirstName(contact) + u"!"), S_OK);
    ASSERT_EQ(contact->Save(), S_OK);
  }
  EXPECT_EQ(StoredNames(), (Names{u"1!", u"2!", u"3!", u"4!", u"5!"}));
}

TEST_F(ItemCollection, AddNeverReadsTheIdentifiers) {
  AddContacts(app_, 20);
  const auto items = Items(app_);
  const auto list = CountCalls("sqlite3_step:list");
  for (int i = 0; i < 20; ++i) {
    ComPtr<IDispatch> item;
    ASSERT_EQ(items->Add(item.put()), S_OK);
    ASSERT_EQ(item.query<IContact>()->Save(), S_OK);
  }
  EXPECT_EQ(list.calls(), 0u);
}

TEST_F(ItemCollection, ReadsEachIdentifierAndEachItemOnce) {
  AddContacts(app_, 50);
  std::uint64_t listed = 0;
  std::uint64_t read = 0;
  for (const bool countLists : {true, false}) {
    const auto items = Items(app_);
    const auto steps = CountCalls(countLists ? "sqlite3_step:list" : "sqlite3_step:read");
    for (INT i = 1; i <= 50; ++i) ASSERT_TRUE(ContactAt(items, i));
    (countLists ? listed : read) = steps.calls();
  }
  EXPECT_EQ(listed, 51u);  // the last one finds the end
  EXPECT_EQ(read, 50u);
}

TEST_F(ItemCollection, PositionsShiftWhenAnItemIsDeletedOrRemoved) {
  AddContacts(app_, 4);
  const auto items = Items(app_);
  ASSERT_EQ(DeleteAt(items, 2), S_OK);
  EXPECT_EQ(CountOf(items), 3);
  EXPECT_EQ(FirstName(ContactAt(items, 2)), u"3");
  ASSERT_EQ(items->Remove(1), S_OK);
  EXPECT_EQ(CountOf(items), 2);
  EXPECT_EQ(FirstName(ContactAt(items, 1)), u"3");
  EXPECT_EQ(FirstName(ContactAt(items, 2)), u"4");
}

TEST_F(ItemCollection, DeletingAWholeFolderDownwardsCommitsEvery256Items) {
  const int count = 2 * ItemList::kDeletesPerCommit + 10;
  AddContacts(app_, count);
  const auto items = Items(app_);
  ASSERT_EQ(CountOf(items), count);
  const auto commits = CountCalls("sqlite3_step:commit");
  EXPECT_EQ(DeleteDown(items, count, 1), S_OK);
  EXPECT_EQ(commits.calls(), 3u);
  EXPECT_EQ(StoredCount(), 0);
}

TEST_F(ItemCollection, EmptyingItMakesTheDeletionsDurableWhileItIsHeld) {
  AddContacts(app_, 3);
  const auto items = Items(app_);
  ASSERT_EQ(DeleteDown(items, CountOf(items), 2), S_OK);
  EXPECT_EQ(StoredCount(), 3);
  ASSERT_EQ(DeleteAt(items, 1), S_OK);
  EXPECT_EQ(StoredCount(), 0);
}

TEST_F(ItemCollection, ReleasingItMakesTheDeletionsDurable) {
  AddContacts(app_, 3);
  ComPtr<IPOutlookItemCollection> items = Items(app_);
  ASSERT_EQ(DeleteAt(items, 3), S_OK);
  items.reset();
  EXPECT_EQ(StoredCount(), 2);
}

TEST_F(ItemCollection, ReleasingTheApplicationMakesTheDeletionsDurable) {
  AddContacts(app_, 3);
  const auto items = Items(app_);
  ASSERT_EQ(DeleteAt(items, 3), S_OK);
  app_.reset();
  EXPECT_EQ(StoredCount(), 2);
}

TEST_F(ItemCollection, LogoffMakesTheDeletionsDurableAndReportsWhenItCannot) {
  AddContacts(app_, 3);
  const auto items = Items(app_);
  ASSERT_EQ(DeleteAt(items, 3), S_OK);
  EXPECT_EQ(app_->Logoff(), S_OK);
  EXPECT_EQ(StoredCount(), 2);

  ASSERT_EQ(app_->Logon(0), S_OK);
  const auto again = Items(app_);
  ASSERT_EQ(DeleteAt(again, 2), S_OK);
  {
    const auto fault = FaultPlan::FailCalls("sqlite3_step:commit", ERROR_DISK_FULL);
    EXPECT_EQ(app_->Logoff(), kDiskFull);
  }
  EXPECT_EQ(app_->Logoff(), S_FALSE);
  EXPECT_EQ(StoredCount(), 2);
}

TEST_F(ItemCollection, AnotherWriteOfTheApplicationMakesTheDeletionsDurable) {
  AddContacts(app_, 3);
  const auto items = Items(app_);
  ASSERT_EQ(DeleteAt(items, 3), S_OK);
  AddContact(app_, u"new");
  EXPECT_EQ(StoredNames(), (Names{u"1", u"2", u"new"}));
}

TEST_F(ItemCollection, DeletionsOfTwoCollectionsDoNotDisturbEachOther) {
  AddContacts(app_, 4);
  const auto one = Items(app_);
  const auto two = Items(app_);
  ASSERT_EQ(CountOf(one), 4);
  ASSERT_EQ(CountOf(two), 4);
  ASSERT_EQ(DeleteAt(one, 4), S_OK);
  ASSERT_EQ(DeleteAt(two, 1), S_OK);
  ASSERT_EQ(DeleteAt(one, 3), S_OK);
  EXPECT_EQ(CountOf(one), 2);
  EXPECT_EQ(CountOf(two), 3);
  EXPECT_EQ(app_->Logoff(), S_OK);
  EXPECT_EQ(StoredNames(), Names{u"2"});
}

TEST_F(ItemCollection, AnItemDeletesOnItsOwnOnceTheCollectionIsReleased) {
  AddContacts(app_, 2);
  ComPtr<IPOutlookItemCollection> items = Items(app_);
  const auto contact = ContactAt(items, 1);
  items.reset();
  EXPECT_EQ(contact->Delete(), S_OK);
  EXPECT_EQ(StoredNames(), Names{u"2"});
}

TEST_F(ItemCollection, TheDeleteThatCannotCommitReportsItAndThePositionsComeBack) {
  AddContacts(app_, 3);
  const auto items = Items(app_);
  ASSERT_EQ(DeleteDown(items, CountOf(items), 2), S_OK);
  {
    const auto fault = FaultPlan::FailCalls("sqlite3_step:commit", ERROR_DISK_FULL);
    EXPECT_EQ(DeleteAt(items, 1), kDiskFull);
  }
  EXPECT_EQ(CountOf(items), 3);
  EXPECT_EQ(FirstName(ContactAt(items, 1)), u"1");
  EXPECT_EQ(FirstName(ContactAt(items, 3)), u"3");
  EXPECT_EQ(StoredCount(), 3);
  EXPECT_EQ(DeleteDown(items, 3, 1), S_OK);
  EXPECT_EQ(StoredCount(), 0);
}

TEST_F(ItemCollection, AFailedDeleteKeepsItsPositionAndThoseBeforeItAreStored) {
  AddContacts(app_, 3);
  ComPtr<IPOutlookItemCollection> items = Items(app_);
  ASSERT_EQ(DeleteAt(items, 3), S_OK);
  {
    const auto fault = FaultPlan::FailCalls("sqlite3_step:write", ERROR_DISK_FULL);
    EXPECT_EQ(DeleteAt(items, 2), kDiskFull);
  }
  EXPECT_EQ(CountOf(items), 2);
  items.reset();
  EXPECT_EQ(StoredNames(), (Names{u"1", u"2"}));
}

TEST_F(ItemCollection, AFirstDeleteThatFailsDoesNotKeepOthersFromWriting) {
  AddContacts(app_, 2);
  const auto items = Items(app_);
  {
    const auto fault = FaultPlan::FailCalls("sqlite3_step:write", ERROR_DISK_FULL);
    EXPECT_EQ(DeleteAt(items, 2), kDiskFull);
  }
  AddContact(LoggedOn(), u"other");
  EXPECT_EQ(StoredNames(), (Names{u"1", u"2", u"other"}));
}

TEST_F(ItemCollection, AWalkThatDeletesPassesOverWhatOthersDeletedMeanwhile) {
  const std::vector<LONG> oids = AddContacts(app_, 4);
  const auto items = Items(app_);
  ASSERT_EQ(CountOf(items), 4);
  {
    const auto other = LoggedOn();
    ASSERT_EQ(ContactByOid(other, oids[3])->Delete(), S_OK);
    ASSERT_EQ(ContactByOid(other, oids[1])->Delete(), S_OK);
    AddContact(other, u"later");
  }
  EXPECT_EQ(DeleteDown(items, 4, 1), S_OK);
  EXPECT_EQ(StoredNames(), Names{u"later"});
}

TEST_F(ItemCollection, WhatOthersDeletedMeanwhileCannotBeSavedFromAWalk) {
  const std::vector<LONG> oids = AddContacts(app_, 2);
  const auto items = Items(app_);
  ASSERT_EQ(CountOf(items), 2);
  ASSERT_EQ(ContactByOid(LoggedOn(), oids[0])->Delete(), S_OK);
  ASSERT_EQ(DeleteAt(items, 2), S_OK);
  const auto gone = ContactAt(items, 1);
  ASSERT_TRUE(gone);
  EXPECT_EQ(OidOf(gone), oids[0]);
  ASSERT_EQ(Put(gone, &IContact::put_FirstName, u"back"), S_OK);
  EXPECT_EQ(gone->Save(), E_INVALIDARG);
  EXPECT_EQ(StoredCount(), 0);
}

}  // namespace
}  // namespace ce::host::testing
