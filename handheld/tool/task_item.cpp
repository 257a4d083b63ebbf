#include "handheld/tool/records.h"

#include "handheld/tool/recurrence.h"

namespace tool {
namespace {

using ce::ITask;
using formats::Importance;
using formats::Task;

Importance ImportanceOf(ce::LONG importance) {
  if (importance == ce::olImportanceLow) return Importance::kLow;
  return importance == ce::olImportanceHigh ? Importance::kHigh : Importance::kNormal;
}

void PutDay(ITask& item, Setter<ITask, ce::DATE> put, std::optional<std::chrono::local_days> day,
            const char* name, NotKept& notKept) {
  Check((item.*put)(KeptDateOf(day, name, notKept)), name);
}

void WriteCompletion(const Task& task, ITask& item, NotKept& notKept) {
  PutFlag(item, &ITask::put_Complete, task.complete, "Complete");
  // Completing it has stamped it with today.
  if (task.complete)
    PutDay(item, &ITask::put_DateCompleted, task.completed, "DateCompleted", notKept);
}

void WriteReminder(const Task& task, ITask& item, NotKept& notKept) {
  const ce::DATE time = KeptDateOf(task.reminder, "ReminderTime", notKept);
  PutFlag(item, &ITask::put_ReminderSet, time != ce::kNoDate, "ReminderSet");
  Check(item.put_ReminderTime(time), "ReminderTime");
}

// The pattern begins where the item says, which knows what stands for dates that are missing.
void WriteSeries(const calendar::Pattern& pattern, ITask& item, NotKept& notKept) {
  const auto itemPattern = PatternOf(item);
  const auto first = DayOf(
      Read(*itemPattern.get(), &ce::IRecurrencePattern::get_PatternStartDate, "PatternStartDate"));
  if (first && HasDays(pattern, *first)) return WritePattern(pattern, *itemPattern.get());
  Check(item.ClearRecurrencePattern(), "the recurrence");
  notKept.push_back(kNoDays);
}

}  // namespace

Task ReadItem(ITask& item) {
  Task task;
  task.subject = ReadText(item, &ITask::get_Subject, "Subject");
  task.body = ReadText(item, &ITask::get_Body, "Body");
  task.categories = ReadCategories(item);
  task.start = DayOf(Read(item, &ITask::get_StartDate, "StartDate"));
  task.due = DayOf(Read(item, &ITask::get_DueDate, "DueDate"));
  if (ReadFlag(item, &ITask::get_ReminderSet, "ReminderSet"))
    task.reminder = TimeOf(Read(item, &ITask::get_ReminderTime, "ReminderTime"));
  task.isPrivate = Read(item, &ITask::get_Sensitivity, "Sensitivity") == ce::olPrivate;
  task.complete = ReadFlag(item, &ITask::get_Complete, "Complete");
  if (task.complete) task.completed = DayOf(Read(item, &ITask::get_DateCompleted, "DateCompleted"));
  task.importance = ImportanceOf(Read(item, &ITask::get_Importance, "Importance"));
  if (ReadFlag(item, &ITask::get_IsRecurring, "IsRecurring"))
    task.pattern = ReadPattern(*PatternOf(item).get());
  return task;
}

NotKept WriteItem(const Task& task, ITask& item) {
  NotKept notKept;
  // A pattern of before would move with the dates.
  Check(item.ClearRecurrencePattern(), "the recurrence");
  PutText(item, &ITask::put_Subject, "Subject", task.subject, notKept);
  PutText(item, &ITask::put_Body, "Body", task.body, notKept);
  PutCategories(item, task.categories, notKept);
  PutDay(item, &ITask::put_StartDate, task.start, "StartDate", notKept);
  PutDay(item, &ITask::put_DueDate, task.due, "DueDate", notKept);
  WriteReminder(task, item, notKept);
  Check(item.put_Sensitivity(task.isPrivate ? ce::olPrivate : ce::olNormal), "Sensitivity");
  WriteCompletion(task, item, notKept);
  Check(item.put_Importance(static_cast<ce::LONG>(task.importance)), "Importance");
  if (task.pattern) WriteSeries(*task.pattern, item, notKept);
  return notKept;
}

}  // namespace tool
