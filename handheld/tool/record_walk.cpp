#include <utility>

#include "handheld/tool/message_records.h"
#include "handheld/tool/records.h"

namespace tool {
namespace {

using ce::host::MessageFolderInfo;
using formats::Call;
using formats::TextMessage;

constexpr std::size_t kAtOnce = 500;
constexpr char kFolder[] = "the folder";
constexpr char kMessages[] = "the messages";
constexpr char kCalls[] = "the call log";

bool IsWanted(const Session& session, std::int64_t number) {
  return !session.chosen() || session.chosen()->contains(number);
}

// Those of the kind, found by their identifiers.
template <typename Record>
void ForEachChosen(Session& session, const RecordVisitor<Record>& visit) {
  for (const std::int64_t number : *session.chosen()) {
    if (!std::in_range<std::uint32_t>(number)) continue;
    ce::ComPtr<ce::IDispatch> any;
    const ce::HRESULT status =
        session.Outlook()->GetItemFromOid(static_cast<ce::LONG>(number), any.put());
    if (status == ce::E_INVALIDARG) continue;
    Check(status, kRecordName<Record>);
    if (const auto item = any.query<ItemOf<Record>>()) visit(number, ReadItem(*item.get()));
  }
}

}  // namespace

std::optional<std::int64_t> SmsStore(Session& session) {
  std::optional<std::int64_t> store;
  Check(session.Messages().FindStore(ce::host::kSmsStoreName, store), kMessages);
  return store;
}

std::vector<MessageFolderInfo> SmsFolders(Session& session) {
  std::vector<MessageFolderInfo> folders;
  if (const auto store = SmsStore(session))
    Check(session.Messages().ListFolders(*store, folders), kMessages);
  return folders;
}

template <typename Record>
void ForEachRecord(Session& session, const RecordVisitor<Record>& visit) {
  if (session.chosen()) return ForEachChosen<Record>(session, visit);
  const auto items = session.Items(KindOf<Record>::kFolder);
  const ce::INT count = Read(*items.get(), &ce::IPOutlookItemCollection::get_Count, kFolder);
  for (ce::INT i = 1; i <= count; ++i) {
    ce::ComPtr<ce::IDispatch> any;
    Check(items->Item(i, any.put()), kRecordName<Record>);
    const auto item = AsItemOf<Record>(any);
    const auto oid = Read(*item.get(), &ItemOf<Record>::get_Oid, kRecordName<Record>);
    visit(static_cast<std::uint32_t>(oid), ReadItem(*item.get()));
  }
}

template <>
void ForEachRecord(Session& session, const RecordVisitor<TextMessage>& visit) {
  std::vector<ce::host::NumberedMessage> messages;
  for (const MessageFolderInfo& folder : SmsFolders(session)) {
    std::int64_t last = 0;
    do {
      Check(session.Messages().Read(folder.id, last, kAtOnce, messages), kMessages);
      for (const auto& [id, message] : messages) {
        if (IsWanted(session, id)) visit(id, ToRecord(message, folder.path));
        last = id;
      }
    } while (!messages.empty());
  }
}

template <>
void ForEachRecord(Session& session, const RecordVisitor<Call>& visit) {
  std::vector<ce::host::NumberedCall> calls;
  ce::host::CallPosition last;
  do {
    Check(session.Calls().Read(last, kAtOnce, calls), kCalls);
    for (const ce::host::NumberedCall& call : calls) {
      if (IsWanted(session, call.id)) visit(call.id, ToRecord(call.call));
      last = call.position();
    }
  } while (!calls.empty());
}

template void ForEachRecord(Session&, const RecordVisitor<formats::Contact>&);
template void ForEachRecord(Session&, const RecordVisitor<formats::Appointment>&);
template void ForEachRecord(Session&, const RecordVisitor<formats::Task>&);

template <typename Record>
std::size_t CountRecords(Session& session) {
  if (session.chosen()) return session.chosen()->size();
  const auto items = session.Items(KindOf<Record>::kFolder);
  return static_cast<std::size_t>(
      Read(*items.get(), &ce::IPOutlookItemCollection::get_Count, kFolder));
}

template <>
std::size_t CountRecords<TextMessage>(Session& session) {
  if (session.chosen()) return session.chosen()->size();
  std::size_t all = 0;
  for (const MessageFolderInfo& folder : SmsFolders(session)) {
    std::int64_t count = 0;
    Check(session.Messages().Count(folder.id, count), kMessages);
    all += static_cast<std::size_t>(count);
  }
  return all;
}

template <>
std::size_t CountRecords<Call>(Session& session) {
  if (session.chosen()) return session.chosen()->size();
  std::int64_t count = 0;
  Check(session.Calls().Count(count), kCalls);
  return static_cast<std::size_t>(count);
}

template std::size_t CountRecords<formats::Contact>(Session&);
template std::size_t CountRecords<formats::Appointment>(Session&);
template std::size_t CountRecords<formats::Task>(Session&);

}  // namespace tool
