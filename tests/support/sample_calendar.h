// Appointments and tasks that several tests use.
#pragma once

#include "tests/support/calendar_test.h"

namespace corvane::testing {

// Every property there is, but no series.
inline void FillFully(ce::IAppointment& item) {
  using ce::IAppointment;
  SetText(item, &IAppointment::put_Subject, u"Review & <plan>");
  SetText(item, &IAppointment::put_Location, u"Room \"7\"");
  SetText(item, &IAppointment::put_Categories, u"Business, Personal");
  SetText(item, &IAppointment::put_Body, u"First line\r\nSecond \U0001F600 line");
  EXPECT_EQ(item.put_Start(DateOf(2008, 2, 18, 9, 5)), ce::S_OK);  // a Monday
  EXPECT_EQ(item.put_End(DateOf(2008, 2, 18, 10, 35)), ce::S_OK);
  EXPECT_EQ(item.put_ReminderSet(ce::VARIANT_TRUE), ce::S_OK);
  EXPECT_EQ(item.put_ReminderMinutesBeforeStart(30), ce::S_OK);
  EXPECT_EQ(item.put_Sensitivity(ce::olPrivate), ce::S_OK);
  EXPECT_EQ(item.put_BusyStatus(ce::olOutOfOffice), ce::S_OK);
  SetInk(item, kInkNote);
}

inline void FillFully(ce::ITask& item) {
  using ce::ITask;
  SetText(item, &ITask::put_Subject, u"Ship & <tell>");
  SetText(item, &ITask::put_Categories, u"Business, Personal");
  SetText(item, &ITask::put_Body, u"First line\r\nSecond \U0001F600 line");
  EXPECT_EQ(item.put_StartDate(DateOf(2008, 2, 1)), ce::S_OK);
  EXPECT_EQ(item.put_DueDate(DateOf(2008, 2, 15)), ce::S_OK);
  EXPECT_EQ(item.put_ReminderTime(DateOf(2008, 2, 15, 9)), ce::S_OK);
  EXPECT_EQ(item.put_ReminderSet(ce::VARIANT_TRUE), ce::S_OK);
  EXPECT_EQ(item.put_Sensitivity(ce::olPrivate), ce::S_OK);
  EXPECT_EQ(item.put_Complete(ce::VARIANT_TRUE), ce::S_OK);
  EXPECT_EQ(item.put_DateCompleted(DateOf(2008, 2, 14)), ce::S_OK);
  EXPECT_EQ(item.put_Importance(ce::olImportanceHigh), ce::S_OK);
  SetInk(item, kInkNote);
}

// Every second week on Mondays, Wednesdays and Fridays.
template <typename Item>
void MakeWeekly(Item& item, ce::LONG occurrences) {
  ce::ComPtr<ce::IRecurrencePattern> pattern;
  ASSERT_EQ(item.GetRecurrencePattern(pattern.put()), ce::S_OK);
  EXPECT_EQ(pattern->put_RecurrenceType(ce::olRecursWeekly), ce::S_OK);
  EXPECT_EQ(pattern->put_DayOfWeekMask(42), ce::S_OK);
  EXPECT_EQ(pattern->put_Interval(2), ce::S_OK);
  EXPECT_EQ(pattern->put_NoEndDate(ce::VARIANT_FALSE), ce::S_OK);
  EXPECT_EQ(pattern->put_Occurrences(occurrences), ce::S_OK);
}

// A full appointment as a series of six, of which the second was moved and the fourth deleted.
inline ce::LONG AddSeries(AppointmentStore& store) {
  const ce::LONG oid = store.Add([](ce::IAppointment& item) {
    FillFully(item);
    MakeWeekly(item, 6);
  });
  const ce::ComPtr<ce::IAppointment> item = store.Get(oid);
  ce::ComPtr<ce::IRecurrencePattern> pattern;
  EXPECT_EQ(item->GetRecurrencePattern(pattern.put()), ce::S_OK);
  ce::ComPtr<ce::IAppointment> occurrence;
  EXPECT_EQ(pattern->GetOccurrence(DateOf(2008, 3, 3, 9, 5), occurrence.put()), ce::S_OK);
  if (occurrence) {
    EXPECT_EQ(occurrence->Delete(), ce::S_OK);
  }
  EXPECT_EQ(pattern->GetOccurrence(DateOf(2008, 2, 20, 9, 5), occurrence.put()), ce::S_OK);
  if (occurrence) {
    SetText(*occurrence.get(), &ce::IAppointment::put_Subject, u"Review, later");
    EXPECT_EQ(occurrence->put_Start(DateOf(2008, 2, 21, 14)), ce::S_OK);
    EXPECT_EQ(occurrence->Save(), ce::S_OK);
  }
  return oid;
}

}  // namespace corvane::testing
