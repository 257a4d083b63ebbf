// Appointments and occurrences out of events as they were read.
#pragma once

#include <string>

#include "common/formats/icalendar/icalendar_event.h"
#include "common/formats/icalendar/zone_table.h"
#include "common/formats/items/appointment.h"

namespace formats {

// Whether an appointment can have these times; one that cannot is left out.
bool AreKeepable(const Times& times);

// An appointment of its own at these times.
Appointment AppointmentAt(const Event& event, const Times& times, std::string uid,
                          const ZoneTable& zones);

// What the change makes of an occurrence of its series. One that has no SUMMARY says what is
// different alone, and has the rest as the series has it; `regular` are the times that it had.
Occurrence OccurrenceOf(const Event& change, const Event& series, const Times& regular,
                        const ZoneTable& zones);

// Notices what the change has of its own and an occurrence cannot.
void NoticeUnkeptChanges(Event& change, const Event& series, const ZoneTable& zones);

// "UID/20080215T134500": the identity of one occurrence, by its time on its own clock; empty
// without a UID.
std::string UidOfOccurrence(const std::string& uid, local_seconds wall, bool isDate);

}  // namespace formats
