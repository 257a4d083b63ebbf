// Tells whether a record of the wire has changed.
#pragma once

#include <string>

#include "common/calendar/zone.h"
#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/task.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// Stands for what the wire carries of the contact, its FileAs as formats::WithFileAs gives it; the
// UID and the fields that never leave the handheld do not count.
std::string WireHash(const formats::Contact& contact);
// The same for these, in their normal form. The zone is the handheld's.
std::string WireHash(const formats::Appointment& appointment, const calendar::Zone& zone);
std::string WireHash(const formats::Task& task);

// The same for a contact that was sent and for what every handheld gives back of it: the furigana,
// which some take no notice of, kinds of line ends and blanks at the ends of a text do not count.
std::string StateHash(const formats::Contact& contact);
// The same for a record of any kind. Of an appointment and a task it does not depend on a zone; how
// the end of a series is told counts, the day on which a task was completed does not.
std::string StateHash(const XmlElement& record);

}  // namespace desktop
