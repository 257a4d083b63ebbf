#include "agent/pim_export/task_to_xml.h"

#include <gmock/gmock.h>

#include "handheld/base/fault.h"
#include "tests/support/calendar_test.h"
#include "tests/support/fake_calendar.h"
#include "tests/support/golden.h"
#include "tests/support/xml_text.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class TaskToXml : public CalendarTest {
 protected:
  static std::string Document(ITask* task) {
    const TestDocument document;
    EXPECT_EQ(AddTaskToXML(document.document(), document.root(), task), S_OK);
    return document.Text();
  }
  // What stands under the root.
  std::string Record(HRESULT expected = S_OK) {
    const TestDocument document;
    EXPECT_EQ(AddTaskToXML(document.document(), document.root(), item_.get()), expected);
    return document.Inner();
  }
  FakeTask& item() { return *item_.get(); }
  FakePattern& MakeRecurring() {
    const auto pattern = Make<FakePattern>();
    item().IsRecurring = VARIANT_TRUE;
    item().Pattern = ComPtr<IRecurrencePattern>(pattern.get());
    return *pattern.get();
  }
  void RemindAt(DATE time, DATE due) {
    item().ReminderSet = VARIANT_TRUE;
    item().ReminderTime = time;
    item().DueDate = due;
  }
  void FillFully() {
    item().Subject = u"Ship & <tell>";
    item().Categories = u"Business, Personal";
    RemindAt(DateOf(2008, 2, 15, 9), DateOf(2008, 2, 15));
    item().StartDate = DateOf(2008, 2, 1);
    item().Sensitivity = olPrivate;
    item().Complete = VARIANT_TRUE;
    item().DateCompleted = DateOf(2008, 2, 14);
    item().Importance = olImportanceHigh;
    item().Body = u"First line\r\nSecond \U0001F600 line";
    item().BodyInk = kInkNote;
  }
  void TearDown() override {
    item_.reset();
    CalendarTest::TearDown();
  }

  ComPtr<FakeTask> item_ = Make<FakeTask>();
};

TEST_F(TaskToXml, WritesEveryFieldInItsPlace) {
  UseZone("Europe/Berlin");
  FillFully();
  FakePattern& pattern = MakeRecurring();
  pattern.RecurrenceType = olRecursMonthly;
  pattern.DayOfMonth = 15;
  EXPECT_TRUE(EqualsGolden("task_full.xml", Document(item_.get())));
}

TEST_F(TaskToXml, WritesOnlyThePriorityOfATaskWithoutValues) {
  EXPECT_TRUE(EqualsGolden("task_minimal.xml", Document(item_.get())));
}

TEST_F(TaskToXml, WritesLargeIdentifiersAsNegativeNumbers) {
  item().Oid = -16;
  EXPECT_EQ(Record(), "<TASK Oid=\"-16\"><PRIORITY>3</PRIORITY></TASK>");
}

TEST_F(TaskToXml, CountsThePriorityAgainstTheImportance) {
  for (const auto& [importance, priority] :
       {std::pair{0, 4}, {1, 3}, {2, 2}, {3, 3}, {-1, 3}, {99, 3}}) {
    item().Importance = importance;
    EXPECT_THAT(Record(), HasSubstr("<PRIORITY>" + std::to_string(priority) + "</PRIORITY>"))
        << importance;
  }
}

TEST_F(TaskToXml, PutsTheRecurrenceDirectlyBehindItsFlagWithoutExceptions) {
  FakePattern& pattern = MakeRecurring();
  pattern.AddDeleted(DateOf(2008, 2, 15));
  pattern.AddChanged(DateOf(2008, 2, 16));
  EXPECT_EQ(Record(),
            "<TASK Oid=\"7\"><IS_RECURRING>TRUE</IS_RECURRING>"
            "<RECURRENCE><TYPE>DAILY</TYPE><END_DATE>0</END_DATE></RECURRENCE>"
            "<PRIORITY>3</PRIORITY></TASK>");
}

TEST_F(TaskToXml, WritesDatesAsTheyStandInEveryZone) {
  UseZone("America/New_York");
  item().DueDate = DateOf(2008, 2, 15);
  item().StartDate = DateOf(2008, 2, 1);
  EXPECT_EQ(Record(),
            "<TASK Oid=\"7\"><DUE_DATE>20080215T000000</DUE_DATE>"
            "<StartDate>20080201T000000</StartDate><PRIORITY>3</PRIORITY></TASK>");
}

TEST_F(TaskToXml, CountsTheMinutesFromTheReminderToTheStartOfTheDay) {
  RemindAt(DateOf(2008, 2, 15, 9), DateOf(2008, 2, 15));
  EXPECT_THAT(Record(), HasSubstr("<ReminderMinutes>-540</ReminderMinutes>"));
  RemindAt(DateOf(2008, 2, 29, 23), DateOf(2008, 3, 1));
  EXPECT_THAT(Record(), HasSubstr("<ReminderMinutes>60</ReminderMinutes>"));
  RemindAt(DateOf(2008, 3, 1), DateOf(2008, 3, 1));
  EXPECT_THAT(Record(), HasSubstr("<ReminderMinutes>0</ReminderMinutes>"));
}

TEST_F(TaskToXml, CutsSecondsOffTheMinutes) {
  const double second = 1.0 / 86400;
  RemindAt(DateOf(2008, 2, 15) + 90 * second, DateOf(2008, 2, 15));
  EXPECT_THAT(Record(), HasSubstr("<ReminderMinutes>-1</ReminderMinutes>"));
  RemindAt(DateOf(2008, 2, 15) - 90 * second, DateOf(2008, 2, 15));
  EXPECT_THAT(Record(), HasSubstr("<ReminderMinutes>1</ReminderMinutes>"));
}

TEST_F(TaskToXml, WritesTheReminderInUtcAndItsMinutesByTheClock) {
  UseZone("Europe/Berlin");
  RemindAt(DateOf(2008, 7, 1, 1), DateOf(2008, 7, 2));
  EXPECT_THAT(Record(), HasSubstr("<HAS_REMINDER>TRUE</HAS_REMINDER>"
                                  "<ReminderTime>20080630T230000</ReminderTime>"
                                  "<ReminderMinutes>1380</ReminderMinutes>"));
}

TEST_F(TaskToXml, CountsNoMinutesWithoutADueDate) {
  RemindAt(DateOf(2008, 2, 15, 9), kNoDate);
  EXPECT_EQ(Record(),
            "<TASK Oid=\"7\"><HAS_REMINDER>TRUE</HAS_REMINDER>"
            "<ReminderTime>20080215T090000</ReminderTime><PRIORITY>3</PRIORITY></TASK>");
}

TEST_F(TaskToXml, CountsNoMinutesWithoutAReminderTime) {
  RemindAt(kNoDate, DateOf(2008, 2, 15));
  EXPECT_EQ(Record(),
            "<TASK Oid=\"7\"><DUE_DATE>20080215T000000</DUE_DATE>"
            "<HAS_REMINDER>TRUE</HAS_REMINDER><PRIORITY>3</PRIORITY></TASK>");
}

TEST_F(TaskToXml, WritesNothingOfAReminderThatIsNotSet) {
  RemindAt(DateOf(2008, 2, 15, 9), DateOf(2008, 2, 15));
  item().ReminderSet = VARIANT_FALSE;
  EXPECT_EQ(Record(),
            "<TASK Oid=\"7\"><DUE_DATE>20080215T000000</DUE_DATE>"
            "<PRIORITY>3</PRIORITY></TASK>");
}

TEST_F(TaskToXml, FailsForAReminderThatIsNoDate) {
  RemindAt(1.0e9, DateOf(2008, 2, 15));
  EXPECT_EQ(Record(E_UNEXPECTED),
            "<TASK Oid=\"7\"><DUE_DATE>20080215T000000</DUE_DATE>"
            "<HAS_REMINDER>TRUE</HAS_REMINDER></TASK>");
}

TEST_F(TaskToXml, LeavesOutMinutesThatCannotBeCounted) {
  // A year that no tick count reaches: what it makes of UTC is no time either.
  RemindAt(DateOf(1500, 1, 1), DateOf(2008, 2, 15));
  const std::string record = Record();
  EXPECT_THAT(record, Not(HasSubstr("ReminderMinutes")));
  EXPECT_THAT(record, HasSubstr("<PRIORITY>3</PRIORITY>"));
}

TEST_F(TaskToXml, MarksOnlyAPrivateTask) {
  for (const LONG sensitivity : {0, 1, 3}) {
    item().Sensitivity = sensitivity;
    EXPECT_THAT(Record(), Not(HasSubstr("Private"))) << sensitivity;
  }
  item().Sensitivity = 2;
  EXPECT_THAT(Record(), HasSubstr("<Private>TRUE</Private>"));
}

TEST_F(TaskToXml, WritesNoDateOfACompletionWithoutOne) {
  item().Complete = VARIANT_TRUE;
  EXPECT_EQ(Record(), "<TASK Oid=\"7\"><COMPLETED>TRUE</COMPLETED><PRIORITY>3</PRIORITY></TASK>");
}

TEST_F(TaskToXml, DoesNotReadTheDateOfATaskThatIsNotComplete) {
  item().DateCompleted = DateOf(2008, 2, 15);
  const auto plan = FaultPlan::FailCalls("ITask::get_DateCompleted", 0x80004005);
  EXPECT_THAT(Record(), Not(HasSubstr("DateCompleted")));
  EXPECT_FALSE(plan.fired());
}

TEST_F(TaskToXml, SplitsTheCategories) {
  item().Categories = u"A,B";
  EXPECT_THAT(Record(), HasSubstr("<CATEGORIES><CATEGORY><Name>A</Name></CATEGORY>"
                                  "<CATEGORY><Name>B</Name></CATEGORY></CATEGORIES>"));
}

TEST_F(TaskToXml, FailsForABodyThatCannotBeRead) {
  const auto plan = FaultPlan::FailCalls("ITask::get_Body", 0x80004005);
  EXPECT_EQ(Record(E_FAIL), "<TASK Oid=\"7\"><PRIORITY>3</PRIORITY></TASK>");
}

TEST_F(TaskToXml, ForgivesInkThatTheDeviceLacks) {
  for (const DWORD error : {0x80004001u, 0x80004005u}) {
    const auto plan = FaultPlan::FailCalls("ITask::get_BodyInk", error);
    Record(S_OK);
    EXPECT_TRUE(plan.fired());
  }
}

TEST_F(TaskToXml, FailsWhenInkFailsOtherwise) {
  const auto plan = FaultPlan::FailCalls("ITask::get_BodyInk", 0x8007000E);
  Record(E_OUTOFMEMORY);
}

TEST_F(TaskToXml, KeepsABegunRecordInTheTreeAtEveryFailure) {
  FillFully();
  MakeRecurring();
  std::string last;
  for (const char* call :
       {"get_Subject", "get_Categories", "get_IsRecurring", "GetRecurrencePattern", "get_DueDate",
        "get_ReminderSet", "get_ReminderTime", "get_StartDate", "get_Sensitivity", "get_Complete",
        "get_DateCompleted", "get_Importance", "get_Body"}) {
    const auto plan = FaultPlan::FailCalls(std::string("ITask::") + call, 0x80004005);
    const std::string record = Record(E_FAIL);
    EXPECT_TRUE(record.starts_with("<TASK Oid=\"7\"")) << call;
    EXPECT_GE(record.size(), last.size()) << call;
    last = record;
  }
}

TEST_F(TaskToXml, KeepsTheFlagOfAPatternThatFails) {
  MakeRecurring();
  const auto plan = FaultPlan::FailCalls("IRecurrencePattern::get_NoEndDate", 0x80004005);
  EXPECT_EQ(Record(E_FAIL), "<TASK Oid=\"7\"><IS_RECURRING>TRUE</IS_RECURRING></TASK>");
}

TEST_F(TaskToXml, AppendsNothingWithoutAnIdentifier) {
  {
    const auto plan = FaultPlan::FailCalls("ITask::get_Oid", 0x80004005);
    EXPECT_EQ(Record(E_FAIL), "");
  }
  const auto plan = FaultPlan::FailCalls("IXMLDOMDocument::createAttribute", 0x80004005);
  EXPECT_EQ(Record(E_FAIL), "");
}

TEST_F(TaskToXml, RefusesNullPointers) {
  const TestDocument document;
  EXPECT_EQ(AddTaskToXML(document.document(), document.root(), nullptr), E_POINTER);
  EXPECT_EQ(AddTaskToXML(document.document(), nullptr, item_.get()), E_POINTER);
  EXPECT_EQ(AddTaskToXML(nullptr, document.root(), item_.get()), E_POINTER);
  EXPECT_EQ(document.Inner(), "");
}

TEST_F(TaskToXml, LogsItsSteps) {
  item().Subject = u"Ship";
  MakeRecurring();
  SwitchLogOn();
  Record();
  EXPECT_THAT(LogMessages(),
              ElementsAre("AddTaskToXML", "Got Subject Ship", "AddTaskToXML before get_IsRecurring",
                          "AddRecurrenceToChild", "Daily", "Exit AddTaskToXML"));
}

TEST_F(TaskToXml, LogsTheStepBeforeTheSeriesAlsoAfterAFailure) {
  SwitchLogOn();
  {
    const auto plan = FaultPlan::FailCalls("ITask::get_Oid", 0x80004005);
    Record(E_FAIL);
  }
  EXPECT_THAT(LogMessages(), ElementsAre("AddTaskToXML", "AddTaskToXML before get_IsRecurring",
                                         "Exit AddTaskToXML"));
}

}  // namespace
}  // namespace corvane::testing
