// One form for what records can say in several ways.
#pragma once

#include "common/formats/items/appointment.h"
#include "common/formats/items/contact.h"
#include "common/formats/items/task.h"

namespace tool {

// The record as it is left when a handheld's item is read, written for other programs and read
// again: a series has the day of its end, not a count, and begins with its first day; one without
// any day, or without a start, is none; what has a start has an end.
formats::Appointment KeptForm(formats::Appointment appointment);
formats::Task KeptForm(formats::Task task);
inline const formats::Contact& KeptForm(const formats::Contact& contact) {
  return contact;
}

}  // namespace tool
