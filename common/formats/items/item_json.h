// Contacts, appointments and tasks as programs are given them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/task.h"

namespace formats {

// One JSON object on one line: "oid" (unsigned), the Pocket Outlook properties that are not empty
// under their names, "categories" as an array, days as YYYY-MM-DD. An appointment and a task have a
// "uid" when there is one, times as YYYY-MM-DDTHH:MM:SS in the handheld's zone (an all-day
// appointment days, its "End" the last one), and "recurrence" as an object of the pattern's
// properties with "deleted" and "changed".
std::string ContactToJson(const Contact& contact, std::uint32_t oid);
std::string AppointmentToJson(const Appointment& appointment, std::uint32_t oid);
std::string TaskToJson(const Task& task, std::uint32_t oid);

// The same in pieces, with an "oid" of 0, without a "uid" and, but for a contact, every line break
// as LF. Hashes that outlive a version are made of it.
using PieceSink = std::function<void(std::string_view piece)>;
void AddContent(const Contact& contact, const PieceSink& sink);
void AddContent(const Appointment& appointment, const PieceSink& sink);
void AddContent(const Task& task, const PieceSink& sink);

}  // namespace formats
