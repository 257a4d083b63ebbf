#include "common/formats/vcard/contact_slots.h"

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

}  // namespace formats
