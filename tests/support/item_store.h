// The items of the current handheld, for a test to fill and to look at.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/pocket_outlook_calendar.h"

namespace corvane::testing {

template <typename Item>
std::u16string GetText(Item& item, ce::HRESULT (Item::*get)(ce::BSTR*)) {
  ce::Bstr text;
  EXPECT_EQ((item.*get)(text.put()), ce::S_OK);
  return std::u16string(text.view());
}

template <typename Item>
void SetText(Item& item, ce::HRESULT (Item::*put)(ce::BSTR), std::u16string_view text) {
  EXPECT_EQ((item.*put)(ce::Bstr(text).get()), ce::S_OK);
}

template <typename Item>
void SetInk(Item& item, std::string_view ink) {
  EXPECT_EQ(item.put_BodyInk(static_cast<ce::DWORD>(ink.size()),
                             reinterpret_cast<const ce::BYTE*>(ink.data())),
            ce::S_OK);
}

// A local date and time. Fails the test for an impossible one.
inline ce::DATE DateOf(int year, int month, int day, int hour = 0, int minute = 0) {
  const ce::SYSTEMTIME time{
      static_cast<ce::WORD>(year), static_cast<ce::WORD>(month),  0, static_cast<ce::WORD>(day),
      static_cast<ce::WORD>(hour), static_cast<ce::WORD>(minute), 0, 0};
  ce::DATE date = ce::kNoDate;
  EXPECT_NE(ce::SystemTimeToVariantTime(&time, &date), 0);
  return date;
}

// "2008-02-15 13:45:01", or "none".
inline std::string TextOfDate(ce::DATE date) {
  ce::SYSTEMTIME time{};
  if (date == ce::kNoDate) return "none";
  if (!ce::VariantTimeToSystemTime(date, &time)) return "no date";
  char text[64];
  std::snprintf(text, sizeof(text), "%04u-%02u-%02u %02u:%02u:%02u", unsigned{time.wYear},
                unsigned{time.wMonth}, unsigned{time.wDay}, unsigned{time.wHour},
                unsigned{time.wMinute}, unsigned{time.wSecond});
  return text;
}

// Logged on as long as it lives. Fails the test when the store does not answer. `putName` sets the
// text that AddNamed gives.
template <typename Item, ce::INT folder, auto putName>
class ItemStore {
 public:
  ItemStore() {
    EXPECT_EQ(ce::CoCreateInstance(ce::CLSID_Application, nullptr, ce::CLSCTX_INPROC_SERVER,
                                   ce::IPOutlookApp::kIid, app_.put_void()),
              ce::S_OK);
    EXPECT_EQ(app_->Logon(0), ce::S_OK);
  }
  ~ItemStore() { EXPECT_EQ(app_->Logoff(), ce::S_OK); }
  ItemStore(const ItemStore&) = delete;
  ItemStore& operator=(const ItemStore&) = delete;

  ce::IPOutlookApp* app() const { return app_.get(); }
  // An item that is not stored.
  ce::ComPtr<Item> New() {
    ce::ComPtr<ce::IDispatch> item;
    EXPECT_EQ(Items()->Add(item.put()), ce::S_OK);
    return item.query<Item>();
  }
  // Stores an item once `fill` has set what it wants.
  ce::LONG Add(const std::function<void(Item&)>& fill = {}) {
    const ce::ComPtr<Item> item = New();
    if (fill) fill(*item.get());
    EXPECT_EQ(item->Save(), ce::S_OK);
    ce::LONG oid = 0;
    EXPECT_EQ(item->get_Oid(&oid), ce::S_OK);
    return oid;
  }
  ce::LONG AddNamed(std::u16string_view name) {
    return Add([&](Item& item) { SetText(item, putName, name); });
  }
  void Change(ce::LONG oid, const std::function<void(Item&)>& change) {
    const ce::ComPtr<Item> item = Get(oid);
    ASSERT_TRUE(item) << "no item " << oid;
    change(*item.get());
    EXPECT_EQ(item->Save(), ce::S_OK);
  }
  void Delete(ce::LONG oid) {
    const ce::ComPtr<Item> item = Get(oid);
    ASSERT_TRUE(item) << "no item " << oid;
    EXPECT_EQ(item->Delete(), ce::S_OK);
  }
  // Null when there is none.
  ce::ComPtr<Item> Get(ce::LONG oid) {
    ce::ComPtr<ce::IDispatch> item;
    if (ce::Failed(app_->GetItemFromOid(oid, item.put()))) return nullptr;
    return item.template query<Item>();
  }
  std::u16string Text(ce::LONG oid, ce::HRESULT (Item::*get)(ce::BSTR*)) {
    const ce::ComPtr<Item> item = Get(oid);
    EXPECT_TRUE(item) << "no item " << oid;
    return item ? GetText(*item.get(), get) : std::u16string();
  }
  std::vector<ce::LONG> Oids() {
    const ce::ComPtr<ce::IPOutlookItemCollection> items = Items();
    ce::INT count = 0;
    EXPECT_EQ(items->get_Count(&count), ce::S_OK);
    std::vector<ce::LONG> oids;
    for (ce::INT index = 1; index <= count; ++index) {
      ce::ComPtr<ce::IDispatch> item;
      EXPECT_EQ(items->Item(index, item.put()), ce::S_OK);
      ce::LONG oid = 0;
      EXPECT_EQ(item.template query<Item>()->get_Oid(&oid), ce::S_OK);
      oids.push_back(oid);
    }
    return oids;
  }

 private:
  ce::ComPtr<ce::IPOutlookItemCollection> Items() {
    ce::ComPtr<ce::IFolder> defaultFolder;
    EXPECT_EQ(app_->GetDefaultFolder(folder, defaultFolder.put()), ce::S_OK);
    ce::ComPtr<ce::IPOutlookItemCollection> items;
    EXPECT_EQ(defaultFolder->get_Items(items.put()), ce::S_OK);
    return items;
  }

  ce::ComPtr<ce::IPOutlookApp> app_;
};

using ContactStore = ItemStore<ce::IContact, ce::olFolderContacts, &ce::IContact::put_FirstName>;
using AppointmentStore =
    ItemStore<ce::IAppointment, ce::olFolderCalendar, &ce::IAppointment::put_Subject>;
using TaskStore = ItemStore<ce::ITask, ce::olFolderTasks, &ce::ITask::put_Subject>;

}  // namespace corvane::testing
