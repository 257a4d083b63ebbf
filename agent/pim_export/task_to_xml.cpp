#include "agent/pim_export/task_to_xml.h"

#include "agent/log/log.h"
#include "agent/pim_export/item_fields.h"
#include "agent/time/file_time.h"
#include "agent/vocabulary/task_fields.h"
#include "agent/xml/document.h"
#include "agent/xml/values.h"
#include "platform/clock.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

constexpr LONGLONG kSecondsPerMinute = 60;

struct TaskRecord : ItemRecord<ITask> {
  bool isRecurring = false;
  bool hasReminder = false;
  bool isComplete = false;
  DATE dueDate = kNoDate;
  DATE reminderTime = kNoDate;
};

HRESULT ToFileTime(DATE date, FILETIME* ticks) {
  SYSTEMTIME time{};
  if (!VariantTimeToSystemTime(date, &time)) return E_UNEXPECTED;
  return SystemTimeToFileTime(&time, ticks) ? S_OK : LastErrorStatus();
}

HRESULT AddReminderTime(TaskRecord& record, const TaskField& field) {
  if (!record.hasReminder) return S_OK;
  RETURN_IF_FAILED((record.item->*field.getDate)(&record.reminderTime));
  return AddDateTimeElement(record.document, record.element, field.element, record.reminderTime);
}

// From the reminder to the start of the day on which the task is due: negative for a reminder on
// that day.
HRESULT AddReminderMinutes(const TaskRecord& record, const TaskField& field) {
  if (!record.hasReminder || record.reminderTime == kNoDate || record.dueDate == kNoDate) {
    return S_OK;
  }
  FILETIME reminder{};
  FILETIME due{};
  HRESULT status = ToFileTime(record.reminderTime, &reminder);
  if (status == S_OK) status = ToFileTime(record.dueDate, &due);
  // A positive code is no failure by its sign, but there is nothing to count with.
  if (status != S_OK) return status;
  const LONGLONG ticks = static_cast<LONGLONG>(Ticks(due)) - static_cast<LONGLONG>(Ticks(reminder));
  const LONGLONG minutes = ticks / kTicksPerSecond / kSecondsPerMinute;
  return AddLongElement(record.document, record.element, field.element, static_cast<LONG>(minutes));
}

HRESULT AddDate(const TaskRecord& record, const TaskField& field, DATE* date) {
  RETURN_IF_FAILED((record.item->*field.getDate)(date));
  return AddDateElement(record.document, record.element, field.element, *date);
}

HRESULT AddPriority(const TaskRecord& record, const TaskField& field) {
  LONG importance = olImportanceNormal;
  RETURN_IF_FAILED((record.item->*field.getLong)(&importance));
  return AddLongElement(record.document, record.element, field.element,
                        PriorityOfImportance(importance));
}

HRESULT AddField(TaskRecord& record, const TaskField& field) {
  DATE date = kNoDate;
  switch (field.kind) {
    case TaskFieldKind::kText:
    case TaskFieldKind::kNotes:
      return AddItemText(record, field.element, field.getText, field.valueTrace);
    case TaskFieldKind::kCategoryList:
      return AddItemCategories(record, field.element, field.getText);
    case TaskFieldKind::kIsRecurring:
      return AddItemFlag(record, field.element, field.getFlag, &record.isRecurring);
    case TaskFieldKind::kRecurrence:
      return record.isRecurring ? AddItemRecurrence(record, false) : S_OK;
    case TaskFieldKind::kDueDate:
      return AddDate(record, field, &record.dueDate);
    case TaskFieldKind::kDate:
      return AddDate(record, field, &date);
    case TaskFieldKind::kHasReminder:
      return AddItemFlag(record, field.element, field.getFlag, &record.hasReminder);
    case TaskFieldKind::kReminderTime:
      return AddReminderTime(record, field);
    case TaskFieldKind::kReminderMinutes:
      return AddReminderMinutes(record, field);
    case TaskFieldKind::kPrivate:
      return AddItemPrivacy(record, field.element, field.getLong);
    case TaskFieldKind::kCompleted:
      return AddItemFlag(record, field.element, field.getFlag, &record.isComplete);
    case TaskFieldKind::kDateCompleted:
      return record.isComplete ? AddDate(record, field, &date) : S_OK;
    case TaskFieldKind::kPriority:
      return AddPriority(record, field);
    case TaskFieldKind::kInk:
      return AddItemInk(record, field.element);
  }
  return E_UNEXPECTED;
}

HRESULT CreateRecord(IXMLDOMDocument* document, IXMLDOMNode* parent, ITask* task,
                     IXMLDOMElement** element) {
  *element = nullptr;
  if (!parent || !task) return E_POINTER;
  LONG oid = 0;
  RETURN_IF_FAILED(task->get_Oid(&oid));
  ComPtr<IXMLDOMElement> made;
  RETURN_IF_FAILED(CreateXMLElement(document, kTaskElement, made.put()));
  Bstr oidText(LongText(oid).data());
  if (!oidText) return E_OUTOFMEMORY;
  RETURN_IF_FAILED(SetElementAttribute(document, made.get(), u"Oid", oidText.address()));
  RETURN_IF_FAILED(parent->appendChild(made.get(), nullptr));
  *element = made.detach();
  return S_OK;
}

}  // namespace

HRESULT AddTaskToXML(IXMLDOMDocument* document, IXMLDOMNode* parent, ITask* task) {
  LOG(u"AddTaskToXML");
  ComPtr<IXMLDOMElement> element;
  HRESULT status = CreateRecord(document, parent, task, element.put());
  TaskRecord record{{document, element.get(), task}};
  for (const TaskField& field : TaskFields()) {
    if (field.beforeTrace) LOG(field.beforeTrace);
    if (Succeeded(status)) status = AddField(record, field);
  }
  LOG(u"Exit AddTaskToXML");
  return status;
}

}  // namespace corvane
