// The content of a zone's file (RFC 8536). Files of the first version, which have no footer, are
// not read.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>
#include <vector>

namespace calendar {

struct OffsetChange {
  std::chrono::sys_seconds at;
  std::chrono::seconds offset;  // from then on: local time minus UTC
};

struct ZoneHistory {
  std::chrono::seconds firstOffset{};  // before all changes
  std::vector<OffsetChange> changes;   // ascending
};

// The POSIX rule that holds after the last change. Nothing when the file is damaged.
std::optional<std::string_view> FooterOf(std::string_view file);

// Nothing when the file is damaged, or counts leap seconds.
std::optional<ZoneHistory> HistoryOf(std::string_view file);

}  // namespace calendar
