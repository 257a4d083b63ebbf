// How an event's or a to-do's own properties could be changed to say a field otherwise.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/folder/calendar_lines.h"

namespace desktop {

// A field, by its name in ItemFacts, and the properties that may say it.
struct FieldLines {
  const char* field;
  std::vector<std::string_view> names;  // the first ones are written first
  // Whether what the field no longer needs is removed before anything else is tried.
  bool clears = false;
};
extern const std::array<FieldLines, 8> kFieldLines;

// The part with the field as `canonical` says it, from the smallest change on: values first, then
// lines that are missing, then lines that go.
std::vector<CalendarPart> PropertyCandidates(const CalendarPart& part,
                                             const CalendarPart& canonical, const FieldLines& field,
                                             const LineStyle& style);

// Takes out the categories that do not stay, and adds those of `wanted` that are missing.
void SetCategories(CalendarPart& part, const std::function<bool(const std::string&)>& stays,
                   const std::vector<std::string>& wanted, const LineStyle& style);

// The part with this alarm at the time of the canonical one, or without it when that has none.
std::vector<CalendarPart> AlarmCandidates(const CalendarPart& part, const PartRange& alarm,
                                          const CalendarPart& canonical, const LineStyle& style);

}  // namespace desktop
