// Lists the messages and calls of a handheld, as a table or as JSON.
#pragma once

#include "maintenance/report.h"
#include "maintenance/session.h"

namespace maintenance {

// Each with the number by which RemoveMessages and RemoveCalls know it. Times are those of the
// handheld's zone, in JSON UTC.
Outcome ShowMessages(Session& session, bool json, const Report& report);
Outcome ShowCalls(Session& session, bool json, const Report& report);

}  // namespace maintenance
