#include "handheld/outlook/occurrences.h"
#include "handheld/outlook/stored_item.h"

namespace ce::host {
namespace {

class TaskItem final : public RecurringItem<ItemBase<ITask, TaskFields>> {
 public:
  TaskItem(SessionPtr session, std::weak_ptr<ItemList> list, std::uint32_t oid, TaskRow row)
      : RecurringItem(std::move(session), std::move(list), oid, std::move(row)) {}

#define CE_TASK_TEXT(Name, Kind) CE_ITEM_TEXT(ITask, TaskText, Name)
  CE_TASK_TEXTS(CE_TASK_TEXT)
#undef CE_TASK_TEXT
  CE_ITEM_VALUE(ITask, StartDate, DATE, startDate, TakeDay(fields.startDate, value))
  CE_ITEM_VALUE(ITask, DueDate, DATE, dueDate, TakeDay(fields.dueDate, value))
  CE_ITEM_VALUE(ITask, DateCompleted, DATE, dateCompleted, TakeDay(fields.dateCompleted, value))
  CE_ITEM_VALUE(ITask, ReminderTime, DATE, reminderTime, TakeReminder(fields.reminderTime, value))
  CE_ITEM_VALUE(ITask, ReminderSet, VARIANT_BOOL, reminderSet, TakeFlag(fields.reminderSet, value))
  CE_ITEM_VALUE(ITask, Importance, LONG, importance,
                Take(fields.importance, value, IsImportance(value)))
  CE_ITEM_VALUE(ITask, Sensitivity, LONG, sensitivity,
                Take(fields.sensitivity, value, IsSensitivity(value)))

  HRESULT get_Complete(VARIANT_BOOL* value) override {
    return GetValue("ITask::get_Complete", fields_.complete, value);
  }
  HRESULT put_Complete(VARIANT_BOOL value) override;

  bool MoveSeries(local_days day) override;
  HRESULT OpenExceptions(IExceptions** exceptions) override {
    *exceptions = MakeNoExceptions();
    return S_OK;
  }

 private:
  ~TaskItem() override = default;
};

HRESULT TaskItem::put_Complete(VARIANT_BOOL value) {
  return Guarded("ITask::put_Complete", [&] {
    const bool complete = value != VARIANT_FALSE;
    DATE completed = kNoDate;
    if (complete) {
      const auto now = ItemClock();
      if (!now) return E_FAIL;
      const auto today = std::chrono::floor<std::chrono::days>(*now);
      completed = fields_.complete ? fields_.dateCompleted : OleDate(today);
    }
    fields_.complete = complete;
    fields_.dateCompleted = completed;
    changed_ = true;
    return S_OK;
  });
}

bool TaskItem::MoveSeries(local_days day) {
  if (fields_.startDate != kNoDate) return TakeDay(fields_.startDate, OleDate(day));
  if (fields_.dueDate != kNoDate) return TakeDay(fields_.dueDate, OleDate(day));
  series()->startDay = day;
  return true;
}

HRESULT MakeTask(const SessionPtr& session, IDispatch** item) {
  TaskRow row;
  row.fields.importance = olImportanceNormal;
  *item = new TaskItem(session, {}, 0, std::move(row));
  return S_OK;
}

}  // namespace

const ItemKind kTasks{olFolderTasks, &ListItems<TaskFields>, &DeleteItem<TaskFields>, &MakeTask,
                      &LoadItem<TaskItem>};

}  // namespace ce::host
