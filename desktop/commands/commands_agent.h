// "logging" and "quit": the agent itself.
#pragma once

#include <cstdint>

#include "desktop/commands/console.h"
#include "desktop/wire/connection.h"

namespace desktop {

enum class LoggingLevel : std::uint32_t { kOff = 0, kOn = 1, kVerbose = 42 };

int SetLogging(const ConnectionOptions& connection, LoggingLevel level, const Console& console);

// Asks the agent to end, and wakes it with one more connection, since it sees the request only when
// it next looks up from waiting.
int Quit(const ConnectionOptions& connection, const Console& console);

}  // namespace desktop
