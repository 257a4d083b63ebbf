#include "common/formats/items/item_json.h"

#include <gtest/gtest.h>

#include "common/formats/items/identity.h"
#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

Appointment Lunch() {
  Appointment lunch;
  lunch.uid = "u";
  lunch.subject = "Lunch";
  lunch.start = At(2008, 2, 15, 12);
  lunch.end = At(2008, 2, 15, 13, 30);
  return lunch;
}

TEST(AppointmentToJson, WritesWhatIsThere) {
  EXPECT_EQ(AppointmentToJson(Lunch(), 7),
            R"({"oid":7,"uid":"u","Subject":"Lunch","Start":"2008-02-15T12:00:00",)"
            R"("End":"2008-02-15T13:30:00","BusyStatus":2})");
  EXPECT_EQ(AppointmentToJson({}, 0x80000001), R"({"oid":2147483649,"BusyStatus":2})");
}

TEST(AppointmentToJson, WritesEveryProperty) {
  Appointment a = Lunch();
  a.location = "L\"";
  a.body = "a\r\nb";
  a.busyStatus = 0;
  a.reminderMinutes = 15;
  a.isPrivate = true;
  a.categories = {"x", "y"};
  EXPECT_EQ(
      AppointmentToJson(a, 7),
      R"({"oid":7,"uid":"u","Subject":"Lunch","Location":"L\"","Start":"2008-02-15T12:00:00",)"
      R"("End":"2008-02-15T13:30:00","BusyStatus":0,"Body":"a\r\nb","ReminderSet":true,)"
      R"("ReminderMinutesBeforeStart":15,"Sensitivity":2,"categories":["x","y"]})");
}

TEST(AppointmentToJson, WritesDaysWithTheLastOne) {
  Appointment a;
  a.allDay = true;
  a.start = Day(2008, 2, 15);
  a.end = Day(2008, 2, 18);
  EXPECT_EQ(
      AppointmentToJson(a, 1),
      R"({"oid":1,"AllDayEvent":true,"Start":"2008-02-15","End":"2008-02-17","BusyStatus":2})");
  a.end = At(2008, 2, 18, 1);
  EXPECT_EQ(AppointmentToJson(a, 1), R"({"oid":1,"AllDayEvent":true,"Start":"2008-02-15T00:00:00",)"
                                     R"("End":"2008-02-18T01:00:00","BusyStatus":2})");
}

TEST(AppointmentToJson, WritesASeries) {
  Appointment a = Lunch();
  a.uid.clear();
  a.series.emplace();
  a.series->pattern = calendar::PatternFrom(calendar::PatternType::kWeekly, Day(2008, 2, 15));
  a.series->pattern.until = Day(2008, 12, 31);
  a.series->deleted = {Day(2008, 2, 22)};
  a.series->changed = {{Day(2008, 2, 29), Lunch()}};
  EXPECT_EQ(AppointmentToJson(a, 1),
            R"({"oid":1,"Subject":"Lunch","Start":"2008-02-15T12:00:00",)"
            R"("End":"2008-02-15T13:30:00","BusyStatus":2,"recurrence":{"RecurrenceType":1,)"
            R"("Interval":1,"DayOfWeekMask":32,"PatternEndDate":"2008-12-31",)"
            R"("deleted":["2008-02-22"],"changed":[{"OriginalDate":"2008-02-29",)"
            R"("Subject":"Lunch","Start":"2008-02-15T12:00:00","End":"2008-02-15T13:30:00",)"
            R"("BusyStatus":2}]}})");
}

TEST(TaskToJson, WritesEveryProperty) {
  Task t;
  t.uid = "u";
  t.subject = "S";
  t.body = "B";
  t.categories = {"c"};
  t.start = Day(2008, 2, 15);
  t.due = Day(2008, 2, 16);
  t.reminder = At(2008, 2, 16, 8);
  t.isPrivate = true;
  t.complete = true;
  t.completed = Day(2008, 2, 17);
  t.importance = Importance::kHigh;
  t.pattern = calendar::PatternFrom(calendar::PatternType::kYearly, Day(2008, 2, 15));
  t.pattern->occurrences = 3;
  EXPECT_EQ(TaskToJson(t, 9),
            R"({"oid":9,"uid":"u","Subject":"S","StartDate":"2008-02-15","DueDate":"2008-02-16",)"
            R"("Complete":true,"DateCompleted":"2008-02-17","Importance":2,"ReminderSet":true,)"
            R"("ReminderTime":"2008-02-16T08:00:00","Sensitivity":2,"Body":"B",)"
            R"("categories":["c"],"recurrence":{"RecurrenceType":5,"Interval":1,"DayOfMonth":15,)"
            R"("MonthOfYear":2,"Occurrences":3}})");
  EXPECT_EQ(TaskToJson({}, 9), R"({"oid":9,"Importance":1})");
}

TEST(ContentHash, IsThatOfEverythingButTheUid) {
  Appointment a = Lunch();
  const std::string hash = ContentHash(a);
  EXPECT_EQ(hash.size(), 32u);
  a.uid = "other";
  EXPECT_EQ(ContentHash(a), hash);
  a.end = At(2008, 2, 15, 14);
  EXPECT_NE(ContentHash(a), hash);
  Task t;
  const std::string taskHash = ContentHash(t);
  t.uid = "u";
  EXPECT_EQ(ContentHash(t), taskHash);
  t.due = Day(2008, 2, 15);
  EXPECT_NE(ContentHash(t), taskHash);
}

TEST(ContentHash, TakesEveryLineBreakAlike) {
  Appointment a = Lunch();
  a.body = "a\r\nb\rc";
  a.series.emplace();
  a.series->changed = {{Day(2008, 2, 29), a}};
  Appointment b = a;
  b.body = "a\nb\nc";
  b.series->changed[0].occurrence.body = "a\nb\nc";
  EXPECT_EQ(ContentHash(a), ContentHash(b));
  Task t;
  t.body = "a\r\n";
  Task u;
  u.body = "a\n";
  EXPECT_EQ(ContentHash(t), ContentHash(u));
}

TEST(ContentHash, StaysTheSameOverVersions) {
  EXPECT_EQ(ContentHash(Lunch()), ContentHash(std::string_view(
                                      R"({"oid":0,"Subject":"Lunch","Start":"2008-02-15T12:00:00",)"
                                      R"("End":"2008-02-15T13:30:00","BusyStatus":2})")));
}

TEST(DisplayName, OfAnAppointmentAndATaskIsNeverEmpty) {
  EXPECT_EQ(DisplayName(Appointment()), "(no subject)");
  EXPECT_EQ(DisplayName(Task()), "(no subject)");
  Appointment a;
  a.body = "\r\n";
  EXPECT_EQ(DisplayName(a), "(no subject)");
  a.body = "first\nsecond";
  EXPECT_EQ(DisplayName(a), "first second");
  a.location = " there ";
  EXPECT_EQ(DisplayName(a), "there");
  a.subject = "Lunch";
  EXPECT_EQ(DisplayName(a), "Lunch");
  Task t;
  t.subject = std::string(100, 'x');
  EXPECT_EQ(DisplayName(t), std::string(60, 'x') + "…");
}

}  // namespace
}  // namespace formats::testing
