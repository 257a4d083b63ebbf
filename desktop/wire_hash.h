// Tells whether a contact of the wire has changed.
#pragma once

#include <string>

#include "formats/contact.h"

namespace desktop {

// Stands for what the wire carries of the contact, its FileAs as formats::WithFileAs gives it; the
// UID and the fields that never leave the handheld do not count.
std::string WireHash(const formats::Contact& contact);

}  // namespace desktop
