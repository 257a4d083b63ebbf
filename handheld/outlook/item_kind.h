// The kinds of items: which folder and item type they are, where the store has them, and who makes
// their objects. A kind without makers is a folder that is empty and takes nothing.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "handheld/outlook/session.h"
#include "platform/com.h"

namespace ce::host {

class ItemList;

struct ItemKind {
  INT folder;    // olFolder...
  INT itemType;  // ol...Item
  const char* table;
  const char* listSql;    // the identifiers, ascending
  const char* deleteSql;  // ?1 is the identifier
  // A new, unsaved item.
  HRESULT (*make)(const SessionPtr& session, IDispatch** item);
  // The stored item, null and E_INVALIDARG when there is none. `list`, when it is not null, is
  // where it is deleted from.
  HRESULT(*load)
  (const SessionPtr& session, const std::shared_ptr<ItemList>& list, std::uint32_t oid,
   IDispatch** item);
};

std::span<const ItemKind> ItemKinds();
// Null for a number that names none.
const ItemKind* KindOfFolder(INT folder);
const ItemKind* KindOfItemType(INT itemType);

// Within a write. Succeeds as well when there is no such item.
[[nodiscard]] HRESULT DeleteItem(Store& store, const ItemKind& kind, std::uint32_t oid);

}  // namespace ce::host
