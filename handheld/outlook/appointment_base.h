// The properties that appointments and occurrences of a series have alike (IAppointment).
#pragma once

#include "handheld/outlook/stored_item.h"

namespace ce::host {

class AppointmentBase : public ItemBase<IAppointment, AppointmentFields> {
 public:
#define CE_APPOINTMENT_TEXT(Name, Kind) CE_ITEM_TEXT(IAppointment, AppointmentText, Name)
  CE_APPOINTMENT_TEXTS(CE_APPOINTMENT_TEXT)
#undef CE_APPOINTMENT_TEXT
  CE_ITEM_VALUE(IAppointment, Start, DATE, start, SetStart(fields, value))
  CE_ITEM_VALUE(IAppointment, End, DATE, end, SetEnd(fields, value))
  CE_ITEM_VALUE(IAppointment, Duration, LONG, duration, SetDuration(fields, value))
  CE_ITEM_VALUE(IAppointment, AllDayEvent, VARIANT_BOOL, allDayEvent,
                TakeFlag(fields.allDayEvent, value))
  CE_ITEM_VALUE(IAppointment, BusyStatus, LONG, busyStatus, Take(fields.busyStatus, value))
  CE_ITEM_VALUE(IAppointment, Sensitivity, LONG, sensitivity,
                Take(fields.sensitivity, value, IsSensitivity(value)))
  CE_ITEM_VALUE(IAppointment, ReminderSet, VARIANT_BOOL, reminderSet,
                TakeFlag(fields.reminderSet, value))
  CE_ITEM_VALUE(IAppointment, ReminderMinutesBeforeStart, LONG, reminderMinutes,
                Take(fields.reminderMinutes, value))

 protected:
  using ItemBase::ItemBase;
  ~AppointmentBase() override = default;
};

}  // namespace ce::host
