// One VTODO as a task.
#pragma once

#include <cstddef>
#include <optional>

#include "formats/icalendar_component.h"
#include "formats/icalendar_rule.h"
#include "formats/notice_list.h"
#include "formats/task.h"
#include "formats/zone_book.h"

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

Todo ReadTodo(const Component& vtodo, ZoneBook& zones, WorkBudget& budget);

}  // namespace formats
