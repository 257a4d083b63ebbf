#include "handheld/tool/item_import.h"

#include <fmt/core.h>

#include <limits>
#include <string>
#include <utility>

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

ItemImport::ItemImport(Session& session, const ImportOptions& options, const Report& report)
    : session_(session), options_(options), report_(report), batch_(kNoLimit) {
  Check(batch_.Begin(session.Outlook().get()), "the store");
}

void ItemImport::Commit() {
  Check(batch_.Commit(), "storing");
  uncommitted_ = 0;
  Tell(report_.out, "{}", std::exchange(unsaid_, {}));
}

void ItemImport::CommitGroup() {
  try {
    Commit();
  } catch (const StatusError& failure) {
    throw StoreFailure(failure);
  }
}

void ItemImport::Notice(const Place& place, std::string_view text, ImportTally& tally) {
  ++tally.notices;
  Tell(report_.err, "{}:{}: {}\n", place.file.string(), place.line, text);
}

void ItemImport::Say(const char* verb, std::uint32_t oid, const std::string& name) {
  if (oid == 0)
    Tell(report_.out, "would be {:<8} {}\n", verb, name);
  else
    unsaid_ += fmt::format("{:<8} {:>10}  {}\n", verb, oid, name);
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
void ItemImport::AddOrChange(const Place& place, const Record& record, ImportTally& tally) {
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
  for (const std::string& notKept : WriteItem(record, *target.get())) Notice(place, notKept, tally);
  std::uint32_t oid = 0;
  const NotKept more = options_.dryRun ? TryExceptions(record, *NewItemOf<Record>(session_).get())
                                       : Store(record, *target.get(), oid);
  for (const std::string& notKept : more) Notice(place, notKept, tally);
  if (options_.dryRun)
    imported.Pretend(identity);
  else
    Remember(KindOf<Record>::kItemType, identity, oid);
  ++(exists ? tally.changed : tally.added);
  Say(exists ? "changed" : "added", oid, formats::DisplayName(record));
}

template <typename Record>
void ItemImport::Import(const Place& place, const Record& record, ImportTally& tally) {
  try {
    if (uncommitted_ >= kRecordsPerCommit) CommitGroup();
    AddOrChange(place, record, tally);
  } catch (const StoreFailure&) {
    throw;
  } catch (const StatusError& failure) {
    ++tally.failed;
    Tell(report_.err, "{}:{}: {}: {}\n", place.file.string(), place.line,
         formats::DisplayName(record), failure.what());
  }
}

template void ItemImport::Import(const Place&, const formats::Contact&, ImportTally&);
template void ItemImport::Import(const Place&, const formats::Appointment&, ImportTally&);
template void ItemImport::Import(const Place&, const formats::Task&, ImportTally&);

}  // namespace tool
