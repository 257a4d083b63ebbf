// The days of a calendar: every occurrence of a series in its place.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "common/calendar/pattern.h"
#include "common/formats/items/appointment.h"

namespace page {

struct DayRange {
  formats::local_days first;
  formats::local_days last;  // included
};

// Each day of a series that is not deleted, with the numbers from `begin` to before `end`.
// `changed` is null for one that is as its series has it.
using DayVisitor =
    std::function<void(formats::local_days day, const formats::ChangedOccurrence* changed)>;
void ForEachDay(const formats::Series& series, const calendar::SeriesDays& days, std::int64_t begin,
                std::int64_t end, const DayVisitor& visit);

struct PlacedOccurrence {
  const formats::Appointment* whole;
  const formats::Occurrence* said;  // `whole`, or what its series has instead on that day
  formats::local_seconds start;
  formats::local_seconds end;  // not before the start

  // The days on which it stands; one that ends at midnight does not stand on the day after.
  DayRange days() const;
};

// What stands on a day of the range, by its first day, what takes the whole day first, then by its
// time. An appointment without a start is nowhere. An occurrence of a series that takes longer than
// a year is not looked for behind its first 367 days. The appointments must outlive the answer.
std::vector<PlacedOccurrence> OccurrencesIn(std::span<const formats::Appointment> appointments,
                                            const DayRange& range);

// The days nearest to a range, outside of it, on which something begins.
struct NearestDays {
  std::optional<formats::local_days> before, behind;
};
NearestDays NearestTo(std::span<const formats::Appointment> appointments, const DayRange& range);

}  // namespace page
