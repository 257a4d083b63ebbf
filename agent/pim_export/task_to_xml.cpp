#include "agent/pim_export/task_to_xml.h"

#include "agent/log/log.h"
#include "agent/pim_export/item_fields.h"
#include "agent/time/file_time.h"
#include "agent/vocabulary/calendar_words.h"
#include "agent/xml/document.h"
#include "agent/xml/values.h"
#include "platform/clock.h"
#include "platform/com_ptr.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

struct TaskRecord : ItemRecord<ITask> {
  bool hasReminder = false;
  DATE dueDate = kNoDate;
  DATE reminderTime = kNoDate;
};

HRESULT ToFileTime(DATE date, FILETIME* ticks) {
  SYSTEMTIME time{};
  if (!VariantTimeToSystemTime(date, &time)) return E_UNEXPECTED;
  return SystemTimeToFileTime(&time, ticks) ? S_OK : LastErrorStatus();
}

HRESULT AddReminderTime(TaskRecord& record) {
  if (!record.hasReminder) return S_OK;
  RETURN_IF_FAILED(record.item->get_ReminderTime(&record.reminderTime));
  return AddDateTimeElement(record.document, record.element, kReminderTimeElement,
                            record.reminderTime);
}

// From the reminder to the start of the day on which the task is due: negative for a reminder on
// that day.
HRESULT AddReminderMinutes(const TaskRecord& record) {
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
  return AddLongElement(record.document, record.element, kReminderMinutesElement,
                        static_cast<LONG>(minutes));
}

HRESULT AddDate(const TaskRecord& record, const WCHAR* name, ItemGetter<ITask, DATE> get,
                DATE* date) {
  RETURN_IF_FAILED((record.item->*get)(date));
  return AddDateElement(record.document, record.element, name, *date);
}

HRESULT AddPriority(const TaskRecord& record) {
  LONG importance = olImportanceNormal;
  RETURN_IF_FAILED(record.item->get_Importance(&importance));
  return AddLongElement(record.document, record.element, kPriorityElement,
                        PriorityOfImportance(importance));
}

HRESULT AddRecurrence(const TaskRecord& record) {
  bool isRecurring = false;
  RETURN_IF_FAILED(AddItemFlag(record, kIsRecurringElement, &ITask::get_IsRecurring, &isRecurring));
  return isRecurring ? AddItemRecurrence(record, false) : S_OK;
}

HRESULT AddCompletion(const TaskRecord& record) {
  bool isComplete = false;
  RETURN_IF_FAILED(AddItemFlag(record, kCompletedElement, &ITask::get_Complete, &isComplete));
  DATE date = kNoDate;
  if (!isComplete) return S_OK;
  return AddDate(record, kDateCompletedElement, &ITask::get_DateCompleted, &date);
}

HRESULT AddFirstFields(const TaskRecord& record) {
  RETURN_IF_FAILED(AddItemSubject(record));
  return AddItemCategories(record);
}

HRESULT AddOtherFields(TaskRecord& record) {
  RETURN_IF_FAILED(AddRecurrence(record));
  RETURN_IF_FAILED(AddDate(record, kDueDateElement, &ITask::get_DueDate, &record.dueDate));
  RETURN_IF_FAILED(
      AddItemFlag(record, kHasReminderElement, &ITask::get_ReminderSet, &record.hasReminder));
  RETURN_IF_FAILED(AddReminderTime(record));
  RETURN_IF_FAILED(AddReminderMinutes(record));
  DATE start = kNoDate;
  RETURN_IF_FAILED(AddDate(record, kStartDateElement, &ITask::get_StartDate, &start));
  RETURN_IF_FAILED(AddItemPrivacy(record));
  RETURN_IF_FAILED(AddCompletion(record));
  RETURN_IF_FAILED(AddPriority(record));
  RETURN_IF_FAILED(AddItemText(record, kNotesElement, &ITask::get_Body));
  return AddItemInk(record);
}

HRESULT CreateRecord(IXMLDOMDocument* document, IXMLDOMNode* parent, ITask* task,
                     IXMLDOMElement** element) {
  *element = nullptr;
  if (!parent || !task) return E_POINTER;
  LONG oid = 0;
  RETURN_IF_FAILED(task->get_Oid(&oid));
  ComPtr<IXMLDOMElement> made;
  RETURN_IF_FAILED(CreateXMLElement(document, kTaskElement, made.put()));
  RETURN_IF_FAILED(SetOid(document, made.get(), oid));
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
  if (Succeeded(status)) status = AddFirstFields(record);
  // Whatever came before.
  LOG(u"AddTaskToXML before get_IsRecurring");
  if (Succeeded(status)) status = AddOtherFields(record);
  LOG(u"Exit AddTaskToXML");
  return status;
}

}  // namespace corvane
