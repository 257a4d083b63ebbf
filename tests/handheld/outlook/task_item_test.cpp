#include "tests/handheld/outlook/calendar_support.h"

namespace ce::host::testing {
namespace {

class TaskItem : public CalendarTest {};

TEST_F(TaskItem, StartsWithoutDatesAndReminder) {
  const ComPtr<ITask> task = NewTask(app_);
  for (const auto get : {&ITask::get_StartDate, &ITask::get_DueDate, &ITask::get_DateCompleted,
                         &ITask::get_ReminderTime}) {
    EXPECT_EQ(Value(task, get), kNoDate);
  }
  for (const auto get : {&ITask::get_Complete, &ITask::get_ReminderSet, &ITask::get_IsRecurring}) {
    EXPECT_EQ(Value(task, get), VARIANT_FALSE);
  }
  for (const auto get : {&ITask::get_Subject, &ITask::get_Categories, &ITask::get_Body}) {
    EXPECT_EQ(Text(task, get), u"");
  }
  EXPECT_EQ(Value(task, &ITask::get_Importance), olImportanceNormal);
  EXPECT_EQ(Value(task, &ITask::get_Sensitivity), olNormal);
  EXPECT_EQ(Value(task, &ITask::get_Oid), 0);
}

TEST_F(TaskItem, KeepsEveryProperty) {
  const ComPtr<ITask> task = NewTask(app_);
  EXPECT_EQ(PutText(task, &ITask::put_Subject, u"Buy \u00E9clairs"), S_OK);
  EXPECT_EQ(PutText(task, &ITask::put_Categories, u"Home"), S_OK);
  EXPECT_EQ(PutText(task, &ITask::put_Body, u"two"), S_OK);
  EXPECT_EQ(task->put_StartDate(Day(2026, 3, 2)), S_OK);
  EXPECT_EQ(task->put_DueDate(Day(2026, 3, 4)), S_OK);
  EXPECT_EQ(task->put_DateCompleted(Day(2026, 3, 3)), S_OK);
  EXPECT_EQ(task->put_ReminderTime(At(2026, 3, 3, 9, 30, 1)), S_OK);
  EXPECT_EQ(task->put_ReminderSet(VARIANT_TRUE), S_OK);
  EXPECT_EQ(task->put_Importance(olImportanceHigh), S_OK);
  EXPECT_EQ(task->put_Sensitivity(olPrivate), S_OK);
  const BYTE ink[] = {9, 8};
  EXPECT_EQ(task->put_BodyInk(2, ink), S_OK);
  EXPECT_EQ(task->Save(), S_OK);

  const ComPtr<ITask> read = Reread(task);
  EXPECT_EQ(Text(read, &ITask::get_Subject), u"Buy \u00E9clairs");
  EXPECT_EQ(Text(read, &ITask::get_Categories), u"Home");
  EXPECT_EQ(Text(read, &ITask::get_Body), u"two");
  EXPECT_EQ(Value(read, &ITask::get_StartDate), Day(2026, 3, 2));
  EXPECT_EQ(Value(read, &ITask::get_DueDate), Day(2026, 3, 4));
  EXPECT_EQ(Value(read, &ITask::get_DateCompleted), Day(2026, 3, 3));
  EXPECT_EQ(Value(read, &ITask::get_ReminderTime), At(2026, 3, 3, 9, 30, 1));
  EXPECT_EQ(Value(read, &ITask::get_ReminderSet), VARIANT_TRUE);
  EXPECT_EQ(Value(read, &ITask::get_Complete), VARIANT_FALSE);
  EXPECT_EQ(Value(read, &ITask::get_Importance), olImportanceHigh);
  EXPECT_EQ(Value(read, &ITask::get_Sensitivity), olPrivate);
  DWORD bytes = 0;
  const BYTE* block = nullptr;
  EXPECT_EQ(read->get_BodyInk(&bytes, &block), S_OK);
  EXPECT_EQ(std::vector<BYTE>(block, block + bytes), std::vector<BYTE>({9, 8}));
}

TEST_F(TaskItem, CutsTheTimeOfDayOffItsDays) {
  const ComPtr<ITask> task = NewTask(app_);
  EXPECT_EQ(task->put_StartDate(At(2026, 3, 2, 23, 59, 59)), S_OK);
  EXPECT_EQ(task->put_DueDate(At(2026, 3, 3, 0, 0, 1)), S_OK);
  EXPECT_EQ(task->put_DateCompleted(At(2026, 3, 4, 12)), S_OK);
  EXPECT_EQ(task->put_ReminderTime(At(2026, 3, 2, 23, 59, 59)), S_OK);
  EXPECT_EQ(Value(task, &ITask::get_StartDate), Day(2026, 3, 2));
  EXPECT_EQ(Value(task, &ITask::get_DueDate), Day(2026, 3, 3));
  EXPECT_EQ(Value(task, &ITask::get_DateCompleted), Day(2026, 3, 4));
  EXPECT_EQ(Value(task, &ITask::get_ReminderTime), At(2026, 3, 2, 23, 59, 59));
}

TEST_F(TaskItem, RefusesDatesOutOfRangeAndKeepsWhatItHad) {
  const ComPtr<ITask> task = NewTask(app_);
  const auto puts = {&ITask::put_StartDate, &ITask::put_DueDate, &ITask::put_DateCompleted};
  for (const auto put : puts) {
    EXPECT_EQ((task.get()->*put)(Day(2026, 3, 2)), S_OK);
    for (const DATE date : {1.0, 0.0, -2.5, 401769.0, 1e10}) {
      EXPECT_EQ((task.get()->*put)(date), E_INVALIDARG) << date;
    }
  }
  EXPECT_EQ(Value(task, &ITask::get_DueDate), Day(2026, 3, 2));
  for (const auto put : puts) EXPECT_EQ((task.get()->*put)(kNoDate), S_OK);
  EXPECT_EQ(Value(task, &ITask::get_DueDate), kNoDate);
}

// A reminder an hour before a due date that there is not.
TEST_F(TaskItem, TakesAReminderThatWasCountedFromNoDate) {
  const ComPtr<ITask> task = NewTask(app_);
  const DATE reminder = kNoDate - 1.0 / 24;
  EXPECT_EQ(task->put_ReminderTime(reminder), S_OK);
  EXPECT_NEAR(Value(task, &ITask::get_ReminderTime), reminder, 1e-6);
  for (const DATE date : {1.0, 0.0, -2.5, 2958466.0, 1e10}) {
    EXPECT_EQ(task->put_ReminderTime(date), E_INVALIDARG) << date;
  }
  EXPECT_NEAR(Value(task, &ITask::get_ReminderTime), reminder, 1e-6);
  EXPECT_EQ(task->put_ReminderTime(kNoDate), S_OK);
  EXPECT_EQ(Value(task, &ITask::get_ReminderTime), kNoDate);
}

TEST_F(TaskItem, CompletingStampsTheHandheldsToday) {
  handheld_.SetZone("Asia/Tokyo");
  handheld_.FreezeClock({2026, 3, 0, 2, 16, 0, 0, 0});
  const ComPtr<ITask> task = NewTask(app_);
  EXPECT_EQ(task->put_Complete(VARIANT_TRUE), S_OK);
  EXPECT_EQ(Value(task, &ITask::get_DateCompleted), Day(2026, 3, 3));
  EXPECT_EQ(task->Save(), S_OK);
  EXPECT_EQ(Value(Reread(task), &ITask::get_DateCompleted), Day(2026, 3, 3));
  EXPECT_EQ(Value(Reread(task), &ITask::get_Complete), VARIANT_TRUE);
}

TEST_F(TaskItem, CompletingACompleteTaskKeepsItsStamp) {
  handheld_.FreezeClock({2026, 3, 0, 2, 16, 0, 0, 0});
  const ComPtr<ITask> task = NewTask(app_);
  EXPECT_EQ(task->put_Complete(VARIANT_TRUE), S_OK);
  EXPECT_EQ(task->Save(), S_OK);
  handheld_.FreezeClock({2026, 4, 0, 1, 16, 0, 0, 0});
  const ComPtr<ITask> read = Reread(task);
  EXPECT_EQ(read->put_Complete(VARIANT_TRUE), S_OK);
  EXPECT_EQ(Value(read, &ITask::get_DateCompleted), Day(2026, 3, 2));
}

TEST_F(TaskItem, UncompletingClearsTheStamp) {
  const ComPtr<ITask> task = NewTask(app_);
  EXPECT_EQ(task->put_Complete(VARIANT_TRUE), S_OK);
  EXPECT_EQ(task->put_Complete(VARIANT_FALSE), S_OK);
  EXPECT_EQ(Value(task, &ITask::get_Complete), VARIANT_FALSE);
  EXPECT_EQ(Value(task, &ITask::get_DateCompleted), kNoDate);
}

TEST_F(TaskItem, IsNotCompletedWithoutAClock) {
  const ComPtr<ITask> task = NewTask(app_);
  {
    const auto plan = FaultPlan::FailCalls("GetLocalTime", ERROR_NOT_READY);
    EXPECT_EQ(task->put_Complete(VARIANT_TRUE), E_FAIL);
  }
  EXPECT_EQ(Value(task, &ITask::get_Complete), VARIANT_FALSE);
  EXPECT_EQ(Value(task, &ITask::get_DateCompleted), kNoDate);
}

TEST_F(TaskItem, RefusesUnknownNumbers) {
  const ComPtr<ITask> task = NewTask(app_);
  for (const LONG value : {-1, 3}) EXPECT_EQ(task->put_Importance(value), E_INVALIDARG);
  for (const LONG value : {-1, 4}) EXPECT_EQ(task->put_Sensitivity(value), E_INVALIDARG);
  EXPECT_EQ(Value(task, &ITask::get_Importance), olImportanceNormal);
  EXPECT_EQ(task->put_Importance(olImportanceLow), S_OK);
}

TEST_F(TaskItem, RefusesTooLongTexts) {
  const ComPtr<ITask> task = NewTask(app_);
  EXPECT_EQ(PutText(task, &ITask::put_Subject, std::u16string(4095, u'x')), S_OK);
  EXPECT_EQ(PutText(task, &ITask::put_Subject, std::u16string(4096, u'x')), kTextTooLong);
  EXPECT_EQ(PutText(task, &ITask::put_Categories, std::u16string(1024, u'x')), kTextTooLong);
  EXPECT_EQ(PutText(task, &ITask::put_Body, std::u16string(30 * 1024 + 1, u'x')), kTextTooLong);
  EXPECT_EQ(Text(task, &ITask::get_Subject).size(), 4095u);
}

TEST_F(TaskItem, IsNotResurrectedBySave) {
  const ComPtr<ITask> task = NewTask(app_);
  EXPECT_EQ(task->Save(), S_OK);
  EXPECT_EQ(Reread(task)->Delete(), S_OK);
  EXPECT_EQ(task->Save(), E_INVALIDARG);
  EXPECT_EQ(task->put_Importance(olImportanceHigh), S_OK);
  EXPECT_EQ(task->Save(), E_INVALIDARG);
  EXPECT_EQ(CountOf(Items(LoggedOn(), olFolderTasks)), 0);
}

TEST_F(TaskItem, RecursFromItsStartDateElseFromItsDueDateElseFromToday) {
  handheld_.FreezeClock({2026, 3, 0, 5, 12, 0, 0, 0});
  const ComPtr<ITask> task = NewTask(app_);
  const ComPtr<IRecurrencePattern> pattern = PatternOf(task);
  EXPECT_EQ(Value(pattern, &IRecurrencePattern::get_PatternStartDate), Day(2026, 3, 5));
  EXPECT_EQ(Value(pattern, &IRecurrencePattern::get_DayOfWeekMask), 16);
  EXPECT_EQ(task->put_DueDate(Day(2026, 3, 9)), S_OK);
  EXPECT_EQ(Value(pattern, &IRecurrencePattern::get_PatternStartDate), Day(2026, 3, 9));
  EXPECT_EQ(task->put_StartDate(Day(2026, 3, 2)), S_OK);
  EXPECT_EQ(Value(pattern, &IRecurrencePattern::get_PatternStartDate), Day(2026, 3, 2));
}

TEST_F(TaskItem, MovingThePatternMovesWhatItStartsFrom) {
  const ComPtr<ITask> task = NewTask(app_);
  const ComPtr<IRecurrencePattern> pattern = PatternOf(task);
  EXPECT_EQ(pattern->put_PatternStartDate(Day(2026, 3, 1)), S_OK);
  EXPECT_EQ(Value(task, &ITask::get_StartDate), kNoDate);
  EXPECT_EQ(task->Save(), S_OK);
  EXPECT_EQ(Value(PatternOf(Reread(task)), &IRecurrencePattern::get_PatternStartDate),
            Day(2026, 3, 1));

  EXPECT_EQ(task->put_DueDate(Day(2026, 3, 9)), S_OK);
  EXPECT_EQ(pattern->put_PatternStartDate(Day(2026, 3, 10)), S_OK);
  EXPECT_EQ(Value(task, &ITask::get_DueDate), Day(2026, 3, 10));
  EXPECT_EQ(task->put_StartDate(Day(2026, 3, 2)), S_OK);
  EXPECT_EQ(pattern->put_PatternStartDate(Day(2026, 3, 3)), S_OK);
  EXPECT_EQ(Value(task, &ITask::get_StartDate), Day(2026, 3, 3));
  EXPECT_EQ(Value(task, &ITask::get_DueDate), Day(2026, 3, 10));
}

TEST_F(TaskItem, KeepsItsSeriesAndGivesItUp) {
  const ComPtr<ITask> task = NewTask(app_);
  EXPECT_EQ(task->put_DueDate(Day(2026, 3, 9)), S_OK);
  const ComPtr<IRecurrencePattern> pattern = PatternOf(task);
  EXPECT_EQ(pattern->put_RecurrenceType(olRecursMonthly), S_OK);
  EXPECT_EQ(pattern->put_Occurrences(3), S_OK);
  EXPECT_EQ(task->Save(), S_OK);
  EXPECT_EQ(Value(task, &ITask::get_IsRecurring), VARIANT_TRUE);

  const ComPtr<ITask> read = Reread(task);
  EXPECT_EQ(Value(read, &ITask::get_IsRecurring), VARIANT_TRUE);
  EXPECT_EQ(Value(PatternOf(read), &IRecurrencePattern::get_PatternEndDate), Day(2026, 5, 9));
  EXPECT_EQ(read->ClearRecurrencePattern(), S_OK);
  EXPECT_EQ(read->Save(), S_OK);
  EXPECT_EQ(Value(Reread(task), &ITask::get_IsRecurring), VARIANT_FALSE);
}

TEST_F(TaskItem, HasNoExceptionsInItsPattern) {
  const ComPtr<ITask> task = NewTask(app_);
  EXPECT_EQ(task->put_DueDate(Day(2026, 3, 9)), S_OK);
  const ComPtr<IRecurrencePattern> pattern = PatternOf(task);
  EXPECT_EQ(task->Save(), S_OK);
  EXPECT_EQ(ExceptionsOf(pattern), std::vector<std::string>{});
  EXPECT_FALSE(OccurrenceAt(pattern, Day(2026, 3, 9)));
}

}  // namespace
}  // namespace ce::host::testing
