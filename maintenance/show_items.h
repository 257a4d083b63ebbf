// Lists what is on a handheld, as a table or as JSON.
#pragma once

#include "maintenance/report.h"
#include "maintenance/session.h"

namespace maintenance {

Outcome ShowContacts(Session& session, bool json, const Report& report);
Outcome ShowCalendar(Session& session, bool json, const Report& report);
Outcome ShowTasks(Session& session, bool json, const Report& report);

}  // namespace maintenance
