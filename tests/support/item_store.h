// The appointments and tasks of the current handheld, for a test to fill and to look at.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string_view>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/pocket_outlook_calendar.h"

namespace corvane::testing {

template <typename Item>
void SetItemText(Item& item, ce::HRESULT (Item::*put)(ce::BSTR), std::u16string_view text) {
  EXPECT_EQ((item.*put)(ce::Bstr(text).get()), ce::S_OK);
}

template <typename Item>
void SetItemInk(Item& item, std::string_view ink) {
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

// Logged on as long as it lives. Fails the test when the store does not answer.
template <typename Item, ce::INT folder, ce::INT itemType>
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

  // An item that is not stored.
  ce::ComPtr<Item> New() {
    ce::ComPtr<ce::IDispatch> item;
    EXPECT_EQ(app_->CreateItem(itemType, item.put()), ce::S_OK);
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
  ce::LONG AddNamed(std::u16string_view subject) {
    return Add([&](Item& item) { SetItemText(item, &Item::put_Subject, subject); });
  }
  // Null when there is none.
  ce::ComPtr<Item> Get(ce::LONG oid) {
    ce::ComPtr<ce::IDispatch> item;
    if (ce::Failed(app_->GetItemFromOid(oid, item.put()))) return nullptr;
    return item.template query<Item>();
  }
  std::vector<ce::LONG> Oids() {
    ce::ComPtr<ce::IFolder> defaultFolder;
    EXPECT_EQ(app_->GetDefaultFolder(folder, defaultFolder.put()), ce::S_OK);
    ce::ComPtr<ce::IPOutlookItemCollection> items;
    EXPECT_EQ(defaultFolder->get_Items(items.put()), ce::S_OK);
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
  ce::ComPtr<ce::IPOutlookApp> app_;
};

using AppointmentStore = ItemStore<ce::IAppointment, ce::olFolderCalendar, ce::olAppointmentItem>;
using TaskStore = ItemStore<ce::ITask, ce::olFolderTasks, ce::olTaskItem>;

}  // namespace corvane::testing
