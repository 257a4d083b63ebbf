#include <cmath>
#include <limits>
#include <random>

#include "handheld/store/item_row.h"
#include "handheld/store/ole_date.h"
#include "handheld/store/store_error.h"
#include "tests/handheld/outlook/outlook_support.h"

namespace ce::host::testing {
namespace {

class ContactItem : public HandheldTest {
 protected:
  ComPtr<IContact> Reread(const ComPtr<IContact>& contact) {
    const ComPtr<IPOutlookApp> other = LoggedOn();
    return ContactByOid(other, OidOf(contact));
  }
  ComPtr<IContact> SavedAs(std::u16string_view last, std::u16string_view first,
                           std::u16string_view company) {
    const ComPtr<IContact> contact = NewContact(app_);
    EXPECT_EQ(Put(contact, &IContact::put_LastName, last), S_OK);
    EXPECT_EQ(Put(contact, &IContact::put_FirstName, first), S_OK);
    EXPECT_EQ(Put(contact, &IContact::put_CompanyName, company), S_OK);
    EXPECT_EQ(contact->Save(), S_OK);
    return Reread(contact);
  }
  std::u16string FileAs(const ComPtr<IContact>& contact) {
    return Get(contact, &IContact::get_FileAs);
  }
  void TearDown() override {
    app_.reset();
    HandheldTest::TearDown();
  }

  ComPtr<IPOutlookApp> app_ = LoggedOn();
};

TEST_F(ContactItem, StartsEmptyWithoutDatesInkAndOid) {
  const ComPtr<IContact> contact = NewContact(app_);
  for (const TextProperty& property : TextProperties()) {
    EXPECT_EQ(Get(contact, property.get), u"") << property.name;
  }
  DATE date = 0;
  EXPECT_EQ(contact->get_Birthday(&date), S_OK);
  EXPECT_EQ(date, kNoDate);
  EXPECT_EQ(contact->get_Anniversary(&date), S_OK);
  EXPECT_EQ(date, kNoDate);
  DWORD bytes = 9;
  const BYTE* block = reinterpret_cast<const BYTE*>(1);
  EXPECT_EQ(contact->get_BodyInk(&bytes, &block), E_NOTIMPL);
  EXPECT_EQ(bytes, 0u);
  EXPECT_EQ(block, nullptr);
  EXPECT_EQ(OidOf(contact), 0);
}

TEST_F(ContactItem, IsNotStoredUntilItIsSaved) {
  ComPtr<IDispatch> item;
  ASSERT_EQ(Items(app_)->Add(item.put()), S_OK);
  EXPECT_EQ(StoredCount(), 0);
  ASSERT_EQ(item.query<IContact>()->Save(), S_OK);
  EXPECT_EQ(StoredCount(), 1);
}

TEST_F(ContactItem, KeepsEveryTextPropertyApart) {
  const ComPtr<IContact> contact = NewContact(app_);
  for (const TextProperty& property : TextProperties()) {
    const std::string name = property.name;
    ASSERT_EQ(Put(contact, property.put, std::u16string(name.begin(), name.end())), S_OK) << name;
  }
  ASSERT_EQ(contact->Save(), S_OK);
  const ComPtr<IContact> stored = Reread(contact);
  for (const TextProperty& property : TextProperties()) {
    const std::string name = property.name;
    EXPECT_EQ(Get(stored, property.get), std::u16string(name.begin(), name.end())) << name;
  }
}

TEST_F(ContactItem, KeepsDates) {
  const ComPtr<IContact> contact = NewContact(app_);
  EXPECT_EQ(contact->put_Birthday(OleDate(1900, 1, 1)), S_OK);
  EXPECT_EQ(contact->put_Anniversary(OleDate(2999, 12, 31)), S_OK);
  ASSERT_EQ(contact->Save(), S_OK);
  const ComPtr<IContact> stored = Reread(contact);
  DATE date = 0;
  EXPECT_EQ(stored->get_Birthday(&date), S_OK);
  EXPECT_EQ(date, 2.0);
  EXPECT_EQ(stored->get_Anniversary(&date), S_OK);
  EXPECT_EQ(date, 401768.0);
}

TEST_F(ContactItem, RefusesDatesOutOfRangeAndKeepsWhatItHad) {
  const ComPtr<IContact> contact = NewContact(app_);
  ASSERT_EQ(contact->put_Birthday(30000.0), S_OK);
  const DATE refused[] = {OleDate(1899, 12, 31), OleDate(3000, 1, 1),
                          OleDate(4501, 1, 2),   -1.25,
                          std::nan(""),          std::numeric_limits<DATE>::infinity()};
  for (const DATE date : refused) EXPECT_EQ(contact->put_Birthday(date), E_INVALIDARG) << date;
  DATE date = 0;
  EXPECT_EQ(contact->get_Birthday(&date), S_OK);
  EXPECT_EQ(date, 30000.0);
  EXPECT_EQ(contact->put_Birthday(kNoDate), S_OK);
}

TEST_F(ContactItem, DerivesFileAsFromTheNames) {
  EXPECT_EQ(FileAs(SavedAs(u"Lovelace", u"Ada", u"Engines")), u"Lovelace, Ada");
  EXPECT_EQ(FileAs(SavedAs(u"Lovelace", u"", u"Engines")), u"Lovelace");
  EXPECT_EQ(FileAs(SavedAs(u"", u"Ada", u"Engines")), u"Ada");
  EXPECT_EQ(FileAs(SavedAs(u"", u"", u"Engines")), u"Engines");
  EXPECT_EQ(FileAs(SavedAs(u"", u"", u"")), u"");
}

TEST_F(ContactItem, KeepsDerivingFileAsAfterSaveWhileItWasNeverSet) {
  const ComPtr<IContact> contact = SavedAs(u"Byron", u"Ada", u"");
  ASSERT_EQ(Put(contact, &IContact::put_LastName, u"Lovelace"), S_OK);
  EXPECT_EQ(FileAs(contact), u"Lovelace, Ada");
  ASSERT_EQ(contact->Save(), S_OK);
  EXPECT_EQ(FileAs(Reread(contact)), u"Lovelace, Ada");
}

TEST_F(ContactItem, KeepsAFileAsThatWasSetTheEmptyOneIncluded) {
  for (const std::u16string_view set : {u"Countess", u""}) {
    const ComPtr<IContact> contact = NewContact(app_);
    ASSERT_EQ(Put(contact, &IContact::put_LastName, u"Lovelace"), S_OK);
    ASSERT_EQ(Put(contact, &IContact::put_FileAs, set), S_OK);
    ASSERT_EQ(contact->Save(), S_OK);
    const ComPtr<IContact> stored = Reread(contact);
    ASSERT_EQ(Put(stored, &IContact::put_LastName, u"King"), S_OK);
    EXPECT_EQ(FileAs(stored), set);
  }
}

TEST_F(ContactItem, CutsADerivedFileAsToWhatCanBeSet) {
  const std::u16string longest(1023, u'x');
  const ComPtr<IContact> contact = SavedAs(longest, longest, u"");
  EXPECT_EQ(FileAs(contact), longest);
  EXPECT_EQ(Put(contact, &IContact::put_FileAs, FileAs(contact)), S_OK);

  const std::u16string cut(1020, u'x');  // ", " and half a pair would follow
  EXPECT_EQ(FileAs(SavedAs(cut, u"\U0001F600", u"")), cut + u", ");
}

TEST_F(ContactItem, RefusesATooLongTextAndKeepsWhatItHad) {
  const ComPtr<IContact> contact = NewContact(app_);
  for (const TextProperty& property : TextProperties()) {
    const std::size_t limit = property.kind == TextKind::kBody ? 30720 : 1023;
    const std::u16string longest(limit, u'\u20AC');
    EXPECT_EQ(Put(contact, property.put, longest), S_OK) << property.name;
    EXPECT_EQ(Put(contact, property.put, longest + u'x'), kTextTooLong) << property.name;
    EXPECT_EQ(Get(contact, property.get), longest) << property.name;
  }
}

TEST_F(ContactItem, TakesTheLengthsThatTheHandheldWasSetToAtLogon) {
  app_.reset();
  handheld_->Set(setting::kMaxContactText, DWORD{2000});
  handheld_->Set(setting::kMaxBody, DWORD{7});
  app_ = LoggedOn();
  const ComPtr<IContact> contact = NewContact(app_);
  EXPECT_EQ(Put(contact, &IContact::put_FirstName, std::u16string(2000, u'x')), S_OK);
  EXPECT_EQ(Put(contact, &IContact::put_FirstName, std::u16string(2001, u'x')), kTextTooLong);
  EXPECT_EQ(Put(contact, &IContact::put_Body, u"abc"), S_OK);
  EXPECT_EQ(Put(contact, &IContact::put_Body, u"abcd"), kTextTooLong);
}

TEST_F(ContactItem, TakesNullAsTheEmptyText) {
  const ComPtr<IContact> contact = NewContact(app_);
  ASSERT_EQ(Put(contact, &IContact::put_Body, u"note"), S_OK);
  EXPECT_EQ(contact->put_Body(nullptr), S_OK);
  EXPECT_EQ(Get(contact, &IContact::get_Body), u"");
}

TEST_F(ContactItem, HasNoYomiPropertiesOnAHandheldWithoutThem) {
  app_.reset();
  handheld_->Set(setting::kYomiFields, DWORD{0});
  app_ = LoggedOn();
  const ComPtr<IContact> contact = NewContact(app_);
  int yomi = 0;
  for (const TextProperty& property : TextProperties()) {
    const bool is = property.kind == TextKind::kYomi;
    yomi += is;
    Bstr text;
    EXPECT_EQ((contact.get()->*property.get)(text.put()), is ? E_NOTIMPL : S_OK) << property.name;
    EXPECT_EQ(Put(contact, property.put, u"x"), is ? E_NOTIMPL : S_OK) << property.name;
  }
  EXPECT_EQ(yomi, 3);
}

TEST_F(ContactItem, KeepsInkBytesAndGivesThemUp) {
  const BYTE ink[] = {'{', '\\', 'p', 'w', 'i', 0, 0xFF, 0};
  const ComPtr<IContact> contact = NewContact(app_);
  EXPECT_EQ(contact->put_BodyInk(3, nullptr), E_INVALIDARG);
  ASSERT_EQ(contact->put_BodyInk(sizeof(ink), ink), S_OK);
  ASSERT_EQ(contact->Save(), S_OK);
  const ComPtr<IContact> stored = Reread(contact);
  DWORD bytes = 0;
  const BYTE* block = nullptr;
  ASSERT_EQ(stored->get_BodyInk(&bytes, &block), S_OK);
  EXPECT_EQ(std::vector<BYTE>(block, block + bytes), std::vector<BYTE>(ink, ink + sizeof(ink)));

  ASSERT_EQ(stored->put_BodyInk(0, nullptr), S_OK);
  ASSERT_EQ(stored->Save(), S_OK);
  EXPECT_EQ(Reread(contact)->get_BodyInk(&bytes, &block), E_NOTIMPL);
}

TEST_F(ContactItem, KeepsEveryUtf16TextUnitForUnit) {
  const std::u16string texts[] = {std::u16string(u"a\0b\0", 4),
                                  std::u16string(1, u'\0'),
                                  u"\uFEFFmark",
                                  u"\uFFFEswap",
                                  std::u16string(1, 0xD800),
                                  std::u16string(1, 0xDFFF),
                                  std::u16string{0xDC00, 0xD800},
                                  u"\u00E9\u4E2D\U0001F600",
                                  std::u16string{0xD83D, u'x'},
                                  u"line\r\nline\ttab\x01"};
  for (const std::u16string& text : texts) {
    const ComPtr<IContact> contact = NewContact(app_);
    ASSERT_EQ(Put(contact, &IContact::put_Body, text), S_OK);
    EXPECT_EQ(Get(contact, &IContact::get_Body), text);
    ASSERT_EQ(contact->Save(), S_OK);
    EXPECT_EQ(Get(Reread(contact), &IContact::get_Body), text);
  }
}

TEST_F(ContactItem, KeepsItsTextsThroughManyChanges) {
  std::mt19937 random(1);
  ComPtr<IContact> contact = NewContact(app_);
  std::vector<std::u16string> expected(std::size(kContactTexts));
  for (int i = 0; i < 5000; ++i) {
    const std::size_t index = random() % std::size(kContactTexts);
    std::u16string text(random() % 200, u' ');
    for (char16_t& unit : text) unit = static_cast<char16_t>(random());
    expected[index] = text;
    ASSERT_EQ(Put(contact, TextProperties()[index].put, text), S_OK);
    if (i % 1000 == 0) {
      ASSERT_EQ(contact->Save(), S_OK);
      contact = Reread(contact);
    }
  }
  for (std::size_t i = 0; i < std::size(kContactTexts); ++i) {
    EXPECT_EQ(Get(contact, TextProperties()[i].get), expected[i]) << TextProperties()[i].name;
  }
}

TEST_F(ContactItem, StoresChangesOnlyAtSave) {
  const LONG oid = AddContact(app_, u"Ada");
  const ComPtr<IContact> contact = ContactByOid(app_, oid);
  ASSERT_EQ(Put(contact, &IContact::put_FirstName, u"Grace"), S_OK);
  EXPECT_EQ(FirstName(ContactByOid(app_, oid)), u"Ada");
  ASSERT_EQ(contact->Save(), S_OK);
  EXPECT_EQ(OidOf(contact), oid);
  EXPECT_EQ(FirstName(ContactByOid(app_, oid)), u"Grace");
  EXPECT_EQ(StoredCount(), 1);
}

TEST_F(ContactItem, KeepsWhatASaveDoesNotTouch) {
  const ComPtr<IContact> contact = NewContact(app_);
  ASSERT_EQ(Put(contact, &IContact::put_OfficeLocation, u"Room 7"), S_OK);
  ASSERT_EQ(contact->put_Birthday(30000.0), S_OK);
  ASSERT_EQ(contact->Save(), S_OK);
  const ComPtr<IContact> changed = Reread(contact);
  ASSERT_EQ(Put(changed, &IContact::put_FirstName, u"Ada"), S_OK);
  ASSERT_EQ(changed->Save(), S_OK);
  const ComPtr<IContact> stored = Reread(contact);
  EXPECT_EQ(Get(stored, &IContact::get_OfficeLocation), u"Room 7");
  DATE date = 0;
  EXPECT_EQ(stored->get_Birthday(&date), S_OK);
  EXPECT_EQ(date, 30000.0);
}

TEST_F(ContactItem, WritesNothingWhenAnUnchangedItemIsSaved) {
  const ComPtr<IContact> contact = ContactByOid(app_, AddContact(app_, u"Ada"));
  const auto commits = FaultPlan::FailNthCall("sqlite3_step:commit", FaultPlan::kNever, 0);
  EXPECT_EQ(contact->Save(), S_OK);
  EXPECT_EQ(commits.calls(), 0u);
}

TEST_F(ContactItem, IsNotResurrectedBySave) {
  for (const bool changed : {false, true}) {
    const LONG oid = AddContact(app_, u"Ada");
    const ComPtr<IContact> contact = ContactByOid(app_, oid);
    {
      const ComPtr<IPOutlookApp> other = LoggedOn();
      ASSERT_EQ(ContactByOid(other, oid)->Delete(), S_OK);
    }
    if (changed) {
      ASSERT_EQ(Put(contact, &IContact::put_FirstName, u"Grace"), S_OK);
    }
    EXPECT_EQ(contact->Save(), E_INVALIDARG);
    EXPECT_EQ(StoredCount(), 0);
  }
}

TEST_F(ContactItem, DeletingAgainOrUnsavedSucceeds) {
  const LONG oid = AddContact(app_, u"Ada");
  const ComPtr<IContact> contact = ContactByOid(app_, oid);
  EXPECT_EQ(contact->Delete(), S_OK);
  EXPECT_FALSE(ContactByOid(app_, oid));
  EXPECT_EQ(contact->Delete(), S_OK);
  EXPECT_EQ(contact->Save(), E_INVALIDARG);
  EXPECT_EQ(NewContact(app_)->Delete(), S_OK);
}

TEST_F(ContactItem, DeletesWithOneCommitOfItsOwn) {
  const ComPtr<IContact> contact = ContactByOid(app_, AddContact(app_, u"Ada"));
  const auto commits = FaultPlan::FailNthCall("sqlite3_step:commit", FaultPlan::kNever, 0);
  EXPECT_EQ(contact->Delete(), S_OK);
  EXPECT_EQ(commits.calls(), 1u);
  EXPECT_EQ(StoredCount(), 0);
}

TEST_F(ContactItem, NeverGetsAnOidThatAnotherHad) {
  const LONG first = AddContact(app_, u"Ada");
  const LONG second = AddContact(app_, u"Grace");
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 2);
  ASSERT_EQ(ContactByOid(app_, second)->Delete(), S_OK);
  EXPECT_EQ(app_->Logoff(), S_OK);
  EXPECT_EQ(app_->Logon(0), S_OK);
  EXPECT_EQ(AddContact(app_, u"Edith"), 3);
}

TEST(ContactOid, CountsFromTheHandheldsSetting) {
  HandheldSettings settings;
  settings.firstOid = 0x7FFFFFFF;
  const TestHandheld handheld(settings);
  const ComPtr<IPOutlookApp> app = LoggedOn();
  EXPECT_EQ(AddContact(app, u"last positive"), 0x7FFFFFFF);
  const LONG negative = AddContact(app, u"first negative");
  EXPECT_EQ(negative, std::numeric_limits<LONG>::min());
  EXPECT_EQ(FirstName(ContactByOid(app, negative)), u"first negative");
  EXPECT_EQ(StoredNames(), (std::vector<std::u16string>{u"last positive", u"first negative"}));
}

TEST(ContactOid, IsNeverZero) {
  HandheldSettings settings;
  settings.firstOid = 0;
  const TestHandheld handheld(settings);
  EXPECT_EQ(AddContact(LoggedOn(), u"Ada"), 1);
}

TEST(ContactOid, RunsOutCleanly) {
  HandheldSettings settings;
  settings.firstOid = 0xFFFFFFFF;
  const TestHandheld handheld(settings);
  const ComPtr<IPOutlookApp> app = LoggedOn();
  const LONG last = AddContact(app, u"last");
  EXPECT_EQ(last, -1);
  const ComPtr<IContact> contact = NewContact(app);
  EXPECT_EQ(contact->Save(), kStoreNoMoreOids);
  EXPECT_EQ(OidOf(contact), 0);
  EXPECT_EQ(StoredCount(), 1);
  EXPECT_EQ(ContactByOid(app, last)->Delete(), S_OK);
  EXPECT_EQ(contact->Save(), kStoreNoMoreOids);
}

}  // namespace
}  // namespace ce::host::testing
