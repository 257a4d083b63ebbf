// The task vocabulary: one row a field, in the order of the wire.
#pragma once

#include <span>

#include "agent/vocabulary/item_elements.h"
#include "platform/pocket_outlook_calendar.h"

namespace corvane {

inline constexpr const ce::WCHAR* kTaskElement = u"TASK";

inline constexpr const ce::WCHAR* kDueDateElement = u"DUE_DATE";
inline constexpr const ce::WCHAR* kReminderTimeElement = u"ReminderTime";
inline constexpr const ce::WCHAR* kStartDateElement = u"StartDate";
inline constexpr const ce::WCHAR* kCompletedElement = u"COMPLETED";
inline constexpr const ce::WCHAR* kDateCompletedElement = u"DateCompleted";
inline constexpr const ce::WCHAR* kPriorityElement = u"PRIORITY";

// The text of "PRIORITY" runs against Importance.
inline constexpr ce::LONG kPriorityHigh = 2;
inline constexpr ce::LONG kPriorityNormal = 3;
inline constexpr ce::LONG kPriorityLow = 4;

// An unknown importance is a normal one.
ce::LONG PriorityOfImportance(ce::LONG importance);
// Everything below kPriorityNormal is high, everything above it low.
ce::LONG ImportanceOfPriority(ce::LONG priority);

enum class TaskFieldKind {
  kText,             // one line
  kCategoryList,     // a container over one comma-separated property
  kIsRecurring,      // a flag without a setter
  kRecurrence,       // a container; see recurrence_words.h
  kDueDate,          // a date; the reminder's minutes are counted from it
  kDate,             // a date
  kHasReminder,      // a flag
  kReminderTime,     // a date and time, only with a reminder; never imported
  kReminderMinutes,  // a number, only with a reminder; ReminderTime is set from it
  kPrivate,          // TRUE for one value of Sensitivity
  kCompleted,        // a flag
  kDateCompleted,    // a date, only of a completed task; never imported
  kPriority,         // a number that stands for an importance
  kNotes,            // multi-line; written on import only when it changes
  kInk,              // a flag on export, never imported
};

using TaskTextGetter = ce::HRESULT (ce::ITask::*)(ce::BSTR*);
using TaskTextSetter = ce::HRESULT (ce::ITask::*)(ce::BSTR);
using TaskFlagGetter = ce::HRESULT (ce::ITask::*)(ce::VARIANT_BOOL*);
using TaskFlagSetter = ce::HRESULT (ce::ITask::*)(ce::VARIANT_BOOL);
using TaskLongGetter = ce::HRESULT (ce::ITask::*)(ce::LONG*);
using TaskLongSetter = ce::HRESULT (ce::ITask::*)(ce::LONG);
using TaskDateGetter = ce::HRESULT (ce::ITask::*)(ce::DATE*);
using TaskDateSetter = ce::HRESULT (ce::ITask::*)(ce::DATE);

// The accessors are those of the kind's value; the others are null, as are all of a kind that takes
// more than one property.
struct TaskField {
  const ce::WCHAR* element = nullptr;
  TaskFieldKind kind = TaskFieldKind::kText;
  // 1-based place in the order of import; 0 when the field is never read.
  int importPlace = 0;
  TaskTextGetter getText = nullptr;
  TaskTextSetter putText = nullptr;
  TaskFlagGetter getFlag = nullptr;
  TaskFlagSetter putFlag = nullptr;
  TaskLongGetter getLong = nullptr;
  TaskLongSetter putLong = nullptr;
  TaskDateGetter getDate = nullptr;
  TaskDateSetter putDate = nullptr;
  // What the exporter logs before the field, whatever came before.
  const ce::WCHAR* beforeTrace = nullptr;
  // What the exporter logs once the value was read, with the text as the argument.
  const ce::WCHAR* valueTrace = nullptr;
};

// In the order of export, which is that of the key list.
std::span<const TaskField> TaskFields();

// Those that are read, in the order of import.
std::span<const TaskField* const> TaskImportFields();

}  // namespace corvane
