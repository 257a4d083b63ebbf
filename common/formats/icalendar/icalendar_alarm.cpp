#include "common/formats/icalendar/icalendar_alarm.h"

#include <algorithm>
#include <limits>

#include "common/text/text.h"

namespace formats {
namespace {

bool IsAction(const Component& alarm, std::string_view action) {
  const Property* property = alarm.Find("ACTION");
  return property != nullptr && text::EqualsNoCase(text::TrimBlanks(property->value), action);
}

std::optional<Alarm> Read(const Component& component, NoticeList& notices) {
  const Property* trigger = component.Find("TRIGGER");
  if (trigger == nullptr) {
    notices.Add(component.line, "VALARM: it does not say when, left out");
    return std::nullopt;
  }
  Alarm alarm;
  alarm.line = trigger->line;
  alarm.after = ParseSpan(trigger->value);
  if (!alarm.after) alarm.at = ParseTimeValue(*trigger, trigger->value);
  if (!alarm.after && !alarm.at) {
    notices.Add(*trigger,
                "neither a duration nor a time, left out: " + text::Excerpt(trigger->value));
    return std::nullopt;
  }
  if (alarm.after && alarm.after->seconds % std::chrono::minutes(1) != std::chrono::seconds(0)) {
    notices.Add(*trigger, "a reminder is on a whole minute");
  }
  const std::string* related = trigger->Parameter("RELATED");
  alarm.ofEnd = related != nullptr && text::EqualsNoCase(*related, "END");
  if (component.Find("REPEAT") != nullptr) {
    notices.Add(component.line, "VALARM: a reminder is not repeated");
  }
  return alarm;
}

}  // namespace

std::optional<Alarm> AlarmOf(const Component& item, NoticeList& notices) {
  std::optional<Alarm> first;
  for (const Component& component : item.parts) {
    if (IsAction(component, "NONE")) continue;
    if (IsAction(component, "EMAIL") || IsAction(component, "PROCEDURE")) {
      notices.Add(component.line, "VALARM: a reminder sends no mail and starts no program");
    } else if (first) {
      notices.Add(component.line, "VALARM: there is one reminder, this one is left out");
    } else {
      first = Read(component, notices);
    }
  }
  return first;
}

int MinutesBefore(std::chrono::seconds after) {
  const long long minutes = std::chrono::floor<std::chrono::minutes>(-after).count();
  constexpr long long kLeast = std::numeric_limits<int>::min();
  constexpr long long kMost = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(minutes, kLeast, kMost));
}

}  // namespace formats
