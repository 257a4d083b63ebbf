// The kinds of record that people's programs exchange, and what each is on a handheld.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "common/formats/items/appointment.h"
#include "common/formats/items/call.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/message.h"
#include "common/formats/items/task.h"
#include "handheld/tool/item_fields.h"
#include "handheld/tool/session.h"
#include "platform/pocket_outlook_calendar.h"

namespace tool {

// `Record` is one of these five. The first three are items of Pocket Outlook.
template <typename Record>
inline constexpr std::string_view kRecordName = {};
template <>
inline constexpr std::string_view kRecordName<formats::Contact> = "contact";
template <>
inline constexpr std::string_view kRecordName<formats::Appointment> = "appointment";
template <>
inline constexpr std::string_view kRecordName<formats::Task> = "task";
template <>
inline constexpr std::string_view kRecordName<formats::TextMessage> = "message";
template <>
inline constexpr std::string_view kRecordName<formats::Call> = "call";

template <typename Record>
struct KindOf;
template <>
struct KindOf<formats::Contact> {
  using Item = ce::IContact;
  static constexpr ce::INT kFolder = ce::olFolderContacts;
  static constexpr ce::INT kItemType = ce::olContactItem;
};
template <>
struct KindOf<formats::Appointment> {
  using Item = ce::IAppointment;
  static constexpr ce::INT kFolder = ce::olFolderCalendar;
  static constexpr ce::INT kItemType = ce::olAppointmentItem;
};
template <>
struct KindOf<formats::Task> {
  using Item = ce::ITask;
  static constexpr ce::INT kFolder = ce::olFolderTasks;
  static constexpr ce::INT kItemType = ce::olTaskItem;
};

template <typename Record>
inline constexpr bool kIsItem = requires {
  typename KindOf<Record>::Item;
};
template <typename Record>
using ItemOf = typename KindOf<Record>::Item;

// Throws StatusError when the item is of another kind.
template <typename Record>
ce::ComPtr<ItemOf<Record>> AsItemOf(const ce::ComPtr<ce::IDispatch>& item) {
  ce::ComPtr<ItemOf<Record>> result;
  Check(item->QueryInterface(ItemOf<Record>::kIid, result.put_void()), kRecordName<Record>);
  return result;
}

// A new item; nothing is stored before it is saved. Throws StatusError.
template <typename Record>
ce::ComPtr<ItemOf<Record>> NewItemOf(Session& session) {
  ce::ComPtr<ce::IDispatch> item;
  Check(session.Items(KindOf<Record>::kFolder)->Add(item.put()), "adding");
  return AsItemOf<Record>(item);
}

// Everything but the identity that another program gave it. Throw StatusError.
formats::Contact ReadItem(ce::IContact& item);
formats::Appointment ReadItem(ce::IAppointment& item);
formats::Task ReadItem(ce::ITask& item);

// Set every field and the pattern, without exceptions; do not save. A contact's FileAs alone is
// left as it is when the record has none. What cannot be kept is a line of the result. Throw
// StatusError.
NotKept WriteItem(const formats::Contact& contact, ce::IContact& item);
NotKept WriteItem(const formats::Appointment& appointment, ce::IAppointment& item);
NotKept WriteItem(const formats::Task& task, ce::ITask& item);

// Deletes and changes the occurrences that are not as the pattern has them; `item` was saved after
// WriteItem. Each is saved by itself. Throws StatusError.
NotKept WriteExceptions(const formats::Appointment& appointment, ce::IAppointment& item);
// What WriteExceptions would not keep, found with an item that is not stored.
NotKept TryExceptions(const formats::Appointment& appointment, ce::IAppointment& scratch);

// The telephone's store, which is the one that the agent exports. Nothing for a handheld from which
// it was removed. Throws StatusError, and ce::host::HandheldError as Session does.
std::optional<std::int64_t> SmsStore(Session& session);
// Parents before their children; none without the store.
std::vector<ce::host::MessageFolderInfo> SmsFolders(Session& session);

template <typename Record>
using RecordVisitor = std::function<void(std::int64_t id, const Record& record)>;

// One at a time, in memory that does not depend on how many there are: items in the store's order,
// from one snapshot; messages of the telephone's store folder by folder, in a folder as they were
// stored; calls newest first. Of a choice (Session::Choose) those alone, which are counted without
// a look at them. Throws as above.
template <typename Record>
void ForEachRecord(Session& session, const RecordVisitor<Record>& visit);
template <typename Record>
std::size_t CountRecords(Session& session);
template <>
void ForEachRecord(Session& session, const RecordVisitor<formats::TextMessage>& visit);
template <>
void ForEachRecord(Session& session, const RecordVisitor<formats::Call>& visit);
template <>
std::size_t CountRecords<formats::TextMessage>(Session& session);
template <>
std::size_t CountRecords<formats::Call>(Session& session);

}  // namespace tool
