// The events of one UID as appointments.
#pragma once

#include <optional>
#include <vector>

#include "common/formats/icalendar/icalendar.h"
#include "common/formats/icalendar/icalendar_event.h"
#include "common/formats/icalendar/icalendar_rule.h"
#include "common/formats/icalendar/zone_table.h"

namespace formats {

struct EventGroup {
  std::optional<Event> master;
  std::vector<Event> changes;  // those with a RECURRENCE-ID, each with another one
};

// Appends the appointments and the notices of the group. docs/calendar-mapping.md tells the rules.
void AddAppointments(EventGroup group, const ZoneTable& zones, WorkBudget& budget,
                     CalendarFile& file);

}  // namespace formats
