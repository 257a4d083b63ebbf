// How an appointment's Start, End and Duration move each other (IAppointment).
#pragma once

#include <chrono>

#include "handheld/store/appointment_row.h"

namespace ce::host {

// Each answers false, and changes nothing, for a value that the appointment cannot take: no item's
// date, a negative duration, or one that would move the other end out of the dates that items have.
[[nodiscard]] bool SetStart(AppointmentFields& fields, DATE start);
[[nodiscard]] bool SetEnd(AppointmentFields& fields, DATE end);
[[nodiscard]] bool SetDuration(AppointmentFields& fields, LONG minutes);

// What lies between Start and End, to the second; by the Duration when one of them is "none".
std::chrono::seconds LengthOf(const AppointmentFields& fields);

}  // namespace ce::host
