#include "agent/pim_import/task_from_xml.h"

#include <gmock/gmock.h>

#include "tests/support/calendar_upload_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

const std::string kEveryTaskField =
    Element("StartDate", "20080220T000000") + Element("PRIORITY", "2") +
    Element("COMPLETED", "TRUE") + Element("ReminderMinutes", "60") +
    Element("HAS_REMINDER", "TRUE") + Element("DUE_DATE", "20080301T000000") +
    Element("Private", "TRUE") + Element("NOTES", "a\nb") +
    Element("CATEGORIES",
            "<CATEGORY><Name>A</Name></CATEGORY><CATEGORY><Name>B</Name></CATEGORY>") +
    Element("SUBJECT", "s");

class TaskFromXml : public CalendarUpload {
 protected:
  std::string Due(ITask& task) { return DateTextOf(task, &ITask::get_DueDate); }
  std::string Reminder(const std::string& children) {
    const auto task = AddedTask(Element("HAS_REMINDER", "TRUE") + children);
    return task ? DateTextOf(*task.get(), &ITask::get_ReminderTime) : "not stored";
  }
  std::string Subject(LONG oid) { return TextOf(*tasks().Get(oid).get(), &ITask::get_Subject); }
  // How often an upload of these children calls a setter.
  std::uint64_t Calls(const char* call, LONG oid, const std::string& children) {
    const auto plan = FaultPlan::CountOnly(call);
    EXPECT_EQ(UploadTask(children, OidTag(oid)), (RecordReply{oid, S_OK}));
    return plan.calls();
  }
};

TEST_F(TaskFromXml, StoresEveryField) {
  const auto stored = AddedTask(kEveryTaskField);
  ITask& task = *stored.get();
  EXPECT_EQ(TextOf(task, &ITask::get_Subject), "s");
  EXPECT_EQ(TextOf(task, &ITask::get_Body), "a\r\nb");
  EXPECT_EQ(TextOf(task, &ITask::get_Categories), "A,B");
  EXPECT_EQ(ValueOf(task, &ITask::get_Sensitivity), olPrivate);
  EXPECT_EQ(Due(task), "2008-03-01 00:00:00");
  EXPECT_EQ(DateTextOf(task, &ITask::get_StartDate), "2008-02-20 00:00:00");
  EXPECT_EQ(ValueOf(task, &ITask::get_ReminderSet), VARIANT_TRUE);
  EXPECT_EQ(DateTextOf(task, &ITask::get_ReminderTime), "2008-02-29 23:00:00");
  EXPECT_EQ(ValueOf(task, &ITask::get_Complete), VARIANT_TRUE);
  EXPECT_EQ(ValueOf(task, &ITask::get_Importance), olImportanceHigh);
  EXPECT_EQ(ValueOf(task, &ITask::get_IsRecurring), VARIANT_FALSE);
}

TEST_F(TaskFromXml, ClearsWhatTheRecordLacks) {
  const LONG oid = UploadTask(kEveryTaskField + Recurring(Daily())).oid;
  EXPECT_EQ(UploadTask(Element("DUE_DATE", ""), OidTag(oid)), (RecordReply{oid, S_OK}));
  const auto stored = tasks().Get(oid);
  ITask& task = *stored.get();
  EXPECT_EQ(TextOf(task, &ITask::get_Subject), "");
  EXPECT_EQ(TextOf(task, &ITask::get_Body), "");
  EXPECT_EQ(TextOf(task, &ITask::get_Categories), "");
  EXPECT_EQ(ValueOf(task, &ITask::get_Sensitivity), olNormal);
  EXPECT_EQ(Due(task), "none");
  EXPECT_EQ(DateTextOf(task, &ITask::get_StartDate), "none");
  EXPECT_EQ(ValueOf(task, &ITask::get_ReminderSet), VARIANT_FALSE);
  EXPECT_EQ(ValueOf(task, &ITask::get_Complete), VARIANT_FALSE);
  EXPECT_EQ(ValueOf(task, &ITask::get_Importance), olImportanceNormal);
  EXPECT_EQ(ValueOf(task, &ITask::get_IsRecurring), VARIANT_FALSE);
}

TEST_F(TaskFromXml, MapsPriorities) {
  const std::pair<const char*, LONG> kPriorities[] = {
      {"1", olImportanceHigh},  {"2", olImportanceHigh},   {"0", olImportanceHigh},
      {"-7", olImportanceHigh}, {"3", olImportanceNormal}, {"", olImportanceNormal},
      {"4", olImportanceLow},   {"5", olImportanceLow},    {"99999999999", olImportanceLow},
  };
  for (const auto& [text, importance] : kPriorities) {
    const auto task = AddedTask(Element("PRIORITY", text));
    EXPECT_EQ(ValueOf(*task.get(), &ITask::get_Importance), importance) << text;
  }
  EXPECT_EQ(ValueOf(*AddedTask("").get(), &ITask::get_Importance), olImportanceNormal);
}

using TaskReminder = TaskFromXml;

TEST_F(TaskReminder, CountsBackFromTheDueDatesFirstMoment) {
  EXPECT_EQ(Reminder(Element("DUE_DATE", "20080301") + Element("ReminderMinutes", "60")),
            "2008-02-29 23:00:00");
  EXPECT_EQ(Reminder(Element("DUE_DATE", "20080301") + Element("ReminderMinutes", "-540")),
            "2008-03-01 09:00:00");
}

TEST_F(TaskReminder, IsTheDueDateWithoutMinutes) {
  EXPECT_EQ(Reminder(Element("DUE_DATE", "20080301")), "2008-03-01 00:00:00");
  EXPECT_EQ(Reminder(Element("DUE_DATE", "20080301") + "<ReminderMinutes/>"),
            "2008-03-01 00:00:00");
}

TEST_F(TaskReminder, IsNotConvertedBetweenZones) {
  UseZone("Australia/Sydney");
  EXPECT_EQ(Reminder(Element("DUE_DATE", "20080301") + Element("ReminderMinutes", "60")),
            "2008-02-29 23:00:00");
}

TEST_F(TaskReminder, IsNeverReadAsATime) {
  EXPECT_EQ(Reminder(Element("DUE_DATE", "20080301") + Element("ReminderTime", "20080229T080000")),
            "2008-03-01 00:00:00");
  EXPECT_EQ(Reminder(Element("ReminderTime", "soon")), "none");
}

TEST_F(TaskReminder, IsNoneWithoutADueDate) {
  EXPECT_EQ(Reminder(""), "none");
}

TEST_F(TaskReminder, OutsideTheDatesOfTasksFailsTheRecord) {
  const std::string set = Element("HAS_REMINDER", "TRUE");
  EXPECT_EQ(UploadTask(set + Element("DUE_DATE", "19000101") + Element("ReminderMinutes", "1")),
            (RecordReply{0, E_INVALIDARG}));
  EXPECT_EQ(UploadTask(set + Element("DUE_DATE", "18991231") + Element("ReminderMinutes", "-1440")),
            (RecordReply{0, E_INVALIDARG}));
}

TEST_F(TaskReminder, ThatIsNoTimeFailsTheRecord) {
  const std::string set = Element("HAS_REMINDER", "TRUE");
  EXPECT_EQ(
      UploadTask(set + Element("DUE_DATE", "20080301") + Element("ReminderMinutes", "99999999999")),
      (RecordReply{0, ERROR_INVALID_PARAMETER}));
  EXPECT_THAT(tasks().Oids(), IsEmpty());
}

TEST_F(TaskReminder, IsLeftAloneWhenItIsNotSet) {
  const LONG oid = UploadTask(kEveryTaskField).oid;
  EXPECT_EQ(Calls("ITask::put_ReminderTime", oid,
                  Element("ReminderMinutes", "5") + Element("DUE_DATE", "20080301")),
            0u);
}

TEST_F(TaskReminder, FailsWhenItsTimeCannotBeConverted) {
  for (const char* call : {"SystemTimeToFileTime", "FileTimeToSystemTime"}) {
    const auto plan = FaultPlan::FailCalls(call, ERROR_INVALID_PARAMETER);
    EXPECT_EQ(UploadTask(kEveryTaskField), (RecordReply{0, ERROR_INVALID_PARAMETER})) << call;
  }
}

TEST_F(TaskReminder, IsCountedFromNoDateWithoutADueDate) {
  EXPECT_EQ(Reminder(Element("ReminderMinutes", "60")), "4500-12-31 23:00:00");
  EXPECT_EQ(Reminder(Element("ReminderMinutes", "0")), "none");
  EXPECT_EQ(Reminder(Element("ReminderMinutes", "-540")), "4501-01-01 09:00:00");
}

TEST_F(TaskReminder, IsNoneWhenTheDueDateCannotBeConverted) {
  const auto plan = FaultPlan::FailCalls("VariantTimeToSystemTime", ERROR_INVALID_PARAMETER);
  const RecordReply reply = UploadTask(kEveryTaskField);
  EXPECT_EQ(reply.result, S_OK);
  EXPECT_EQ(ValueOf(*tasks().Get(reply.oid).get(), &ITask::get_ReminderTime), kNoDate);
}

using TaskDates = TaskFromXml;

TEST_F(TaskDates, FailTheRecordWhenTheyDoNotScanOrExist) {
  for (const char* element : {"DUE_DATE", "StartDate"}) {
    EXPECT_EQ(UploadTask(Element(element, "soon")), (RecordReply{0, E_INVALIDARG}));
    EXPECT_EQ(UploadTask(Element(element, "20080230")), (RecordReply{0, ERROR_INVALID_PARAMETER}));
    EXPECT_EQ(UploadTask(Element(element, "18991231")), (RecordReply{0, E_INVALIDARG}));
  }
  EXPECT_THAT(tasks().Oids(), IsEmpty());
}

TEST_F(TaskDates, AreNotConvertedBetweenZones) {
  UseZone("America/New_York");
  EXPECT_EQ(Due(*AddedTask(Element("DUE_DATE", "20080301T000000")).get()), "2008-03-01 00:00:00");
}

TEST_F(TaskFromXml, StampsTheDayOnWhichItIsCompleted) {
  handheld_.FreezeClock(SYSTEMTIME{2008, 2, 0, 15, 12, 0, 0, 0});
  const auto task = AddedTask(Element("COMPLETED", "TRUE") + Element("DateCompleted", "20070101"));
  EXPECT_EQ(DateTextOf(*task.get(), &ITask::get_DateCompleted), "2008-02-15 00:00:00");
}

TEST_F(TaskFromXml, WritesTheNotesOnlyWhenTheyChange) {
  const LONG oid = UploadTask(Element("NOTES", "a\nb")).oid;
  EXPECT_EQ(Calls("ITask::put_Body", oid, Element("NOTES", "a\r\nb")), 0u);
  EXPECT_EQ(Calls("ITask::put_Body", oid, ""), 1u);
  EXPECT_EQ(Calls("ITask::put_Body", oid, ""), 0u);
}

TEST_F(TaskFromXml, WritesTheNotesWhenThePresentOnesCannotBeRead) {
  const LONG oid = UploadTask(Element("NOTES", "old")).oid;
  {
    const auto plan = FaultPlan::FailCalls("ITask::get_Body", 0x80004005);
    EXPECT_EQ(UploadTask(Element("NOTES", "new"), OidTag(oid)), (RecordReply{oid, S_OK}));
  }
  EXPECT_EQ(TextOf(*tasks().Get(oid).get(), &ITask::get_Body), "new");
}

using TaskSeries = TaskFromXml;

TEST_F(TaskSeries, IsStored) {
  const auto task = AddedTask(Element("DUE_DATE", "20080301") +
                              Recurring(Element("TYPE", "MONTHLY_BY_DATE") +
                                        Element("DAY_OF_MONTH", "31") + Element("FREQUENCY", "3")));
  const auto pattern = PatternOf(*task.get());
  EXPECT_EQ(ValueOf(*task.get(), &ITask::get_IsRecurring), VARIANT_TRUE);
  EXPECT_EQ(ValueOf(*pattern.get(), &IRecurrencePattern::get_RecurrenceType), olRecursMonthly);
  EXPECT_EQ(ValueOf(*pattern.get(), &IRecurrencePattern::get_DayOfMonth), 31);
  EXPECT_EQ(ValueOf(*pattern.get(), &IRecurrencePattern::get_Interval), 3);
}

TEST_F(TaskSeries, HasNoExceptions) {
  const std::string exception = Element("DeletedException", "soon");
  EXPECT_EQ(UploadTask(Element("DUE_DATE", "20080301") + Recurring(Daily(exception))).result, S_OK);
}

TEST_F(TaskSeries, StaysWhenTheRecurrenceIsMissing) {
  const LONG oid =
      UploadTask(Element("DUE_DATE", "20080301") + Recurring(Daily(Element("FREQUENCY", "5")))).oid;
  EXPECT_EQ(
      UploadTask(Element("DUE_DATE", "20080301") + Element("IS_RECURRING", "TRUE"), OidTag(oid)),
      (RecordReply{oid, S_OK}));
  const auto pattern = PatternOf(*tasks().Get(oid).get());
  EXPECT_EQ(ValueOf(*pattern.get(), &IRecurrencePattern::get_RecurrenceType), olRecursDaily);
  EXPECT_EQ(ValueOf(*pattern.get(), &IRecurrencePattern::get_Interval), 5);
}

TEST_F(TaskSeries, IsNotMadeOfATaskWithoutARecurrence) {
  const std::string task = Element("DUE_DATE", "20080301") + Element("IS_RECURRING", "TRUE");
  const LONG oid = UploadTask(task).oid;
  EXPECT_EQ(ValueOf(*tasks().Get(oid).get(), &ITask::get_IsRecurring), VARIANT_FALSE);
  EXPECT_EQ(UploadTask(task, OidTag(oid)), (RecordReply{oid, S_OK}));
  EXPECT_EQ(ValueOf(*tasks().Get(oid).get(), &ITask::get_IsRecurring), VARIANT_FALSE);
}

TEST_F(TaskSeries, StaysWhenThePatternCannotBeHad) {
  const LONG oid = UploadTask(Recurring(Daily())).oid;
  {
    const auto plan = FaultPlan::FailCalls("ITask::GetRecurrencePattern", 0x80004005);
    EXPECT_EQ(UploadTask(Recurring(Element("TYPE", "x")), OidTag(oid)), (RecordReply{oid, S_OK}));
  }
  EXPECT_EQ(ValueOf(*tasks().Get(oid).get(), &ITask::get_IsRecurring), VARIANT_TRUE);
}

TEST_F(TaskSeries, ThatIsNotRightFailsTheRecord) {
  EXPECT_EQ(UploadTask(Recurring("")), (RecordReply{0, E_FAIL}));
  EXPECT_EQ(UploadTask(Recurring(Element("TYPE", "Daily"))), (RecordReply{0, E_FAIL}));
  EXPECT_EQ(UploadTask(Recurring(Daily(Element("END_DATE", "20080231")))),
            (RecordReply{0, ERROR_INVALID_PARAMETER}));
  EXPECT_EQ(UploadTask(Recurring(Daily(Element("FREQUENCY", "1000")))),
            (RecordReply{0, E_INVALIDARG}));
  EXPECT_THAT(tasks().Oids(), IsEmpty());
}

TEST_F(TaskSeries, IsClearedByASingleTask) {
  const LONG oid = UploadTask(Element("DUE_DATE", "20080301") + Recurring(Daily())).oid;
  EXPECT_EQ(UploadTask(Element("IS_RECURRING", "FALSE"), OidTag(oid)), (RecordReply{oid, S_OK}));
  EXPECT_EQ(ValueOf(*tasks().Get(oid).get(), &ITask::get_IsRecurring), VARIANT_FALSE);
}

using TaskDecision = TaskFromXml;

TEST_F(TaskDecision, NeedsTheFolderForEveryRecord) {
  const LONG oid = tasks().AddNamed(u"one");
  for (const char* call : {"IPOutlookApp::GetDefaultFolder", "IFolder::get_Items"}) {
    const auto plan = FaultPlan::FailCalls(call, 0x80004005);
    EXPECT_EQ(UploadTask(""), (RecordReply{0, E_FAIL})) << call;
    EXPECT_EQ(UploadTask("", OidTag(oid)), (RecordReply{0, E_FAIL})) << call;
    EXPECT_EQ(UploadTask("", OidTag(oid) + " Delete='1'"), (RecordReply{0, E_FAIL})) << call;
  }
  EXPECT_THAT(tasks().Oids(), ElementsAre(oid));
  EXPECT_EQ(Subject(oid), "one");
}

TEST_F(TaskDecision, NeverDeletesAfterAFailure) {
  const auto plan = FaultPlan::CountOnly("ITask::Delete");
  EXPECT_EQ(UploadTask(Element("DUE_DATE", "soon")), (RecordReply{0, E_INVALIDARG}));
  EXPECT_EQ(plan.calls(), 0u);
}

TEST_F(TaskDecision, LeavesATaskAsItWasThatCannotBeChanged) {
  const LONG oid = tasks().AddNamed(u"old");
  EXPECT_EQ(UploadTask(Element("SUBJECT", "new") + Element("StartDate", "x"), OidTag(oid)),
            (RecordReply{0, E_INVALIDARG}));
  EXPECT_EQ(Subject(oid), "old");
}

TEST_F(TaskDecision, ModifiesAndDeletes) {
  const LONG oid = tasks().AddNamed(u"old");
  EXPECT_EQ(UploadTask(Element("SUBJECT", "new"), OidTag(oid)), (RecordReply{oid, S_OK}));
  EXPECT_EQ(Subject(oid), "new");
  EXPECT_EQ(UploadTask("", OidTag(oid) + " Delete='1'"), (RecordReply{oid, S_OK}));
  EXPECT_THAT(tasks().Oids(), IsEmpty());
}

TEST_F(TaskFromXml, RefusesTextsThatAreTooLong) {
  EXPECT_EQ(UploadTask(Element("SUBJECT", std::string(5000, 's'))), (RecordReply{0, kTextTooLong}));
  EXPECT_EQ(UploadTask(Element("NOTES", std::string(40000, 'n'))), (RecordReply{0, kTextTooLong}));
  EXPECT_EQ(UploadTask(Element("CATEGORIES", "<CATEGORY/>")), (RecordReply{0, E_FAIL}));
  EXPECT_THAT(tasks().Oids(), IsEmpty());
}

TEST_F(TaskFromXml, LogsItsSteps) {
  SwitchLogOn();
  EXPECT_EQ(UploadTask("").oid, 1);
  UploadTask("", "Oid='1'");
  UploadTask(Element("DUE_DATE", "x"));
  const std::vector<std::string> messages = LogMessages();
  const auto begin = std::ranges::find(messages, "Entering ParseXMLTask");
  ASSERT_GE(messages.end() - begin, 7);
  EXPECT_THAT(std::vector<std::string>(begin, begin + 6),
              ElementsAre("Entering ParseXMLTask", "getNamedItem returned 1",
                          "Found something to Add", "Save must have worked",
                          "Writing oid 0x00000001, hr = 0", "Exiting ParseXMLTask hr = 0"));
  EXPECT_THAT(messages,
              IsSupersetOf({"Found something to Modify", "Writing oid 0x00000000, hr = -2147024809",
                            "Exiting ParseXMLTask hr = -2147024809"}));
}

using TaskSteps = TaskFromXml;

TEST_F(TaskSteps, AreThoseOfTheFieldsInOrder) {
  const LONG oid = tasks().AddNamed(u"old");
  const auto plan = FaultPlan::CountOnly();
  EXPECT_EQ(UploadTask(kEveryTaskField + Recurring(Daily()), OidTag(oid)),
            (RecordReply{oid, S_OK}));
  std::vector<std::string> calls = plan.names();
  std::erase_if(calls, [](const std::string& call) {
    return !call.starts_with("ITask::") && !call.starts_with("IRecurrencePattern::");
  });
  EXPECT_THAT(
      calls,
      ElementsAre("ITask::put_Subject", "ITask::get_Body", "ITask::put_Body",
                  "ITask::put_Sensitivity", "ITask::put_DueDate", "ITask::put_ReminderSet",
                  "ITask::put_ReminderTime", "ITask::put_Complete", "ITask::put_Importance",
                  "ITask::put_StartDate", "ITask::put_Categories", "ITask::GetRecurrencePattern",
                  "IRecurrencePattern::put_RecurrenceType", "IRecurrencePattern::put_Interval",
                  "IRecurrencePattern::put_NoEndDate", "ITask::Save", "ITask::get_Oid"));
}

TEST_F(TaskSteps, StopAtTheFirstThatFails) {
  const LONG oid = tasks().AddNamed(u"old");
  for (const char* call : {"put_Subject", "put_Body", "put_Sensitivity", "put_DueDate",
                           "put_ReminderSet", "put_ReminderTime", "put_Complete", "put_Importance",
                           "put_StartDate", "put_Categories", "Save"}) {
    const auto plan = FaultPlan::FailCalls(std::string("ITask::") + call, 0x8007000E);
    EXPECT_EQ(UploadTask(kEveryTaskField + Recurring(Daily()), OidTag(oid)),
              (RecordReply{0, E_OUTOFMEMORY}));
    EXPECT_EQ(plan.calls(), 1u) << call;
    EXPECT_EQ(Subject(oid), "old") << call;
  }
}

}  // namespace
}  // namespace corvane::testing
