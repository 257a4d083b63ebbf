// One of the several ways of saying the same, so that what was written can be known again.
#pragma once

#include "common/formats/items/appointment.h"
#include "common/formats/items/task.h"

namespace formats {

// How the end of a series is said.
//
// kCount, for what is sent: as a number of occurrences. The exceptions are of its own days alone,
// and a changed occurrence is otherwise than the series. A series without a day stays as it is.
//
// kDay, for what a handheld keeps: as the last day. A series without a day, or without a start, is
// none, and exceptions without a start are none.
enum class SeriesEnd { kCount, kDay };

// The same appointment or task. A series begins with its first day; what has a start has an end.
Appointment Normalized(Appointment appointment, SeriesEnd end);
Task Normalized(Task task, SeriesEnd end);

}  // namespace formats
