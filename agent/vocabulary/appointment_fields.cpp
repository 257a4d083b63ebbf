#include "agent/vocabulary/appointment_fields.h"

#include <iterator>

#include "agent/vocabulary/field_order.h"

namespace corvane {
namespace {

using ce::IAppointment;
using enum AppointmentFieldKind;

#define TEXT_OF(Property) \
  .getText = &IAppointment::get_##Property, .putText = &IAppointment::put_##Property
#define FLAG_OF(Property) \
  .getFlag = &IAppointment::get_##Property, .putFlag = &IAppointment::put_##Property
#define LONG_OF(Property) \
  .getLong = &IAppointment::get_##Property, .putLong = &IAppointment::put_##Property

constexpr AppointmentField kFields[] = {
    {.element = kSubjectElement,
     .kind = kText,
     .writtenInException = true,
     .readInException = true,
     .importPlace = 1,
     TEXT_OF(Subject),
     .valueTrace = u"Got Subject %s"},
    {.element = kLocationElement,
     .kind = kText,
     .writtenInException = true,
     .readInException = true,
     .importPlace = 13,
     TEXT_OF(Location)},
    {.element = kAllDayEventElement,
     .kind = kAllDay,
     .writtenInException = true,
     .readInException = true,
     .importPlace = 3,
     FLAG_OF(AllDayEvent)},
    {.element = kCategoriesElement, .kind = kCategoryList, .importPlace = 12, TEXT_OF(Categories)},
    {.element = kIsRecurringElement,
     .kind = kIsRecurring,
     .readInException = true,
     .importPlace = 6,
     .getFlag = &IAppointment::get_IsRecurring},
    {.element = kRecurrenceElement, .kind = kRecurrence, .importPlace = 11},
    {.element = kHasReminderElement, .kind = kHasReminder, .importPlace = 9, FLAG_OF(ReminderSet)},
    {.element = kReminderMinutesElement,
     .kind = kReminderMinutes,
     .importPlace = 10,
     LONG_OF(ReminderMinutesBeforeStart)},
    {.element = kPrivateElement, .kind = kPrivate, .importPlace = 8, LONG_OF(Sensitivity)},
    {.element = kEventStartElement,
     .kind = kStart,
     .writtenInException = true,
     .readInException = true,
     .importPlace = 5},
    {.element = kEventEndElement,
     .kind = kEnd,
     .writtenInException = true,
     .readInException = true,
     .importPlace = 7},
    {.element = kBusyStatusElement,
     .kind = kBusyStatus,
     .writtenInException = true,
     .readInException = true,
     .importPlace = 4,
     LONG_OF(BusyStatus)},
    {.element = kNotesElement,
     .kind = kNotes,
     .writtenInException = true,
     .readInException = true,
     .importPlace = 2,
     TEXT_OF(Body)},
    {.element = kBodyInkElement, .kind = kInk, .writtenInException = true},
};
static_assert(std::size(kFields) == 14);

#undef TEXT_OF
#undef FLAG_OF
#undef LONG_OF

constexpr auto kImportFields = FieldsByPlace<13>(
    kFields, [](const AppointmentField& field, int) { return field.importPlace; });
static_assert(EveryPlaceIsTaken(kImportFields));

}  // namespace

std::span<const AppointmentField> AppointmentFields() {
  return kFields;
}

std::span<const AppointmentField* const> AppointmentImportFields() {
  return kImportFields;
}

}  // namespace corvane
