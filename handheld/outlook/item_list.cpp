#include "handheld/outlook/item_list.h"

#include <algorithm>

#include "handheld/store/store_error.h"

namespace ce::host {

ItemList::~ItemList() {
  Store* store = session_->store();
  if (!store) return;
  if (store->IsOpen(*this)) static_cast<void>(store->CommitPending());
  if (read_) store->EndSnapshot();
}

HRESULT ItemList::Read() {
  Store* store = session_->store();
  if (!store) return E_FAIL;
  if (read_) return S_OK;
  if (const HRESULT status = store->BeginSnapshot(); Failed(status)) return status;
  const HRESULT status = kind_.listSql ? ReadOids(*store) : S_OK;
  read_ = Succeeded(status);
  if (!read_) {
    oids_.clear();
    store->EndSnapshot();
  }
  return status;
}

HRESULT ItemList::ReadOids(Store& store) {
  Statement list;
  if (const HRESULT status = store.Prepare(kind_.listSql, list); Failed(status)) return status;
  for (;;) {
    bool row = false;
    if (const HRESULT status = list.Step("sqlite3_step:list", row); Failed(status)) return status;
    if (!row) return S_OK;
    oids_.push_back(static_cast<std::uint32_t>(list.Integer(0)));
  }
}

HRESULT ItemList::Count(std::size_t& count) {
  const HRESULT status = Read();
  if (Succeeded(status)) count = oids_.size();
  return status;
}

HRESULT ItemList::OidAt(std::int64_t position, std::uint32_t& oid) {
  std::size_t count = 0;
  if (const HRESULT status = Count(count); Failed(status)) return status;
  if (position < 1 || static_cast<std::uint64_t>(position) > count) return E_INVALIDARG;
  oid = oids_[static_cast<std::size_t>(position) - 1];
  return S_OK;
}

HRESULT ItemList::Delete(std::uint32_t oid) {
  Store* store = session_->store();
  if (!store) return E_FAIL;
  undo_.reserve(kDeletesPerCommit);
  HRESULT status = store->Write(this, [&] {
    const HRESULT deleted = DeleteItem(*store, kind_, oid);
    if (Succeeded(deleted)) Forget(oid);
    return deleted;
  });
  if (Succeeded(status) && oids_.empty() && store->IsOpen(*this)) status = store->CommitPending();
  return status;
}

void ItemList::Forget(std::uint32_t oid) {
  hasDeleted_ = true;
  const auto found = std::lower_bound(oids_.begin(), oids_.end(), oid);
  if (found == oids_.end() || *found != oid) return;
  oids_.erase(found);
  if (!session_->store()->bulk()) undo_.push_back(oid);
}

void ItemList::RolledBack() {
  for (const std::uint32_t oid : undo_) {
    oids_.insert(std::lower_bound(oids_.begin(), oids_.end(), oid), oid);
  }
  undo_.clear();
}

HRESULT DeleteStored(Store& store, const std::weak_ptr<ItemList>& list, INT itemType,
                     std::uint32_t oid) {
  if (oid == 0) return S_OK;
  if (const auto held = list.lock()) return held->Delete(oid);
  return store.Write(nullptr, [&] { return DeleteItem(store, *KindOfItemType(itemType), oid); });
}

}  // namespace ce::host
