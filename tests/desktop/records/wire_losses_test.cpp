#include "desktop/records/wire_losses.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using calendar::Zone;
using formats::Appointment;
using formats::Task;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kControl[] = ": control characters are left out, the wire cannot carry them";

Appointment Plain() {
  Appointment appointment;
  appointment.subject = "Choir";
  appointment.start = At(Day(2024, 5, 6), 9);
  appointment.end = At(Day(2024, 5, 6), 10);
  appointment.reminderMinutes = 15;
  return appointment;
}

TEST(AppointmentLosses, AreNoneOfAPlainOne) {
  EXPECT_THAT(WireLosses(Plain(), ZoneNamed("Europe/Berlin")), IsEmpty());
}

TEST(AppointmentLosses, NameControlCharactersInEveryText) {
  Appointment appointment = Plain();
  appointment.subject = "a\x01";
  appointment.location = "b\x02";
  appointment.body = "c\x03";
  appointment.categories = {"d\x04"};
  appointment.series = formats::Series{};
  formats::Occurrence change = Plain();
  change.subject = "e\x05";
  appointment.series->changed = {{Day(2024, 5, 7), change}};
  EXPECT_THAT(WireLosses(appointment, ZoneNamed("UTC")),
              ElementsAre(std::string("Subject") + kControl, std::string("Location") + kControl,
                          std::string("Body") + kControl, std::string("Categories") + kControl,
                          std::string("occurrence of 2024-05-07: Subject") + kControl));
}

TEST(AppointmentLosses, NameATimeThatTheClockLeavesOut) {
  Appointment appointment = Plain();
  appointment.start = At(Day(2024, 3, 31), 2, 30);
  appointment.end = At(Day(2024, 3, 31), 4);
  const std::vector<std::string> losses = WireLosses(appointment, ZoneNamed("Europe/Berlin"));
  ASSERT_EQ(losses.size(), 1U);
  EXPECT_THAT(losses[0],
              ::testing::StartsWith(
                  "Start: 2024-03-31 02:30 is no time on the handheld's clock, it becomes 2024-"));
  EXPECT_THAT(WireLosses(appointment, ZoneNamed("UTC")), IsEmpty());
}

TEST(TaskLosses, NameWhatTheWireDoesNotCarry) {
  Task task;
  task.subject = "Tax";
  task.due = Day(2024, 5, 31);
  task.reminder = At(Day(2024, 5, 31), 9);
  task.complete = true;
  EXPECT_THAT(WireLosses(task), IsEmpty());
  task.completed = Day(2024, 5, 30);
  task.reminder = At(Day(2024, 5, 31), 9, 0, 1);
  task.body = "\x1B";
  EXPECT_THAT(WireLosses(task),
              ElementsAre(std::string("Body") + kControl,
                          "ReminderTime: its seconds are left out, the wire carries minutes",
                          "DateCompleted: the wire does not carry it, the handheld takes the day "
                          "on which it learns of it"));
  task = {};
  task.reminder = At(Day(2024, 5, 31), 9);
  EXPECT_THAT(WireLosses(task), ElementsAre("ReminderTime: the wire carries it only for a task "
                                            "with a due date, the reminder is left out"));
}

TEST(RecordLosses, NameInkAndARecurrenceThatIsNotUnderstood) {
  EXPECT_THAT(RecordLosses(ElementOf("<TASK><NOTES>x</NOTES></TASK>")), IsEmpty());
  const std::string recurrence = "recurrence: it cannot be understood, only the first time is kept";
  EXPECT_THAT(
      RecordLosses(ElementOf("<CALENDAR><IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE>"
                             "<TYPE>HOURLY</TYPE></RECURRENCE><BodyInk>TRUE</BodyInk>"
                             "</CALENDAR>")),
      ElementsAre("BodyInk: the wire does not carry the handwriting of its notes", recurrence));
  EXPECT_THAT(RecordLosses(ElementOf("<TASK><IS_RECURRING>TRUE</IS_RECURRING></TASK>")),
              ElementsAre(recurrence));
}

}  // namespace
}  // namespace desktop::testing
