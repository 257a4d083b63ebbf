#include "platform/host/outlook/item_kind.h"

#include "platform/host/outlook/contact_item.h"
#include "platform/pocket_outlook.h"

namespace ce::host {
namespace {

constexpr ItemKind kKinds[] = {
    {olFolderCalendar, olAppointmentItem, nullptr, nullptr, nullptr, nullptr, nullptr},
    {olFolderContacts, olContactItem, "contacts", "SELECT oid FROM contacts ORDER BY oid",
     "DELETE FROM contacts WHERE oid = ?1", &MakeContact, &LoadContact},
    {olFolderTasks, olTaskItem, nullptr, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace

std::span<const ItemKind> ItemKinds() {
  return kKinds;
}

const ItemKind* KindOfFolder(INT folder) {
  for (const ItemKind& kind : kKinds) {
    if (kind.folder == folder) return &kind;
  }
  return nullptr;
}

const ItemKind* KindOfItemType(INT itemType) {
  for (const ItemKind& kind : kKinds) {
    if (kind.itemType == itemType) return &kind;
  }
  return nullptr;
}

HRESULT DeleteItem(Store& store, const ItemKind& kind, std::uint32_t oid) {
  Statement remove;
  if (const HRESULT status = store.Prepare(kind.deleteSql, remove); Failed(status)) return status;
  remove.BindInteger(1, oid);
  return remove.Run("sqlite3_step:write");
}

}  // namespace ce::host
