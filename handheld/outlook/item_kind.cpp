#include "handheld/outlook/item_kind.h"

#include "handheld/outlook/appointment_item.h"
#include "handheld/outlook/contact_item.h"
#include "handheld/outlook/task_item.h"
#include "platform/pocket_outlook.h"

namespace ce::host {
namespace {

constexpr ItemKind kKinds[] = {
    // The exceptions of a series go with it: the store sees to that.
    {olFolderCalendar, olAppointmentItem, "appointments",
     "SELECT oid FROM appointments ORDER BY oid", "DELETE FROM appointments WHERE oid = ?1",
     &MakeAppointment, &LoadAppointment},
    {olFolderContacts, olContactItem, "contacts", "SELECT oid FROM contacts ORDER BY oid",
     "DELETE FROM contacts WHERE oid = ?1", &MakeContact, &LoadContact},
    {olFolderTasks, olTaskItem, "tasks", "SELECT oid FROM tasks ORDER BY oid",
     "DELETE FROM tasks WHERE oid = ?1", &MakeTask, &LoadTask},
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
