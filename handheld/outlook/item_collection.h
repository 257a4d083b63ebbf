// The kinds of items, the identifiers of a folder's items, and the folder's objects.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "handheld/outlook/session.h"
#include "handheld/store/row_scan.h"
#include "platform/pocket_outlook.h"

namespace ce::host {

class ItemList;

// Deleting an item that has already gone, or was never saved, succeeds; saving one that has gone
// since it was read fails with E_INVALIDARG. Saving a series of appointments drops those of its
// exceptions whose days are no longer days of it.
struct ItemKind {
  INT folder;  // olFolder...
  HRESULT (*list)(Store& store, std::vector<std::uint32_t>& oids);
  HRESULT (*remove)(Store& store, std::uint32_t oid);
  // A new, unsaved item.
  HRESULT (*make)(const SessionPtr& session, IDispatch** item);
  // The stored item, null and E_INVALIDARG when there is none. `list`, when it is not null, is
  // where it is deleted from.
  HRESULT(*load)
  (const SessionPtr& session, const std::shared_ptr<ItemList>& list, std::uint32_t oid,
   IDispatch** item);
};
extern const ItemKind kAppointments, kContacts, kTasks;

// Reads the identifiers at the first need, in one snapshot of the store, which it holds on to until
// it goes or its connection writes.
//
// Deletions share transactions of kDeletesPerCommit, so that emptying a folder costs one disk
// synchronisation for many items. Such a transaction ends at the latest when the list has become
// empty or goes away. When it cannot be committed, its items are back at their positions.
class ItemList final : public WriteGroup {
 public:
  static constexpr int kDeletesPerCommit = 256;

  ItemList(SessionPtr session, const ItemKind& kind)
      : WriteGroup(kDeletesPerCommit), session_(std::move(session)), kind_(kind) {}
  ~ItemList() override;

  const SessionPtr& session() const { return session_; }
  const ItemKind& kind() const { return kind_; }
  // Of the list's items, from one to the next.
  RowScan& scan() { return scan_; }

  [[nodiscard]] HRESULT Count(std::size_t& count);
  // E_INVALIDARG outside 1 to the count.
  [[nodiscard]] HRESULT OidAt(std::int64_t position, std::uint32_t& oid);
  // Succeeds as well when the item had already gone.
  [[nodiscard]] HRESULT Delete(std::uint32_t oid);
  // Items were deleted through this list; others may have gone without its knowing.
  bool HasDeleted() const { return hasDeleted_; }

 private:
  [[nodiscard]] HRESULT Read();
  void Forget(std::uint32_t oid);
  void Committed() override { undo_.clear(); }
  void RolledBack() override;

  const SessionPtr session_;
  const ItemKind& kind_;
  std::vector<std::uint32_t> oids_;  // ascending, which is the order of creation
  std::vector<std::uint32_t> undo_;  // deleted, not yet committed
  RowScan scan_;
  bool read_ = false;
  bool hasDeleted_ = false;
};

// The object starts with the caller's reference.
IFolder* MakeFolder(const SessionPtr& session, const ItemKind& kind);

}  // namespace ce::host
