#include "common/page/occurrences.h"

#include <algorithm>
#include <chrono>
#include <tuple>

#include "common/calendar/wall_time.h"

namespace page {
namespace {

using formats::Appointment;
using formats::ChangedOccurrence;
using formats::local_days;
using formats::local_seconds;
using formats::Occurrence;
using formats::Series;
using Days = std::chrono::days;

constexpr Days kLongestReach{366};

bool IsDeleted(const Series& series, local_days day) {
  return std::ranges::binary_search(series.deleted, day);
}

const ChangedOccurrence* FindChanged(const Series& series, local_days day) {
  const auto found =
      std::ranges::lower_bound(series.changed, day, {}, &ChangedOccurrence::original);
  return found != series.changed.end() && found->original == day ? &*found : nullptr;
}

// Null for an appointment that stands where it is, alone.
const Series* SeriesOf(const Appointment& appointment) {
  const bool repeats = appointment.series && calendar::IsValid(appointment.series->pattern);
  return repeats ? &*appointment.series : nullptr;
}

local_seconds EndOf(const Occurrence& occurrence) {
  return std::max(occurrence.end.value_or(*occurrence.start), *occurrence.start);
}

class Placement {
 public:
  explicit Placement(const DayRange& range) : range_(range) {}

  void Add(const Appointment& appointment) {
    if (!appointment.start) return;
    if (const Series* const series = SeriesOf(appointment)) {
      AddDays(appointment, *series);
      for (const ChangedOccurrence& changed : series->changed) AddChanged(appointment, changed);
    } else {
      Put({&appointment, &appointment, *appointment.start, EndOf(appointment)});
    }
  }

  std::vector<PlacedOccurrence> Take() {
    std::ranges::stable_sort(placed_, {}, [](const PlacedOccurrence& each) {
      return std::tuple(formats::DayOf(each.start), !each.said->allDay, each.start, each.end);
    });
    return std::move(placed_);
  }

 private:
  void AddDays(const Appointment& appointment, const Series& series) {
    const local_days first = formats::DayOf(*appointment.start);
    const auto timeOfDay = *appointment.start - first;
    const auto length = EndOf(appointment) - *appointment.start;
    const Days reach = std::min(std::chrono::ceil<Days>(timeOfDay + length), kLongestReach);
    const calendar::SeriesDays numbered(series.pattern, first);
    ForEachDay(series, numbered, numbered.CountBefore(range_.first - reach),
               numbered.CountBefore(range_.last + Days(1)),
               [&](local_days day, const ChangedOccurrence* changed) {
                 if (changed) return;
                 const local_seconds start = day + timeOfDay;
                 Put({&appointment, &appointment, start, start + length});
               });
  }

  void AddChanged(const Appointment& appointment, const ChangedOccurrence& changed) {
    const Occurrence& said = changed.occurrence;
    if (said.start) Put({&appointment, &said, *said.start, EndOf(said)});
  }

  void Put(const PlacedOccurrence& occurrence) {
    const DayRange taken = occurrence.days();
    if (taken.first <= range_.last && taken.last >= range_.first) placed_.push_back(occurrence);
  }

  const DayRange range_;
  std::vector<PlacedOccurrence> placed_;
};

// Keeps the nearest days that it is told.
class Neighbours {
 public:
  explicit Neighbours(const DayRange& range) : range_(range) {}

  void Add(const Appointment& appointment) {
    if (!appointment.start) return;
    const local_days start = formats::DayOf(*appointment.start);
    const Series* const series = SeriesOf(appointment);
    if (!series) return Tell(start);
    for (const ChangedOccurrence& changed : series->changed)
      if (changed.occurrence.start) Tell(formats::DayOf(*changed.occurrence.start));
    const calendar::SeriesDays numbered(series->pattern, start);
    const auto isRegular = [&](local_days day) {
      return !IsDeleted(*series, day) && !FindChanged(*series, day);
    };
    std::int64_t behind = numbered.CountBefore(range_.last + Days(1));
    while (behind < numbered.size() && !isRegular(numbered[behind])) ++behind;
    if (behind < numbered.size()) Tell(numbered[behind]);
    std::int64_t before = numbered.CountBefore(range_.first) - 1;
    while (before >= 0 && !isRegular(numbered[before])) --before;
    if (before >= 0) Tell(numbered[before]);
  }
  const NearestDays& found() const { return found_; }

 private:
  void Tell(local_days day) {
    if (day < range_.first) found_.before = std::max(found_.before.value_or(day), day);
    if (day > range_.last) found_.behind = std::min(found_.behind.value_or(day), day);
  }

  const DayRange range_;
  NearestDays found_;
};

}  // namespace

void ForEachDay(const Series& series, const calendar::SeriesDays& days, std::int64_t begin,
                std::int64_t end, const DayVisitor& visit) {
  for (std::int64_t n = begin; n < end; ++n) {
    const local_days day = days[n];
    if (!IsDeleted(series, day)) visit(day, FindChanged(series, day));
  }
}

DayRange PlacedOccurrence::days() const {
  const local_days first = formats::DayOf(start);
  const local_days last = formats::DayOf(end);
  const bool untilMidnight = said->allDay || end == last;
  return {first, untilMidnight ? std::max(first, last - Days(1)) : last};
}

std::vector<PlacedOccurrence> OccurrencesIn(std::span<const Appointment> appointments,
                                            const DayRange& range) {
  Placement placement(range);
  for (const Appointment& appointment : appointments) placement.Add(appointment);
  return placement.Take();
}

NearestDays NearestTo(std::span<const Appointment> appointments, const DayRange& range) {
  Neighbours neighbours(range);
  for (const Appointment& appointment : appointments) neighbours.Add(appointment);
  return neighbours.found();
}

}  // namespace page
