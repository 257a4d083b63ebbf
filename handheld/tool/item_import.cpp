#include "handheld/tool/item_import.h"

#include <fmt/core.h>

#include <limits>
#include <string>

#include "handheld/tool/records.h"

namespace tool {
namespace {

// Commits are between records only, so the batch itself makes none.
constexpr int kNoLimit = std::numeric_limits<int>::max();
constexpr std::size_t kRecordsPerCommit = 500;

// Appointments alone have exceptions.
template <typename Record, typename Item>
NotKept WriteExceptions(const Record&, Item&) {
  return {};
}
template <typename Record, typename Item>
NotKept TryExceptions(const Record&, Item&) {
  return {};
}

}  // namespace

ItemImport::ItemImport(Session& session, const ImportOptions& options, ImportReport& report)
    : session_(session), options_(options), report_(report), batch_(kNoLimit) {
  Check(batch_.Begin(session.Outlook().get()), "the store");
}

void ItemImport::Commit() {
  Check(batch_.Commit(), "storing");
  uncommitted_ = 0;
  report_.SayStored();
}

void ItemImport::CommitGroup() {
  try {
    Commit();
  } catch (const StatusError& failure) {
    throw StoreFailure(failure);
  }
}

ImportedItems& ItemImport::Imported(ce::INT itemType) {
  return imported_.try_emplace(itemType, session_, itemType).first->second;
}

// Null when it does not exist any more.
template <typename Record>
ce::ComPtr<ItemOf<Record>> ItemImport::Find(std::uint32_t oid) {
  ce::ComPtr<ce::IDispatch> item;
  const ce::HRESULT status =
      session_.Outlook()->GetItemFromOid(static_cast<ce::LONG>(oid), item.put());
  if (status == ce::E_INVALIDARG) return nullptr;
  Check(status, "looking it up");
  return AsItemOf<Record>(item);
}

void ItemImport::Remember(ce::INT itemType, const RecordIdentity& identity, std::uint32_t oid) {
  try {
    Imported(itemType).Remember(identity, oid);
    ++uncommitted_;
  } catch (const StatusError& failure) {
    throw StoreFailure(failure);
  }
}

template <typename Record>
NotKept ItemImport::Store(const Record& record, ItemOf<Record>& item, std::uint32_t& oid) {
  try {
    Check(item.Save(), "storing");
    oid = static_cast<std::uint32_t>(Read(item, &ItemOf<Record>::get_Oid, "storing"));
    return WriteExceptions(record, item);
  } catch (const StatusError& failure) {
    throw StoreFailure(failure);
  }
}

template <typename Record>
void ItemImport::AddOrChange(std::size_t line, const Record& record) {
  ImportTally& tally = report_.tally();
  ImportedItems& imported = Imported(KindOf<Record>::kItemType);
  const RecordIdentity identity = IdentityOf(record);
  const auto known = options_.duplicate ? std::nullopt : imported.Find(identity);
  const bool pretended = known && known->oid == 0;
  const auto item = known && !pretended ? Find<Record>(known->oid) : nullptr;
  const bool exists = pretended || item;
  if (exists && known->contentHash == identity.contentHash) {
    ++tally.unchanged;
    return;
  }
  if (item && IdentityOf(ReadItem(*item.get())).contentHash == identity.contentHash) {
    if (!options_.dryRun) Remember(KindOf<Record>::kItemType, identity, known->oid);
    ++tally.unchanged;
    return;
  }
  const auto target = item ? item : NewItemOf<Record>(session_);
  for (const std::string& notKept : WriteItem(record, *target.get())) report_.Notice(line, notKept);
  std::uint32_t oid = 0;
  const NotKept more = options_.dryRun ? TryExceptions(record, *NewItemOf<Record>(session_).get())
                                       : Store(record, *target.get(), oid);
  for (const std::string& notKept : more) report_.Notice(line, notKept);
  if (options_.dryRun)
    imported.Pretend(identity);
  else
    Remember(KindOf<Record>::kItemType, identity, oid);
  ++(exists ? tally.changed : tally.added);
  report_.Stored(exists ? "changed" : "added", oid, formats::DisplayName(record));
}

template <typename Record>
void ItemImport::Import(std::size_t line, const Record& record) {
  try {
    if (uncommitted_ >= kRecordsPerCommit) CommitGroup();
    AddOrChange(line, record);
  } catch (const StoreFailure&) {
    throw;
  } catch (const StatusError& failure) {
    report_.Failed(line, fmt::format("{}: {}", formats::DisplayName(record), failure.what()));
  }
  report_.Step();
}

template void ItemImport::Import(std::size_t, const formats::Contact&);
template void ItemImport::Import(std::size_t, const formats::Appointment&);
template void ItemImport::Import(std::size_t, const formats::Task&);

}  // namespace tool
