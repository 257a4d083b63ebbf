#include "maintenance/contact_walk.h"

#include "maintenance/contact_item.h"
#include "maintenance/status_error.h"

namespace maintenance {

void ForEachContact(Session& session,
                    const std::function<void(std::uint32_t, const formats::Contact&)>& visit) {
  const auto items = session.Contacts();
  ce::INT count = 0;
  Check(items->get_Count(&count), "the contacts");
  for (ce::INT i = 1; i <= count; ++i) {
    ce::ComPtr<ce::IDispatch> item;
    Check(items->Item(i, item.put()), "a contact");
    const auto contact = item.query<ce::IContact>();
    if (!contact) throw StatusError("a contact", ce::E_NOINTERFACE);
    ce::LONG oid = 0;
    Check(contact->get_Oid(&oid), "a contact");
    visit(static_cast<std::uint32_t>(oid), ReadContactItem(*contact.get()));
  }
}

}  // namespace maintenance
