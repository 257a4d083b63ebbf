// Points in time of messages and calls.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace formats {

// UTC. Those that are kept are of the years 1601 to 9999.
using MessageTime = std::chrono::sys_time<std::chrono::milliseconds>;

bool IsKeepableTime(MessageTime time);

// Nothing unless it is one that is kept.
std::optional<MessageTime> TimeFromMilliseconds(std::int64_t sinceEpoch);

// The handheld's file times: ticks of 100 ns since 1601. What is below a millisecond is cut off;
// nothing for a year that is not kept.
std::optional<MessageTime> TimeFromFileTime(std::int64_t fileTime);
std::int64_t ToFileTime(MessageTime time);

// "2008-02-15T13:45:01Z", with milliseconds ("01.250Z") where there are some. Empty for a time that
// is not kept.
std::string FormatMessageTime(MessageTime time);
// That, and what else ParseIsoTime takes; a text without an offset is taken as UTC. Digits beyond
// the milliseconds are cut off.
std::optional<MessageTime> ParseMessageTime(std::string_view text);

}  // namespace formats
