// Downloads and deletes of appointments and tasks.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/item_store.h"
#include "tests/support/wire/agent_process.h"

namespace corvane::testing {
namespace {

using ce::IAppointment;
using ce::IRecurrencePattern;
using ce::ITask;

using Counts = std::vector<std::size_t>;

class CalendarWire : public WireTest {
 protected:
  // Before the agent is started.
  void FillHandheld(const std::function<void()>& fill) {
    const auto opened = ce::host::Handheld::Open(handheld().path(), "a test");
    ce::host::Handheld::MakeCurrent(opened.get());
    fill();
    ce::host::Handheld::MakeCurrent(nullptr);
  }
  std::vector<std::uint32_t> AddItems(int appointments, int tasks) {
    std::vector<std::uint32_t> oids;
    FillHandheld([&] {
      AppointmentStore appointmentStore;
      TaskStore taskStore;
      while (appointments-- > 0) oids.push_back(Unsigned(appointmentStore.AddNamed(u"Meet")));
      while (tasks-- > 0) oids.push_back(Unsigned(taskStore.AddNamed(u"Do")));
    });
    return oids;
  }
  static std::uint32_t Unsigned(ce::LONG oid) { return static_cast<std::uint32_t>(oid); }

  Download All(std::uint32_t kind) { return CallDownload("DownloadAllPIMRecords", Word(kind)); }
  Download Specific(std::uint32_t kind, const std::vector<std::uint32_t>& oids) {
    std::string input = Word(kind);
    for (const std::uint32_t oid : oids) input += Word(oid);
    return CallDownload("DownloadSpecificPIMRecords", input);
  }
  // The only record of a kind: what stands under the root of the only document.
  std::string OnlyRecord(std::uint32_t kind) {
    const Download download = All(kind);
    EXPECT_EQ(download.finalStatus, 0u);
    EXPECT_EQ(download.documents.size(), 1u);
    if (download.documents.size() != 1) return {};
    const std::string& document = download.documents[0];
    const std::string begin = R"(<?XML version="1.0" encoding="UTF-8"?><root>)";
    const std::string end = "</root>";
    if (!document.starts_with(begin) || !document.ends_with(end)) return document;
    return document.substr(begin.size(), document.size() - begin.size() - end.size());
  }
  static Counts Sizes(const Download& download, std::string_view name) {
    Counts sizes;
    for (const std::string& document : download.documents)
      sizes.push_back(CountElements(document, name));
    return sizes;
  }
  static void ExpectOnlyTrailer(const Download& download) {
    EXPECT_TRUE(download.documents.empty());
    EXPECT_EQ(download.finalStatus, 0u);
    EXPECT_EQ(download.rest, "");
  }
  BufferedReply Delete(std::uint32_t kind) {
    return CallBuffered({.function = "DeleteAllPIMRecords", .input = Word(kind)});
  }
};

TEST_F(CalendarWire, SendsOnlyTheTrailerForEmptyFolders) {
  ExpectOnlyTrailer(All(kAppointments));
  ExpectOnlyTrailer(All(kTasks));
}

TEST_F(CalendarWire, SendsFiveRecordsToADocument) {
  AddItems(12, 6);
  const Download appointments = All(kAppointments);
  EXPECT_EQ(Sizes(appointments, "CALENDAR"), (Counts{5, 5, 2}));
  EXPECT_EQ(Sizes(appointments, "TASK"), (Counts{0, 0, 0}));
  EXPECT_EQ(appointments.finalStatus, 0u);
  EXPECT_EQ(appointments.rest, "");
  EXPECT_EQ(Sizes(All(kTasks), "TASK"), (Counts{5, 1}));
}

TEST_F(CalendarWire, SendsTheFirstOfChosenRecordsAlone) {
  const std::vector<std::uint32_t> oids = AddItems(7, 0);
  const Download download = Specific(kAppointments, oids);
  EXPECT_EQ(Sizes(download, "CALENDAR"), (Counts{1, 5, 1}));
  std::string all;
  for (const std::string& document : download.documents) all += document;
  EXPECT_EQ(OidsOf(all), oids);
  EXPECT_EQ(download.rest, "");
}

TEST_F(CalendarWire, WritesAnAppointmentByteForByte) {
  settings_.zone = "Europe/Berlin";
  settings_.firstOid = 0x80000001;
  FillHandheld([] {
    AppointmentStore().Add([](IAppointment& item) {
      SetText(item, &IAppointment::put_Subject, u"Review & <plan>");
      SetText(item, &IAppointment::put_Location, u"Caf\u00E9");
      SetText(item, &IAppointment::put_Categories, u"Business, Personal");
      SetText(item, &IAppointment::put_Body, u"one\r\ntwo");
      EXPECT_EQ(item.put_Start(DateOf(2008, 2, 15, 9, 5)), 0);
      EXPECT_EQ(item.put_End(DateOf(2008, 2, 15, 10, 35)), 0);
      EXPECT_EQ(item.put_ReminderSet(ce::VARIANT_TRUE), 0);
      EXPECT_EQ(item.put_ReminderMinutesBeforeStart(30), 0);
      EXPECT_EQ(item.put_Sensitivity(2), 0);
      EXPECT_EQ(item.put_BusyStatus(3), 0);
      SetInk(item, std::string_view("{\\pwi\x01", 6));
    });
  });
  EXPECT_EQ(OnlyRecord(kAppointments),
            "<CALENDAR Oid=\"-2147483647\"><SUBJECT>Review &amp; &lt;plan&gt;</SUBJECT>"
            "<LOCATION>Caf\xC3\xA9</LOCATION><CATEGORIES><CATEGORY><Name>Business</Name></CATEGORY>"
            "<CATEGORY><Name>Personal</Name></CATEGORY></CATEGORIES>"
            "<HAS_REMINDER>TRUE</HAS_REMINDER><ReminderMinutes>30</ReminderMinutes>"
            "<Private>TRUE</Private><EVENT_START>20080215T080500</EVENT_START>"
            "<EVENT_END>20080215T093500</EVENT_END><BusyStatus>3</BusyStatus>"
            "<NOTES>one\r\ntwo</NOTES><BodyInk>TRUE</BodyInk></CALENDAR>");
}

void MakeWeekly(IAppointment& item, ce::LONG days, ce::LONG occurrences) {
  ce::ComPtr<IRecurrencePattern> pattern;
  ASSERT_EQ(item.GetRecurrencePattern(pattern.put()), 0);
  EXPECT_EQ(pattern->put_RecurrenceType(ce::olRecursWeekly), 0);
  EXPECT_EQ(pattern->put_DayOfWeekMask(days), 0);
  EXPECT_EQ(pattern->put_Interval(2), 0);
  EXPECT_EQ(pattern->put_NoEndDate(ce::VARIANT_FALSE), 0);
  EXPECT_EQ(pattern->put_Occurrences(occurrences), 0);
}

TEST_F(CalendarWire, WritesASeriesWithItsExceptionsByteForByte) {
  FillHandheld([] {
    AppointmentStore store;
    const ce::LONG oid = store.Add([](IAppointment& item) {
      SetText(item, &IAppointment::put_Subject, u"Course");
      EXPECT_EQ(item.put_Start(DateOf(2008, 2, 18, 9)), 0);  // a Monday
      EXPECT_EQ(item.put_ReminderSet(ce::VARIANT_FALSE), 0);
      MakeWeekly(item, 42, 6);
    });
    const ce::ComPtr<IAppointment> item = store.Get(oid);
    ce::ComPtr<IRecurrencePattern> pattern;
    ASSERT_EQ(item->GetRecurrencePattern(pattern.put()), 0);
    ce::ComPtr<IAppointment> occurrence;
    ASSERT_EQ(pattern->GetOccurrence(DateOf(2008, 3, 3, 9), occurrence.put()), 0);
    EXPECT_EQ(occurrence->Delete(), 0);
    ASSERT_EQ(pattern->GetOccurrence(DateOf(2008, 2, 20, 9), occurrence.put()), 0);
    SetText(*occurrence.get(), &IAppointment::put_Subject, u"Course, late");
    EXPECT_EQ(occurrence->put_Start(DateOf(2008, 2, 20, 14)), 0);
    EXPECT_EQ(occurrence->Save(), 0);
  });
  EXPECT_EQ(OnlyRecord(kAppointments),
            "<CALENDAR Oid=\"1\"><SUBJECT>Course</SUBJECT><IS_RECURRING>TRUE</IS_RECURRING>"
            "<RECURRENCE><TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>1, 3, 5</DAYS_OF_WEEK>"
            "<FREQUENCY>2</FREQUENCY><END_DATE>20080307T000000</END_DATE>"
            "<Occurrences>6</Occurrences><ChangedException><SUBJECT>Course, late</SUBJECT>"
            "<EVENT_START>20080220T140000</EVENT_START><EVENT_END>20080220T150000</EVENT_END>"
            "<BusyStatus>2</BusyStatus><OriginalDate>20080220T000000</OriginalDate>"
            "</ChangedException><DeletedException>20080303T000000</DeletedException></RECURRENCE>"
            "<EVENT_START>20080218T090000</EVENT_START><EVENT_END>20080218T100000</EVENT_END>"
            "<BusyStatus>2</BusyStatus></CALENDAR>");
}

// The end of a series of all-day events, by the version of the system.
class AllDayWire : public CalendarWire, public ::testing::WithParamInterface<int> {
 protected:
  std::string EndOf(bool recurring) {
    settings_.osMajor = static_cast<ce::DWORD>(GetParam());
    FillHandheld([&] {
      AppointmentStore().Add([&](IAppointment& item) {
        EXPECT_EQ(item.put_Start(DateOf(2008, 2, 18)), 0);
        EXPECT_EQ(item.put_AllDayEvent(ce::VARIANT_TRUE), 0);
        EXPECT_EQ(item.put_Duration(1440), 0);
        if (recurring) MakeWeekly(item, 2, 3);
      });
    });
    const std::string record = OnlyRecord(kAppointments);
    EXPECT_NE(record.find("<EVENT_START>20080218T000000</EVENT_START>"), std::string::npos);
    const std::size_t begin = record.find("<EVENT_END>") + 11;
    return record.substr(begin, record.find('<', begin) - begin);
  }
};

TEST_P(AllDayWire, EndsASingleEventOnItsLastDay) {
  EXPECT_EQ(EndOf(false), "20080218T000000");
}

TEST_P(AllDayWire, EndsASeriesADayLaterOnVersionFourAlone) {
  EXPECT_EQ(EndOf(true), GetParam() == 4 ? "20080219T000000" : "20080218T000000");
}

INSTANTIATE_TEST_SUITE_P(Version, AllDayWire, ::testing::Values(4, 5));

TEST_F(CalendarWire, WritesATaskByteForByte) {
  settings_.zone = "America/New_York";
  FillHandheld([] {
    TaskStore().Add([](ITask& item) {
      SetText(item, &ITask::put_Subject, u"Ship");
      SetText(item, &ITask::put_Body, u"one");
      EXPECT_EQ(item.put_StartDate(DateOf(2008, 2, 1)), 0);
      EXPECT_EQ(item.put_DueDate(DateOf(2008, 2, 15)), 0);
      EXPECT_EQ(item.put_ReminderTime(DateOf(2008, 2, 15, 9)), 0);
      EXPECT_EQ(item.put_ReminderSet(ce::VARIANT_TRUE), 0);
      EXPECT_EQ(item.put_Importance(0), 0);
      EXPECT_EQ(item.put_Complete(ce::VARIANT_TRUE), 0);
      EXPECT_EQ(item.put_DateCompleted(DateOf(2008, 2, 14)), 0);
    });
  });
  EXPECT_EQ(OnlyRecord(kTasks),
            "<TASK Oid=\"1\"><SUBJECT>Ship</SUBJECT><DUE_DATE>20080215T000000</DUE_DATE>"
            "<HAS_REMINDER>TRUE</HAS_REMINDER><ReminderTime>20080215T140000</ReminderTime>"
            "<ReminderMinutes>-540</ReminderMinutes><StartDate>20080201T000000</StartDate>"
            "<COMPLETED>TRUE</COMPLETED><DateCompleted>20080214T000000</DateCompleted>"
            "<PRIORITY>4</PRIORITY><NOTES>one</NOTES></TASK>");
}

TEST_F(CalendarWire, ReportsWhatIsNotThereAndGoesOn) {
  const std::vector<std::uint32_t> oids = AddItems(1, 1);
  const Download download = Specific(kAppointments, {0xFFFFFFF0, oids[1], oids[0]});
  ASSERT_EQ(download.documents.size(), 2u);
  EXPECT_NE(download.documents[0].find(
                "<root><Error Oid=\"-16\"><Value>-2147024809</Value></Error></root>"),
            std::string::npos)
      << download.documents[0];
  // A task is no appointment.
  EXPECT_NE(download.documents[1].find("<Value>-2147221496</Value></Error><CALENDAR Oid=\"1\">"),
            std::string::npos)
      << download.documents[1];
  EXPECT_EQ(download.finalStatus, 0u);
}

TEST_F(CalendarWire, DeletesAllAppointmentsAndNothingElse) {
  AddItems(7, 2);
  AddContacts(1);
  const BufferedReply reply = Delete(kAppointments);
  EXPECT_EQ(reply.status, 0u);
  EXPECT_EQ(reply.outputCount, 0u);
  ExpectOnlyTrailer(All(kAppointments));
  EXPECT_EQ(Sizes(All(kTasks), "TASK"), (Counts{2}));
  EXPECT_EQ(Sizes(All(kContacts), "CONTACT"), (Counts{1}));
}

TEST_F(CalendarWire, DeletesAllTasksAndNothingElse) {
  AddItems(2, 7);
  EXPECT_EQ(Delete(kTasks).status, 0u);
  ExpectOnlyTrailer(All(kTasks));
  EXPECT_EQ(Sizes(All(kAppointments), "CALENDAR"), (Counts{2}));
}

}  // namespace
}  // namespace corvane::testing
