#include "handheld/messages/message_box.h"

#include <array>
#include <limits>

#include "common/text/unicode.h"
#include "handheld/messages/entry_id.h"
#include "handheld/messages/message_box_frame.h"
#include "platform/mapi.h"

namespace ce::host {
namespace {

constexpr std::array<std::u16string_view, 5> kUsualFolders = {u"Inbox", u"Outbox", u"Sent Items",
                                                              u"Drafts", u"Deleted Items"};
constexpr std::size_t kDrafts = 3;
constexpr std::size_t kWastebasket = 4;
constexpr char16_t kTopName[] = u"IPM_SUBTREE";

}  // namespace

MessageBox::Batch::Batch() : WriteGroup(std::numeric_limits<int>::max()) {}

HRESULT MessageBox::Open(Handheld& handheld, std::unique_ptr<MessageBox>& box,
                         std::string& problem) {
  box.reset();
  return Guarded("MessageBox::Open", [&] {
    std::unique_ptr<Store> store;
    const HRESULT status = Store::Open(handheld, store, problem);
    if (Succeeded(status)) box.reset(new MessageBox(std::move(store)));
    return status;
  });
}

MessageBox::~MessageBox() {
  Abandon();
}

void MessageBox::Begin() {
  batchStatus_ = S_OK;
  store_->SetBulk(&batch_);
}

HRESULT MessageBox::Commit() {
  HRESULT status = std::exchange(batchStatus_, S_OK);
  if (Succeeded(status)) {
    status = Guarded("MessageBox::Commit", [&] { return store_->CommitPending(); });
  }
  Abandon();
  return status;
}

void MessageBox::Abandon() {
  if (store_->bulk()) store_->AbandonPending();
  store_->SetBulk(nullptr);
  batchStatus_ = S_OK;
}

// In two statements: one that answers what it changed makes itself a table for that, which costs
// more than the rest of an insertion.
HRESULT MessageBox::TakeId(std::int64_t& id) {
  static constexpr char kRead[] = "SELECT next_id FROM message_id_counter WHERE only_row = ?1";
  static constexpr char kCount[] = "UPDATE message_id_counter SET next_id = next_id + 1";
  const HRESULT status = RequireRow(kRead, 1, &id);
  if (Failed(status)) return status == E_INVALIDARG ? E_FAIL : status;
  Statement count;
  if (const HRESULT prepared = store_->Prepare(kCount, count); Failed(prepared)) return prepared;
  return count.Run(kMessageStep);
}

HRESULT MessageBox::RequireRow(const char* sql, std::int64_t id, std::int64_t* value) {
  Statement find;
  if (const HRESULT status = store_->Prepare(sql, find); Failed(status)) return status;
  find.BindInteger(1, id);
  bool row = false;
  if (const HRESULT status = find.Step(kMessageStep, row); Failed(status)) return status;
  if (!row) return E_INVALIDARG;
  if (value) *value = find.Integer(0);
  return S_OK;
}

HRESULT MessageBox::ListStores(std::vector<MessageStoreInfo>& stores) {
  static constexpr char kSql[] = "SELECT id, display_name FROM message_stores ORDER BY id";
  stores.clear();
  return Call("MessageBox::ListStores", [&]() -> HRESULT {
    Statement list;
    if (const HRESULT status = store_->Prepare(kSql, list); Failed(status)) return status;
    for (;;) {
      bool row = false;
      if (const HRESULT status = list.Step(kMessageStep, row); Failed(status)) return status;
      if (!row) return S_OK;
      stores.push_back({list.Integer(0), text::FromWtf8(list.Text(1))});
    }
  });
}

HRESULT MessageBox::FindStore(std::u16string_view name, std::optional<std::int64_t>& store) {
  static constexpr char kSql[] = "SELECT id FROM message_stores WHERE display_name = ?1";
  store.reset();
  return Call("MessageBox::FindStore", [&] {
    const std::string stored = Stored(name);
    Statement find;
    if (const HRESULT status = store_->Prepare(kSql, find); Failed(status)) return status;
    find.BindText(1, stored);
    bool row = false;
    const HRESULT status = find.Step(kMessageStep, row);
    if (row) store = find.Integer(0);
    return status;
  });
}

HRESULT MessageBox::CreateStore(std::u16string_view name, std::int64_t& store) {
  static constexpr char kSql[] =
      "INSERT INTO message_stores (id, entry_id, display_name) VALUES (?1, ?2, ?3)";
  if (name.empty() || name.find(u'\0') != name.npos) return E_INVALIDARG;
  std::optional<std::int64_t> taken;
  if (const HRESULT status = FindStore(name, taken); Failed(status)) return status;
  if (taken) return E_INVALIDARG;
  return Change("MessageBox::CreateStore", [&]() -> HRESULT {
    if (const HRESULT status = TakeId(store); Failed(status)) return status;
    const EntryId entryId = MakeEntryId(MAPI_STORE, store, store);
    const std::string stored = Stored(name);
    Statement insert;
    if (const HRESULT status = store_->Prepare(kSql, insert); Failed(status)) return status;
    insert.BindInteger(1, store);
    insert.BindBlob(2, entryId.data(), entryId.size());
    insert.BindText(3, stored);
    if (const HRESULT status = insert.Run(kMessageStep); Failed(status)) return status;

    SpecialFolders special{EntryIdBytes{}, EntryIdBytes{}, EntryIdBytes{}};
    std::int64_t top = 0;
    HRESULT status = InsertFolder(store, std::nullopt, kTopName, *special.subtree, top);
    for (std::size_t i = 0; i < kUsualFolders.size() && Succeeded(status); ++i) {
      EntryIdBytes made;
      std::int64_t folder = 0;
      status = InsertFolder(store, top, kUsualFolders[i], made, folder);
      if (i == kDrafts) special.drafts = made;
      if (i == kWastebasket) special.wastebasket = made;
    }
    return Succeeded(status) ? StoreSpecialFolders(store, special) : status;
  });
}

HRESULT MessageBox::DeleteStore(std::int64_t store) {
  static constexpr char kSql[] = "DELETE FROM message_stores WHERE id = ?1";
  return Change("MessageBox::DeleteStore", [&] {
    Statement remove;
    if (const HRESULT status = store_->Prepare(kSql, remove); Failed(status)) return status;
    remove.BindInteger(1, store);
    const HRESULT status = remove.Run(kMessageStep);
    return Succeeded(status) && store_->Changes() == 0 ? E_INVALIDARG : status;
  });
}

HRESULT MessageBox::GetSpecialFolders(std::int64_t store, SpecialFolders& folders) {
  static constexpr char kSql[] =
      "SELECT subtree_entry_id, drafts_entry_id, wastebasket_entry_id FROM message_stores"
      " WHERE id = ?1";
  return Call("MessageBox::GetSpecialFolders", [&] {
    Statement find;
    if (const HRESULT status = store_->Prepare(kSql, find); Failed(status)) return status;
    find.BindInteger(1, store);
    bool row = false;
    if (const HRESULT status = find.Step(kMessageStep, row); Failed(status)) return status;
    if (!row) return E_INVALIDARG;
    folders = {EntryIdOf(find, 0), EntryIdOf(find, 1), EntryIdOf(find, 2)};
    return S_OK;
  });
}

HRESULT MessageBox::SetSpecialFolders(std::int64_t store, const SpecialFolders& folders) {
  return Change("MessageBox::SetSpecialFolders",
                [&] { return StoreSpecialFolders(store, folders); });
}

HRESULT MessageBox::StoreSpecialFolders(std::int64_t store, const SpecialFolders& folders) {
  static constexpr char kSql[] =
      "UPDATE message_stores SET subtree_entry_id = ?2, drafts_entry_id = ?3,"
      " wastebasket_entry_id = ?4 WHERE id = ?1";
  Statement update;
  if (const HRESULT status = store_->Prepare(kSql, update); Failed(status)) return status;
  update.BindInteger(1, store);
  BindEntryId(update, 2, folders.subtree);
  BindEntryId(update, 3, folders.drafts);
  BindEntryId(update, 4, folders.wastebasket);
  const HRESULT status = update.Run(kMessageStep);
  return Succeeded(status) && store_->Changes() == 0 ? E_INVALIDARG : status;
}

}  // namespace ce::host
