#include "desktop/transfer/state_hash.h"

#include <gtest/gtest.h>

#include "desktop/records/appointment_xml.h"
#include "desktop/records/task_xml.h"
#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using calendar::Zone;
using formats::Appointment;
using formats::Task;

std::string StateOf(const std::string& record) {
  return StateHash(ElementOf(record));
}

// What a handheld that took the series in writes of it.
TEST(StateHash, IsThatOfASeriesAsTheHandheldTellsIt) {
  const Zone zone = ZoneNamed("Europe/Berlin");
  Appointment sent;  // Mondays at nine
  sent.subject = "Choir";
  sent.body = "one\ntwo";
  sent.start = At(Day(2024, 5, 6), 9);
  sent.end = At(Day(2024, 5, 6), 10);
  sent.series = formats::Series{
      {.type = calendar::PatternType::kWeekly, .daysOfWeek = 2, .occurrences = 3}, {}, {}};
  const std::string xml = AppointmentToXml(sent, zone);
  EXPECT_EQ(StateOf(xml),
            StateOf("<CALENDAR Oid='7'><SUBJECT>Choir</SUBJECT><IS_RECURRING>TRUE</IS_RECURRING>"
                    "<RECURRENCE><TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>1</DAYS_OF_WEEK>"
                    "<END_DATE>20240520T000000</END_DATE><Occurrences>3</Occurrences></RECURRENCE>"
                    "<EVENT_START>20240506T070000</EVENT_START><EVENT_END>20240506T080000"
                    "</EVENT_END><BusyStatus>2</BusyStatus><NOTES>one&#13;\ntwo</NOTES>"
                    "</CALENDAR>"));
  sent.series->pattern.occurrences = 4;
  EXPECT_NE(StateOf(xml), StateOf(AppointmentToXml(sent, zone)));
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

TEST(StateHash, LeavesOutFuriganaLineEndsAndOuterBlanks) {
  formats::Contact contact;
  contact[formats::ContactField::kBody] = "a\r\nb";
  contact[formats::ContactField::kLastName] = "Lee";
  const std::string hash = StateHash(contact);
  contact[formats::ContactField::kBody] = "a\nb\n";
  contact[formats::ContactField::kYomiLastName] = "y";
  EXPECT_EQ(StateHash(contact), hash);
  contact[formats::ContactField::kLastName] = "Leeds";
  EXPECT_NE(StateHash(contact), hash);
}

}  // namespace
}  // namespace desktop::testing
