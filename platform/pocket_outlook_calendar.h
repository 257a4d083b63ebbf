// The Pocket Outlook object model: appointments, tasks, recurrence patterns and their exceptions.
//
// What pocket_outlook.h says of items holds here: text out-parameters are the caller's, dates are
// local, kNoDate stands for "none", setters change the copy that the item is, Save stores it in one
// durable step, objects belong to the thread that made them. A property that cannot take a value
// answers E_INVALIDARG, a text that is too long kTextTooLong, and keeps what it had.
#pragma once

#include "platform/pocket_outlook.h"

namespace ce {

// IRecurrencePattern's RecurrenceType.
inline constexpr LONG olRecursDaily = 0;
inline constexpr LONG olRecursWeekly = 1;
inline constexpr LONG olRecursMonthly = 2;
inline constexpr LONG olRecursMonthNth = 3;
inline constexpr LONG olRecursYearly = 5;
inline constexpr LONG olRecursYearNth = 6;

// Sensitivity.
inline constexpr LONG olNormal = 0;
inline constexpr LONG olPrivate = 2;

// BusyStatus.
inline constexpr LONG olFree = 0;
inline constexpr LONG olTentative = 1;
inline constexpr LONG olBusy = 2;
inline constexpr LONG olOutOfOffice = 3;

// Importance.
inline constexpr LONG olImportanceLow = 0;
inline constexpr LONG olImportanceNormal = 1;
inline constexpr LONG olImportanceHigh = 2;

#define CE_POOM_PROPERTY(Type, Name)           \
  virtual HRESULT get_##Name(Type* value) = 0; \
  virtual HRESULT put_##Name(Type value) = 0;

struct IAppointment;

// One occurrence that is not as the pattern has it. Read-only.
struct IException : IDispatch {
  static constexpr GUID kIid{
      0x05F6F1E8, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
  // The changed occurrence; S_FALSE and null for a deleted one.
  virtual HRESULT get_AppointmentItem(IAppointment** item) = 0;
  // The date and time at which the occurrence would have been.
  virtual HRESULT get_OriginalDate(DATE* date) = 0;
  virtual HRESULT get_Deleted(VARIANT_BOOL* deleted) = 0;

 protected:
  ~IException() = default;
};

// In the order of their original dates. Positions are 1-based, E_INVALIDARG outside 1 to the count.
struct IExceptions : IDispatch {
  static constexpr GUID kIid{
      0x05F6F1E9, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
  virtual HRESULT Item(INT index, IException** exception) = 0;
  virtual HRESULT get_Count(INT* count) = 0;

 protected:
  ~IExceptions() = default;
};

// When an item recurs. It belongs to its item and changes it: nothing is stored before the item is
// saved, and the item is recurring from the Save after the pattern was first asked for.
//
// The start of the pattern is the item's own: setting PatternStartDate moves the item, and moving
// the item moves it. Setting RecurrenceType to another type gives every property of the type the
// value that the start implies, and an interval of 1; a property that the type does not have takes
// no value. A day of the month that a month does not have is the last one of that month. A week
// begins on Sunday. Instance 5 is the last one.
//
// Occurrences and PatternEndDate derive each other when the item is saved: the end date becomes
// that of the last occurrence. Setting either makes NoEndDate false; until the save the other is
// not known. When the rest of a saved pattern changes, its Occurrences stay. A pattern without any
// occurrence, or with an end that was never set, cannot be saved (E_INVALIDARG).
//
// A pattern keeps its item alive. Once it was cleared (ClearRecurrencePattern), every call of it
// answers E_FAIL.
struct IRecurrencePattern : IDispatch {
  static constexpr GUID kIid{
      0x05F6F1EA, 0x6C4D, 0x4C1B, {0x9A, 0x2D, 0x1E, 0x1F, 0x6B, 0x84, 0x53, 0x11}};
  CE_POOM_PROPERTY(LONG, RecurrenceType)
  CE_POOM_PROPERTY(DATE, PatternStartDate)  // a whole day
  CE_POOM_PROPERTY(DATE, PatternEndDate)    // a whole day; kNoDate without an end
  CE_POOM_PROPERTY(VARIANT_BOOL, NoEndDate)
  CE_POOM_PROPERTY(LONG, Occurrences)    // at least 1; 0 without an end
  CE_POOM_PROPERTY(LONG, Interval)       // 1 to 999; yearly types have 1 alone
  CE_POOM_PROPERTY(LONG, DayOfWeekMask)  // 1 to 127: Sunday is 1, Saturday 64
  CE_POOM_PROPERTY(LONG, DayOfMonth)     // 1 to 31
  CE_POOM_PROPERTY(LONG, Instance)       // 1 to 5
  CE_POOM_PROPERTY(LONG, MonthOfYear)    // 1 to 12
  // Of the item as it was saved last; empty for a task and for an item that was never saved.
  virtual HRESULT get_Exceptions(IExceptions** exceptions) = 0;
  // The occurrence that begins on this date and time, of an item as it was saved last. Saving it
  // makes it a changed exception, deleting it a deleted one. E_INVALIDARG and null when there is
  // none: the pattern has none there, or it was deleted.
  virtual HRESULT GetOccurrence(DATE date, IAppointment** occurrence) = 0;

 protected:
  ~IRecurrencePattern() = default;
};

// Start, End and Duration (minutes) are coupled: setting Start moves End and keeps the Duration; an
// End before Start moves Start and keeps the Duration, any other sets the Duration; setting the
// Duration moves End. A no-date Start or End is kept as it is and moves nothing. AllDayEvent
// changes no times.
//
// An occurrence of a series is an appointment of the same kind whose Oid is 0; its recurrence
// cannot be had (E_NOTIMPL), and its IsRecurring is false.
struct IAppointment : IDispatch {
  static constexpr GUID kIid = IID_IAppointment;
  CE_POOM_PROPERTY(VARIANT_BOOL, AllDayEvent)
  CE_POOM_PROPERTY(LONG, BusyStatus)
  CE_POOM_PROPERTY(BSTR, Categories)
  CE_POOM_PROPERTY(LONG, Duration)
  CE_POOM_PROPERTY(DATE, End)
  CE_POOM_PROPERTY(BSTR, Location)
  CE_POOM_PROPERTY(LONG, ReminderMinutesBeforeStart)
  CE_POOM_PROPERTY(VARIANT_BOOL, ReminderSet)
  CE_POOM_PROPERTY(LONG, Sensitivity)
  CE_POOM_PROPERTY(DATE, Start)
  CE_POOM_PROPERTY(BSTR, Subject)
  CE_POOM_PROPERTY(BSTR, Body)
  // The block belongs to the item and lives as long as it; E_NOTIMPL when the item has none.
  virtual HRESULT get_BodyInk(DWORD* bytes, const BYTE** block) = 0;
  virtual HRESULT put_BodyInk(DWORD bytes, const BYTE* block) = 0;
  virtual HRESULT get_IsRecurring(VARIANT_BOOL* value) = 0;
  // A fresh pattern for an item without one: weekly on the weekday of its start, without an end.
  virtual HRESULT GetRecurrencePattern(IRecurrencePattern** pattern) = 0;
  // Makes the item single again and drops the exceptions, at the next Save.
  virtual HRESULT ClearRecurrencePattern() = 0;
  // 0 for an item that was never saved, and for an occurrence.
  virtual HRESULT get_Oid(LONG* oid) = 0;
  virtual HRESULT Save() = 0;
  virtual HRESULT Delete() = 0;

 protected:
  ~IAppointment() = default;
};

// Dates are whole days. put_Complete(true) stamps DateCompleted with today unless the task was
// complete already, put_Complete(false) clears it. A recurring task has a StartDate or a DueDate to
// start from, or starts today.
struct ITask : IDispatch {
  static constexpr GUID kIid = IID_ITask;
  CE_POOM_PROPERTY(BSTR, Categories)
  CE_POOM_PROPERTY(DATE, StartDate)
  CE_POOM_PROPERTY(DATE, DueDate)
  CE_POOM_PROPERTY(DATE, DateCompleted)
  CE_POOM_PROPERTY(LONG, Importance)
  CE_POOM_PROPERTY(VARIANT_BOOL, Complete)
  CE_POOM_PROPERTY(LONG, Sensitivity)
  CE_POOM_PROPERTY(BSTR, Subject)
  CE_POOM_PROPERTY(DATE, ReminderTime)  // with its time of day; runs on to the year 9999
  CE_POOM_PROPERTY(VARIANT_BOOL, ReminderSet)
  CE_POOM_PROPERTY(BSTR, Body)
  // The block belongs to the item and lives as long as it; E_NOTIMPL when the item has none.
  virtual HRESULT get_BodyInk(DWORD* bytes, const BYTE** block) = 0;
  virtual HRESULT put_BodyInk(DWORD bytes, const BYTE* block) = 0;
  virtual HRESULT get_IsRecurring(VARIANT_BOOL* value) = 0;
  virtual HRESULT GetRecurrencePattern(IRecurrencePattern** pattern) = 0;
  virtual HRESULT ClearRecurrencePattern() = 0;
  virtual HRESULT get_Oid(LONG* oid) = 0;  // 0 for an item that was never saved
  virtual HRESULT Save() = 0;
  virtual HRESULT Delete() = 0;

 protected:
  ~ITask() = default;
};

#undef CE_POOM_PROPERTY

}  // namespace ce
