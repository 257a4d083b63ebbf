#include "desktop/folder/item_facts.h"

#include <fmt/format.h>

#include <optional>

#include "common/calendar/wall_time.h"

namespace desktop {
namespace {

using formats::Appointment;
using formats::Contact;
using formats::Task;

std::string DayText(const std::optional<formats::local_days>& day) {
  return day ? formats::IsoDate(*day) : std::string();
}

std::string TimeText(const std::optional<formats::local_seconds>& time) {
  return time ? formats::IsoDateTime(*time) : std::string();
}

std::string RuleText(const calendar::Pattern& pattern) {
  return fmt::format("{} {} {} {} {} {} {} {}", static_cast<int>(pattern.type), pattern.interval,
                     pattern.daysOfWeek, pattern.dayOfMonth, pattern.instance, pattern.monthOfYear,
                     pattern.occurrences.value_or(0), DayText(pattern.until));
}

class FactCollector {
 public:
  void Put(const std::string& field, std::string value) {
    if (!value.empty()) facts_[field] = std::move(value);
  }
  void PutCategories(const std::vector<std::string>& names) {
    for (const std::string& name : names) facts_["Categories/" + name] = "yes";
  }
  void PutOccurrence(const std::string& before, const formats::Occurrence& occurrence) {
    Put(before + "Subject", occurrence.subject);
    Put(before + "Location", occurrence.location);
    Put(before + "Body", occurrence.body);
    Put(before + "Busy", std::to_string(occurrence.busyStatus));
    Put(before + "When", fmt::format("{} {} {}", occurrence.allDay, TimeText(occurrence.start),
                                     TimeText(occurrence.end)));
  }
  ItemFacts Take() { return std::move(facts_); }

 private:
  ItemFacts facts_;
};

ItemFacts Collect(const Contact&) {
  return {};
}

ItemFacts Collect(const Appointment& appointment) {
  FactCollector facts;
  facts.PutOccurrence("", appointment);
  facts.PutCategories(appointment.categories);
  if (appointment.isPrivate) facts.Put("Private", "yes");
  if (appointment.reminderMinutes) {
    facts.Put("Reminder", std::to_string(*appointment.reminderMinutes));
  }
  if (!appointment.series) return facts.Take();
  facts.Put("Rule", RuleText(appointment.series->pattern));
  for (const formats::local_days day : appointment.series->deleted) {
    facts.Put(formats::IsoDate(day) + "/Deleted", "yes");
  }
  for (const formats::ChangedOccurrence& change : appointment.series->changed) {
    facts.PutOccurrence(formats::IsoDate(change.original) + "/", change.occurrence);
  }
  return facts.Take();
}

ItemFacts Collect(const Task& task) {
  FactCollector facts;
  facts.Put("Subject", task.subject);
  facts.Put("Body", task.body);
  facts.PutCategories(task.categories);
  facts.Put("Start", DayText(task.start));
  facts.Put("Due", DayText(task.due));
  facts.Put("Reminder", TimeText(task.reminder));
  if (task.isPrivate) facts.Put("Private", "yes");
  if (task.complete) facts.Put("Complete", "yes");
  facts.Put("Completed", DayText(task.completed));
  facts.Put("Importance", std::to_string(static_cast<int>(task.importance)));
  if (task.pattern) facts.Put("Rule", RuleText(*task.pattern));
  return facts.Take();
}

}  // namespace

ItemFacts FactsOf(const Item& item) {
  return std::visit([](const auto& common) { return Collect(common); }, CommonForm(item));
}

std::set<std::string> DifferingFields(const ItemFacts& a, const ItemFacts& b) {
  std::set<std::string> fields;
  const auto add = [&](const ItemFacts& of, const ItemFacts& in) {
    for (const auto& [field, value] : of) {
      const auto found = in.find(field);
      if (found == in.end() || found->second != value) fields.insert(field);
    }
  };
  add(a, b);
  add(b, a);
  return fields;
}

}  // namespace desktop
