// The content of a zone's file (RFC 8536). Files of the first version, which have no footer, are
// not read.
#pragma once

#include <optional>
#include <string_view>

#include "common/calendar/clock.h"

namespace calendar {

// The POSIX rule that holds after the last change. Nothing when the file is damaged.
std::optional<std::string_view> FooterOf(std::string_view file);

// The changes that it lists. Nothing when the file is damaged, or counts leap seconds.
std::optional<Clock> HistoryOf(std::string_view file);

}  // namespace calendar
