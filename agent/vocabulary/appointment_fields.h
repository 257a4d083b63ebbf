// The appointment vocabulary: one row a field, in the order of the wire.
#pragma once

#include <span>

#include "agent/vocabulary/item_elements.h"
#include "platform/pocket_outlook_calendar.h"

namespace corvane {

inline constexpr const ce::WCHAR* kCalendarElement = u"CALENDAR";

inline constexpr const ce::WCHAR* kLocationElement = u"LOCATION";
inline constexpr const ce::WCHAR* kAllDayEventElement = u"ALL_DAY_EVENT";
inline constexpr const ce::WCHAR* kEventStartElement = u"EVENT_START";
inline constexpr const ce::WCHAR* kEventEndElement = u"EVENT_END";
inline constexpr const ce::WCHAR* kBusyStatusElement = u"BusyStatus";

inline constexpr ce::LONG kMinutesPerDay = 1440;

enum class AppointmentFieldKind {
  kText,             // one line
  kAllDay,           // a flag; decides on the form of both dates
  kCategoryList,     // a container over one comma-separated property
  kIsRecurring,      // a flag without a setter
  kRecurrence,       // a container; see recurrence_words.h
  kHasReminder,      // a flag
  kReminderMinutes,  // a number, only with a reminder
  kPrivate,          // TRUE for one value of Sensitivity
  kStart,            // all-day: a date; otherwise a date and time
  kEnd,              // as kStart; of an all-day event the Duration tells it
  kBusyStatus,       // a number
  kNotes,            // multi-line; written on import only when it changes
  kInk,              // a flag on export, never imported
};

using AppointmentTextGetter = ce::HRESULT (ce::IAppointment::*)(ce::BSTR*);
using AppointmentTextSetter = ce::HRESULT (ce::IAppointment::*)(ce::BSTR);
using AppointmentFlagGetter = ce::HRESULT (ce::IAppointment::*)(ce::VARIANT_BOOL*);
using AppointmentFlagSetter = ce::HRESULT (ce::IAppointment::*)(ce::VARIANT_BOOL);
using AppointmentLongGetter = ce::HRESULT (ce::IAppointment::*)(ce::LONG*);
using AppointmentLongSetter = ce::HRESULT (ce::IAppointment::*)(ce::LONG);

// The accessors are those of the kind's value; the others are null, as are all of a kind that takes
// more than one property.
struct AppointmentField {
  const ce::WCHAR* element = nullptr;
  AppointmentFieldKind kind = AppointmentFieldKind::kText;
  // Whether a changed occurrence carries the field, and whether one is read from it: a series that
  // is marked in an occurrence counts for its length alone.
  bool writtenInException = false;
  bool readInException = false;
  // 1-based place in the order of import; 0 when the field is never read.
  int importPlace = 0;
  AppointmentTextGetter getText = nullptr;
  AppointmentTextSetter putText = nullptr;
  AppointmentFlagGetter getFlag = nullptr;
  AppointmentFlagSetter putFlag = nullptr;
  AppointmentLongGetter getLong = nullptr;
  AppointmentLongSetter putLong = nullptr;
  // What the exporter logs once the value was read, with the text as the argument.
  const ce::WCHAR* valueTrace = nullptr;
};

// In the order of export, which is that of the key list.
std::span<const AppointmentField> AppointmentFields();

// Those that are read, in the order of import.
std::span<const AppointmentField* const> AppointmentImportFields();

}  // namespace corvane
