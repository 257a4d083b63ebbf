#include "handheld/store/message_stores.h"

#include <array>

#include "platform/mapi.h"

namespace ce::host {
namespace {

constexpr std::array<std::u16string_view, 5> kUsualFolders = {u"Inbox", u"Outbox", u"Sent Items",
                                                              u"Drafts", u"Deleted Items"};
constexpr std::size_t kDrafts = 3;
constexpr std::size_t kWastebasket = 4;
constexpr char16_t kTopName[] = u"IPM_SUBTREE";

void PutNumber(EntryId& entryId, std::size_t offset, std::size_t bytes, std::uint64_t number) {
  for (std::size_t i = bytes; i-- > 0; number >>= 8) {
    entryId[offset + i] = static_cast<BYTE>(number);
  }
}

}  // namespace

EntryId MakeEntryId(DWORD objectType, std::int64_t store, std::int64_t id) {
  EntryId entryId{};
  PutNumber(entryId, 4, 4, objectType);
  PutNumber(entryId, 8, 4, static_cast<std::uint64_t>(store));
  PutNumber(entryId, 12, 8, static_cast<std::uint64_t>(id));
  return entryId;
}

// In two statements: one that answers what it changed makes itself a table for that, which costs
// more than the rest of an insertion.
HRESULT MessageStores::TakeId(std::int64_t& id) {
  static constexpr char kRead[] = "SELECT next_id FROM message_id_counter WHERE only_row = ?1";
  static constexpr char kCount[] = "UPDATE message_id_counter SET next_id = next_id + 1";
  const HRESULT status = RequireRow(kRead, 1, &id);
  if (Failed(status)) return status == E_INVALIDARG ? E_FAIL : status;
  return store().Run(kCount, kStep);
}

HRESULT MessageStores::RequireRow(const char* sql, std::int64_t id, std::int64_t* value) {
  Statement find;
  bool row = false;
  RETURN_IF_FAILED(store().Find(sql, kStep, find, row, id));
  if (!row) return E_INVALIDARG;
  *value = find.Integer(0);
  return S_OK;
}

HRESULT MessageStores::ListStores(std::vector<MessageStoreInfo>& stores) {
  static constexpr char kSql[] = "SELECT id, display_name FROM message_stores ORDER BY id";
  stores.clear();
  return Guarded("MessageStores::ListStores", [&]() -> HRESULT {
    Statement list;
    RETURN_IF_FAILED(store().Prepare(kSql, list));
    return list.ForEachRow(kStep, [&] {
      MessageStoreInfo& info = stores.emplace_back();
      list.Load(0, info.id);
      list.Load(1, info.name);
    });
  });
}

HRESULT MessageStores::FindStore(std::u16string_view name, std::optional<std::int64_t>& found) {
  static constexpr char kSql[] = "SELECT id FROM message_stores WHERE display_name = ?1";
  found.reset();
  return Guarded("MessageStores::FindStore", [&] {
    Statement find;
    bool row = false;
    const HRESULT status = store().Find(kSql, kStep, find, row, name);
    if (row) found = find.Integer(0);
    return status;
  });
}

HRESULT MessageStores::CreateStore(std::u16string_view name, std::int64_t& made) {
  static constexpr char kSql[] =
      "INSERT INTO message_stores (id, entry_id, display_name) VALUES (?1, ?2, ?3)";
  if (name.empty() || name.find(u'\0') != name.npos) return E_INVALIDARG;
  std::optional<std::int64_t> taken;
  RETURN_IF_FAILED(FindStore(name, taken));
  if (taken) return E_INVALIDARG;
  return Change("MessageStores::CreateStore", [&]() -> HRESULT {
    RETURN_IF_FAILED(TakeId(made));
    const EntryId entryId = MakeEntryId(MAPI_STORE, made, made);
    RETURN_IF_FAILED(
        store().Run(kSql, kStep, made, EntryIdBytes(entryId.begin(), entryId.end()), name));
    SpecialFolders special{EntryIdBytes{}, EntryIdBytes{}, EntryIdBytes{}};
    std::int64_t top = 0;
    RETURN_IF_FAILED(InsertFolder(made, std::nullopt, kTopName, *special.subtree, top));
    for (std::size_t i = 0; i < kUsualFolders.size(); ++i) {
      EntryIdBytes entry;
      std::int64_t folder = 0;
      RETURN_IF_FAILED(InsertFolder(made, top, kUsualFolders[i], entry, folder));
      if (i == kDrafts) special.drafts = entry;
      if (i == kWastebasket) special.wastebasket = entry;
    }
    return StoreSpecialFolders(made, special);
  });
}

HRESULT MessageStores::DeleteStore(std::int64_t id) {
  static constexpr char kSql[] = "DELETE FROM message_stores WHERE id = ?1";
  return Change("MessageStores::DeleteStore", [&] { return ChangeRow(kSql, id); });
}

HRESULT MessageStores::GetSpecialFolders(std::int64_t id, SpecialFolders& folders) {
  static constexpr char kSql[] =
      "SELECT subtree_entry_id, drafts_entry_id, wastebasket_entry_id FROM message_stores"
      " WHERE id = ?1";
  return Guarded("MessageStores::GetSpecialFolders", [&]() -> HRESULT {
    Statement find;
    bool row = false;
    RETURN_IF_FAILED(store().Find(kSql, kStep, find, row, id));
    if (!row) return E_INVALIDARG;
    find.Load(0, folders.subtree);
    find.Load(1, folders.drafts);
    find.Load(2, folders.wastebasket);
    return S_OK;
  });
}

HRESULT MessageStores::SetSpecialFolders(std::int64_t id, const SpecialFolders& folders) {
  return Change("MessageStores::SetSpecialFolders",
                [&] { return StoreSpecialFolders(id, folders); });
}

HRESULT MessageStores::StoreSpecialFolders(std::int64_t id, const SpecialFolders& folders) {
  static constexpr char kSql[] =
      "UPDATE message_stores SET subtree_entry_id = ?2, drafts_entry_id = ?3,"
      " wastebasket_entry_id = ?4 WHERE id = ?1";
  return ChangeRow(kSql, id, folders.subtree, folders.drafts, folders.wastebasket);
}

}  // namespace ce::host
