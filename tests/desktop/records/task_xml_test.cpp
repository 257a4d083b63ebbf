#include "desktop/records/task_xml.h"

#include <gtest/gtest.h>

#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using calendar::PatternType;
using formats::Importance;
using formats::Task;

Task ParsedTask(const std::string& children) {
  return TaskFromXml(ElementOf("<TASK>" + children + "</TASK>"), ZoneNamed("Europe/Berlin"));
}

Task FullTask() {
  Task full;
  full.subject = "Tax";
  full.body = "forms\nand receipts";
  full.categories = {"Home"};
  full.start = Day(2024, 5, 1);
  full.due = Day(2024, 5, 31);
  full.reminder = At(Day(2024, 5, 31), 9);
  full.isPrivate = true;
  full.complete = true;
  full.importance = Importance::kHigh;
  full.pattern = {.type = PatternType::kYearly, .dayOfMonth = 31, .monthOfYear = 5};
  return full;
}

constexpr char kFullTaskXml[] =
    "<TASK>"
    "<SUBJECT>Tax</SUBJECT>"
    "<CATEGORIES><CATEGORY><Name>Home</Name></CATEGORY></CATEGORIES>"
    "<IS_RECURRING>TRUE</IS_RECURRING>"
    "<RECURRENCE><TYPE>YEARLY_BY_DATE</TYPE><DAY>31</DAY><MONTH>5</MONTH><END_DATE>0</END_DATE>"
    "</RECURRENCE>"
    "<DUE_DATE>20240531T000000</DUE_DATE>"
    "<HAS_REMINDER>TRUE</HAS_REMINDER>"
    "<ReminderMinutes>-540</ReminderMinutes>"
    "<StartDate>20240501T000000</StartDate>"
    "<Private>TRUE</Private>"
    "<COMPLETED>TRUE</COMPLETED>"
    "<PRIORITY>2</PRIORITY>"
    "<NOTES>forms\nand receipts</NOTES>"
    "</TASK>";

TEST(TaskToXml, WritesEveryFieldInTheWiresOrder) {
  EXPECT_EQ(TaskToXml(FullTask()), kFullTaskXml);
}

TEST(TaskFromXml, ReadsEveryFieldBack) {
  EXPECT_EQ(TaskFromXml(ElementOf(kFullTaskXml), ZoneNamed("Asia/Tokyo")), FullTask());
}

TEST(TaskToXml, WritesThePriorityAlwaysAndNoEmptyField) {
  EXPECT_EQ(TaskToXml({}), "<TASK><PRIORITY>3</PRIORITY></TASK>");
}

TEST(TaskToXml, TurnsTheImportanceIntoAPriorityAndBack) {
  const struct {
    Importance importance;
    const char* priority;
  } cases[] = {{Importance::kLow, "4"}, {Importance::kNormal, "3"}, {Importance::kHigh, "2"}};
  for (const auto& each : cases) {
    Task task;
    task.importance = each.importance;
    const std::string element = std::string("<PRIORITY>") + each.priority + "</PRIORITY>";
    EXPECT_EQ(TaskToXml(task), "<TASK>" + element + "</TASK>");
    EXPECT_EQ(ParsedTask(element).importance, each.importance);
  }
}

TEST(TaskFromXml, TakesEveryNumberForAPriority) {
  const struct {
    const char* priority;
    Importance importance;
  } cases[] = {{"-1", Importance::kHigh}, {"0", Importance::kHigh}, {"1", Importance::kHigh},
               {"5", Importance::kLow},   {"99", Importance::kLow}, {"", Importance::kNormal},
               {"abc", Importance::kHigh}};
  for (const auto& each : cases) {
    EXPECT_EQ(ParsedTask(std::string("<PRIORITY>") + each.priority + "</PRIORITY>").importance,
              each.importance)
        << each.priority;
  }
}

TEST(TaskFromXml, CountsAReminderFromTheMidnightOfTheDueDate) {
  const std::string set = "<HAS_REMINDER>TRUE</HAS_REMINDER><DUE_DATE>20080301T000000</DUE_DATE>";
  EXPECT_EQ(ParsedTask(set + "<ReminderMinutes>60</ReminderMinutes>").reminder,
            At(Day(2008, 2, 29), 23));
  EXPECT_EQ(ParsedTask(set + "<ReminderMinutes>-540</ReminderMinutes>").reminder,
            At(Day(2008, 3, 1), 9));
  EXPECT_EQ(ParsedTask(set).reminder, At(Day(2008, 3, 1), 0));
}

TEST(TaskFromXml, TakesTheMinutesBeforeTheTimeInUtc) {
  EXPECT_EQ(ParsedTask("<DUE_DATE>20080301T000000</DUE_DATE><HAS_REMINDER>TRUE</HAS_REMINDER>"
                       "<ReminderTime>20080229T010101</ReminderTime>"
                       "<ReminderMinutes>60</ReminderMinutes>")
                .reminder,
            At(Day(2008, 2, 29), 23));
}

TEST(TaskFromXml, TakesTheTimeInUtcOfATaskThatIsNeverDue) {
  EXPECT_EQ(
      ParsedTask("<HAS_REMINDER>TRUE</HAS_REMINDER><ReminderTime>20080701T070000</ReminderTime>")
          .reminder,
      At(Day(2008, 7, 1), 9));
  EXPECT_EQ(ParsedTask("<HAS_REMINDER>TRUE</HAS_REMINDER>").reminder, std::nullopt);
  EXPECT_EQ(
      ParsedTask("<HAS_REMINDER>TRUE</HAS_REMINDER><ReminderTime>45010101T000000</ReminderTime>")
          .reminder,
      std::nullopt);
}

TEST(TaskFromXml, HasNoReminderThatIsNotSetOrLiesTooFarAway) {
  EXPECT_EQ(
      ParsedTask("<DUE_DATE>20080301</DUE_DATE><ReminderMinutes>60</ReminderMinutes>").reminder,
      std::nullopt);
  for (const char* minutes : {"2147483647", "-2147483648", "99999999999"}) {
    EXPECT_EQ(ParsedTask("<DUE_DATE>20080301</DUE_DATE><HAS_REMINDER>TRUE</HAS_REMINDER>"
                         "<ReminderMinutes>" +
                         std::string(minutes) + "</ReminderMinutes>")
                  .reminder,
              std::nullopt)
        << minutes;
  }
}

TEST(TaskToXml, LeavesOutAReminderWithoutADueDate) {
  Task task;
  task.reminder = At(Day(2008, 7, 1), 9);
  EXPECT_EQ(TaskToXml(task), "<TASK><PRIORITY>3</PRIORITY></TASK>");
}

TEST(TaskToXml, RemindsOnTheWholeMinuteBefore) {
  Task task;
  task.due = Day(2008, 7, 1);
  for (const int second : {0, 1, 59}) {
    task.reminder = At(Day(2008, 7, 1), 9, 30, second);
    EXPECT_NE(TaskToXml(task).find(">-570<"), std::string::npos) << second;
    task.reminder = At(Day(2008, 6, 30), 23, 30, second);
    EXPECT_NE(TaskToXml(task).find(">30<"), std::string::npos) << second;
  }
}

TEST(TaskFromXml, ReadsTheDayOfCompletionOfACompleteTaskAlone) {
  EXPECT_EQ(ParsedTask("<COMPLETED>TRUE</COMPLETED><DateCompleted>20240530T000000</DateCompleted>")
                .completed,
            Day(2024, 5, 30));
  EXPECT_EQ(ParsedTask("<DateCompleted>20240530T000000</DateCompleted>").completed, std::nullopt);
  EXPECT_EQ(ParsedTask("<COMPLETED>TRUE</COMPLETED>").completed, std::nullopt);
}

TEST(TaskToXml, DoesNotSendTheDayOfCompletion) {
  Task task;
  task.complete = true;
  task.completed = Day(2024, 5, 30);
  EXPECT_EQ(TaskToXml(task), "<TASK><COMPLETED>TRUE</COMPLETED><PRIORITY>3</PRIORITY></TASK>");
}

}  // namespace
}  // namespace desktop::testing
