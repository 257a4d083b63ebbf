// Appointments as the wire has them.
#pragma once

#include <string>

#include "common/calendar/zone.h"
#include "common/formats/items/appointment.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// A record element without an "Oid". Empty fields are left out, which clears them on the handheld.
// Times travel in UTC, as a handheld in that zone converts them; whole days travel as they stand.
//
// A handheld whose system has version 4 takes the end of a recurring all-day event for the day
// after the last one. The wire does not tell the version, and no other does so: there, such an
// event is a day shorter than here, and comes back as it was sent.
std::string AppointmentToXml(const formats::Appointment& appointment, const calendar::Zone& zone);

// What the record says. Elements that it does not know, dates that do not exist and patterns that
// no handheld has are left out. An all-day event has a day at least.
// Whether days of exceptions are days of the series is not looked at.
formats::Appointment AppointmentFromXml(const XmlElement& record, const calendar::Zone& zone);

}  // namespace desktop
