#include "agent/pim_import/task_from_xml.h"

#include "agent/pim_import/date_values.h"
#include "agent/pim_import/field_values.h"
#include "agent/pim_import/record_decision.h"
#include "agent/pim_import/record_fields.h"
#include "agent/pim_import/recurrence_from_xml.h"
#include "agent/time/file_time.h"
#include "agent/vocabulary/task_fields.h"
#include "platform/clock.h"
#include "platform/status.h"

namespace corvane {

using namespace ce;

namespace {

constexpr LONGLONG kSecondsPerMinute = 60;

// The present pattern stays when there is none to be set, or it cannot be had. The element comes
// first: a task that is asked for its pattern has become a series.
HRESULT SetPattern(IXMLDOMNode* record, ITask* task, const WCHAR* element) {
  ComPtr<IXMLDOMNode> recurrence;
  if (FindChildElement(record, element, recurrence.put()) != S_OK) return S_OK;
  ComPtr<IRecurrencePattern> pattern;
  if (task->GetRecurrencePattern(pattern.put()) != S_OK) return S_OK;
  return ParseXMLRecurrence(recurrence.get(), pattern.get());
}

// Puts the fields of one record into a task, in the order of the vocabulary.
class TaskReader {
 public:
  TaskReader(IXMLDOMNode* record, ITask* task) : record_(record), task_(task) {}

  HRESULT Put(const TaskField& field);

 private:
  HRESULT PutFlag(const TaskField& field, VARIANT_BOOL* flag);
  HRESULT PutPrivate(const TaskField& field);
  HRESULT PutDate(const TaskField& field, DATE* date);
  HRESULT PutReminderTime(const TaskField& field);
  HRESULT PutPriority(const TaskField& field);
  HRESULT PutRecurrence(const TaskField& field);

  IXMLDOMNode* const record_;
  ITask* const task_;
  VARIANT_BOOL reminder_ = VARIANT_FALSE;
  VARIANT_BOOL completed_ = VARIANT_FALSE;
  VARIANT_BOOL recurring_ = VARIANT_FALSE;
  DATE due_ = kNoDate;
  DATE other_ = kNoDate;
};

HRESULT TaskReader::Put(const TaskField& field) {
  switch (field.kind) {
    case TaskFieldKind::kText:
      return PutText(record_, field.element, task_, field.putText);
    case TaskFieldKind::kNotes:
      return PutNotes(record_, field.element, task_, field.getText, field.putText,
                      UnreadableNotes::kNone);
    case TaskFieldKind::kPrivate:
      return PutPrivate(field);
    case TaskFieldKind::kDueDate:
      return PutDate(field, &due_);
    case TaskFieldKind::kDate:
      return PutDate(field, &other_);
    case TaskFieldKind::kHasReminder:
      return PutFlag(field, &reminder_);
    case TaskFieldKind::kReminderMinutes:
      return reminder_ ? PutReminderTime(field) : S_OK;
    case TaskFieldKind::kCompleted:
      return PutFlag(field, &completed_);
    case TaskFieldKind::kPriority:
      return PutPriority(field);
    case TaskFieldKind::kCategoryList:
      return PutCategories(record_, field.element, task_, field.putText);
    case TaskFieldKind::kIsRecurring:
      return ReadFlag(record_, field.element, &recurring_);
    case TaskFieldKind::kRecurrence:
      return PutRecurrence(field);
    case TaskFieldKind::kReminderTime:
    case TaskFieldKind::kDateCompleted:
    case TaskFieldKind::kInk:
      return S_OK;
  }
  return E_UNEXPECTED;
}

HRESULT TaskReader::PutFlag(const TaskField& field, VARIANT_BOOL* flag) {
  RETURN_UNLESS_OK(ReadFlag(record_, field.element, flag));
  return (task_->*field.putFlag)(*flag);
}

HRESULT TaskReader::PutPrivate(const TaskField& field) {
  VARIANT_BOOL isPrivate = VARIANT_FALSE;
  RETURN_UNLESS_OK(ReadFlag(record_, field.element, &isPrivate));
  return (task_->*field.putLong)(isPrivate ? olPrivate : olNormal);
}

HRESULT TaskReader::PutDate(const TaskField& field, DATE* date) {
  RETURN_UNLESS_OK(ReadDate(record_, field.element, date));
  return (task_->*field.putDate)(*date);
}

// The minutes count from the first moment of the due date, in local time throughout.
HRESULT TaskReader::PutReminderTime(const TaskField& field) {
  LONG minutes = 0;
  RETURN_UNLESS_OK(GetChildLongDefault(record_, field.element, &minutes, 0));
  SYSTEMTIME time{};
  if (!VariantTimeToSystemTime(due_, &time)) return (task_->*field.putDate)(kNoDate);
  FILETIME ticks{};
  if (!SystemTimeToFileTime(&time, &ticks)) return LastErrorStatus();
  ticks = AddSeconds(ticks, -kSecondsPerMinute * minutes);
  if (!FileTimeToSystemTime(&ticks, &time)) return LastErrorStatus();
  DATE reminder = kNoDate;
  RETURN_UNLESS_OK(ToDate(time, &reminder));
  return (task_->*field.putDate)(reminder);
}

HRESULT TaskReader::PutPriority(const TaskField& field) {
  LONG priority = kPriorityNormal;
  RETURN_UNLESS_OK(GetChildLongDefault(record_, field.element, &priority, kPriorityNormal));
  return (task_->*field.putLong)(ImportanceOfPriority(priority));
}

HRESULT TaskReader::PutRecurrence(const TaskField& field) {
  return recurring_ ? SetPattern(record_, task_, field.element) : task_->ClearRecurrencePattern();
}

HRESULT FillAndSave(IXMLDOMNode* record, IUnknown* item, bool* saved) {
  ITask* const task = static_cast<ITask*>(item);
  TaskReader reader(record, task);
  for (const TaskField* field : TaskImportFields()) RETURN_UNLESS_OK(reader.Put(*field));
  const HRESULT status = task->Save();
  *saved = status == S_OK;
  return status;
}

HRESULT DeleteItem(IUnknown* item) {
  return static_cast<ITask*>(item)->Delete();
}

HRESULT GetOid(IUnknown* item, LONG* oid) {
  return static_cast<ITask*>(item)->get_Oid(oid);
}

constexpr RecordRules kTaskRules{
    .folder = olFolderTasks,
    .itemInterface = &ITask::kIid,
    .needsFolder = true,
    .deletesFailedItem = false,
    .fillAndSave = FillAndSave,
    .deleteItem = DeleteItem,
    .getOid = GetOid,
    .enteringTrace = u"Entering ParseXMLTask",
    .addTrace = u"Found something to Add",
    .exitingTrace = u"Exiting ParseXMLTask hr = %ld",
};

}  // namespace

HRESULT ParseXMLTask(IXMLDOMNode* record, IPOutlookApp* app, CorvaneStream* stream) {
  return ApplyRecord(kTaskRules, record, app, stream);
}

}  // namespace corvane
