// A series of one zone as another zone's clocks show it.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>

#include "common/calendar/pattern.h"
#include "common/formats/icalendar/icalendar_event.h"
#include "common/formats/icalendar/icalendar_rule.h"
#include "common/formats/icalendar/zone_table.h"

namespace formats {

// For how long and how often what a series itself cannot say is said occurrence by occurrence.
inline constexpr std::chrono::days kFollowedDays{3653};
inline constexpr std::size_t kMostFollowed = 400;

struct Alignment {
  calendar::Pattern pattern;
  std::chrono::days shift{0};  // from a day of the event's own clock to that of the handheld's
  Times first = {};            // as the pattern has it
  // By their days on the event's own clock: those that are otherwise than the pattern has them.
  std::map<local_days, Times> differing = {};
  std::optional<local_seconds> differsAfter = {};  // when further ones differ
};

// How the handheld shows the series that begins with `firstDay`, on the event's own clock. The
// pattern takes the time that most occurrences of its next 20 years have; those from `from` on that
// have another one differ, `most` at the most, unless `isChanged` says that a day is none of the
// pattern's anyway. Nothing when no pattern has the days.
std::optional<Alignment> Align(const Event& event, const calendar::Pattern& pattern,
                               local_days firstDay, local_days from, std::size_t most,
                               const std::function<bool(local_days)>& isChanged,
                               const ZoneTable& zones, WorkBudget& budget);

}  // namespace formats
