// One of the several ways of saying the same, so that what was sent can be known again.
#pragma once

#include "common/formats/items/appointment.h"
#include "common/formats/items/task.h"

namespace desktop {

// The same appointment; what has a start has an end. A series begins with its first day, has its
// end as a number of occurrences, and exceptions of its own days alone; a changed occurrence is
// otherwise than the series.
formats::Appointment Normalized(formats::Appointment appointment);

// The same task. A series begins with its first day and has its end as a number of occurrences.
formats::Task Normalized(formats::Task task);

}  // namespace desktop
