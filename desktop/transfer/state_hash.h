// Tells whether what a handheld has is still what was sent or received.
#pragma once

#include <string>

#include "common/formats/items/contact.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// The same for a contact that was sent and for what every handheld gives back of it: the furigana,
// which some take no notice of, kinds of line ends and blanks at the ends of a text do not count.
std::string StateHash(const formats::Contact& contact);
// The same for a record of any kind. Of an appointment and a task it does not depend on a zone; how
// the end of a series is told counts, the day on which a task was completed does not.
std::string StateHash(const XmlElement& record);

}  // namespace desktop
