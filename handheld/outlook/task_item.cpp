#include "handheld/outlook/task_item.h"

#include <utility>

#include "handheld/base/com_object.h"
#include "handheld/outlook/exceptions.h"
#include "handheld/outlook/item_clock.h"
#include "handheld/outlook/item_list.h"
#include "handheld/outlook/item_property.h"
#include "handheld/outlook/series_item.h"
#include "handheld/store/task_row.h"

namespace ce::host {
namespace {

// X(property, member)
#define CE_TASK_DAYS(X)   \
  X(StartDate, startDate) \
  X(DueDate, dueDate)     \
  X(DateCompleted, dateCompleted)

class TaskItem final : public ComObject<ITask>, public SeriesItem {
 public:
  TaskItem(SessionPtr session, std::weak_ptr<ItemList> list, std::uint32_t oid, TaskRow row)
      : SeriesItem(row.series),
        session_(std::move(session)),
        list_(std::move(list)),
        fields_(std::move(row.fields)),
        oid_(oid) {}

#define CE_TASK_TEXT(Name, Kind)                                                         \
  HRESULT get_##Name(BSTR* value) override {                                             \
    return GetStoredText("ITask::get_" #Name, fields_.texts[TaskText::k##Name], value);  \
  }                                                                                      \
  HRESULT put_##Name(BSTR value) override {                                              \
    return PutStoredText("ITask::put_" #Name, changed_,                                  \
                         LongestText(session_->limits(), TextKind::Kind), fields_.texts, \
                         static_cast<std::size_t>(TaskText::k##Name), value);            \
  }
  CE_TASK_TEXTS(CE_TASK_TEXT)
#undef CE_TASK_TEXT

#define CE_TASK_DAY(Name, Member)                                         \
  HRESULT get_##Name(DATE* value) override {                              \
    return GetValue("ITask::get_" #Name, fields_.Member, value, kNoDate); \
  }                                                                       \
  HRESULT put_##Name(DATE value) override {                               \
    return PutValue("ITask::put_" #Name, changed_,                        \
                    [&] { return TakeDay(fields_.Member, value); });      \
  }
  CE_TASK_DAYS(CE_TASK_DAY)
#undef CE_TASK_DAY

  HRESULT get_ReminderTime(DATE* value) override {
    return GetValue("ITask::get_ReminderTime", fields_.reminderTime, value, kNoDate);
  }
  HRESULT put_ReminderTime(DATE value) override {
    return PutValue("ITask::put_ReminderTime", changed_,
                    [&] { return TakeReminder(fields_.reminderTime, value); });
  }
  HRESULT get_ReminderSet(VARIANT_BOOL* value) override {
    return GetBool("ITask::get_ReminderSet", fields_.reminderSet, value);
  }
  HRESULT put_ReminderSet(VARIANT_BOOL value) override {
    return Put("ITask::put_ReminderSet", fields_.reminderSet, value != VARIANT_FALSE);
  }
  HRESULT get_Importance(LONG* value) override {
    return GetValue("ITask::get_Importance", fields_.importance, value);
  }
  HRESULT put_Importance(LONG value) override {
    return Put("ITask::put_Importance", fields_.importance, value, IsImportance(value));
  }
  HRESULT get_Sensitivity(LONG* value) override {
    return GetValue("ITask::get_Sensitivity", fields_.sensitivity, value);
  }
  HRESULT put_Sensitivity(LONG value) override {
    return Put("ITask::put_Sensitivity", fields_.sensitivity, value, IsSensitivity(value));
  }
  HRESULT get_Complete(VARIANT_BOOL* value) override {
    return GetBool("ITask::get_Complete", fields_.complete, value);
  }
  HRESULT put_Complete(VARIANT_BOOL value) override;

  HRESULT get_BodyInk(DWORD* bytes, const BYTE** block) override {
    return GetInk("ITask::get_BodyInk", fields_.ink, bytes, block);
  }
  HRESULT put_BodyInk(DWORD bytes, const BYTE* block) override {
    return PutInk("ITask::put_BodyInk", changed_, fields_.ink, bytes, block);
  }

  HRESULT get_Oid(LONG* oid) override {
    return GetValue("ITask::get_Oid", static_cast<LONG>(oid_), oid);
  }
  HRESULT get_IsRecurring(VARIANT_BOOL* value) override {
    return GetBool("ITask::get_IsRecurring", recurring(), value);
  }
  HRESULT GetRecurrencePattern(IRecurrencePattern** pattern) override {
    if (!pattern) return E_POINTER;
    *pattern = nullptr;
    return Guarded("ITask::GetRecurrencePattern", [&] { return HandOutPattern(this, pattern); });
  }
  HRESULT ClearRecurrencePattern() override {
    return Guarded("ITask::ClearRecurrencePattern", [&] {
      ClearSeries();
      return S_OK;
    });
  }
  HRESULT Save() override;
  HRESULT Delete() override;

  void NoteChange() override {
    changed_ = true;
  }
  local_days SeriesDay() const override {
    return FirstDay(fields_, series());
  }
  bool MoveSeries(local_days day) override;
  HRESULT OpenExceptions(IExceptions** exceptions) override {
    *exceptions = MakeNoExceptions();
    return S_OK;
  }

 private:
  ~TaskItem() override = default;

  template <typename T>
  HRESULT Put(const char* call, T& kept, T value, bool valid = true) {
    return PutValue(call, changed_, [&] {
      if (valid) kept = value;
      return valid;
    });
  }

  HRESULT StoreNew(Store& store, const std::optional<Series>& saved);
  HRESULT StoreChanges(Store& store, const std::optional<Series>& saved);

  const SessionPtr session_;
  const std::weak_ptr<ItemList> list_;
  TaskFields fields_;
  std::uint32_t oid_;  // 0 until it is saved
  bool changed_ = false;
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

HRESULT TaskItem::Save() {
  return Guarded("ITask::Save", [&] {
    Store* store = session_->store();
    if (!store) return E_FAIL;
    std::optional<Series> saved;
    if (!SeriesToSave(saved)) return E_INVALIDARG;
    const HRESULT status = oid_ == 0 ? StoreNew(*store, saved) : StoreChanges(*store, saved);
    if (Succeeded(status)) {
      changed_ = false;
      SeriesSaved(saved);
    }
    return status;
  });
}

HRESULT TaskItem::StoreNew(Store& store, const std::optional<Series>& saved) {
  std::uint32_t oid = 0;
  const HRESULT status =
      store.Write(nullptr, [&] { return InsertTask(store, fields_, saved, oid); });
  if (Succeeded(status)) oid_ = oid;
  return status;
}

HRESULT TaskItem::StoreChanges(Store& store, const std::optional<Series>& saved) {
  bool found = false;
  const HRESULT status =
      changed_
          ? store.Write(nullptr, [&] { return UpdateTask(store, oid_, fields_, saved, found); })
          : TaskExists(store, oid_, found);
  return Succeeded(status) && !found ? E_INVALIDARG : status;
}

HRESULT TaskItem::Delete() {
  return Guarded("ITask::Delete", [&] {
    Store* store = session_->store();
    if (!store) return E_FAIL;
    return DeleteStored(*store, list_, olTaskItem, oid_);
  });
}

}  // namespace

HRESULT MakeTask(const SessionPtr& session, IDispatch** item) {
  TaskRow row;
  row.fields.importance = olImportanceNormal;
  *item = new TaskItem(session, {}, 0, std::move(row));
  return S_OK;
}

HRESULT LoadTask(const SessionPtr& session, const std::shared_ptr<ItemList>& list,
                 std::uint32_t oid, IDispatch** item) {
  TaskRow row;
  bool found = false;
  const HRESULT status = ReadTask(*session->store(), oid, row, found);
  if (Failed(status)) return status;
  // Another connection was quicker: what is left to delete is handed out without content.
  if (!found && !(list && list->HasDeleted())) return E_INVALIDARG;
  *item = new TaskItem(session, list, oid, std::move(row));
  return S_OK;
}

}  // namespace ce::host
