// The clocks that the times of one iCalendar file are on.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/calendar/zone.h"
#include "common/formats/icalendar/icalendar_component.h"
#include "common/formats/icalendar/icalendar_rule.h"
#include "common/formats/icalendar/icalendar_values.h"
#include "common/formats/lines/notice_list.h"

namespace formats {

using calendar::Clock;

// A point in time on the clock that it was written for.
struct Moment {
  local_seconds wall = {};
  bool isDate = false;
  bool isFloating = false;  // a date, or a time without a zone
  std::shared_ptr<const Clock> clock = {};
};

// The same moment as another clock shows it; what floats stays as it is.
local_seconds WallOn(const Moment& moment, const std::shared_ptr<const Clock>& clock);

class ZoneTable {
 public:
  // `own` is the handheld's zone. Both must outlive the table.
  ZoneTable(const calendar::Zone& own, WorkBudget& budget);

  // Zones must be added before a moment of theirs is asked for. One of a VCALENDAR stands before
  // one of the same name of another; of one VCALENDAR's the last one counts.
  void Add(Component vtimezone);
  // A zone that nobody knows is taken for the handheld's own, with one notice.
  Moment MomentOf(const TimeValue& value, std::size_t calendar, std::size_t line,
                  NoticeList& notices);
  const std::shared_ptr<const Clock>& own() const { return own_; }

 private:
  using Name = std::pair<std::size_t, std::string>;  // VCALENDAR and TZID
  std::shared_ptr<const Clock> Find(const std::string& tzid, std::size_t calendar);
  std::shared_ptr<const Clock> FromSystem(std::string_view name) const;
  std::shared_ptr<const Clock> FromFile(const std::string& tzid, std::size_t calendar);
  std::shared_ptr<const Clock> FromPath(std::string_view tzid) const;

  const calendar::Zone& zone_;
  WorkBudget& budget_;
  const std::shared_ptr<const Clock> own_;
  const std::shared_ptr<const Clock> utc_;
  std::map<Name, Component> components_;
  std::map<std::string, std::size_t> calendarOf_;  // the last that has the TZID
  std::map<Name, std::shared_ptr<const Clock>> found_;
};

}  // namespace formats
