// One VTODO as a task.
#pragma once

#include <cstddef>
#include <optional>

#include "common/formats/icalendar/icalendar_component.h"
#include "common/formats/icalendar/icalendar_rule.h"
#include "common/formats/icalendar/zone_table.h"
#include "common/formats/items/task.h"
#include "common/formats/lines/notice_list.h"

namespace formats {

struct Todo {
  std::size_t line = 0;  // of its BEGIN
  Task task;
  bool isCancelled = false;
  std::optional<Moment> recurrenceId = {};
  bool isChange = false;
  int sequence = 0;
  std::optional<local_seconds> stamp = {};  // UTC
  NoticeList notices;
};

Todo ReadTodo(const Component& vtodo, ZoneTable& zones, WorkBudget& budget);

}  // namespace formats
