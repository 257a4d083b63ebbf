#include "handheld/tool/remove_records.h"

#include <fmt/core.h>

#include "common/text/unicode.h"
#include "handheld/tool/records.h"
#include "handheld/tool/result.h"
#include "handheld/tool/table.h"

namespace tool {
namespace {

using formats::Call;
using formats::TextMessage;

// `remove` answers why a record stays, and nothing for one that is gone.
template <typename Number, typename Remove>
Outcome RemoveEach(const std::vector<Number>& numbers, Remove remove, const Report& report) {
  std::size_t removed = 0;
  for (const Number number : numbers) {
    if (const std::string why = remove(number); !why.empty()) {
      Tell(report.err, "corvane-device: {}: {}\n", number, why);
      continue;
    }
    TellResult(report, {{"removed", number}}, "removed {:>10}\n", number);
    ++removed;
  }
  if (removed == numbers.size()) return Outcome::kDone;
  return removed == 0 ? Outcome::kFailed : Outcome::kPartlyDone;
}

// E_NOINTERFACE for an item of another kind.
template <typename Item>
ce::HRESULT DeleteAs(const ce::ComPtr<ce::IDispatch>& any) {
  ce::ComPtr<Item> item;
  const ce::HRESULT status = any->QueryInterface(Item::kIid, item.put_void());
  return ce::Failed(status) ? status : item->Delete();
}

ce::HRESULT DeleteItem(ce::IPOutlookApp& outlook, std::uint32_t oid) {
  ce::ComPtr<ce::IDispatch> item;
  ce::HRESULT status = outlook.GetItemFromOid(static_cast<ce::LONG>(oid), item.put());
  if (ce::Failed(status)) return status;
  for (const auto remove :
       {DeleteAs<ce::IContact>, DeleteAs<ce::IAppointment>, DeleteAs<ce::ITask>})
    if (status = remove(item); status != ce::E_NOINTERFACE) return status;
  return status;
}

template <typename Record, typename Box>
Outcome RemoveFrom(Box& box, const std::vector<std::int64_t>& ids, const Report& report) {
  const auto remove = [&](std::int64_t id) -> std::string {
    bool found = false;
    if (const ce::HRESULT status = box.Delete(id, found); ce::Failed(status))
      return StatusText(status);
    return found ? "" : fmt::format("no such {}", kRecordName<Record>);
  };
  return RemoveEach(ids, remove, report);
}

template <typename Record>
Outcome SayRemoved(std::size_t count, const Report& report) {
  TellResult(report, {{"kind", kRecordName<Record>}, {"count", count}}, "removed {}\n",
             Counted(count, kRecordName<Record>));
  return Outcome::kDone;
}

// Answers how many there were.
std::size_t Clear(ce::host::MessageStores& box, std::int64_t folder) {
  std::int64_t count = 0;
  Check(box.Count(folder, count), "the messages");
  Check(box.Clear(folder), "removing");
  return static_cast<std::size_t>(count);
}

}  // namespace

Outcome RemoveItems(Session& session, const std::vector<std::uint32_t>& oids,
                    const Report& report) {
  const auto remove = [&](std::uint32_t oid) {
    const ce::HRESULT status = DeleteItem(*session.Outlook().get(), oid);
    return ce::Failed(status) ? StatusText(status) : std::string();
  };
  return RemoveEach(oids, remove, report);
}

Outcome RemoveMessages(Session& session, const std::vector<std::int64_t>& ids,
                       const Report& report) {
  return RemoveFrom<TextMessage>(session.Messages(), ids, report);
}

Outcome RemoveCalls(Session& session, const std::vector<std::int64_t>& ids, const Report& report) {
  return RemoveFrom<Call>(session.Calls(), ids, report);
}

Outcome RemoveMessagesOfFolder(Session& session, const std::string& path, const Report& report) {
  for (const ce::host::MessageFolderInfo& folder : SmsFolders(session)) {
    if (text::ToUtf8Lossy(folder.path) != path) continue;
    return SayRemoved<TextMessage>(Clear(session.Messages(), folder.id), report);
  }
  Tell(report.err, "corvane-device: {}: no such folder\n", path);
  return Outcome::kFailed;
}

Outcome RemoveAllMessages(Session& session, const Report& report) {
  ce::host::MessageStores& box = session.Messages();
  std::size_t count = 0;
  box.Begin();
  for (const ce::host::MessageFolderInfo& folder : SmsFolders(session))
    count += Clear(box, folder.id);
  Check(box.Commit(), "removing");
  return SayRemoved<TextMessage>(count, report);
}

Outcome RemoveAllCalls(Session& session, const Report& report) {
  const std::size_t count = CountRecords<Call>(session);
  Check(session.Calls().Clear(), "removing");
  return SayRemoved<Call>(count, report);
}

}  // namespace tool
