// Times as a calendar file spells them: in the zone, as UTC, or floating, each as its line has it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "common/formats/icalendar/icalendar_values.h"
#include "common/formats/icalendar/zone_table.h"
#include "common/formats/lines/notice_list.h"
#include "desktop/folder/calendar_lines.h"
#include "desktop/folder/raw_line.h"

namespace desktop {

using formats::local_days;
using formats::local_seconds;
using formats::TimeValue;

class TimeForms {
 public:
  explicit TimeForms(const CalendarContext& context);
  TimeForms(const TimeForms&) = delete;
  TimeForms& operator=(const TimeForms&) = delete;

  // What the line says; nothing for one that says no time.
  static std::optional<TimeValue> FormOf(const CalendarLine& line);
  static std::optional<TimeValue> FormOf(const formats::Property& property, std::string_view value);
  // A time of the handheld's zone as the form's clock shows it, and one form's time in another.
  local_seconds WallIn(const TimeValue& form, local_seconds own);
  local_seconds Convert(const TimeValue& from, const TimeValue& to);
  // The value of the form's kind that says this time of its clock.
  static std::string Spell(const TimeValue& form, local_seconds wall);
  // A line of the name with the form's parameters.
  static RawLine LineIn(const TimeValue& form, const std::string& name, local_seconds wall);

 private:
  formats::Moment MomentOf(const TimeValue& value);

  const calendar::Zone zone_;
  formats::WorkBudget budget_;
  formats::ZoneTable zones_;
  formats::NoticeList notices_;
};

}  // namespace desktop
