// What the commands that treat every kind of item alike need to know of each.
#pragma once

#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/task.h"
#include "handheld/tool/session.h"
#include "handheld/tool/status_error.h"
#include "platform/pocket_outlook_calendar.h"

namespace tool {

// By the record that people's programs exchange: the item that it is on a handheld. ReadItem and
// WriteItem (contact_item.h, appointment_item.h, task_item.h) go between the two.
template <typename Record>
struct KindOf;

template <>
struct KindOf<formats::Contact> {
  using Item = ce::IContact;
  static constexpr ce::INT kFolder = ce::olFolderContacts;
  static constexpr ce::INT kItemType = ce::olContactItem;
  static constexpr char kName[] = "contact";
};

template <>
struct KindOf<formats::Appointment> {
  using Item = ce::IAppointment;
  static constexpr ce::INT kFolder = ce::olFolderCalendar;
  static constexpr ce::INT kItemType = ce::olAppointmentItem;
  static constexpr char kName[] = "appointment";
};

template <>
struct KindOf<formats::Task> {
  using Item = ce::ITask;
  static constexpr ce::INT kFolder = ce::olFolderTasks;
  static constexpr ce::INT kItemType = ce::olTaskItem;
  static constexpr char kName[] = "task";
};

template <typename Record>
using ItemOf = typename KindOf<Record>::Item;

// Throws StatusError when the item is of another kind.
template <typename Record>
ce::ComPtr<ItemOf<Record>> AsItemOf(const ce::ComPtr<ce::IDispatch>& item) {
  ce::ComPtr<ItemOf<Record>> result;
  Check(item->QueryInterface(ItemOf<Record>::kIid, result.put_void()), KindOf<Record>::kName);
  return result;
}

// A new item; nothing is stored before it is saved. Throws StatusError.
template <typename Record>
ce::ComPtr<ItemOf<Record>> NewItemOf(Session& session) {
  ce::ComPtr<ce::IDispatch> item;
  Check(session.Items(KindOf<Record>::kFolder)->Add(item.put()), "adding");
  return AsItemOf<Record>(item);
}

}  // namespace tool
