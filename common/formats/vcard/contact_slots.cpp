#include "common/formats/vcard/contact_slots.h"

#include "common/text/text.h"

namespace formats {

bool FillsSlotsInOrder(const Contact& contact, std::span<const ContactField> slots) {
  for (std::size_t i = 0; i < slots.size(); ++i) {
    if (contact[slots[i]].empty()) continue;
    for (ContactField before : slots.first(i)) {
      if (contact[before].empty() || contact[before] == contact[slots[i]]) return false;
    }
  }
  return true;
}

ContentValue AddressValue(const Contact& contact, const AddressSlot& slot) {
  ContentValue parts;
  parts.Separate(';');
  for (const ContactField field : slot.fields()) parts.Separate(';').Add(contact[field]);
  return parts;
}

std::string SlotValue(const Contact& contact, ContactField slot) {
  if (slot == ContactField::kWebPage) return ContentValue(kUriSpecials).Add(contact[slot]).text();
  for (const AddressSlot& address : kAddressSlots)
    if (address.street == slot) return AddressValue(contact, address).text();
  return ContentValue().Add(contact[slot]).text();
}

bool MustBeExact(std::string_view text) {
  return text::TrimBlanks(text).size() != text.size() || text::StartsWithNoCase(text, "tel:");
}

}  // namespace formats
