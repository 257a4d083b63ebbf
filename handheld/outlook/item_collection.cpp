#include "handheld/outlook/item_collection.h"

#include <utility>

#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/outlook/item_list.h"

namespace ce::host {
namespace {

class ItemCollection final : public ComObject<IPOutlookItemCollection2, IPOutlookItemCollection> {
 public:
  explicit ItemCollection(std::shared_ptr<ItemList> list) : list_(std::move(list)) {}

  HRESULT Add(IDispatch** item) override {
    if (!item) return E_POINTER;
    *item = nullptr;
    return Guarded("IPOutlookItemCollection::Add", [&] {
      if (!list_->session()->store()) return E_FAIL;
      const ItemKind& kind = list_->kind();
      return kind.make ? kind.make(list_->session(), item) : E_NOTIMPL;
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
    return Guarded("IPOutlookItemCollection::Item", [&] {
      std::uint32_t oid = 0;
      if (const HRESULT status = list_->OidAt(index, oid); Failed(status)) return status;
      return list_->kind().load(list_->session(), list_, oid, item);
    });
  }

  HRESULT Remove(INT index) override {
    return Guarded("IPOutlookItemCollection::Remove", [&] {
      std::uint32_t oid = 0;
      if (const HRESULT status = list_->OidAt(index, oid); Failed(status)) return status;
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
