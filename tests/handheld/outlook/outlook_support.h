// What the object model's tests have in common.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "handheld/base/com_object.h"
#include "handheld/base/fault.h"
#include "handheld/store/item_tables.h"
#include "platform/com_ptr.h"
#include "platform/pocket_outlook.h"
#include "tests/support/store_sql.h"
#include "tests/support/test_handheld.h"

namespace ce::host::testing {

using corvane::testing::HandheldTest;
using corvane::testing::QuerySql;
using corvane::testing::RunSql;
using corvane::testing::TestHandheld;

// One text property of a contact.
struct TextProperty {
  const char* name;
  TextKind kind;
  HRESULT (IContact::*get)(BSTR*);
  HRESULT (IContact::*put)(BSTR);
};
const std::vector<TextProperty>& TextProperties();

ComPtr<IPOutlookApp> NewApp();
ComPtr<IPOutlookApp> LoggedOn();  // fails the test when it cannot
ComPtr<IPOutlookItemCollection> Items(const ComPtr<IPOutlookApp>& app,
                                      INT folder = olFolderContacts);
// An item that is not stored.
template <typename Item>
ComPtr<Item> NewItem(const ComPtr<IPOutlookApp>& app, INT folder) {
  ComPtr<IDispatch> item;
  EXPECT_EQ(Items(app, folder)->Add(item.put()), S_OK);
  return item.query<Item>();
}
ComPtr<IContact> NewContact(const ComPtr<IPOutlookApp>& app);
// Null when there is no such contact.
ComPtr<IContact> ContactByOid(const ComPtr<IPOutlookApp>& app, LONG oid);
ComPtr<IContact> ContactAt(const ComPtr<IPOutlookItemCollection>& items, INT index);

std::u16string Get(const ComPtr<IContact>& contact, HRESULT (IContact::*get)(BSTR*));
HRESULT Put(const ComPtr<IContact>& contact, HRESULT (IContact::*put)(BSTR),
            std::u16string_view text);
std::u16string FirstName(const ComPtr<IContact>& contact);
LONG OidOf(const ComPtr<IContact>& contact);
INT CountOf(const ComPtr<IPOutlookItemCollection>& items);

// Saves a contact of this first name and answers its identifier.
LONG AddContact(const ComPtr<IPOutlookApp>& app, std::u16string_view firstName);
// Saves contacts named "1", "2" and so on.
std::vector<LONG> AddContacts(const ComPtr<IPOutlookApp>& app, int count);
// The first names of all contacts, as a new log-on sees them.
std::vector<std::u16string> StoredNames();
int StoredCount();

}  // namespace ce::host::testing
