// Between people's appointments (UTF-8) and Pocket Outlook's items (UTF-16).
#pragma once

#include "common/formats/items/appointment.h"
#include "handheld/tool/item_fields.h"
#include "platform/pocket_outlook_calendar.h"

namespace tool {

// Everything but the identity that another program gave it. Throws StatusError.
formats::Appointment ReadItem(ce::IAppointment& item);

// Sets every field and the pattern, without exceptions; does not save. What cannot be kept is a
// line of the result. Throws StatusError.
NotKept WriteItem(const formats::Appointment& appointment, ce::IAppointment& item);

// Deletes and changes the occurrences that are not as the pattern has them; `item` was saved after
// WriteItem. Each is saved by itself. Throws StatusError.
NotKept WriteExceptions(const formats::Appointment& appointment, ce::IAppointment& item);

// What WriteExceptions would not keep, found with an item that is not stored.
NotKept TryExceptions(const formats::Appointment& appointment, ce::IAppointment& scratch);

}  // namespace tool
