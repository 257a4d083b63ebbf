#include "common/formats/icalendar/icalendar_event.h"

#include <algorithm>
#include <set>
#include <utility>

#include "common/formats/icalendar/icalendar_properties.h"
#include "common/formats/lines/category_list.h"
#include "common/text/text.h"

namespace formats {
namespace {

using std::chrono::days;
using std::chrono::seconds;

class EventReader {
 public:
  EventReader(const Component& vevent, ZoneTable& zones) : vevent_(vevent), zones_(zones) {}
  Event Read();

 private:
  void Take(const Property& property);
  void TakeText(const Property& property, std::string& text);
  void TakeMoment(const Property& property, std::optional<Moment>& moment);
  void TakeDates(const Property& property, std::vector<ListedDate>& dates);
  void TakeListedDate(const Property& property, std::string_view text,
                      std::vector<ListedDate>& dates);
  void TakeDuration(const Property& property);
  void TakeStatus(std::string_view status);
  void TakeBusyStatus(std::string_view value);
  std::optional<Moment> MomentOf(const Property& property, std::string_view text);
  // Whether the item may have the property again, or has it for the first time.
  bool IsNew(const Property& property);
  void SettleBusyStatus();
  void SettleTimes();
  bool EndsBeforeStart() const;

  const Component& vevent_;
  ZoneTable& zones_;
  Event event_;
  std::set<std::string> seen_, reported_;
  bool transparent_ = false;
  bool tentative_ = false;
  bool allDayFlag_ = false;
  std::optional<int> busyStatus_;
};

Event EventReader::Read() {
  event_.line = vevent_.line;
  event_.calendar = vevent_.calendar;
  event_.isCancelled = vevent_.cancels;
  for (const Property& property : vevent_.properties) {
    if (!property.problem.empty()) event_.notices.Add(property, property.problem);
    Take(property);
  }
  RemoveRepeated(event_.fields.categories);
  event_.alarm = AlarmOf(vevent_, event_.notices);
  SettleBusyStatus();
  SettleTimes();
  return std::move(event_);
}

bool EventReader::IsNew(const Property& property) {
  if (seen_.insert(property.name).second) return true;
  event_.notices.Add(property, "an event has one, left out: " + text::Excerpt(property.value));
  return false;
}

void EventReader::Take(const Property& property) {
  const ItemRule& rule = FindItemRule(property.name);
  const std::string_view value = text::TrimBlanks(property.value);
  switch (rule.event) {
    case ItemProperty::kUid:
      return TakeText(property, event_.fields.uid);
    case ItemProperty::kSummary:
      event_.hasSummary = true;
      return TakeText(property, event_.fields.subject);
    case ItemProperty::kLocation:
      return TakeText(property, event_.fields.location);
    case ItemProperty::kDescription:
      return TakeText(property, event_.fields.body);
    case ItemProperty::kCategories:
      for (std::string& name : CategoriesOf(property, event_.notices)) {
        event_.fields.categories.push_back(std::move(name));
      }
      return;
    case ItemProperty::kClass:
      event_.fields.isPrivate = !value.empty() && !text::EqualsNoCase(value, "PUBLIC");
      return;
    case ItemProperty::kTransparency:
      transparent_ = text::EqualsNoCase(value, "TRANSPARENT");
      return;
    case ItemProperty::kBusyStatus:
      return TakeBusyStatus(value);
    case ItemProperty::kAllDay:
      allDayFlag_ = text::EqualsNoCase(value, "TRUE");
      return;
    case ItemProperty::kStatus:
      return TakeStatus(value);
    case ItemProperty::kPriority:
      if (ParseNumber(value).value_or(0) % 5 != 0) {
        event_.notices.Add(property, "an appointment has no priority");
      }
      return;
    case ItemProperty::kStart:
      return TakeMoment(property, event_.start);
    case ItemProperty::kEnd:
      return TakeMoment(property, event_.end);
    case ItemProperty::kDuration:
      return TakeDuration(property);
    case ItemProperty::kRule:
      event_.rules.push_back({property.line, property.value});
      return;
    case ItemProperty::kExceptionRule:
      event_.exceptionRules.push_back({property.line, property.value});
      return;
    case ItemProperty::kDates:
      return TakeDates(property, event_.dates);
    case ItemProperty::kExceptionDates:
      return TakeDates(property, event_.exceptionDates);
    case ItemProperty::kRecurrenceId:
      event_.isChange = true;
      if (const std::string* range = property.Parameter("RANGE")) {
        event_.notices.Add(property,
                           "RANGE=" + text::Excerpt(*range) + ": this occurrence alone changes");
      }
      return TakeMoment(property, event_.recurrenceId);
    case ItemProperty::kSequence:
      event_.sequence = ParseNumber(value).value_or(0);
      return;
    case ItemProperty::kStamp:
      if (const auto stamp = ParseTimeValue(property, value)) event_.stamp = stamp->time;
      return;
    case ItemProperty::kNotKept:
      if (!value.empty() && reported_.insert(property.name).second) {
        event_.notices.Add(property, rule.why);
      }
      return;
    case ItemProperty::kIgnored:
    case ItemProperty::kDue:
    case ItemProperty::kCompleted:
    case ItemProperty::kPercent:
      return;
  }
}

void EventReader::TakeText(const Property& property, std::string& text) {
  if (IsNew(property)) text = TextOf(property);
}

std::optional<Moment> EventReader::MomentOf(const Property& property, std::string_view text) {
  const std::optional<TimeValue> value = ParseTimeValue(property, text);
  if (value) return zones_.MomentOf(*value, event_.calendar, property.line, event_.notices);
  event_.notices.Add(property, "neither a day nor a time, left out: " + text::Excerpt(text));
  return std::nullopt;
}

void EventReader::TakeMoment(const Property& property, std::optional<Moment>& moment) {
  if (IsNew(property)) moment = MomentOf(property, property.value);
}

void EventReader::TakeDates(const Property& property, std::vector<ListedDate>& dates) {
  for (const std::string_view part : SplitValue(property.value, ',')) {
    if (!text::TrimBlanks(part).empty()) TakeListedDate(property, part, dates);
  }
}

void EventReader::TakeListedDate(const Property& property, std::string_view text,
                                 std::vector<ListedDate>& dates) {
  const std::size_t slash = text.find('/');
  const std::optional<Moment> moment = MomentOf(property, text.substr(0, slash));
  if (!moment) return;
  ListedDate date;
  date.line = property.line;
  date.moment = *moment;
  if (slash != std::string_view::npos) {
    const std::string_view rest = text.substr(slash + 1);
    date.length = ParseSpan(rest);
    if (!date.length) date.end = MomentOf(property, rest);
  }
  dates.push_back(std::move(date));
}

void EventReader::TakeDuration(const Property& property) {
  if (!IsNew(property)) return;
  event_.duration = ParseSpan(property.value);
  if (!event_.duration || event_.duration->total() < seconds(0)) {
    event_.duration.reset();
    event_.notices.Add(property, "not a duration, left out: " + text::Excerpt(property.value));
  }
}

void EventReader::TakeStatus(std::string_view status) {
  if (text::EqualsNoCase(status, "CANCELLED")) event_.isCancelled = true;
  tentative_ = text::EqualsNoCase(status, "TENTATIVE");
}

void EventReader::TakeBusyStatus(std::string_view value) {
  for (std::size_t i = 0; i < std::size(kBusyWords); ++i) {
    if (text::EqualsNoCase(value, kBusyWords[i])) busyStatus_ = static_cast<int>(i);
  }
  const bool negative = value.starts_with('-');
  if (const std::optional<int> number = ParseNumber(value.substr(negative ? 1 : 0))) {
    busyStatus_ = negative ? -*number : *number;
  }
}

void EventReader::SettleBusyStatus() {
  const BusyStatus plain = transparent_ ? BusyStatus::kFree
                           : tentative_ ? BusyStatus::kTentative
                                        : BusyStatus::kBusy;
  event_.fields.busyStatus = busyStatus_.value_or(static_cast<int>(plain));
}

// On one clock what it shows counts, so that a time which it never shows has a length, too.
bool EventReader::EndsBeforeStart() const {
  const Moment& start = *event_.start;
  const Moment& end = *event_.end;
  if (start.isFloating || end.isFloating || start.clock == end.clock) {
    return WallOn(end, start.clock) < start.wall;
  }
  return end.clock->ToUtc(end.wall) < start.clock->ToUtc(start.wall);
}

void EventReader::SettleTimes() {
  if (event_.isChange && !event_.recurrenceId) event_.recurrenceId = event_.start;
  if (!event_.start) return;
  const auto isMidnight = [](const Moment& moment) { return moment.wall == DayOf(moment.wall); };
  if (event_.end && event_.duration) {
    event_.notices.Add(event_.line, "DURATION: DTEND is given, too");
    event_.duration.reset();
  }
  if (allDayFlag_ && !event_.start->isDate && isMidnight(*event_.start) && event_.end &&
      isMidnight(*event_.end)) {
    for (Moment* moment : {&*event_.start, &*event_.end}) {
      moment->isDate = moment->isFloating = true;
      moment->clock = zones_.own();
    }
  }
  if (event_.end && event_.end->isDate != event_.start->isDate) {
    event_.notices.Add(event_.line, event_.start->isDate
                                        ? "DTEND: DTSTART is a day, its time is left out"
                                        : "DTEND: a day, taken as its midnight");
    event_.end->wall = DayOf(event_.end->wall);
  }
  if (event_.end && EndsBeforeStart()) {
    event_.notices.Add(event_.line, "DTEND: before DTSTART, left out");
    event_.end.reset();
  }
}

// How long it is as its own clock shows it.
seconds WallLength(const Event& event) {
  const Moment& start = *event.start;
  seconds length{0};
  if (event.end) {
    length = WallOn(*event.end, start.clock) - start.wall;
  } else if (event.duration) {
    length = event.duration->total();
  }
  if (!start.isDate) return length;
  return std::max<seconds>(std::chrono::ceil<days>(length), days(1));
}

local_seconds OnOwn(const Event& event, local_seconds wall, const ZoneTable& zones) {
  Moment moment = *event.start;
  moment.wall = wall;
  return WallOn(moment, zones.own());
}

local_seconds Later(const Moment& moment, const Span& span, const ZoneTable& zones) {
  Moment end = moment;
  end.wall += span.days;
  if (moment.isFloating) return end.wall + span.seconds;
  return zones.own()->ToLocal(end.clock->ToUtc(end.wall) + span.seconds);
}

}  // namespace

Event ReadEvent(const Component& vevent, ZoneTable& zones) {
  return EventReader(vevent, zones).Read();
}

local_seconds SeriesTimeOf(const Event& event, const Moment& moment) {
  const Moment& start = *event.start;
  if (start.isDate) return DayOf(moment.wall);
  if (moment.isDate) return DayOf(moment.wall) + (start.wall - DayOf(start.wall));
  return WallOn(moment, start.clock);
}

Times TimesAt(const Event& event, local_seconds wall, const ZoneTable& zones) {
  const local_seconds start = OnOwn(event, wall, zones);
  return {start, std::max(start, OnOwn(event, wall + WallLength(event), zones))};
}

Times TimesOf(const Event& event, const ZoneTable& zones) {
  const Moment& start = *event.start;
  Times times = TimesAt(event, start.wall, zones);
  if (start.isDate) return times;
  if (event.end) times.end = WallOn(*event.end, zones.own());
  if (event.duration && event.duration->seconds != seconds(0)) {
    times.end = Later(start, *event.duration, zones);
  }
  times.end = std::max(times.start, times.end);
  return times;
}

Times TimesOf(const Event& event, const ListedDate& date, const ZoneTable& zones) {
  Times times = TimesAt(event, SeriesTimeOf(event, date.moment), zones);
  if (date.end) times.end = WallOn(*date.end, zones.own());
  if (date.length) times.end = Later(date.moment, *date.length, zones);
  if (!event.start->isDate) {
    times.end = std::max(times.start, times.end);
  } else {
    times.end = std::max<local_seconds>(std::chrono::ceil<days>(times.end), times.start + days(1));
  }
  return times;
}

}  // namespace formats
