// Between people's contacts (UTF-8) and Pocket Outlook's items (UTF-16).
#pragma once

#include "common/formats/items/contact.h"
#include "handheld/tool/item_fields.h"
#include "platform/pocket_outlook.h"

namespace tool {

// Everything but the identity that another program gave it. Throws StatusError.
formats::Contact ReadItem(ce::IContact& item);

// Sets every field, clearing those that the contact lacks; does not save. A text that is too long
// is cut, a field that the handheld does not have is left out: each is a line of the result.
// Throws StatusError.
NotKept WriteItem(const formats::Contact& contact, ce::IContact& item);

}  // namespace tool
