// Appointments, tasks and exceptions fail once at each place where they can; what was answered must
// be true, and the store sound.
#include <functional>

#include "handheld/store/store_check.h"
#include "handheld/store/store_error.h"
#include "tests/handheld/outlook/calendar_support.h"
#include "tests/handheld/outlook/fault_walks.h"

namespace ce::host::testing {
namespace {

using corvane::testing::FailEachCall;

HRESULT Create(ComPtr<IPOutlookApp>& app, INT kind, ComPtr<IDispatch>& created) {
  RETURN_IF_FAILED(Open(app));
  ComPtr<IFolder> folder;
  RETURN_IF_FAILED(app->GetDefaultFolder(kind, folder.put()));
  ComPtr<IPOutlookItemCollection> items;
  RETURN_IF_FAILED(folder->get_Items(items.put()));
  return items->Add(created.put());
}

HRESULT AddSeries(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IDispatch> created;
  RETURN_IF_FAILED(Create(app, olFolderCalendar, created));
  ComPtr<IAppointment> item;
  RETURN_IF_FAILED(created->QueryInterface(IAppointment::kIid, item.put_void()));
  RETURN_IF_FAILED(item->put_Subject(nullptr));
  RETURN_IF_FAILED(item->put_AllDayEvent(VARIANT_FALSE));
  RETURN_IF_FAILED(item->put_BusyStatus(olFree));
  RETURN_IF_FAILED(item->put_Start(At(2026, 3, 2, 10)));
  RETURN_IF_FAILED(item->put_End(At(2026, 3, 2, 11)));
  RETURN_IF_FAILED(item->put_Sensitivity(olPrivate));
  RETURN_IF_FAILED(item->put_ReminderSet(VARIANT_TRUE));
  RETURN_IF_FAILED(item->put_ReminderMinutesBeforeStart(5));
  ComPtr<IRecurrencePattern> pattern;
  RETURN_IF_FAILED(item->GetRecurrencePattern(pattern.put()));
  RETURN_IF_FAILED(pattern->put_RecurrenceType(olRecursMonthNth));
  RETURN_IF_FAILED(pattern->put_Instance(2));
  RETURN_IF_FAILED(pattern->put_DayOfWeekMask(2));
  RETURN_IF_FAILED(pattern->put_Interval(1));
  RETURN_IF_FAILED(pattern->put_NoEndDate(VARIANT_FALSE));
  RETURN_IF_FAILED(pattern->put_Occurrences(5));
  RETURN_IF_FAILED(item->Save());
  ++accepted;
  return app->Logoff();
}

HRESULT AddTask(int& accepted) {
  ComPtr<IPOutlookApp> app;
  ComPtr<IDispatch> created;
  RETURN_IF_FAILED(Create(app, olFolderTasks, created));
  ComPtr<ITask> task;
  RETURN_IF_FAILED(created->QueryInterface(ITask::kIid, task.put_void()));
  RETURN_IF_FAILED(task->put_Subject(nullptr));
  RETURN_IF_FAILED(task->put_DueDate(Day(2026, 3, 2)));
  RETURN_IF_FAILED(task->put_ReminderTime(Day(2026, 3, 2)));
  RETURN_IF_FAILED(task->put_Importance(olImportanceHigh));
  RETURN_IF_FAILED(task->put_Complete(VARIANT_TRUE));
  ComPtr<IRecurrencePattern> pattern;
  RETURN_IF_FAILED(task->GetRecurrencePattern(pattern.put()));
  RETURN_IF_FAILED(pattern->put_PatternEndDate(Day(2026, 5, 2)));
  RETURN_IF_FAILED(task->Save());
  ++accepted;
  LONG oid = 0;
  RETURN_IF_FAILED(task->get_Oid(&oid));
  return app->Logoff();
}

// As a desktop's change of a series with exceptions is applied. Accepted: cleared, saved, one
// deleted, one changed.
HRESULT ReplaceSeries(LONG oid, int& accepted) {
  ComPtr<IPOutlookApp> app;
  RETURN_IF_FAILED(Open(app));
  ComPtr<IDispatch> found;
  RETURN_IF_FAILED(app->GetItemFromOid(oid, found.put()));
  ComPtr<IAppointment> item;
  RETURN_IF_FAILED(found->QueryInterface(IAppointment::kIid, item.put_void()));
  ComPtr<IRecurrencePattern> pattern;
  RETURN_IF_FAILED(item->GetRecurrencePattern(pattern.put()));
  ComPtr<IExceptions> exceptions;
  RETURN_IF_FAILED(pattern->get_Exceptions(exceptions.put()));
  INT count = 0;
  RETURN_IF_FAILED(exceptions->get_Count(&count));
  RETURN_IF_FAILED(item->ClearRecurrencePattern());
  RETURN_IF_FAILED(item->Save());
  ++accepted;
  RETURN_IF_FAILED(item->GetRecurrencePattern(pattern.put()));
  RETURN_IF_FAILED(pattern->put_RecurrenceType(olRecursDaily));
  RETURN_IF_FAILED(pattern->put_Occurrences(5));
  RETURN_IF_FAILED(item->Save());
  ++accepted;
  RETURN_IF_FAILED(item->GetRecurrencePattern(pattern.put()));
  ComPtr<IAppointment> occurrence;
  RETURN_IF_FAILED(pattern->GetOccurrence(At(2026, 3, 3, 10), occurrence.put()));
  RETURN_IF_FAILED(occurrence->Delete());
  ++accepted;
  RETURN_IF_FAILED(pattern->GetOccurrence(At(2026, 3, 4, 10), occurrence.put()));
  RETURN_IF_FAILED(occurrence->put_Start(At(2026, 3, 4, 12)));
  RETURN_IF_FAILED(occurrence->Save());
  ++accepted;
  return app->Logoff();
}

HRESULT ReadException(const ComPtr<IExceptions>& exceptions, INT index) {
  ComPtr<IException> exception;
  RETURN_IF_FAILED(exceptions->Item(index, exception.put()));
  DATE date = 0;
  RETURN_IF_FAILED(exception->get_OriginalDate(&date));
  VARIANT_BOOL deleted = VARIANT_FALSE;
  RETURN_IF_FAILED(exception->get_Deleted(&deleted));
  ComPtr<IAppointment> item;
  RETURN_IF_FAILED(exception->get_AppointmentItem(item.put()));
  if (!item) return S_OK;
  Bstr subject;
  return item->get_Subject(subject.put());
}

// Accepted: exceptions that were read.
HRESULT DownloadSeries(int& accepted) {
  ComPtr<IPOutlookApp> app;
  RETURN_IF_FAILED(Open(app));
  ComPtr<IFolder> folder;
  RETURN_IF_FAILED(app->GetDefaultFolder(olFolderCalendar, folder.put()));
  ComPtr<IPOutlookItemCollection> items;
  RETURN_IF_FAILED(folder->get_Items(items.put()));
  INT count = 0;
  RETURN_IF_FAILED(items->get_Count(&count));
  for (INT i = 1; i <= count; ++i) {
    ComPtr<IDispatch> found;
    RETURN_IF_FAILED(items->Item(i, found.put()));
    ComPtr<IAppointment> item;
    RETURN_IF_FAILED(found->QueryInterface(IAppointment::kIid, item.put_void()));
    ComPtr<IRecurrencePattern> pattern;
    RETURN_IF_FAILED(item->GetRecurrencePattern(pattern.put()));
    LONG type = 0;
    RETURN_IF_FAILED(pattern->get_RecurrenceType(&type));
    ComPtr<IExceptions> exceptions;
    RETURN_IF_FAILED(pattern->get_Exceptions(exceptions.put()));
    INT exceptionCount = 0;
    RETURN_IF_FAILED(exceptions->get_Count(&exceptionCount));
    for (INT k = 1; k <= exceptionCount; ++k) {
      RETURN_IF_FAILED(ReadException(exceptions, k));
      ++accepted;
    }
  }
  return app->Logoff();
}

HRESULT DeleteSeries(LONG oid, int& accepted) {
  ComPtr<IPOutlookApp> app;
  RETURN_IF_FAILED(Open(app));
  ComPtr<IDispatch> found;
  RETURN_IF_FAILED(app->GetItemFromOid(oid, found.put()));
  ComPtr<IAppointment> item;
  RETURN_IF_FAILED(found->QueryInterface(IAppointment::kIid, item.put_void()));
  RETURN_IF_FAILED(item->Delete());
  ++accepted;
  return app->Logoff();
}

class CalendarFaults : public HandheldTest {
 protected:
  void SetUp() override { LoggedOn(); }

  std::string Count(const std::string& table) {
    return QuerySql(*handheld_, ("SELECT count(*) FROM " + table).c_str());
  }

  // A weekly series with a changed and a deleted exception.
  LONG AddWithExceptions() {
    const auto app = LoggedOn();
    const auto item = NewAppointment(app);
    EXPECT_EQ(item->put_Start(At(2026, 3, 2, 10)), S_OK);
    const auto pattern = PatternOf(item);
    EXPECT_EQ(item->Save(), S_OK);
    EXPECT_EQ(OccurrenceAt(pattern, At(2026, 3, 9, 10))->Save(), S_OK);
    EXPECT_EQ(OccurrenceAt(pattern, At(2026, 3, 16, 10))->Delete(), S_OK);
    return Value(item, &IAppointment::get_Oid);
  }

  void Run(const std::function<HRESULT(int&)>& walk,
           const std::function<void(const Outcome&, const std::string&)>& verify) {
    const auto run = [&] {
      Outcome outcome;
      outcome.status = walk(outcome.accepted);
      return outcome;
    };
    const auto calls =
        FailEachCall(ERROR_DISK_FULL, run, [&](const Outcome& outcome, const std::string& call) {
          EXPECT_EQ(outcome.status, StatusOf(call));
          EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
          verify(outcome, call);
        });
    EXPECT_GT(calls, 10u);
  }
};

TEST_F(CalendarFaults, AnAddedSeriesIsStoredExactlyWhenSaveSucceeded) {
  int stored = 0;
  Run(AddSeries, [&](const Outcome& outcome, const std::string&) {
    stored += outcome.accepted;
    EXPECT_EQ(Count("appointments"), std::to_string(stored));
  });
}

TEST_F(CalendarFaults, AnAddedTaskIsStoredExactlyWhenSaveSucceeded) {
  int stored = 0;
  Run(AddTask, [&](const Outcome& outcome, const std::string&) {
    stored += outcome.accepted;
    EXPECT_EQ(Count("tasks"), std::to_string(stored));
  });
}

TEST_F(CalendarFaults, AReplacedSeriesHasExactlyTheExceptionsThatWereAccepted) {
  LONG oid = AddWithExceptions();
  Run([&](int& accepted) { return ReplaceSeries(oid, accepted); },
      [&](const Outcome& outcome, const std::string&) {
        const std::vector<std::string> expected[] = {{"2026-03-09 ", "-2026-03-16"},
                                                     {},
                                                     {},
                                                     {"-2026-03-03"},
                                                     {"-2026-03-03", "2026-03-04 "}};
        EXPECT_EQ(StoredExceptions(oid), expected[outcome.accepted]);
        const auto item = AppointmentByOid(LoggedOn(), oid);
        EXPECT_EQ(Value(item, &IAppointment::get_IsRecurring),
                  outcome.accepted == 1 ? VARIANT_FALSE : VARIANT_TRUE);
        if (outcome.accepted > 0) oid = AddWithExceptions();
      });
}

TEST_F(CalendarFaults, ADownloadEndsWithTheFailureOrIsWhole) {
  AddWithExceptions();
  AddWithExceptions();
  Run(DownloadSeries, [](const Outcome& outcome, const std::string& call) {
    if (call.empty()) {
      EXPECT_EQ(outcome.accepted, 4);
    }
  });
}

TEST_F(CalendarFaults, ADeletedSeriesTakesItsExceptionsWithItOrStaysWhole) {
  LONG oid = AddWithExceptions();
  Run([&](int& accepted) { return DeleteSeries(oid, accepted); },
      [&](const Outcome& outcome, const std::string&) {
        EXPECT_EQ(Count("exceptions"), outcome.accepted ? "0" : "2");
        if (outcome.accepted) oid = AddWithExceptions();
      });
}

TEST_F(CalendarFaults, ASaveThatFailedCanBeRepeated) {
  const auto app = LoggedOn();
  for (const char* call :
       {"IAppointment::Save", "sqlite3_step:begin", "sqlite3_step:write", "sqlite3_step:commit"}) {
    const auto item = NewAppointment(app);
    PatternOf(item);
    {
      const auto plan = FaultPlan::FailCalls(call, ERROR_DISK_FULL);
      EXPECT_EQ(item->Save(), kStoreDiskFull) << call;
    }
    EXPECT_EQ(Value(item, &IAppointment::get_Oid), 0);
    EXPECT_EQ(Value(item, &IAppointment::get_IsRecurring), VARIANT_FALSE);
    EXPECT_EQ(item->Save(), S_OK) << call;
    EXPECT_EQ(Value(item, &IAppointment::get_IsRecurring), VARIANT_TRUE);
  }
}

}  // namespace
}  // namespace ce::host::testing
