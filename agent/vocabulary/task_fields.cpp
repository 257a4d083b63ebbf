#include "agent/vocabulary/task_fields.h"

#include <iterator>

#include "agent/vocabulary/field_order.h"

namespace corvane {
namespace {

using ce::ITask;
using enum TaskFieldKind;

#define TEXT_OF(Property) .getText = &ITask::get_##Property, .putText = &ITask::put_##Property
#define FLAG_OF(Property) .getFlag = &ITask::get_##Property, .putFlag = &ITask::put_##Property
#define LONG_OF(Property) .getLong = &ITask::get_##Property, .putLong = &ITask::put_##Property
#define DATE_OF(Property) .getDate = &ITask::get_##Property, .putDate = &ITask::put_##Property

constexpr TaskField kFields[] = {
    {.element = kSubjectElement,
     .kind = kText,
     .importPlace = 1,
     TEXT_OF(Subject),
     .valueTrace = u"Got Subject %s"},
    {.element = kCategoriesElement, .kind = kCategoryList, .importPlace = 10, TEXT_OF(Categories)},
    {.element = kIsRecurringElement,
     .kind = kIsRecurring,
     .importPlace = 11,
     .getFlag = &ITask::get_IsRecurring,
     .beforeTrace = u"AddTaskToXML before get_IsRecurring"},
    {.element = kRecurrenceElement, .kind = kRecurrence, .importPlace = 12},
    {.element = kDueDateElement, .kind = kDueDate, .importPlace = 4, DATE_OF(DueDate)},
    {.element = kHasReminderElement, .kind = kHasReminder, .importPlace = 5, FLAG_OF(ReminderSet)},
    {.element = kReminderTimeElement, .kind = kReminderTime, DATE_OF(ReminderTime)},
    {.element = kReminderMinutesElement,
     .kind = kReminderMinutes,
     .importPlace = 6,
     DATE_OF(ReminderTime)},
    {.element = kStartDateElement, .kind = kDate, .importPlace = 9, DATE_OF(StartDate)},
    {.element = kPrivateElement, .kind = kPrivate, .importPlace = 3, LONG_OF(Sensitivity)},
    {.element = kCompletedElement, .kind = kCompleted, .importPlace = 7, FLAG_OF(Complete)},
    {.element = kDateCompletedElement, .kind = kDateCompleted, DATE_OF(DateCompleted)},
    {.element = kPriorityElement, .kind = kPriority, .importPlace = 8, LONG_OF(Importance)},
    {.element = kNotesElement, .kind = kNotes, .importPlace = 2, TEXT_OF(Body)},
    {.element = kBodyInkElement, .kind = kInk},
};
static_assert(std::size(kFields) == 15);

#undef TEXT_OF
#undef FLAG_OF
#undef LONG_OF
#undef DATE_OF

constexpr auto kImportFields =
    FieldsByPlace<12>(kFields, [](const TaskField& field, int) { return field.importPlace; });
static_assert(EveryPlaceIsTaken(kImportFields));

}  // namespace

std::span<const TaskField> TaskFields() {
  return kFields;
}

std::span<const TaskField* const> TaskImportFields() {
  return kImportFields;
}

ce::LONG PriorityOfImportance(ce::LONG importance) {
  switch (importance) {
    case ce::olImportanceLow:
      return kPriorityLow;
    case ce::olImportanceHigh:
      return kPriorityHigh;
    default:
      return kPriorityNormal;
  }
}

ce::LONG ImportanceOfPriority(ce::LONG priority) {
  if (priority < kPriorityNormal) return ce::olImportanceHigh;
  return priority == kPriorityNormal ? ce::olImportanceNormal : ce::olImportanceLow;
}

}  // namespace corvane
