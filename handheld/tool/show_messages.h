// Lists the messages and calls of a handheld, as a table or as JSON.
#pragma once

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// Each with the number by which RemoveMessages and RemoveCalls know it. Times are those of the
// handheld's zone, in JSON UTC.
Outcome ShowMessages(Session& session, bool json, const Report& report);
Outcome ShowCalls(Session& session, bool json, const Report& report);

}  // namespace tool
