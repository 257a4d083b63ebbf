// Appointments and tasks as JSON, for programs.
#pragma once

#include <cstdint>
#include <string>

#include "common/formats/items/appointment.h"
#include "common/formats/items/task.h"

namespace formats {

// One object on one line, as ContactToJson writes: "oid" (unsigned), "uid" when there is one, the
// Pocket Outlook properties that are not empty under their names, "Start" as YYYY-MM-DDTHH:MM:SS in
// the handheld's zone (YYYY-MM-DD and an "End" that is the last day for all-day ones),
// "categories", "recurrence" as an object of the pattern's properties with "deleted" and "changed".
std::string AppointmentToJson(const Appointment& appointment, std::uint32_t oid);
std::string TaskToJson(const Task& task, std::uint32_t oid);

}  // namespace formats
