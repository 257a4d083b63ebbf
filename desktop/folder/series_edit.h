// When an event is: its times, its rule and its exceptions, as lines.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/formats/items/appointment.h"
#include "desktop/folder/calendar_lines.h"
#include "desktop/folder/time_forms.h"

namespace desktop {

enum class TimeMode {
  kMoved,      // on their own clocks, by as much as on the handheld's
  kConverted,  // to what their own clocks show then
  kOwnZone,    // written anew, in the handheld's zone
};

// What of it is to be changed, and how.
struct SeriesPlan {
  bool times = true;
  bool rule = true;
  bool exceptions = true;
  TimeMode mode = TimeMode::kConverted;
  bool wholeRule = false;  // the rule is written anew, not part by part
};

class SeriesEdit {
 public:
  // `main` is the part that says the event itself; `canonical` says it as the writer does, first
  // the event, then its changed occurrences.
  SeriesEdit(const CalendarContext& context, const LineStyle& style, const CalendarParts& parts,
             std::size_t main, const formats::Appointment& was, const formats::Appointment& to,
             const CalendarParts& canonical);

  // The days of the changed occurrences that are said by events of their own, or are to be. Others
  // come of the zone that the event is written in, and follow it.
  const std::set<local_days>& ownDays() const { return ownDays_; }
  // The parts that say changed occurrences, as they were given.
  const std::map<local_days, std::size_t>& ownParts() const { return ownParts_; }

  // The parts as the plan changes them. Those that go are empty; those that are new stand at the
  // end.
  CalendarParts Build(const SeriesPlan& plan);
  // The part that says the changed occurrence of a day, in what Build gave last.
  const std::map<local_days, std::size_t>& changes() const { return changes_; }

  // A copy of an event that says one occurrence of it, by the time that it has on its own clock.
  CalendarPart OccurrenceOf(const CalendarPart& event, local_seconds original) const;
  // `was` are the times that the part has.
  void SetTimes(CalendarPart& part, const formats::Occurrence& was, const formats::Occurrence& to,
                const CalendarPart& canonical, TimeMode mode);

 private:
  void SetEnd(CalendarPart& part, const formats::Occurrence& was, const formats::Occurrence& to,
              const TimeValue& start, TimeMode mode);
  local_seconds WallOf(const TimeValue& form, local_seconds was, local_seconds to, TimeMode mode);
  void SetRule(CalendarPart& part, bool whole) const;
  void SetDeletedDays(CalendarPart& part);
  void SetChanges(CalendarParts& parts, const SeriesPlan& plan);
  // The day of the series, as the handheld has it, that a time of one of its exceptions means.
  local_days DayOfException(const TimeValue& value);
  local_seconds WallOfDay(local_days day) const;
  // The day of the series as a time like this one, which names one of its exceptions.
  local_seconds TimeOfException(local_days day, const TimeValue& like);
  CalendarLine Write(const RawLine& line) const { return LineOf(line, style_); }

  const LineStyle& style_;
  const CalendarParts& parts_;
  const std::size_t main_;
  const formats::Appointment& was_;
  const formats::Appointment& to_;
  const CalendarParts& canonical_;
  TimeForms forms_;
  std::optional<TimeValue> oldStart_, start_;  // of the event itself
  std::chrono::days oldShift_{0}, shift_{0};   // from a day of its own clock to the handheld's
  std::set<local_days> ownDays_;
  std::map<local_days, std::size_t> ownParts_;
  std::map<local_days, std::size_t> changes_;
  std::set<local_days> cancelled_;  // days whose occurrences an event of their own cancels
};

// The line with another value, without parameters that tell of the one that it had.
RawLine WithValue(const CalendarLine& line, std::string value);

}  // namespace desktop
