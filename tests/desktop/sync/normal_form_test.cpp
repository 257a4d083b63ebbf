#include "desktop/sync/normal_form.h"

#include <gtest/gtest.h>

#include "desktop/records/appointment_xml.h"
#include "desktop/records/task_xml.h"
#include "desktop/sync/wire_hash.h"
#include "tests/desktop/records.h"

namespace desktop {
namespace {

using calendar::Pattern;
using calendar::PatternType;
using formats::Appointment;
using formats::Occurrence;
using formats::Task;
using testing::At;
using testing::Day;
using testing::ElementOf;
using testing::ZoneNamed;

// Mondays at nine, from Monday 6 May 2024.
Appointment Mondays() {
  Appointment appointment;
  appointment.subject = "Choir";
  appointment.start = At(Day(2024, 5, 6), 9);
  appointment.end = At(Day(2024, 5, 6), 10);
  appointment.series = formats::Series{{.type = PatternType::kWeekly, .daysOfWeek = 2}, {}, {}};
  return appointment;
}

TEST(NormalizedAppointment, IsAsItWasWithoutASeriesOrAStart) {
  Appointment single = Mondays();
  single.series.reset();
  EXPECT_EQ(Normalized(single), single);
  Appointment odd = Mondays();
  odd.start.reset();
  EXPECT_EQ(Normalized(odd), odd);
}

TEST(NormalizedAppointment, BeginsWithTheFirstDayOfItsSeries) {
  Appointment early = Mondays();
  early.start = At(Day(2024, 5, 1), 9);
  early.end = At(Day(2024, 5, 1), 10);
  EXPECT_EQ(Normalized(early), Mondays());
}

TEST(NormalizedAppointment, CountsTheOccurrencesUntilALastDay) {
  Appointment until = Mondays();
  until.series->pattern.until = Day(2024, 5, 26);
  Appointment counted = Mondays();
  counted.series->pattern.occurrences = 3;
  EXPECT_EQ(Normalized(until), counted);
  EXPECT_EQ(WireHash(until, ZoneNamed("UTC")), WireHash(counted, ZoneNamed("UTC")));
  EXPECT_NE(WireHash(until, ZoneNamed("UTC")), WireHash(Mondays(), ZoneNamed("UTC")));
}

TEST(NormalizedAppointment, EndsWithTheLastDayThatThereIs) {
  Appointment endless = Mondays();
  endless.start = At(Day(2999, 12, 20), 9);
  endless.end = At(Day(2999, 12, 20), 10);
  endless.series->pattern = {.type = PatternType::kDaily, .occurrences = 1000};
  EXPECT_EQ(Normalized(endless).series->pattern.occurrences, 12);
}

TEST(NormalizedAppointment, HasNoExceptionsOfOtherDays) {
  Appointment odd = Mondays();
  odd.series->deleted = {Day(2024, 4, 29), Day(2024, 5, 7), Day(2024, 5, 13)};
  odd.series->changed = {{Day(2024, 5, 8), odd}};
  Appointment plain = Mondays();
  plain.series->deleted = {Day(2024, 5, 13)};
  EXPECT_EQ(Normalized(odd), plain);
}

TEST(NormalizedAppointment, HasNoChangeThatChangesNothing) {
  Appointment odd = Mondays();
  Occurrence same = odd;
  same.start = At(Day(2024, 5, 20), 9);
  same.end = At(Day(2024, 5, 20), 10);
  Occurrence longer = same;
  longer.end = At(Day(2024, 5, 20), 11);
  odd.series->changed = {{Day(2024, 5, 20), same}, {Day(2024, 5, 27), same}};
  Appointment plain = Mondays();
  plain.series->changed = {{Day(2024, 5, 27), same}};
  EXPECT_EQ(Normalized(odd), plain);
  odd.series->changed = {{Day(2024, 5, 20), longer}};
  EXPECT_EQ(Normalized(odd), odd);
}

TEST(NormalizedAppointment, EndsWhereItStartsWithoutAnEnd) {
  Appointment odd = Mondays();
  odd.series.reset();
  odd.end.reset();
  EXPECT_EQ(Normalized(odd).end, odd.start);
}

TEST(NormalizedTask, BeginsWithTheFirstDayOfItsSeries) {
  Task task;
  task.start = Day(2024, 5, 1);
  task.due = Day(2024, 5, 3);
  task.reminder = At(Day(2024, 5, 1), 8);
  task.pattern = {.type = PatternType::kWeekly, .daysOfWeek = 2};
  const Task normal = Normalized(task);
  EXPECT_EQ(normal.start, Day(2024, 5, 6));
  EXPECT_EQ(normal.due, Day(2024, 5, 8));
  EXPECT_EQ(normal.reminder, task.reminder);
  EXPECT_EQ(normal.pattern, task.pattern);
}

TEST(NormalizedTask, CountsFromItsStartOrElseItsDueDate) {
  const Pattern daily = {.type = PatternType::kDaily};
  Task task;
  task.pattern = daily;
  task.pattern->until = Day(2024, 5, 10);
  EXPECT_EQ(Normalized(task), task) << "no day to count from";
  task.due = Day(2024, 5, 6);
  EXPECT_EQ(Normalized(task).pattern->occurrences, 5);
  task.start = Day(2024, 5, 1);
  EXPECT_EQ(Normalized(task).pattern->occurrences, 10);
  EXPECT_EQ(Normalized(task).pattern->until, std::nullopt);
}

std::string StateOf(const std::string& record) {
  return StateHash(ElementOf(record));
}

// What a handheld that took the series in writes of it.
TEST(StateHash, IsThatOfASeriesAsTheHandheldTellsIt) {
  Appointment sent = Mondays();
  sent.body = "one\ntwo";
  sent.series->pattern.until = Day(2024, 5, 26);
  const std::string xml = AppointmentToXml(Normalized(sent), ZoneNamed("Europe/Berlin"));
  EXPECT_EQ(StateOf(xml),
            StateOf("<CALENDAR Oid='7'><SUBJECT>Choir</SUBJECT><IS_RECURRING>TRUE</IS_RECURRING>"
                    "<RECURRENCE><TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>1</DAYS_OF_WEEK>"
                    "<END_DATE>20240520T000000</END_DATE><Occurrences>3</Occurrences></RECURRENCE>"
                    "<EVENT_START>20240506T070000</EVENT_START><EVENT_END>20240506T080000"
                    "</EVENT_END><BusyStatus>2</BusyStatus><NOTES>one&#13;\ntwo</NOTES>"
                    "</CALENDAR>"));
  EXPECT_NE(StateOf(xml), StateOf(AppointmentToXml(Mondays(), ZoneNamed("Europe/Berlin"))));
}

TEST(StateHash, DoesNotCountTheDayOnWhichATaskWasCompleted) {
  Task task;
  task.subject = "Tax";
  task.due = Day(2024, 5, 31);
  task.reminder = At(Day(2024, 5, 31), 9);
  task.complete = true;
  EXPECT_EQ(StateOf(TaskToXml(task)),
            StateOf("<TASK Oid='8'><SUBJECT>Tax</SUBJECT><DUE_DATE>20240531T000000</DUE_DATE>"
                    "<HAS_REMINDER>TRUE</HAS_REMINDER><ReminderTime>20240531T070000</ReminderTime>"
                    "<ReminderMinutes>-540</ReminderMinutes><COMPLETED>TRUE</COMPLETED>"
                    "<DateCompleted>20240601T000000</DateCompleted><PRIORITY>3</PRIORITY></TASK>"));
  task.complete = false;
  EXPECT_NE(StateOf(TaskToXml(task)),
            StateOf("<TASK><SUBJECT>Tax</SUBJECT><COMPLETED>TRUE</COMPLETED></TASK>"));
}

TEST(StateHash, TellsTheKindsApart) {
  EXPECT_NE(StateOf("<TASK/>"), StateOf("<CALENDAR/>"));
  EXPECT_EQ(StateOf("<CONTACT/>"), StateOf("<Contact2/>"));
}

}  // namespace
}  // namespace desktop
