#include "common/formats/icalendar/icalendar_task.h"

#include <set>
#include <string>
#include <utility>

#include "common/formats/icalendar/event_rules.h"
#include "common/formats/icalendar/icalendar_alarm.h"
#include "common/formats/icalendar/icalendar_properties.h"
#include "common/formats/icalendar/icalendar_values.h"
#include "common/formats/lines/category_list.h"
#include "common/text/text.h"

namespace formats {
namespace {

using std::chrono::days;
using std::chrono::seconds;

class TodoReader {
 public:
  TodoReader(const Component& vtodo, ZoneTable& zones, WorkBudget& budget)
      : vtodo_(vtodo), zones_(zones), budget_(budget) {}
  Todo Read();

 private:
  void Take(const Property& property);
  void TakeText(const Property& property, std::string& text);
  void TakeMoment(const Property& property, std::optional<Moment>& moment);
  void TakeStatus(const Property& property, std::string_view status);
  void TakePriority(std::string_view value);
  void TakePercent(const Property& property, std::string_view value);
  bool IsNew(const Property& property);
  void SettleDays();
  std::optional<local_days> DayOfMoment(const char* name, const std::optional<Moment>& moment);
  void SettleCompletion();
  void SettleSeries();
  void MoveTo(local_days first);
  void SettleReminder();
  std::optional<local_seconds> ReminderOf(const Alarm& alarm);
  void Notice(const char* text) { todo_.notices.Add(vtodo_.line, text); }

  const Component& vtodo_;
  ZoneTable& zones_;
  WorkBudget& budget_;
  Todo todo_;
  std::set<std::string> seen_, reported_;
  std::optional<Moment> start_, due_, completed_;
  std::optional<Span> duration_;
  std::vector<RuleText> rules_;
  std::string status_;
  bool allDone_ = false;  // PERCENT-COMPLETE:100
};

Todo TodoReader::Read() {
  todo_.line = vtodo_.line;
  todo_.isCancelled = vtodo_.cancels;
  for (const Property& property : vtodo_.properties) {
    if (!property.problem.empty()) todo_.notices.Add(property, property.problem);
    Take(property);
  }
  RemoveRepeated(todo_.task.categories);
  SettleDays();
  SettleCompletion();
  SettleReminder();
  SettleSeries();
  return std::move(todo_);
}

bool TodoReader::IsNew(const Property& property) {
  if (seen_.insert(property.name).second) return true;
  todo_.notices.Add(property, "a task has one, left out: " + text::Excerpt(property.value));
  return false;
}

void TodoReader::Take(const Property& property) {
  const ItemRule& rule = FindItemRule(property.name);
  const std::string_view value = text::TrimBlanks(property.value);
  switch (rule.task) {
    case ItemProperty::kUid:
      return TakeText(property, todo_.task.uid);
    case ItemProperty::kSummary:
      return TakeText(property, todo_.task.subject);
    case ItemProperty::kDescription:
      return TakeText(property, todo_.task.body);
    case ItemProperty::kCategories:
      for (std::string& name : CategoriesOf(property, todo_.notices)) {
        todo_.task.categories.push_back(std::move(name));
      }
      return;
    case ItemProperty::kClass:
      todo_.task.isPrivate = !value.empty() && !text::EqualsNoCase(value, "PUBLIC");
      return;
    case ItemProperty::kStatus:
      return TakeStatus(property, value);
    case ItemProperty::kPriority:
      return TakePriority(value);
    case ItemProperty::kPercent:
      return TakePercent(property, value);
    case ItemProperty::kStart:
      return TakeMoment(property, start_);
    case ItemProperty::kDue:
      return TakeMoment(property, due_);
    case ItemProperty::kCompleted:
      return TakeMoment(property, completed_);
    case ItemProperty::kDuration:
      duration_ = ParseSpan(value);
      return;
    case ItemProperty::kRule:
      rules_.push_back({property.line, property.value});
      return;
    case ItemProperty::kRecurrenceId:
      todo_.isChange = true;
      return TakeMoment(property, todo_.recurrenceId);
    case ItemProperty::kSequence:
      todo_.sequence = ParseNumber(value).value_or(0);
      return;
    case ItemProperty::kStamp:
      if (const auto stamp = ParseTimeValue(property, value)) todo_.stamp = stamp->time;
      return;
    case ItemProperty::kNotKept:
      if (!value.empty() && reported_.insert(property.name).second) {
        todo_.notices.Add(property, rule.why);
      }
      return;
    default:
      return;  // an event's alone
  }
}

void TodoReader::TakeText(const Property& property, std::string& text) {
  if (IsNew(property)) text = TextOf(property);
}

void TodoReader::TakeMoment(const Property& property, std::optional<Moment>& moment) {
  if (!IsNew(property)) return;
  if (const std::optional<TimeValue> value = ParseTimeValue(property, property.value)) {
    moment = zones_.MomentOf(*value, vtodo_.calendar, property.line, todo_.notices);
  } else {
    todo_.notices.Add(property,
                      "neither a day nor a time, left out: " + text::Excerpt(property.value));
  }
}

void TodoReader::TakeStatus(const Property& property, std::string_view status) {
  status_ = text::ToUpperAscii(status);
  if (status_ == "CANCELLED") todo_.isCancelled = true;
  if (status_ == "IN-PROCESS") todo_.notices.Add(property, "a task is done or not");
}

void TodoReader::TakePriority(std::string_view value) {
  const int priority = ParseNumber(value).value_or(0);
  if (priority >= 1 && priority <= 4) todo_.task.importance = Importance::kHigh;
  if (priority >= 6) todo_.task.importance = Importance::kLow;
}

void TodoReader::TakePercent(const Property& property, std::string_view value) {
  const int percent = ParseNumber(value).value_or(0);
  allDone_ = percent >= 100;
  if (percent > 0 && percent < 100) todo_.notices.Add(property, "a task is done or not");
}

std::optional<local_days> TodoReader::DayOfMoment(const char* name,
                                                  const std::optional<Moment>& moment) {
  if (!moment) return std::nullopt;
  const local_days day = DayOf(WallOn(*moment, zones_.own()));
  if (IsKeepableDay(day)) return day;
  todo_.notices.Add(vtodo_.line,
                    std::string(name) + ": outside of the years 1900 to 2999, left out");
  return std::nullopt;
}

void TodoReader::SettleDays() {
  if (start_ && duration_ && !due_) {
    due_ = start_;
    due_->wall += duration_->total();
  }
  todo_.task.start = DayOfMoment("DTSTART", start_);
  todo_.task.due = DayOfMoment("DUE", due_);
  for (const auto& [name, moment] : {std::pair("DTSTART", &start_), std::pair("DUE", &due_)}) {
    if (!*moment) continue;
    const local_seconds wall = WallOn(**moment, zones_.own());
    if (wall == DayOf(wall)) continue;
    todo_.notices.Add(vtodo_.line, std::string(name) + ": a task has days, the time is left out");
  }
}

void TodoReader::SettleCompletion() {
  todo_.task.complete =
      status_.empty() ? completed_.has_value() || allDone_ : status_ == "COMPLETED";
  if (todo_.task.complete) todo_.task.completed = DayOfMoment("COMPLETED", completed_);
}

// A series goes by days, so the days of the rule are to be those of this zone.
void TodoReader::SettleSeries() {
  if (rules_.empty()) return;
  const std::size_t line = rules_.front().line;
  const std::optional<Moment>& begin = start_ ? start_ : due_;
  const std::optional<local_days>& day = start_ ? todo_.task.start : todo_.task.due;
  if (!begin || !day) {
    todo_.notices.Add(line, "RRULE: a task without a day does not recur");
    return;
  }
  Event event;
  event.start = begin;
  event.rules = rules_;
  EventRules rules(event, budget_);
  for (formats::Notice& notice : event.notices.Release()) {
    todo_.notices.Add(notice.line, std::move(notice.text));
  }
  if (!rules.IsRecurring()) return;
  const days shift = *day - DayOf(begin->wall);
  const std::optional<RulePattern> found = rules.Pattern();
  const bool isKept =
      found && (shift == days(0) || found->pattern.type == calendar::PatternType::kDaily);
  if (!isKept) {
    todo_.notices.Add(line, "RRULE: no pattern of a handheld says this; the task does not recur");
    return;
  }
  todo_.task.pattern = found->pattern;
  if (todo_.task.pattern->until) *todo_.task.pattern->until += shift;
  MoveTo(DayOf(found->first) + shift);
}

void TodoReader::MoveTo(local_days first) {
  Task& task = todo_.task;
  const days later = first - (task.start ? *task.start : *task.due);
  if (later == days(0)) return;
  if (task.start) *task.start += later;
  if (task.due) *task.due += later;
  Notice("DTSTART: no day of its rule, moved to the first one");
}

std::optional<local_seconds> TodoReader::ReminderOf(const Alarm& alarm) {
  if (alarm.at) {
    const Moment at = zones_.MomentOf(*alarm.at, vtodo_.calendar, alarm.line, todo_.notices);
    return WallOn(at, zones_.own());
  }
  std::optional<Moment> base = alarm.ofEnd ? due_ : start_;
  if (!base) base = alarm.ofEnd ? start_ : due_;
  if (!base) {
    todo_.notices.Add(alarm.line, "TRIGGER: before a day that the task does not have, left out");
    return std::nullopt;
  }
  const local_seconds from = WallOn(*base, zones_.own()) + alarm.after->days;
  if (alarm.after->seconds == seconds(0)) return from;
  return zones_.own()->ToLocal(zones_.own()->ToUtc(from) + alarm.after->seconds);
}

void TodoReader::SettleReminder() {
  const std::optional<Alarm> alarm = AlarmOf(vtodo_, todo_.notices);
  if (!alarm) return;
  const std::optional<local_seconds> reminder = ReminderOf(*alarm);
  if (!reminder) return;
  if (IsKeepableDay(DayOf(*reminder))) {
    todo_.task.reminder = reminder;
  } else {
    todo_.notices.Add(alarm->line, "TRIGGER: outside of the years 1900 to 2999, left out");
  }
}

}  // namespace

Todo ReadTodo(const Component& vtodo, ZoneTable& zones, WorkBudget& budget) {
  return TodoReader(vtodo, zones, budget).Read();
}

}  // namespace formats
