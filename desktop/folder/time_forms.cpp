#include "desktop/folder/time_forms.h"

#include <utility>

#include "common/calendar/wall_time.h"
#include "common/formats/icalendar/icalendar_component.h"

namespace desktop {

TimeForms::TimeForms(const CalendarContext& context)
    : zone_(context.zone()), zones_(zone_, budget_) {
  formats::ComponentReader reader(
      {"VTIMEZONE"}, [this](formats::Component&& zone) { zones_.Add(std::move(zone)); }, nullptr);
  reader.Read("BEGIN:VCALENDAR\r\n" + context.frame() + "END:VCALENDAR\r\n");
}

std::optional<TimeValue> TimeForms::FormOf(const formats::Property& property,
                                           std::string_view value) {
  return formats::ParseTimeValue(property, value);
}

std::optional<TimeValue> TimeForms::FormOf(const CalendarLine& line) {
  if (!line.property) return std::nullopt;
  return FormOf(*line.property, line.property->value);
}

formats::Moment TimeForms::MomentOf(const TimeValue& value) {
  return zones_.MomentOf(value, 1, 0, notices_);
}

local_seconds TimeForms::WallIn(const TimeValue& form, local_seconds own) {
  const formats::Moment like = MomentOf(form);
  if (like.isFloating) return own;
  formats::Moment moment;
  moment.wall = own;
  moment.clock = zones_.own();
  return WallOn(moment, like.clock);
}

local_seconds TimeForms::Convert(const TimeValue& from, const TimeValue& to) {
  const formats::Moment like = MomentOf(to);
  return WallOn(MomentOf(from), like.clock);
}

std::string TimeForms::Spell(const TimeValue& form, local_seconds wall) {
  if (form.isDate) return formats::BasicDate(formats::DayOf(wall));
  return formats::BasicDateTime(wall) + (form.isUtc ? "Z" : "");
}

RawLine TimeForms::LineIn(const TimeValue& form, const std::string& name, local_seconds wall) {
  RawLine line{{}, name, {}, Spell(form, wall)};
  if (form.isDate) {
    line.parameters = {"VALUE=DATE"};
  } else if (!form.tzid.empty() && !form.isUtc) {
    const bool quoted = form.tzid.find_first_of(",;:") != std::string::npos;
    line.parameters = {"TZID=" + (quoted ? "\"" + form.tzid + "\"" : form.tzid)};
  }
  return line;
}

}  // namespace desktop
