#include "desktop/records/task_xml.h"

#include <optional>

#include "desktop/records/recurrence_xml.h"
#include "desktop/records/wire_values.h"

namespace desktop {
namespace {

using calendar::Zone;
using formats::Importance;
using formats::Task;
using namespace std::chrono;

constexpr int kNormalPriority = 3;  // a smaller number is a higher one

int PriorityOf(Importance importance) {
  return kNormalPriority + static_cast<int>(Importance::kNormal) - static_cast<int>(importance);
}

Importance ImportanceOf(int priority) {
  if (priority == kNormalPriority) return Importance::kNormal;
  return priority < kNormalPriority ? Importance::kHigh : Importance::kLow;
}

std::string DateElement(std::string_view name, std::optional<local_days> day) {
  return day ? Element(name, DateText(*day)) : std::string();
}

std::string PatternElements(const Task& task) {
  if (!task.pattern) return {};
  return TrueElement("IS_RECURRING", true) + Element("RECURRENCE", PatternToXml(*task.pattern));
}

std::string ReminderToXml(const Task& task) {
  if (!task.due || !task.reminder) return {};
  const minutes before = ceil<minutes>(local_seconds{*task.due} - *task.reminder);
  return TrueElement("HAS_REMINDER", true) + NumberElement("ReminderMinutes", before.count());
}

std::optional<local_days> DayWithinYears(const XmlElement& record, std::string_view name) {
  const std::optional<local_days> day = ChildDate(record, name);
  if (!day || *day < calendar::kFirstDay || *day > calendar::kLastDay) return std::nullopt;
  return day;
}

std::optional<local_seconds> ReminderFromXml(const XmlElement& record, const Task& task,
                                             const Zone& zone) {
  if (!ChildIsTrue(record, "HAS_REMINDER")) return std::nullopt;
  std::optional<local_seconds> time;
  if (task.due) {
    time = *task.due - minutes{ChildNumber(record, "ReminderMinutes", 0)};
  } else if (const auto utc = DateTimeFromText(record.ChildText("ReminderTime"))) {
    time = zone.FromWireUtc(*utc);
  }
  if (!time || *time < calendar::kFirstDay || *time >= calendar::kLastDay + days{1}) {
    return std::nullopt;
  }
  return time;
}

std::optional<calendar::Pattern> ReadPattern(const XmlElement& record) {
  const XmlElement* const recurrence = record.Child("RECURRENCE");
  if (recurrence == nullptr || !ChildIsTrue(record, "IS_RECURRING")) return std::nullopt;
  return PatternFromXml(*recurrence);
}

}  // namespace

std::string TaskToXml(const Task& task) {
  return Element("TASK", TextElement("SUBJECT", task.subject) +
                             ElementUnlessEmpty("CATEGORIES", CategoriesToXml(task.categories)) +
                             PatternElements(task) + DateElement("DUE_DATE", task.due) +
                             ReminderToXml(task) + DateElement("StartDate", task.start) +
                             TrueElement("Private", task.isPrivate) +
                             TrueElement("COMPLETED", task.complete) +
                             NumberElement("PRIORITY", PriorityOf(task.importance)) +
                             TextElement("NOTES", task.body));
}

Task TaskFromXml(const XmlElement& record, const Zone& zone) {
  Task task;
  task.subject = record.ChildText("SUBJECT");
  task.body = record.ChildText("NOTES");
  task.categories = CategoriesFromXml(record.Child("CATEGORIES"));
  task.start = DayWithinYears(record, "StartDate");
  task.due = DayWithinYears(record, "DUE_DATE");
  task.reminder = ReminderFromXml(record, task, zone);
  task.isPrivate = ChildIsTrue(record, "Private");
  task.complete = ChildIsTrue(record, "COMPLETED");
  if (task.complete) task.completed = DayWithinYears(record, "DateCompleted");
  task.importance = ImportanceOf(ChildNumber(record, "PRIORITY", kNormalPriority));
  task.pattern = ReadPattern(record);
  return task;
}

}  // namespace desktop
