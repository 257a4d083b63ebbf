#include "agent/pim_import/task_from_xml.h"

#include "agent/pim_import/date_values.h"
#include "agent/pim_import/field_values.h"
#include "agent/pim_import/record_decision.h"
#include "agent/pim_import/record_fields.h"
#include "agent/pim_import/recurrence_from_xml.h"
#include "agent/time/file_time.h"
#include "agent/vocabulary/calendar_words.h"
#include "platform/clock.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

// The present pattern stays when there is none to be set, or it cannot be had. The element comes
// first: a task that is asked for its pattern has become a series.
HRESULT SetPattern(const ChildElements& record, ITask* task) {
  ComPtr<IXMLDOMNode> recurrence;
  if (FindChildElement(record, kRecurrenceElement, recurrence.put()) != S_OK) return S_OK;
  ComPtr<IRecurrencePattern> pattern;
  if (task->GetRecurrencePattern(pattern.put()) != S_OK) return S_OK;
  return ParseXMLRecurrence(recurrence.get(), pattern.get());
}

HRESULT PutDate(const ChildElements& record, const WCHAR* element, ITask* task,
                HRESULT (ITask::*put)(DATE), DATE* date) {
  RETURN_UNLESS_OK(ReadDate(record, element, date));
  return (task->*put)(*date);
}

// The minutes count from the first moment of the due date, in local time throughout.
HRESULT PutReminderTime(const ChildElements& record, ITask* task, DATE due) {
  LONG minutes = 0;
  RETURN_UNLESS_OK(GetChildLongDefault(record, kReminderMinutesElement, &minutes, 0));
  SYSTEMTIME time{};
  if (!VariantTimeToSystemTime(due, &time)) return task->put_ReminderTime(kNoDate);
  FILETIME ticks{};
  if (!SystemTimeToFileTime(&time, &ticks)) return LastErrorStatus();
  ticks = AddSeconds(ticks, -kSecondsPerMinute * minutes);
  if (!FileTimeToSystemTime(&ticks, &time)) return LastErrorStatus();
  DATE reminder = kNoDate;
  RETURN_UNLESS_OK(ToDate(time, &reminder));
  return task->put_ReminderTime(reminder);
}

HRESULT PutPriority(const ChildElements& record, ITask* task) {
  LONG priority = kPriorityNormal;
  RETURN_UNLESS_OK(GetChildLongDefault(record, kPriorityElement, &priority, kPriorityNormal));
  return task->put_Importance(ImportanceOfPriority(priority));
}

HRESULT PutRecurrence(const ChildElements& record, ITask* task) {
  VARIANT_BOOL recurring = VARIANT_FALSE;
  RETURN_UNLESS_OK(ReadFlag(record, kIsRecurringElement, &recurring));
  return recurring ? SetPattern(record, task) : task->ClearRecurrencePattern();
}

HRESULT PutFields(const ChildElements& record, ITask* task) {
  RETURN_UNLESS_OK(PutText(record, kSubjectElement, task, &ITask::put_Subject));
  RETURN_UNLESS_OK(PutNotes(record, kNotesElement, task, &ITask::get_Body, &ITask::put_Body,
                            UnreadableNotes::kNone));
  RETURN_UNLESS_OK(PutPrivacy(record, task));
  DATE due = kNoDate;
  RETURN_UNLESS_OK(PutDate(record, kDueDateElement, task, &ITask::put_DueDate, &due));
  VARIANT_BOOL reminder = VARIANT_FALSE;
  RETURN_UNLESS_OK(PutFlag(record, kHasReminderElement, task, &ITask::put_ReminderSet, &reminder));
  if (reminder) RETURN_UNLESS_OK(PutReminderTime(record, task, due));
  VARIANT_BOOL completed = VARIANT_FALSE;
  RETURN_UNLESS_OK(PutFlag(record, kCompletedElement, task, &ITask::put_Complete, &completed));
  RETURN_UNLESS_OK(PutPriority(record, task));
  DATE start = kNoDate;
  RETURN_UNLESS_OK(PutDate(record, kStartDateElement, task, &ITask::put_StartDate, &start));
  RETURN_UNLESS_OK(PutCategories(record, kCategoriesElement, task, &ITask::put_Categories));
  return PutRecurrence(record, task);
}

HRESULT FillAndSaveTask(IXMLDOMNode* record, IUnknown* item, bool* saved) {
  ITask* const task = static_cast<ITask*>(item);
  ChildElements fields(record);
  RETURN_UNLESS_OK(fields.Index());
  RETURN_UNLESS_OK(PutFields(fields, task));
  const HRESULT status = task->Save();
  *saved = status == S_OK;
  return status;
}

constexpr RecordRules kTaskRules{
    .folder = olFolderTasks,
    .itemInterface = &ITask::kIid,
    .needsFolder = true,
    .deletesFailedItem = false,
    .fillAndSave = FillAndSaveTask,
    .deleteItem = DeleteItem<ITask>,
    .getOid = GetItemOid<ITask>,
    .enteringTrace = u"Entering ParseXMLTask",
    .addTrace = u"Found something to Add",
    .exitingTrace = u"Exiting ParseXMLTask hr = %ld",
};

}  // namespace

HRESULT ParseXMLTask(IXMLDOMNode* record, IPOutlookApp* app, CorvaneStream* stream) {
  return ApplyRecord(kTaskRules, record, app, stream);
}

}  // namespace corvane
