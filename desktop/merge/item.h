// An item of any kind, as the two sides of a handheld and a desk hold it.
#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/task.h"

namespace desktop {

using Item = std::variant<formats::Contact, formats::Appointment, formats::Task>;

// In the order of Item's alternatives.
enum class ItemKind { kContact, kAppointment, kTask };

ItemKind KindOf(const Item& item);
const std::string& UidOf(const Item& item);
void SetUid(Item& item, std::string uid);
// What to call the item in a message; never empty.
std::string DisplayName(const Item& item);

// The common form: one of the several ways of saying the same. Line ends count as LF, blanks, tabs
// and line ends around a text not at all; categories in any order; a FileAs that the handheld would
// derive as one that is not there; the end of a series as its last day. It has no UID.
std::string CommonText(std::string text);
Item CommonForm(Item item);
bool SameText(std::string_view a, std::string_view b);
// Equal in the common form.
bool SameContent(const Item& a, const Item& b);
// 32 hexadecimal digits, the same for items that are equal in the common form.
std::string CommonHash(const Item& item);

}  // namespace desktop
