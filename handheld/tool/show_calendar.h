// The calendar of a handheld as its days, every occurrence of a series in its place.
#pragma once

#include "handheld/tool/calendar_window.h"
#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// Days and times are those of the handheld's clock and zone. As JSON every occurrence is a line, an
// appointment by itself, with the OID of what it belongs to. Throws UsageError as WindowOf does.
Outcome ShowCalendar(Session& session, const CalendarChoice& choice, bool json,
                     const Report& report);

}  // namespace tool
