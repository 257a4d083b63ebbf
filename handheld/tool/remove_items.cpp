#include "handheld/tool/remove_items.h"

#include <fmt/core.h>

#include "handheld/tool/status_error.h"
#include "platform/pocket_outlook_calendar.h"

namespace tool {
namespace {

// E_NOINTERFACE for an item of another kind.
template <typename Item>
ce::HRESULT DeleteAs(const ce::ComPtr<ce::IDispatch>& any) {
  ce::ComPtr<Item> item;
  const ce::HRESULT status = any->QueryInterface(Item::kIid, item.put_void());
  return ce::Failed(status) ? status : item->Delete();
}

using Delete = ce::HRESULT (*)(const ce::ComPtr<ce::IDispatch>&);
constexpr Delete kKinds[] = {DeleteAs<ce::IContact>, DeleteAs<ce::IAppointment>,
                             DeleteAs<ce::ITask>};

ce::HRESULT Remove(ce::IPOutlookApp& outlook, std::uint32_t oid) {
  ce::ComPtr<ce::IDispatch> item;
  ce::HRESULT status = outlook.GetItemFromOid(static_cast<ce::LONG>(oid), item.put());
  if (ce::Failed(status)) return status;
  for (const Delete remove : kKinds)
    if (status = remove(item); status != ce::E_NOINTERFACE) return status;
  return status;
}

}  // namespace

Outcome RemoveItems(Session& session, const std::vector<std::uint32_t>& oids,
                    const Report& report) {
  std::size_t removed = 0;
  for (const std::uint32_t oid : oids) {
    if (const ce::HRESULT status = Remove(*session.Outlook().get(), oid); ce::Failed(status)) {
      fmt::print(report.err, "corvane-device: {}: {}\n", oid, StatusText(status));
      continue;
    }
    fmt::print(report.out, "removed {:>10}\n", oid);
    ++removed;
  }
  if (removed == oids.size()) return Outcome::kDone;
  return removed == 0 ? Outcome::kFailed : Outcome::kPartlyDone;
}

}  // namespace tool
