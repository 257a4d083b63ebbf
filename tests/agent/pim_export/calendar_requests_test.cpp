// Downloads and deletes of the handheld's own appointments and tasks.
#include <gmock/gmock.h>

#include "agent/pim_export/download_requests.h"
#include "handheld/base/fault.h"
#include "tests/support/golden.h"
#include "tests/support/sample_calendar.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr DWORD kAppointments = 0;
constexpr DWORD kTasks = 2;

class CalendarRequests : public CalendarTest {
 protected:
  static DownloadAnswer All(DWORD kind) { return RunDownload(DownloadAllPIMRecords, Word(kind)); }
  static DownloadAnswer Specific(DWORD kind, const std::vector<LONG>& oids) {
    return RunDownload(DownloadSpecificPIMRecords, ChosenRecords(kind, oids));
  }
  static std::vector<std::size_t> Sizes(const DownloadAnswer& answer) {
    return testing::Sizes(answer, {"<CALENDAR ", "<TASK "});
  }
  void AddItems(int count) {
    for (int index = 1; index <= count; ++index) {
      appointments().AddNamed(Wide("A" + std::to_string(index)));
      tasks().AddNamed(Wide("T" + std::to_string(index)));
    }
  }
};

TEST_F(CalendarRequests, SendAStoredSeriesWithItsExceptions) {
  UseZone("Europe/Berlin");
  AddSeries(appointments());
  const DownloadAnswer answer = All(kAppointments);
  ASSERT_EQ(answer.documents.size(), 1u);
  EXPECT_TRUE(EqualsGolden("appointment_series.xml", answer.documents[0]));
}

// The zone as it is when a request comes, not as one before has seen it.
TEST_F(CalendarRequests, SendTimesByTheZoneOfTheMoment) {
  const LONG oid = appointments().Add(
      [](IAppointment& item) { EXPECT_EQ(item.put_Start(DateOf(2008, 2, 15, 12)), S_OK); });
  for (const auto& [zone, start] :
       {std::pair("UTC", "20080215T120000"), std::pair("America/New_York", "20080215T170000")}) {
    handheld_.SetZone(zone);
    EXPECT_THAT(All(kAppointments).documents, ElementsAre(HasSubstr(start)));
    handheld_.SetZone("Asia/Tokyo");
    EXPECT_THAT(Specific(kAppointments, {oid}).documents,
                ElementsAre(HasSubstr("20080215T030000")));
  }
}

TEST_F(CalendarRequests, SendAStoredRecurringTask) {
  UseZone("Europe/Berlin");
  tasks().Add([](ITask& item) {
    FillFully(item);
    MakeWeekly(item, 6);
  });
  const DownloadAnswer answer = All(kTasks);
  ASSERT_EQ(answer.documents.size(), 1u);
  EXPECT_TRUE(EqualsGolden("task_recurring.xml", answer.documents[0]));
}

TEST_F(CalendarRequests, SendFiveRecordsToADocument) {
  AddItems(11);
  EXPECT_THAT(Sizes(All(kAppointments)), ElementsAre(5, 5, 1));
  EXPECT_THAT(Sizes(All(kTasks)), ElementsAre(5, 5, 1));
}

TEST_F(CalendarRequests, KeepTheKindsApart) {
  AddItems(1);
  EXPECT_THAT(All(kAppointments).documents.at(0), HasSubstr("<SUBJECT>A1</SUBJECT>"));
  EXPECT_THAT(All(kTasks).documents.at(0), HasSubstr("<SUBJECT>T1</SUBJECT>"));
}

TEST_F(CalendarRequests, AnswerAnItemOfAnotherKindWithAnError) {
  const LONG appointment = appointments().AddNamed(u"A");
  const LONG task = tasks().AddNamed(u"T");
  const std::string wrong = "<Value>-2147221496</Value>";
  EXPECT_THAT(Specific(kAppointments, {task}).documents.at(0), HasSubstr(wrong));
  EXPECT_THAT(Specific(kTasks, {appointment}).documents.at(0), HasSubstr(wrong));
  EXPECT_THAT(Specific(1, {appointment}).documents.at(0), HasSubstr(wrong));
}

TEST_F(CalendarRequests, EndAtAnAppointmentThatFails) {
  AddItems(7);
  const auto plan = FaultPlan::FailNthCall("IAppointment::get_Subject", 7, 0x80004005);
  const DownloadAnswer answer = All(kAppointments);
  EXPECT_THAT(Sizes(answer), ElementsAre(5));
  EXPECT_TRUE(answer.complete);
  EXPECT_EQ(answer.status, E_FAIL);
}

TEST_F(CalendarRequests, LeaveNothingOfAFailedAppointmentBesideItsError) {
  const LONG oid = appointments().AddNamed(u"A");
  const auto plan = FaultPlan::FailCalls("IAppointment::get_BusyStatus", 0x80004005);
  EXPECT_EQ(
      Body(Specific(kAppointments, {oid}).documents.at(0)),
      "<root><Error Oid=\"" + std::to_string(oid) + "\"><Value>-2147467259</Value></Error></root>");
}

TEST_F(CalendarRequests, KeepABegunTaskBesideItsError) {
  const LONG oid = tasks().AddNamed(u"T");
  const std::string tag = " Oid=\"" + std::to_string(oid) + "\">";
  const auto plan = FaultPlan::FailCalls("ITask::get_Importance", 0x80004005);
  EXPECT_EQ(Body(Specific(kTasks, {oid}).documents.at(0)),
            "<root><TASK" + tag + "<SUBJECT>T</SUBJECT></TASK><Error" + tag +
                "<Value>-2147467259</Value></Error></root>");
}

TEST_F(CalendarRequests, LogTheExportersByTheirNames) {
  const LONG appointment = appointments().AddNamed(u"A");
  const LONG task = tasks().AddNamed(u"T");
  SwitchLogOn();
  All(kAppointments);
  All(kTasks);
  Specific(kAppointments, {appointment});
  Specific(kTasks, {task});
  const std::vector<std::string> messages = LogMessages();
  EXPECT_THAT(messages, Contains("AddAppointmentToXML returned 0").Times(1));
  EXPECT_THAT(messages, Contains("AddTaskToXML returned 0").Times(2));
  EXPECT_THAT(messages, Contains("kPIMDataAppointment returned 0").Times(1));
}

TEST_F(CalendarRequests, DeleteAllAppointmentsAndNothingElse) {
  AddItems(3);
  AddSeries(appointments());
  store_->AddNamed(u"contact");
  EXPECT_EQ(DeleteKind(kAppointments), S_OK);
  EXPECT_THAT(appointments().Oids(), IsEmpty());
  EXPECT_EQ(tasks().Oids().size(), 3u);
  EXPECT_EQ(store_->Oids().size(), 1u);
}

TEST_F(CalendarRequests, DeleteAllTasksAndNothingElse) {
  AddItems(3);
  EXPECT_EQ(DeleteKind(kTasks), S_OK);
  EXPECT_THAT(tasks().Oids(), IsEmpty());
  EXPECT_EQ(appointments().Oids().size(), 3u);
}

TEST_F(CalendarRequests, StopDeletingAtTheFirstFailureFromTheEnd) {
  AddItems(3);
  const std::vector<LONG> appointmentOids = appointments().Oids();
  const std::vector<LONG> taskOids = tasks().Oids();
  {
    const auto plan = FaultPlan::FailNthCall("IAppointment::Delete", 2, 0x80004005);
    EXPECT_EQ(DeleteKind(kAppointments), E_FAIL);
  }
  {
    const auto plan = FaultPlan::FailNthCall("ITask::Delete", 3, 0x80004005);
    EXPECT_EQ(DeleteKind(kTasks), E_FAIL);
  }
  EXPECT_THAT(appointments().Oids(), ElementsAre(appointmentOids[0], appointmentOids[1]));
  EXPECT_THAT(tasks().Oids(), ElementsAre(taskOids[0]));
}

}  // namespace
}  // namespace corvane::testing
