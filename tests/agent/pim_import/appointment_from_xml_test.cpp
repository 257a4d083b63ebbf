#include "agent/pim_import/appointment_from_xml.h"

#include <gmock/gmock.h>

#include "tests/support/calendar_upload_runs.h"
#include "tests/support/fake_calendar.h"
#include "tests/support/parsed_record.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;
using ::testing::Not;

// What reading does to an item, step by step.
class AppointmentSteps : public FakeCalendarTest {
 protected:
  HRESULT Parse(const std::string& children, bool fullRecord = true) {
    list_.calls.clear();
    const ParsedRecord record(AppointmentRecord(children));
    return ParseXMLAppointmentToRecord(record.get(), &item(), fullRecord);
  }
  std::vector<std::string> Parsed(const std::string& children, HRESULT expected = S_OK) {
    EXPECT_EQ(Parse(children), expected) << children;
    return list_.calls;
  }
};

const std::string kEveryParsedField =
    Element("LOCATION", "l") + Element("CATEGORIES", "<CATEGORY><Name>A</Name></CATEGORY>") +
    Element("ReminderMinutes", "30") + Element("HAS_REMINDER", "TRUE") +
    Element("Private", "TRUE") + TimedEvent() + Element("BusyStatus", "3") + Element("NOTES", "n") +
    Element("SUBJECT", "s");

TEST_F(AppointmentSteps, AreThoseOfTheFieldsInOrder) {
  EXPECT_THAT(Parsed(kEveryParsedField),
              ElementsAre("put_Subject s", "get_Body", "put_Body n", "put_AllDayEvent FALSE",
                          "put_BusyStatus 3", "put_Start 2008-02-15 10:00:00",
                          "put_End 2008-02-15 11:00:00", "put_Sensitivity 2",
                          "put_ReminderSet TRUE", "put_ReminderMinutesBeforeStart 30",
                          "ClearRecurrencePattern", "put_Categories A", "put_Location l", "Save"));
}

TEST_F(AppointmentSteps, ClearWhatTheRecordLacks) {
  EXPECT_THAT(
      Parsed(""),
      ElementsAre("put_Subject", "get_Body", "put_AllDayEvent FALSE", "put_BusyStatus 0",
                  "put_Start none", "put_End none", "put_Sensitivity 0", "put_ReminderSet FALSE",
                  "ClearRecurrencePattern", "put_Categories", "put_Location", "Save"));
}

TEST_F(AppointmentSteps, AreFewerForAnOccurrence) {
  EXPECT_EQ(Parse(kEveryParsedField, false), S_OK);
  EXPECT_THAT(list_.calls,
              ElementsAre("put_Subject s", "get_Body", "put_Body n", "put_AllDayEvent FALSE",
                          "put_BusyStatus 3", "put_Start 2008-02-15 10:00:00",
                          "put_End 2008-02-15 11:00:00", "put_Location l", "Save"));
}

TEST_F(AppointmentSteps, SetTheSeriesBeforeAndItsExceptionsAfterTheItemIsSaved) {
  HaveOccurrences();
  EXPECT_THAT(Parsed(TimedEvent() + Recurring(Daily(Element("DeletedException", "20080216") +
                                                    Element("FREQUENCY", "2")))),
              ElementsAre("put_Subject", "get_Body", "put_AllDayEvent FALSE", "put_BusyStatus 0",
                          "put_Start 2008-02-15 10:00:00", "put_End 2008-02-15 11:00:00",
                          "put_Sensitivity 0", "put_ReminderSet FALSE", "GetRecurrencePattern",
                          "get_Exceptions", "get_Count", "put_RecurrenceType 0", "put_Interval 2",
                          "put_NoEndDate TRUE", "put_Categories", "put_Location", "Save",
                          "GetRecurrencePattern", "GetOccurrence 2008-02-16 10:00:00", "Delete"));
}

TEST_F(AppointmentSteps, ClearAndSaveASeriesThatHasExceptions) {
  pattern().AddDeleted(DateOf(2008, 2, 16));
  pattern().AddDeleted(DateOf(2008, 2, 17));
  SwitchLogOn();
  const auto calls = Parsed(TimedEvent() + Recurring(Daily()));
  const auto begin = std::ranges::find(calls, "GetRecurrencePattern");
  ASSERT_GE(calls.end() - begin, 7);
  EXPECT_THAT(
      std::vector<std::string>(begin, begin + 7),
      ElementsAre("GetRecurrencePattern", "get_Exceptions", "get_Count", "ClearRecurrencePattern",
                  "Save", "GetRecurrencePattern", "put_RecurrenceType 0"));
  EXPECT_THAT(ReaderMessages(LogMessages()),
              ElementsAre("Clearing old Recurrence Pattern", "Daily", "returning 0",
                          "bstrNodeName = TYPE", "returning 0x00000000"));
}

TEST_F(AppointmentSteps, StopAtTheFirstThatFails) {
  for (const char* call :
       {"put_Subject", "put_Body", "put_AllDayEvent", "put_BusyStatus", "put_Start", "put_End",
        "put_Sensitivity", "put_ReminderSet", "put_ReminderMinutesBeforeStart",
        "ClearRecurrencePattern", "put_Categories", "put_Location"}) {
    list_.answers = {{call, E_INVALIDARG}};
    const auto calls = Parsed(kEveryParsedField, E_INVALIDARG);
    EXPECT_TRUE(calls.back().starts_with(call)) << calls.back();
  }
  list_.answers = {{"Save", E_OUTOFMEMORY}};
  Parsed(kEveryParsedField, E_OUTOFMEMORY);
}

TEST_F(AppointmentSteps, StopWhenTheOldSeriesCannotBeCleared) {
  pattern().AddDeleted(DateOf(2008, 2, 16));
  for (const char* call :
       {"GetRecurrencePattern", "get_Exceptions", "get_Count", "ClearRecurrencePattern", "Save"}) {
    list_.answers = {{call, E_FAIL}};
    const auto calls = Parsed(TimedEvent() + Recurring(Daily()), E_FAIL);
    EXPECT_EQ(calls.back(), call);
  }
}

using AppointmentNotes = AppointmentSteps;

TEST_F(AppointmentNotes, AreNotWrittenBackUnchanged) {
  item().Body = u"a\r\nb";
  EXPECT_THAT(Parsed(Element("NOTES", "a\nb")), Not(Contains("put_Body a\r\nb")));
  EXPECT_THAT(Parsed(Element("NOTES", "a\nc")), Contains("put_Body a\r\nc"));
}

TEST_F(AppointmentNotes, AreClearedWhenMissingOrEmpty) {
  item().Body = u"text";
  EXPECT_THAT(Parsed(""), Contains("put_Body"));
  EXPECT_THAT(Parsed("<NOTES/>"), Contains("put_Body"));
}

TEST_F(AppointmentNotes, LeaveAnEmptyBodyUntouched) {
  EXPECT_THAT(Parsed(""), Not(Contains("put_Body")));
}

TEST_F(AppointmentNotes, AreWrittenWhenThePresentOnesCannotBeRead) {
  item().Body = u"text";
  list_.answers["get_Body"] = E_FAIL;
  EXPECT_THAT(Parsed(Element("NOTES", "text")), Contains("put_Body text"));
  EXPECT_THAT(Parsed(""), Not(Contains("put_Body"))) << "nothing to be cleared";
}

using AppointmentValues = AppointmentSteps;

TEST_F(AppointmentValues, AreTrueForExactlyTrue) {
  for (const char* text : {"true", "1", "TRUE ", "-1", ""}) {
    EXPECT_THAT(
        Parsed(Element("ALL_DAY_EVENT", text) + Element("Private", text) +
               Element("HAS_REMINDER", text) + Element("IS_RECURRING", text) + TimedEvent()),
        IsSupersetOf({"put_AllDayEvent FALSE", "put_Sensitivity 0", "put_ReminderSet FALSE",
                      "ClearRecurrencePattern"}))
        << text;
  }
}

TEST_F(AppointmentValues, PassTheBusyStatusThrough) {
  for (const char* status : {"0", "3", "7", "-1"}) {
    EXPECT_THAT(Parsed(Element("BusyStatus", status)),
                Contains("put_BusyStatus " + std::string(status)));
  }
  EXPECT_THAT(Parsed("<BusyStatus/>"), Contains("put_BusyStatus 0"));
}

TEST_F(AppointmentValues, ReadMinutesOnlyWithAReminder) {
  const std::string minutes = Element("ReminderMinutes", "45");
  for (const std::string reminder : {"", "<HAS_REMINDER>FALSE</HAS_REMINDER>"}) {
    EXPECT_THAT(Parsed(minutes + reminder), Not(Contains("put_ReminderMinutesBeforeStart 45")));
  }
  const std::string set = Element("HAS_REMINDER", "TRUE");
  EXPECT_THAT(Parsed(minutes + set), Contains("put_ReminderMinutesBeforeStart 45"));
  EXPECT_THAT(Parsed(set), Contains("put_ReminderMinutesBeforeStart 0"));
}

using AppointmentTimes = AppointmentSteps;

TEST_F(AppointmentTimes, AreConvertedFromUtc) {
  UseZone("Europe/Berlin");
  EXPECT_THAT(Parsed(TimedEvent()),
              IsSupersetOf({"put_Start 2008-02-15 11:00:00", "put_End 2008-02-15 12:00:00"}));
  EXPECT_THAT(
      Parsed(Element("EVENT_START", "20080715T220000") + Element("EVENT_END", "20080715T223059")),
      IsSupersetOf({"put_Start 2008-07-16 00:00:00", "put_End 2008-07-16 00:30:59"}));
}

TEST_F(AppointmentTimes, AreNotConvertedForAWholeDay) {
  UseZone("America/New_York");
  const auto calls = Parsed(AllDayEvent("20080215T000000", "20080216T000000"));
  EXPECT_THAT(calls, IsSupersetOf({"put_AllDayEvent TRUE", "put_Start 2008-02-15 00:00:00",
                                   "put_Duration 2880"}));
  for (const std::string& call : calls) EXPECT_FALSE(call.starts_with("put_End")) << call;
}

TEST_F(AppointmentTimes, AreNoneWhenMissingOrEmpty) {
  EXPECT_THAT(Parsed(Element("EVENT_START", "20080215T100000")), Contains("put_End none"));
  EXPECT_THAT(Parsed("<EVENT_END/><EVENT_START/>"),
              IsSupersetOf({"put_Start none", "put_End none"}));
}

TEST_F(AppointmentTimes, OfAWholeDayNeedTheirEnd) {
  for (const std::string end : {"", "<EVENT_END/>"}) {
    EXPECT_THAT(
        Parsed(Element("ALL_DAY_EVENT", "TRUE") + Element("EVENT_START", "20080301") + end, E_FAIL),
        Not(Contains("Save")));
  }
}

TEST_F(AppointmentTimes, FailTheRecordWhenTheyDoNotScan) {
  for (const char* text : {"soon", "20080215", "20080215T1030", "20080215 103000"}) {
    Parsed(Element("EVENT_START", text), E_INVALIDARG);
    Parsed(Element("EVENT_END", text), E_INVALIDARG);
  }
  Parsed(AllDayEvent("200802", "20080215"), E_INVALIDARG);
  Parsed(AllDayEvent("20080215", "x"), E_INVALIDARG);
}

TEST_F(AppointmentTimes, FailTheRecordWhenTheyDoNotExist) {
  for (const char* text : {"20080230T100000", "20080215T240000", "20080215T106000"}) {
    EXPECT_THAT(Parsed(Element("EVENT_START", text), ERROR_INVALID_PARAMETER),
                Not(Contains("Save")));
    EXPECT_THAT(Parsed(Element("EVENT_END", text), ERROR_INVALID_PARAMETER), Not(Contains("Save")));
  }
  Parsed(AllDayEvent("20080230", "20080301"), ERROR_INVALID_PARAMETER);
  Parsed(AllDayEvent("20080229", "2008-03-01"), ERROR_INVALID_PARAMETER);
}

struct WholeDays {
  DWORD major;
  bool recurring;
  const char* first;
  const char* last;
  LONG minutes;
};

TEST_F(AppointmentTimes, OfWholeDaysCountByTheSystemsVersion) {
  const WholeDays kCases[] = {
      {5, false, "20080301", "20080301", 1440},      {5, true, "20080301", "20080301", 1440},
      {4, false, "20080301", "20080301", 1440},      {4, true, "20080301", "20080301", 0},
      {3, true, "20080301", "20080301", 0},          {6, true, "20080301", "20080301", 1440},
      {5, false, "20080228", "20080302", 5760},      {4, true, "20080228", "20080302", 4320},
      {5, false, "20080301", "20080229", 0},         {4, true, "20080301", "20080229", -1440},
      {5, false, "19000101", "29991231", 578544480},
  };
  for (const WholeDays& days : kCases) {
    handheld_.SetOsVersion(days.major, 0);
    EXPECT_THAT(
        Parsed(AllDayEvent(days.first, days.last) + (days.recurring ? Recurring(Daily()) : "")),
        Contains("put_Duration " + std::to_string(days.minutes)))
        << days.major << days.recurring << days.first;
  }
}

TEST_F(AppointmentTimes, OfWholeDaysInAnOccurrenceCountAsOfASingleEvent) {
  for (const DWORD major : {4u, 5u}) {
    handheld_.SetOsVersion(major, 0);
    EXPECT_EQ(Parse(AllDayEvent("20080301", "20080302"), false), S_OK);
    EXPECT_THAT(list_.calls, Contains("put_Duration 2880")) << major;
  }
  handheld_.SetOsVersion(4, 0);
  EXPECT_EQ(Parse(AllDayEvent("20080301", "20080302") + Element("IS_RECURRING", "TRUE"), false),
            S_OK);
  EXPECT_THAT(list_.calls, Contains("put_Duration 1440")) << "unless it says otherwise";
}

TEST_F(AppointmentTimes, OfMoreDaysThanMinutesCanCountFail) {
  EXPECT_THAT(Parsed(AllDayEvent("19000101", "99991231"), E_INVALIDARG), Not(Contains("Save")));
  EXPECT_THAT(Parsed(AllDayEvent("99991231", "01000101"), E_INVALIDARG), Not(Contains("Save")));
}

TEST_F(AppointmentTimes, FailWhenTheSystemsVersionCannotBeAsked) {
  const auto plan = FaultPlan::FailCalls("GetVersionExW", ERROR_INVALID_PARAMETER);
  EXPECT_THAT(Parsed(AllDayEvent("20080301", "20080301"), ERROR_INVALID_PARAMETER),
              Not(Contains("Save")));
  Parsed(TimedEvent());
}

}  // namespace
}  // namespace corvane::testing
