#include "handheld/tool/records.h"

#include <fmt/core.h>

#include <algorithm>

#include "common/calendar/wall_time.h"
#include "handheld/directory/handheld.h"
#include "handheld/tool/recurrence.h"
#include "platform/com_ptr.h"

namespace tool {
namespace {

using ce::IAppointment;
using formats::Appointment;
using formats::Occurrence;
using std::chrono::days;
using std::chrono::local_days;

constexpr int kMinutesADay = 1440;

// The last day of a recurring all-day appointment is not in its Duration on systems of version 4.
int UncountedDays(bool recurring) {
  if (!recurring) return 0;
  return ce::host::Handheld::Current()->Number(ce::host::setting::kOsMajor, 5) == 4 ? 1 : 0;
}

void ReadTimes(IAppointment& item, bool recurring, Occurrence& occurrence) {
  occurrence.start = TimeOf(Read(item, &IAppointment::get_Start, "Start"));
  occurrence.end = TimeOf(Read(item, &IAppointment::get_End, "End"));
  // Without a start there is no day that it could fill.
  occurrence.allDay =
      ReadFlag(item, &IAppointment::get_AllDayEvent, "AllDayEvent") && occurrence.start;
  if (!occurrence.allDay) return;
  const local_days first = formats::DayOf(*occurrence.start);
  const int counted = Read(item, &IAppointment::get_Duration, "Duration") / kMinutesADay;
  occurrence.start = first;
  occurrence.end = first + days{std::max(1, counted + UncountedDays(recurring))};
}

void ReadOccurrence(IAppointment& item, bool recurring, Occurrence& occurrence) {
  occurrence.subject = ReadText(item, &IAppointment::get_Subject, "Subject");
  occurrence.location = ReadText(item, &IAppointment::get_Location, "Location");
  occurrence.body = ReadText(item, &IAppointment::get_Body, "Body");
  ReadTimes(item, recurring, occurrence);
  occurrence.busyStatus = Read(item, &IAppointment::get_BusyStatus, "BusyStatus");
}

void ReadException(ce::IException& exception, formats::Series& series) {
  const auto original = DayOf(Read(exception, &ce::IException::get_OriginalDate, "OriginalDate"));
  if (!original) return;
  if (ReadFlag(exception, &ce::IException::get_Deleted, "Deleted")) {
    series.deleted.push_back(*original);
    return;
  }
  ce::ComPtr<IAppointment> item;
  Check(exception.get_AppointmentItem(item.put()), "a changed occurrence");
  if (!item) throw StatusError("a changed occurrence", ce::E_UNEXPECTED);
  formats::ChangedOccurrence changed{*original, {}};
  ReadOccurrence(*item.get(), false, changed.occurrence);
  series.changed.push_back(std::move(changed));
}

formats::Series ReadSeries(IAppointment& item) {
  const auto pattern = PatternOf(item);
  formats::Series series;
  series.pattern = ReadPattern(*pattern.get());
  ce::ComPtr<ce::IExceptions> exceptions;
  Check(pattern->get_Exceptions(exceptions.put()), "the exceptions");
  const ce::INT count = Read(*exceptions.get(), &ce::IExceptions::get_Count, "the exceptions");
  for (ce::INT i = 1; i <= count; ++i) {
    ce::ComPtr<ce::IException> exception;
    Check(exceptions->Item(i, exception.put()), "an exception");
    ReadException(*exception.get(), series);
  }
  return series;
}

// Start, End and Duration move each other while each has a value: the End comes last.
void WriteTimes(const Occurrence& occurrence, bool recurring, IAppointment& item,
                NotKept& notKept) {
  PutFlag(item, &IAppointment::put_AllDayEvent, occurrence.allDay, "AllDayEvent");
  Check(item.put_End(ce::kNoDate), "End");
  Check(item.put_Start(KeptDateOf(occurrence.start, "Start", notKept)), "Start");
  if (!occurrence.allDay || !occurrence.start || !occurrence.end) {
    Check(item.put_End(KeptDateOf(occurrence.end, "End", notKept)), "End");
    return;
  }
  const local_days first = formats::DayOf(*occurrence.start);
  const days counted = formats::DayOf(*occurrence.end) - first - days{UncountedDays(recurring)};
  Check(item.put_Duration(static_cast<ce::LONG>(counted.count()) * kMinutesADay), "Duration");
  // The Duration says enough about what ends with the last day that there is.
  if (formats::IsKeepableDay(first + counted)) Check(item.put_End(DateOf(first + counted)), "End");
}

void WriteOccurrence(const Occurrence& occurrence, bool recurring, IAppointment& item,
                     NotKept& notKept) {
  PutText(item, &IAppointment::put_Subject, "Subject", occurrence.subject, notKept);
  PutText(item, &IAppointment::put_Location, "Location", occurrence.location, notKept);
  PutText(item, &IAppointment::put_Body, "Body", occurrence.body, notKept);
  WriteTimes(occurrence, recurring, item, notKept);
  Check(item.put_BusyStatus(occurrence.busyStatus), "BusyStatus");
}

void WriteReminder(std::optional<int> minutes, IAppointment& item) {
  PutFlag(item, &IAppointment::put_ReminderSet, minutes.has_value(), "ReminderSet");
  if (minutes) Check(item.put_ReminderMinutesBeforeStart(*minutes), "ReminderMinutesBeforeStart");
}

void WriteSeries(const Appointment& appointment, IAppointment& item, NotKept& notKept) {
  const auto first = DayOf(Read(item, &IAppointment::get_Start, "Start"));
  if (first && HasDays(appointment.series->pattern, *first))
    WritePattern(appointment.series->pattern, *PatternOf(item).get());
  else
    notKept.push_back(kNoDays);
}

// The day of an exception in front of what it does not keep.
void AppendOf(local_days original, const NotKept& lines, NotKept& notKept) {
  for (const std::string& line : lines)
    notKept.push_back(fmt::format("{}: {}", formats::IsoDate(original), line));
}

// Null when the pattern has none on that day.
ce::ComPtr<IAppointment> OccurrenceOn(local_days day, std::chrono::seconds timeOfDay,
                                      ce::IRecurrencePattern& pattern, NotKept& notKept) {
  ce::ComPtr<IAppointment> occurrence;
  const ce::HRESULT status = pattern.GetOccurrence(DateOf(day + timeOfDay), occurrence.put());
  if (status == ce::E_INVALIDARG) {
    AppendOf(day, {"the series has no occurrence on that day"}, notKept);
    return nullptr;
  }
  Check(status, "an occurrence");
  return occurrence;
}

}  // namespace

Appointment ReadItem(IAppointment& item) {
  const bool recurring = ReadFlag(item, &IAppointment::get_IsRecurring, "IsRecurring");
  Appointment appointment;
  ReadOccurrence(item, recurring, appointment);
  appointment.categories = ReadCategories(item);
  appointment.isPrivate =
      Read(item, &IAppointment::get_Sensitivity, "Sensitivity") == ce::olPrivate;
  if (ReadFlag(item, &IAppointment::get_ReminderSet, "ReminderSet"))
    appointment.reminderMinutes =
        Read(item, &IAppointment::get_ReminderMinutesBeforeStart, "ReminderMinutesBeforeStart");
  if (recurring) appointment.series = ReadSeries(item);
  return appointment;
}

NotKept WriteItem(const Appointment& appointment, IAppointment& item) {
  NotKept notKept;
  // A pattern of before would move with the start, and its exceptions would stay.
  Check(item.ClearRecurrencePattern(), "the recurrence");
  WriteOccurrence(appointment, appointment.series.has_value(), item, notKept);
  PutCategories(item, appointment.categories, notKept);
  Check(item.put_Sensitivity(appointment.isPrivate ? ce::olPrivate : ce::olNormal), "Sensitivity");
  WriteReminder(appointment.reminderMinutes, item);
  if (appointment.series) WriteSeries(appointment, item, notKept);
  return notKept;
}

NotKept WriteExceptions(const Appointment& appointment, IAppointment& item) {
  NotKept notKept;
  if (!ReadFlag(item, &IAppointment::get_IsRecurring, "IsRecurring")) return notKept;
  const formats::Series& series = *appointment.series;
  const auto timeOfDay = *appointment.start - formats::DayOf(*appointment.start);
  const auto pattern = PatternOf(item);
  for (const local_days day : series.deleted)
    if (const auto occurrence = OccurrenceOn(day, timeOfDay, *pattern.get(), notKept))
      Check(occurrence->Delete(), "deleting an occurrence");
  for (const formats::ChangedOccurrence& changed : series.changed) {
    const auto occurrence = OccurrenceOn(changed.original, timeOfDay, *pattern.get(), notKept);
    if (!occurrence) continue;
    NotKept ofThis;
    WriteOccurrence(changed.occurrence, false, *occurrence.get(), ofThis);
    Check(occurrence->Save(), "changing an occurrence");
    AppendOf(changed.original, ofThis, notKept);
  }
  return notKept;
}

NotKept TryExceptions(const Appointment& appointment, IAppointment& scratch) {
  NotKept notKept;
  if (!appointment.series) return notKept;
  for (const formats::ChangedOccurrence& changed : appointment.series->changed) {
    NotKept ofThis;
    WriteOccurrence(changed.occurrence, false, scratch, ofThis);
    AppendOf(changed.original, ofThis, notKept);
  }
  return notKept;
}

}  // namespace tool
