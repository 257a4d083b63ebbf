// Tasks as the wire has them.
#pragma once

#include <string>

#include "common/calendar/zone.h"
#include "common/formats/items/task.h"
#include "desktop/wire/xml_records.h"

namespace desktop {

// A record element without an "Oid". Empty fields are left out, which clears them on the handheld.
// A reminder travels as whole minutes before the day on which the task is due, so that one without
// such a day is left out. The day of completion is: a handheld stamps it.
std::string TaskToXml(const formats::Task& task);

// What the record says. Elements that it does not know, dates that do not exist and patterns that
// no handheld has are left out. The zone, the handheld's, is asked for a reminder of a task that is
// never due.
formats::Task TaskFromXml(const XmlElement& record, const calendar::Zone& zone);

}  // namespace desktop
