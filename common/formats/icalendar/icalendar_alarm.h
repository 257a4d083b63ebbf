// The reminder among an item's VALARMs.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string_view>

#include "common/formats/icalendar/icalendar_component.h"
#include "common/formats/icalendar/icalendar_values.h"
#include "common/formats/lines/notice_list.h"

namespace formats {

struct Alarm {
  std::size_t line = 0;  // of its TRIGGER
  // One of them: at a time, or so long after the start, or after the end.
  std::optional<TimeValue> at = {};
  std::optional<Span> after = {};
  bool ofEnd = false;
};

// The first VALARM that shows or sounds something; the others make notices.
std::optional<Alarm> AlarmOf(const Component& item, NoticeList& notices);

// How many whole minutes before the start something at `start + after` is.
int MinutesBefore(std::chrono::seconds after);

}  // namespace formats
