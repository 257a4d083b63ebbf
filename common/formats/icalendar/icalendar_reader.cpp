#include <algorithm>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>

#include "common/formats/icalendar/event_fields.h"
#include "common/formats/icalendar/event_series.h"
#include "common/formats/icalendar/icalendar.h"
#include "common/formats/icalendar/icalendar_component.h"
#include "common/formats/icalendar/icalendar_event.h"
#include "common/formats/icalendar/icalendar_rule.h"
#include "common/formats/icalendar/icalendar_task.h"
#include "common/formats/icalendar/zone_table.h"
#include "common/formats/lines/vcard_lines.h"
#include "common/text/code_page.h"
#include "common/text/text.h"

namespace formats {
namespace {

constexpr std::size_t kLookedAtBytes = 64 * 1024;

// Whether `later` stands for what `earlier` was: both are states of one item.
template <typename Item>
bool Replaces(const Item& later, const Item& earlier) {
  if (later.sequence != earlier.sequence) return later.sequence > earlier.sequence;
  return !earlier.stamp || (later.stamp && *later.stamp >= *earlier.stamp);
}

// Which occurrence it changes; dates and times that float are told from instants.
using OccurrenceKey = std::pair<bool, long long>;

OccurrenceKey KeyOf(const Moment& moment) {
  if (moment.isFloating) return {true, moment.wall.time_since_epoch().count()};
  return {false, moment.clock->ToUtc(moment.wall).time_since_epoch().count()};
}

// Puts events and to-dos together by their UIDs.
class Collector {
 public:
  Collector(const calendar::Zone& zone, NoticeList& notices)
      : zones_(zone, budget_), notices_(notices) {}
  void AddZones(std::string_view text);
  void AddItems(std::string_view text);
  CalendarFile Finish();

 private:
  struct Group {
    EventGroup events;
    std::map<OccurrenceKey, std::size_t> changes;  // their positions
  };
  void AddEvent(Event event);
  void AddTodo(Todo todo);
  void AddTodos(CalendarFile& file);
  bool IsKept(Todo& todo) const;
  template <typename Item>
  void Keep(Item& kept, Item item);

  WorkBudget budget_;
  ZoneTable zones_;
  NoticeList& notices_;
  std::vector<Group> groups_;
  std::unordered_map<std::string, std::size_t> groupOf_;
  std::vector<Todo> todos_;
  std::unordered_map<std::string, std::size_t> todoOf_;  // without a RECURRENCE-ID
};

void Collector::AddZones(std::string_view text) {
  ComponentReader reader(
      {"VTIMEZONE"}, [this](Component&& zone) { zones_.Add(std::move(zone)); }, nullptr);
  reader.Read(text);
}

void Collector::AddItems(std::string_view text) {
  const auto take = [this](Component&& item) {
    if (item.name == "VEVENT") {
      AddEvent(ReadEvent(item, zones_));
    } else {
      AddTodo(ReadTodo(item, zones_, budget_));
    }
  };
  ComponentReader({"VEVENT", "VTODO"}, take, &notices_).Read(text);
}

template <typename Item>
void Collector::Keep(Item& kept, Item item) {
  const bool replaces = Replaces(item, kept);
  const Item& dropped = replaces ? kept : item;
  const Item& better = replaces ? item : kept;
  notices_.Add(dropped.line, "UID: left out for a later state of the same in line " +
                                 std::to_string(better.line));
  if (replaces) kept = std::move(item);
}

void Collector::AddEvent(Event event) {
  if (event.isChange && !event.recurrenceId) {
    notices_.Add(event.line, "RECURRENCE-ID: nobody knows of which occurrence, left out");
    return;
  }
  const std::string& uid = event.fields.uid;
  const auto found = uid.empty() ? groupOf_.end() : groupOf_.find(uid);
  if (found == groupOf_.end()) {
    if (!uid.empty()) groupOf_.emplace(uid, groups_.size());
    groups_.emplace_back();
  }
  Group& group = found == groupOf_.end() ? groups_.back() : groups_[found->second];
  if (event.recurrenceId) {
    const auto [at, isNew] =
        group.changes.try_emplace(KeyOf(*event.recurrenceId), group.events.changes.size());
    if (isNew) {
      group.events.changes.push_back(std::move(event));
    } else {
      Keep(group.events.changes[at->second], std::move(event));
    }
  } else if (group.events.master) {
    Keep(*group.events.master, std::move(event));
  } else {
    group.events.master = std::move(event);
  }
}

void Collector::AddTodo(Todo todo) {
  if (!todo.isChange && !todo.task.uid.empty()) {
    const auto [at, isNew] = todoOf_.try_emplace(todo.task.uid, todos_.size());
    if (!isNew) return Keep(todos_[at->second], std::move(todo));
  }
  todos_.push_back(std::move(todo));
}

bool Collector::IsKept(Todo& todo) const {
  if (todo.isCancelled) {
    todo.notices.Add(todo.line, "STATUS: the task is cancelled, left out");
    return false;
  }
  if (todo.isChange && todoOf_.contains(todo.task.uid)) {
    todo.notices.Add(todo.line, "RECURRENCE-ID: a task's series has no exceptions, left out");
    return false;
  }
  return true;
}

void Collector::AddTodos(CalendarFile& file) {
  for (Todo& todo : todos_) {
    if (IsKept(todo)) {
      if (todo.recurrenceId) {
        const Moment& original = *todo.recurrenceId;
        todo.task.uid = UidOfOccurrence(todo.task.uid, original.wall, original.isDate);
      }
      file.tasks.push_back({std::move(todo.task), todo.line});
    }
    for (Notice& notice : todo.notices.Release()) file.notices.push_back(std::move(notice));
  }
}

CalendarFile Collector::Finish() {
  CalendarFile file;
  for (Group& group : groups_) AddAppointments(std::move(group.events), zones_, budget_, file);
  AddTodos(file);
  for (Notice& notice : notices_.Release()) file.notices.push_back(std::move(notice));
  const auto byLine = [](const auto& a, const auto& b) { return a.line < b.line; };
  std::stable_sort(file.appointments.begin(), file.appointments.end(), byLine);
  std::stable_sort(file.notices.begin(), file.notices.end(), byLine);
  return file;
}

}  // namespace

CalendarFile ReadICalendar(std::string_view bytes, const calendar::Zone& zone) {
  const text::Conversion text = text::DecodeFile(bytes);
  NoticeList notices;
  if (text.damaged) notices.Add(1, "bytes that are no UTF-16 were replaced");
  Collector collector(zone, notices);
  collector.AddZones(text.text);
  collector.AddItems(text.text);
  return collector.Finish();
}

bool LooksLikeICalendar(std::string_view bytes) {
  const text::Conversion text = text::DecodeFile(bytes.substr(0, kLookedAtBytes));
  ContentLineReader lines(text.text);
  ContentLine line;
  while (lines.Next(line)) {
    const std::string_view content = text::TrimBlanks(line.text);
    if (!text::StartsWithNoCase(content, "BEGIN")) continue;
    const std::string_view rest = text::TrimBlanks(content.substr(5));
    if (!rest.starts_with(':')) continue;
    const std::string_view name = text::TrimBlanks(rest.substr(1));
    for (const char* known : {"VCALENDAR", "VEVENT", "VTODO", "VTIMEZONE"}) {
      if (text::EqualsNoCase(name, known)) return true;
    }
  }
  return false;
}

}  // namespace formats
