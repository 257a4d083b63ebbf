// The identifiers of a folder's items, and the deletions made through them.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "handheld/outlook/item_kind.h"
#include "handheld/outlook/session.h"

namespace ce::host {

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

  [[nodiscard]] HRESULT Count(std::size_t& count);
  // E_INVALIDARG outside 1 to the count.
  [[nodiscard]] HRESULT OidAt(std::int64_t position, std::uint32_t& oid);
  // Succeeds as well when the item had already gone.
  [[nodiscard]] HRESULT Delete(std::uint32_t oid);
  // Items were deleted through this list; others may have gone without its knowing.
  bool HasDeleted() const { return hasDeleted_; }

 private:
  [[nodiscard]] HRESULT Read();
  [[nodiscard]] HRESULT ReadOids(Store& store);
  void Forget(std::uint32_t oid);
  void Committed() override { undo_.clear(); }
  void RolledBack() override;

  const SessionPtr session_;
  const ItemKind& kind_;
  std::vector<std::uint32_t> oids_;  // ascending, which is the order of creation
  std::vector<std::uint32_t> undo_;  // deleted, not yet committed
  bool read_ = false;
  bool hasDeleted_ = false;
};

// Deletes a stored item of this kind, through its list as long as there is one. Succeeds as well
// for an item that was never stored (0) or has gone.
[[nodiscard]] HRESULT DeleteStored(Store& store, const std::weak_ptr<ItemList>& list, INT itemType,
                                   std::uint32_t oid);

}  // namespace ce::host
