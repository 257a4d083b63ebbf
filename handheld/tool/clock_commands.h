// Shows and sets the handheld's own clock.
#pragma once

#include <string>

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// UTC and the handheld's local time.
Outcome ShowClock(Session& session, const Report& report);
// `time` is ISO 8601; without an offset it is UTC.
Outcome SetClock(Session& session, const std::string& time, const Report& report);
// Lets the clock go with the host's again.
Outcome ResetClock(Session& session, const Report& report);

}  // namespace tool
