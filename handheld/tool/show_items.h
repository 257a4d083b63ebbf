// Lists what is on a handheld, as a table or as JSON.
#pragma once

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

Outcome ShowContacts(Session& session, bool json, const Report& report);
Outcome ShowCalendar(Session& session, bool json, const Report& report);
Outcome ShowTasks(Session& session, bool json, const Report& report);

}  // namespace tool
