#include "handheld/outlook/item_collection.h"

#include <algorithm>

#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"

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
  RETURN_IF_FAILED(store->BeginSnapshot());
  const HRESULT status = kind_.list(*store, oids_);
  read_ = Succeeded(status);
  if (!read_) {
    oids_.clear();
    store->EndSnapshot();
  }
  return status;
}

HRESULT ItemList::Count(std::size_t& count) {
  const HRESULT status = Read();
  if (Succeeded(status)) count = oids_.size();
  return status;
}

HRESULT ItemList::OidAt(std::int64_t position, std::uint32_t& oid) {
  std::size_t count = 0;
  RETURN_IF_FAILED(Count(count));
  if (position < 1 || static_cast<std::uint64_t>(position) > count) return E_INVALIDARG;
  oid = oids_[static_cast<std::size_t>(position) - 1];
  return S_OK;
}

HRESULT ItemList::Delete(std::uint32_t oid) {
  Store* store = session_->store();
  if (!store) return E_FAIL;
  undo_.reserve(kDeletesPerCommit);
  store->PrepareToDelete();
  HRESULT status = store->Write(this, [&] {
    const HRESULT deleted = kind_.remove(*store, oid);
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

namespace {

class ItemCollection final : public ComObject<IPOutlookItemCollection2, IPOutlookItemCollection> {
 public:
  explicit ItemCollection(std::shared_ptr<ItemList> list) : list_(std::move(list)) {}

  HRESULT Add(IDispatch** item) override {
    if (!item) return E_POINTER;
    *item = nullptr;
    return Guarded("IPOutlookItemCollection::Add", [&]() -> HRESULT {
      if (!list_->session()->store()) return E_FAIL;
      return list_->kind().make(list_->session(), item);
    });
  }

  HRESULT get_Count(INT* count) override {
    if (!count) return E_POINTER;
    *count = 0;
    return Guarded("IPOutlookItemCollection::get_Count", [&] {
      std::size_t items = 0;
      const HRESULT status = list_->Count(items);
      *count = static_cast<INT>(items);
      return status;
    });
  }

  HRESULT Item(INT index, IDispatch** item) override {
    if (!item) return E_POINTER;
    *item = nullptr;
    return Guarded("IPOutlookItemCollection::Item", [&]() -> HRESULT {
      std::uint32_t oid = 0;
      RETURN_IF_FAILED(list_->OidAt(index, oid));
      return list_->kind().load(list_->session(), list_, oid, item);
    });
  }

  HRESULT Remove(INT index) override {
    return Guarded("IPOutlookItemCollection::Remove", [&]() -> HRESULT {
      std::uint32_t oid = 0;
      RETURN_IF_FAILED(list_->OidAt(index, oid));
      return list_->Delete(oid);
    });
  }

 private:
  ~ItemCollection() override = default;

  const std::shared_ptr<ItemList> list_;
};

class Folder final : public ComObject<IFolder> {
 public:
  Folder(SessionPtr session, const ItemKind& kind) : session_(std::move(session)), kind_(kind) {}

  HRESULT get_Items(IPOutlookItemCollection** items) override {
    if (!items) return E_POINTER;
    *items = nullptr;
    return Guarded("IFolder::get_Items", [&] {
      if (!session_->store()) return E_FAIL;
      *items = new ItemCollection(std::make_shared<ItemList>(session_, kind_));
      return S_OK;
    });
  }

 private:
  ~Folder() override = default;

  const SessionPtr session_;
  const ItemKind& kind_;
};

}  // namespace

IFolder* MakeFolder(const SessionPtr& session, const ItemKind& kind) {
  return new Folder(session, kind);
}

}  // namespace ce::host
