// Which days of the calendar are to be shown, and how.
#pragma once

#include <optional>
#include <string>

#include "common/page/occurrences.h"

namespace tool {

// As words of the command line: a day, such as 2026-11-22; for `month` the day may be missing, and
// for `month` and `week` all of it, which then are those of today.
struct CalendarChoice {
  std::optional<std::string> month = {}, week = {}, from = {}, to = {};
  bool isMade() const { return month || week || from || to; }
};

enum class CalendarForm { kAgenda, kWeek, kMonth };

struct CalendarWindow {
  CalendarForm form;
  page::DayRange days;
};

inline constexpr std::chrono::days kAgendaLength{28};

// Without a choice the agenda of kAgendaLength from today; with one end of it, as many from there
// or until there. A week begins on Monday. Throws UsageError for what is no day, ends before it
// begins, or is chosen twice.
CalendarWindow WindowOf(const CalendarChoice& choice, formats::local_days today);

}  // namespace tool
