// One VEVENT, read but not yet put together with the others of its series.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "common/formats/icalendar/icalendar_alarm.h"
#include "common/formats/icalendar/icalendar_component.h"
#include "common/formats/icalendar/icalendar_values.h"
#include "common/formats/icalendar/zone_table.h"
#include "common/formats/items/appointment.h"
#include "common/formats/lines/notice_list.h"

namespace formats {

// An EXDATE, or an RDATE with an end of its own.
struct ListedDate {
  std::size_t line = 0;
  Moment moment = {};
  std::optional<Moment> end = {};
  std::optional<Span> length = {};
};

struct RuleText {
  std::size_t line = 0;
  std::string text;
};

struct Event {
  std::size_t line = 0;  // of its BEGIN
  // Everything but start, end, reminder and series.
  Appointment fields;
  bool hasSummary = false;
  bool isCancelled = false;
  std::optional<Moment> start = {};
  std::optional<Moment> end = {};
  std::optional<Span> duration = {};
  std::optional<Alarm> alarm = {};
  std::vector<RuleText> rules, exceptionRules;
  std::vector<ListedDate> dates, exceptionDates;
  std::optional<Moment> recurrenceId = {};  // of a change; its start where that is unreadable
  bool isChange = false;
  std::size_t calendar = 0;
  int sequence = 0;
  std::optional<local_seconds> stamp = {};  // UTC
  NoticeList notices;
};

Event ReadEvent(const Component& vevent, ZoneTable& zones);

// The time of one of the event's series that a listed date means: that of a date is the start's.
local_seconds SeriesTimeOf(const Event& event, const Moment& moment);

// Start and end of what begins at `wall` on the clock of the event's start, on the handheld's. The
// event has a start.
struct Times {
  local_seconds start = {};
  local_seconds end = {};
};
Times TimesAt(const Event& event, local_seconds wall, const ZoneTable& zones);
// As the event says them, without a detour over its own clock.
Times TimesOf(const Event& event, const ZoneTable& zones);
Times TimesOf(const Event& event, const ListedDate& date, const ZoneTable& zones);

}  // namespace formats
