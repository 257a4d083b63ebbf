#include <gtest/gtest.h>

#include "common/calendar/wall_time.h"
#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

TEST(ReadTodo, TakesEveryField) {
  const ReadItem read = ReadTodoLines(
      "UID:u\nSUMMARY:Taxes\nDESCRIPTION:a\\nb\nDTSTART;VALUE=DATE:20080301\n"
      "DUE;VALUE=DATE:20080415\nPRIORITY:1\nCLASS:CONFIDENTIAL\nCATEGORIES:Home,Money\n"
      "STATUS:COMPLETED\nCOMPLETED:20080410T230000Z\nPERCENT-COMPLETE:100\nDTSTAMP:"
      "20080101T000000Z\n");
  const Task& t = read.task;
  EXPECT_EQ(t.uid, "u");
  EXPECT_EQ(t.subject, "Taxes");
  EXPECT_EQ(t.body, "a\nb");
  EXPECT_EQ(t.start, Day(2008, 3, 1));
  EXPECT_EQ(t.due, Day(2008, 4, 15));
  EXPECT_EQ(t.importance, Importance::kHigh);
  EXPECT_TRUE(t.isPrivate);
  EXPECT_EQ(t.categories, (Strings{"Home", "Money"}));
  EXPECT_TRUE(t.complete);
  EXPECT_EQ(t.completed, Day(2008, 4, 11));
  EXPECT_EQ(t.reminder, std::nullopt);
  EXPECT_EQ(t.pattern, std::nullopt);
  EXPECT_EQ(read.notices, Strings{});
}

TEST(ReadTodo, HasDaysOfTheHandheldsZone) {
  const ReadItem read =
      ReadTodoLines("DTSTART;TZID=America/New_York:20080301T200000\nDUE:20080415T000000\n");
  EXPECT_EQ(read.task.start, Day(2008, 3, 2));
  EXPECT_EQ(read.task.due, Day(2008, 4, 15));
  EXPECT_EQ(read.notices, Strings{"3: DTSTART: a task has days, the time is left out"});
}

TEST(ReadTodo, IsDueADurationBehindItsStart) {
  EXPECT_EQ(ReadTodoLines("DTSTART;VALUE=DATE:20080301\nDURATION:P3D\n").task.due, Day(2008, 3, 4));
}

TEST(ReadTodo, LeavesOutDaysThatCannotBeKept) {
  const ReadItem read = ReadTodoLines("DTSTART;VALUE=DATE:18991231\nDUE;VALUE=DATE:30000101\n");
  EXPECT_EQ(read.task.start, std::nullopt);
  EXPECT_EQ(read.task.due, std::nullopt);
  EXPECT_EQ(read.notices, (Strings{"3: DTSTART: outside of the years 1900 to 2999, left out",
                                   "3: DUE: outside of the years 1900 to 2999, left out"}));
}

TEST(ReadTodo, TellsThePriority) {
  const auto importance = [](const char* priority) {
    return ReadTodoLines(std::string("PRIORITY:") + priority + "\n").task.importance;
  };
  for (const char* high : {"1", "2", "4"}) EXPECT_EQ(importance(high), Importance::kHigh);
  for (const char* normal : {"0", "5", "", "x"}) EXPECT_EQ(importance(normal), Importance::kNormal);
  for (const char* low : {"6", "9"}) EXPECT_EQ(importance(low), Importance::kLow);
}

TEST(ReadTodo, TellsWhetherItIsComplete) {
  EXPECT_FALSE(ReadTodoLines("SUMMARY:x\n").task.complete);
  EXPECT_FALSE(ReadTodoLines("STATUS:NEEDS-ACTION\n").task.complete);
  EXPECT_TRUE(ReadTodoLines("STATUS:completed\n").task.complete);
  EXPECT_TRUE(ReadTodoLines("COMPLETED:20080410T230000Z\n").task.complete);
  EXPECT_TRUE(ReadTodoLines("PERCENT-COMPLETE:100\n").task.complete);
  EXPECT_FALSE(ReadTodoLines("STATUS:NEEDS-ACTION\nCOMPLETED:20080410T230000Z\n").task.complete);
  EXPECT_EQ(ReadTodoLines("STATUS:NEEDS-ACTION\nCOMPLETED:20080410T230000Z\n").task.completed,
            std::nullopt);
}

TEST(ReadTodo, NamesWhatPeopleWouldMiss) {
  const ReadItem read = ReadTodoLines(
      "STATUS:IN-PROCESS\nPERCENT-COMPLETE:40\nLOCATION:x\nATTENDEE:mailto:a@b\nURL:x\nGEO:1;2\n"
      "SUMMARY:one\nSUMMARY:two\nDTSTART:whenever\nX-APPLE-SORT-ORDER:1\n");
  EXPECT_EQ(
      read.notices,
      (Strings{"4: STATUS: a task is done or not", "5: PERCENT-COMPLETE: a task is done or not",
               "6: LOCATION: a task has no place", "7: ATTENDEE: a handheld keeps no participants",
               "8: URL: a handheld keeps no files or links", "9: GEO: a handheld keeps no position",
               "11: SUMMARY: a task has one, left out: two",
               "12: DTSTART: neither a day nor a time, left out: whenever"}));
}

TEST(ReadTodo, HasATimeForAReminder) {
  ForEachCase("todo_reminders.txt", [](const Strings& each) {
    const ReadItem read = ReadTodoLines(LinesOf(each[1]) + "BEGIN:VALARM\nACTION:DISPLAY\nTRIGGER" +
                                        each[2] + "\nEND:VALARM\n");
    EXPECT_EQ(read.task.reminder ? IsoDateTime(*read.task.reminder) : "none", each[3]);
    EXPECT_EQ(read.notices.empty(), read.task.reminder.has_value());
  });
}

TEST(ReadTodo, RecursFromItsStartElseItsDueDay) {
  const ReadItem start = ReadTodoLines(
      "DTSTART;VALUE=DATE:20080303\nDUE;VALUE=DATE:20080305\nRRULE:FREQ=WEEKLY;COUNT=3\n");
  EXPECT_EQ(ShowRule(*start.task.pattern), "FREQ=WEEKLY;BYDAY=MO;WKST=SU;COUNT=3");
  const ReadItem due = ReadTodoLines("DUE;VALUE=DATE:20080305\nRRULE:FREQ=WEEKLY\n");
  EXPECT_EQ(ShowRule(*due.task.pattern), "FREQ=WEEKLY;BYDAY=WE;WKST=SU");
  EXPECT_EQ(due.notices, Strings{});
}

TEST(ReadTodo, MovesToTheFirstDayOfItsRule) {
  const ReadItem read = ReadTodoLines(
      "DTSTART;VALUE=DATE:20080301\nDUE;VALUE=DATE:20080305\nRRULE:FREQ=WEEKLY;BYDAY=MO\n");
  EXPECT_EQ(read.task.start, Day(2008, 3, 3));
  EXPECT_EQ(read.task.due, Day(2008, 3, 7));
  EXPECT_EQ(read.notices, Strings{"3: DTSTART: no day of its rule, moved to the first one"});
}

TEST(ReadTodo, DoesNotRecurByWhatNoPatternSays) {
  const ReadItem rule =
      ReadTodoLines("DUE;VALUE=DATE:20080305\nRRULE:FREQ=MONTHLY;BYMONTHDAY=1,5\n");
  EXPECT_EQ(rule.task.pattern, std::nullopt);
  EXPECT_EQ(rule.notices,
            Strings{"5: RRULE: no pattern of a handheld says this; the task does not recur"});
  const ReadItem noDay = ReadTodoLines("RRULE:FREQ=DAILY\n");
  EXPECT_EQ(noDay.notices, Strings{"4: RRULE: a task without a day does not recur"});
  const ReadItem otherDay =
      ReadTodoLines("DTSTART;TZID=America/New_York:20080304T200000\nRRULE:FREQ=WEEKLY\n");
  EXPECT_EQ(otherDay.task.pattern, std::nullopt);
  EXPECT_EQ(otherDay.task.start, Day(2008, 3, 5));
  EXPECT_EQ(otherDay.notices.size(), 2u);
}

TEST(ReadTodo, HasNoExceptions) {
  const CalendarFile file = ReadLines(
      "BEGIN:VTODO\nUID:u\nDUE;VALUE=DATE:20080305\nRRULE:FREQ=DAILY\n"
      "EXDATE;VALUE=DATE:20080306\nEND:VTODO\n"
      "BEGIN:VTODO\nUID:u\nRECURRENCE-ID;VALUE=DATE:20080307\nSUMMARY:x\nEND:VTODO\n"
      "BEGIN:VTODO\nUID:v\nRECURRENCE-ID;VALUE=DATE:20080307\nSUMMARY:alone\nEND:VTODO\n");
  ASSERT_EQ(file.tasks.size(), 2u);
  EXPECT_EQ(file.tasks[1].task.uid, "v/20080307");
  EXPECT_EQ(Texts(file.notices),
            (Strings{"7: EXDATE: a task's series has no exceptions",
                     "9: RECURRENCE-ID: a task's series has no exceptions, left out"}));
}

TEST(ReadTodo, KeepsTheLatestState) {
  const CalendarFile file = ReadLines(
      "BEGIN:VTODO\nUID:u\nSEQUENCE:1\nSUMMARY:one\nEND:VTODO\n"
      "BEGIN:VTODO\nUID:u\nSUMMARY:two\nEND:VTODO\nBEGIN:VTODO\nEND:VTODO\n");
  ASSERT_EQ(file.tasks.size(), 2u);
  EXPECT_EQ(file.tasks[0].task.subject, "one");
  EXPECT_EQ(file.tasks[0].line, 3u);
  EXPECT_EQ(Texts(file.notices),
            Strings{"8: UID: left out for a later state of the same in line 3"});
}

}  // namespace
}  // namespace formats::testing
