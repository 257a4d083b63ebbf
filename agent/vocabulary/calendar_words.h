// The vocabulary of appointments and tasks.
#pragma once

#include "platform/pocket_outlook_calendar.h"

namespace corvane {

inline constexpr const ce::WCHAR* kCalendarElement = u"CALENDAR";
inline constexpr const ce::WCHAR* kTaskElement = u"TASK";

inline constexpr const ce::WCHAR* kSubjectElement = u"SUBJECT";
inline constexpr const ce::WCHAR* kCategoriesElement = u"CATEGORIES";
inline constexpr const ce::WCHAR* kIsRecurringElement = u"IS_RECURRING";
inline constexpr const ce::WCHAR* kRecurrenceElement = u"RECURRENCE";
inline constexpr const ce::WCHAR* kHasReminderElement = u"HAS_REMINDER";
inline constexpr const ce::WCHAR* kReminderMinutesElement = u"ReminderMinutes";
inline constexpr const ce::WCHAR* kPrivateElement = u"Private";
inline constexpr const ce::WCHAR* kNotesElement = u"NOTES";
inline constexpr const ce::WCHAR* kBodyInkElement = u"BodyInk";

inline constexpr const ce::WCHAR* kLocationElement = u"LOCATION";
inline constexpr const ce::WCHAR* kAllDayEventElement = u"ALL_DAY_EVENT";
inline constexpr const ce::WCHAR* kEventStartElement = u"EVENT_START";
inline constexpr const ce::WCHAR* kEventEndElement = u"EVENT_END";
inline constexpr const ce::WCHAR* kBusyStatusElement = u"BusyStatus";

inline constexpr const ce::WCHAR* kDueDateElement = u"DUE_DATE";
inline constexpr const ce::WCHAR* kReminderTimeElement = u"ReminderTime";
inline constexpr const ce::WCHAR* kStartDateElement = u"StartDate";
inline constexpr const ce::WCHAR* kCompletedElement = u"COMPLETED";
inline constexpr const ce::WCHAR* kDateCompletedElement = u"DateCompleted";
inline constexpr const ce::WCHAR* kPriorityElement = u"PRIORITY";

// The fields of each, in the order of export, which is that of the key list.
inline constexpr const ce::WCHAR* kAppointmentElements[] = {
    kSubjectElement,     kLocationElement,   kAllDayEventElement, kCategoriesElement,
    kIsRecurringElement, kRecurrenceElement, kHasReminderElement, kReminderMinutesElement,
    kPrivateElement,     kEventStartElement, kEventEndElement,    kBusyStatusElement,
    kNotesElement,       kBodyInkElement,
};
inline constexpr const ce::WCHAR* kTaskElements[] = {
    kSubjectElement,   kCategoriesElement,  kIsRecurringElement,  kRecurrenceElement,
    kDueDateElement,   kHasReminderElement, kReminderTimeElement, kReminderMinutesElement,
    kStartDateElement, kPrivateElement,     kCompletedElement,    kDateCompletedElement,
    kPriorityElement,  kNotesElement,       kBodyInkElement,
};

inline constexpr ce::LONG kMinutesPerDay = 1440;

// The text of "PRIORITY" runs against Importance.
inline constexpr ce::LONG kPriorityHigh = 2;
inline constexpr ce::LONG kPriorityNormal = 3;
inline constexpr ce::LONG kPriorityLow = 4;

// An unknown importance is a normal one.
constexpr ce::LONG PriorityOfImportance(ce::LONG importance) {
  if (importance == ce::olImportanceLow) return kPriorityLow;
  return importance == ce::olImportanceHigh ? kPriorityHigh : kPriorityNormal;
}

// Everything below kPriorityNormal is high, everything above it low.
constexpr ce::LONG ImportanceOfPriority(ce::LONG priority) {
  if (priority < kPriorityNormal) return ce::olImportanceHigh;
  return priority == kPriorityNormal ? ce::olImportanceNormal : ce::olImportanceLow;
}

}  // namespace corvane
