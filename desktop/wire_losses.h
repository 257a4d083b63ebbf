// What sending or taking in a record loses.
#pragma once

#include <string>
#include <vector>

#include "calendar/zone.h"
#include "desktop/xml_records.h"
#include "formats/appointment.h"
#include "formats/contact.h"
#include "formats/task.h"

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
