// Visits the items of a handheld one at a time.
#pragma once

#include <cstdint>

#include "handheld/tool/appointment_item.h"
#include "handheld/tool/contact_item.h"
#include "handheld/tool/item_kinds.h"
#include "handheld/tool/task_item.h"

namespace tool {

// How many the folder (olFolder...) has. Throws StatusError.
inline std::uint32_t CountItems(Session& session, ce::INT folder) {
  ce::INT count = 0;
  Check(session.Items(folder)->get_Count(&count), "the folder");
  return static_cast<std::uint32_t>(count);
}

// Calls visit(oid, record) in the store's order, from one snapshot. Throws StatusError.
template <typename Record, typename Visit>
void ForEachItem(Session& session, Visit visit) {
  const auto items = session.Items(KindOf<Record>::kFolder);
  ce::INT count = 0;
  Check(items->get_Count(&count), "the folder");
  for (ce::INT i = 1; i <= count; ++i) {
    ce::ComPtr<ce::IDispatch> any;
    Check(items->Item(i, any.put()), KindOf<Record>::kName);
    const auto item = AsItemOf<Record>(any);
    ce::LONG oid = 0;
    Check(item->get_Oid(&oid), KindOf<Record>::kName);
    const Record record = ReadItem(*item.get());
    visit(static_cast<std::uint32_t>(oid), record);
  }
}

}  // namespace tool
