// The properties that appointments and occurrences of a series have alike (IAppointment).
#pragma once

#include <utility>

#include "handheld/base/com_object.h"
#include "handheld/outlook/item_property.h"
#include "handheld/outlook/session.h"
#include "handheld/store/appointment_row.h"
#include "handheld/store/appointment_times.h"
#include "platform/pocket_outlook_calendar.h"

namespace ce::host {

class AppointmentBase : public ComObject<IAppointment> {
 public:
#define CE_APPOINTMENT_TEXT(Name, Kind)                                                       \
  HRESULT get_##Name(BSTR* value) override {                                                  \
    return GetStoredText("IAppointment::get_" #Name, fields_.texts[AppointmentText::k##Name], \
                         value);                                                              \
  }                                                                                           \
  HRESULT put_##Name(BSTR value) override {                                                   \
    return PutStoredText("IAppointment::put_" #Name, changed_,                                \
                         LongestText(session_->limits(), TextKind::Kind), fields_.texts,      \
                         static_cast<std::size_t>(AppointmentText::k##Name), value);          \
  }
  CE_APPOINTMENT_TEXTS(CE_APPOINTMENT_TEXT)
#undef CE_APPOINTMENT_TEXT

  HRESULT get_AllDayEvent(VARIANT_BOOL* value) override {
    return GetBool("IAppointment::get_AllDayEvent", fields_.allDayEvent, value);
  }
  HRESULT put_AllDayEvent(VARIANT_BOOL value) override {
    return Put("IAppointment::put_AllDayEvent", fields_.allDayEvent, value != VARIANT_FALSE);
  }
  HRESULT get_BusyStatus(LONG* value) override {
    return GetValue("IAppointment::get_BusyStatus", fields_.busyStatus, value);
  }
  HRESULT put_BusyStatus(LONG value) override {
    return Put("IAppointment::put_BusyStatus", fields_.busyStatus, value);
  }
  HRESULT get_Sensitivity(LONG* value) override {
    return GetValue("IAppointment::get_Sensitivity", fields_.sensitivity, value);
  }
  HRESULT put_Sensitivity(LONG value) override {
    return Put("IAppointment::put_Sensitivity", fields_.sensitivity, value, IsSensitivity(value));
  }
  HRESULT get_ReminderSet(VARIANT_BOOL* value) override {
    return GetBool("IAppointment::get_ReminderSet", fields_.reminderSet, value);
  }
  HRESULT put_ReminderSet(VARIANT_BOOL value) override {
    return Put("IAppointment::put_ReminderSet", fields_.reminderSet, value != VARIANT_FALSE);
  }
  HRESULT get_ReminderMinutesBeforeStart(LONG* value) override {
    return GetValue("IAppointment::get_ReminderMinutesBeforeStart", fields_.reminderMinutes, value);
  }
  HRESULT put_ReminderMinutesBeforeStart(LONG value) override {
    return Put("IAppointment::put_ReminderMinutesBeforeStart", fields_.reminderMinutes, value);
  }

  HRESULT get_Start(DATE* value) override {
    return GetValue("IAppointment::get_Start", fields_.start, value, kNoDate);
  }
  HRESULT put_Start(DATE value) override {
    return PutValue("IAppointment::put_Start", changed_, [&] { return SetStart(fields_, value); });
  }
  HRESULT get_End(DATE* value) override {
    return GetValue("IAppointment::get_End", fields_.end, value, kNoDate);
  }
  HRESULT put_End(DATE value) override {
    return PutValue("IAppointment::put_End", changed_, [&] { return SetEnd(fields_, value); });
  }
  HRESULT get_Duration(LONG* value) override {
    return GetValue("IAppointment::get_Duration", fields_.duration, value);
  }
  HRESULT put_Duration(LONG value) override {
    return PutValue("IAppointment::put_Duration", changed_,
                    [&] { return SetDuration(fields_, value); });
  }

  HRESULT get_BodyInk(DWORD* bytes, const BYTE** block) override {
    return GetInk("IAppointment::get_BodyInk", fields_.ink, bytes, block);
  }
  HRESULT put_BodyInk(DWORD bytes, const BYTE* block) override {
    return PutInk("IAppointment::put_BodyInk", changed_, fields_.ink, bytes, block);
  }

 protected:
  AppointmentBase(SessionPtr session, AppointmentFields fields)
      : session_(std::move(session)), fields_(std::move(fields)) {}
  ~AppointmentBase() override = default;

  const SessionPtr& session() const {
    return session_;
  }
  const AppointmentFields& fields() const {
    return fields_;
  }
  AppointmentFields& fields() {
    return fields_;
  }
  bool changed() const {
    return changed_;
  }
  void SetChanged(bool changed) {
    changed_ = changed;
  }

 private:
  template <typename T>
  HRESULT Put(const char* call, T& kept, T value, bool valid = true) {
    return PutValue(call, changed_, [&] {
      if (valid) kept = value;
      return valid;
    });
  }

  const SessionPtr session_;
  AppointmentFields fields_;
  bool changed_ = false;
};

}  // namespace ce::host
