// Tells whether a contact of the wire has changed.
#pragma once

#include <string>

#include "formats/contact.h"

namespace desktop {

// Stands for what the wire carries of the contact, its FileAs as formats::WithFileAs gives it; the
// UID and the fields that never leave the handheld do not count.
std::string WireHash(const formats::Contact& contact);

// The same for a contact that was sent and for what every handheld gives back of it: the furigana,
// which some take no notice of, kinds of line ends and blanks at the ends of a text do not count.
std::string StateHash(const formats::Contact& contact);

}  // namespace desktop
