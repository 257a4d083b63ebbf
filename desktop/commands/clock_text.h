// Times as people write them and as the agent's clock requests carry them.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace desktop {

using UtcTime = std::chrono::sys_time<std::chrono::milliseconds>;

// ISO 8601 with date and time of day, in UTC unless it names another zone. Nothing for other text
// and for times that do not exist.
std::optional<UtcTime> ParseTime(std::string_view text);

// "2024-05-01T12:34:56Z".
std::string FormatTime(UtcTime time);

// The 16 bytes of a SYSTEMTIME in UTC. Years are 1601 to 30827; nothing when they are not, or the
// bytes hold no time.
std::optional<std::string> SystemTimeBytes(UtcTime time);
std::optional<UtcTime> TimeFromSystemTime(std::string_view bytes);

}  // namespace desktop
