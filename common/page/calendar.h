// Appointments and tasks as a page shows them: every occurrence of a series in its place.
#pragma once

#include <cstddef>
#include <vector>

#include "common/page/contents.h"
#include "common/page/json.h"
#include "common/page/occurrences.h"

namespace page {

// The days of series that are shown: from the first day of all to two years behind today.
DayRange RangeOf(const std::vector<formats::Appointment>& appointments, formats::local_days today);

// The most days that all series have together, and one at most; each has kFewestDays all the same.
inline constexpr std::size_t kMostDaysOfAll = 400'000;
inline constexpr std::size_t kMostDays = 20'000;
inline constexpr std::size_t kFewestDays = 100;

// Appointments that are no series stand where they are, whatever the range; a series that begins
// behind it with its first day. Of a series with too many days the newest are shown. A changed
// occurrence is an event of its own.
Json EventsOf(const std::vector<formats::Appointment>& appointments, const DayRange& range);

Json TaskOf(const formats::Task& task);

}  // namespace page
