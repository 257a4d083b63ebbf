// What sending or taking in a record loses.
#pragma once

#include <string>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/task.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// What sending it loses: one line a field, for people, each beginning with the field's name.
std::vector<std::string> WireLosses(const formats::Contact& contact);
std::vector<std::string> WireLosses(const formats::Appointment& appointment,
                                    const calendar::Zone& zone);
std::vector<std::string> WireLosses(const formats::Task& task);

// What a record of an appointment or a task that came in says and AppointmentFromXml or TaskFromXml
// cannot keep.
std::vector<std::string> RecordLosses(const XmlElement& record);

}  // namespace desktop
