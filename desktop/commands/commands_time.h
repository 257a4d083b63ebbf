// "time": the handheld's clock.
#pragma once

#include <optional>

#include "desktop/commands/clock_text.h"
#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"

namespace desktop {

// The handheld's time. Throws Error.
UtcTime AskTime(const ConnectionOptions& connection);

// Prints the handheld's time in UTC, with json as {"time": "..."}.
int GetTime(const ConnectionOptions& connection, bool json, const Console& console);

// Nothing for this computer's time. Prints what the clock says afterwards. When the old and the new
// time lie on different sides of a daylight saving change, the agent moves the new one by the
// difference; it is then set a second time, from its own side.
int SetTime(const ConnectionOptions& connection, std::optional<UtcTime> time,
            const Console& console);

}  // namespace desktop
