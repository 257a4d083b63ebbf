#include "agent/pim_export/appointment_to_xml.h"

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
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class AppointmentToXml : public FakeCalendarTest {
 protected:
  static std::string Document(IAppointment* appointment, HRESULT expected = S_OK) {
    const TestDocument document;
    EXPECT_EQ(AddAppointmentToXML(document.document(), document.root(), appointment), expected);
    return document.Text();
  }
  // What stands under the root.
  std::string Record(HRESULT expected = S_OK) {
    const TestDocument document;
    EXPECT_EQ(AddAppointmentToXML(document.document(), document.root(), item_.get()), expected);
    return document.Inner();
  }
  // What stands in the element of a changed occurrence.
  std::string Reduced(HRESULT expected = S_OK) {
    const TestDocument document;
    ComPtr<IXMLDOMElement> element;
    EXPECT_EQ(
        AddAppointmentFieldsToXML(document.document(), item_.get(), u"X", element.put(), false),
        expected);
    EXPECT_TRUE(element);
    if (!element) return {};
    EXPECT_EQ(document.root()->appendChild(element.get(), nullptr), S_OK);
    return document.Inner();
  }
  void MakeAllDay(LONG duration) {
    item().AllDayEvent = VARIANT_TRUE;
    item().Start = DateOf(2008, 2, 15);
    item().Duration = duration;
  }
  FakePattern& MakeRecurring() {
    item().IsRecurring = VARIANT_TRUE;
    return pattern();
  }
  void FillFully() {
    item().Subject = u"Review & <plan>";
    item().Location = u"Room \"7\"";
    item().Categories = u"Business, Personal";
    item().ReminderSet = VARIANT_TRUE;
    item().Sensitivity = olPrivate;
    item().Start = DateOf(2008, 2, 15, 9, 5);
    item().End = DateOf(2008, 2, 15, 10, 35);
    item().Duration = 90;
    item().BusyStatus = olOutOfOffice;
    item().Body = u"First line\r\nSecond \U0001F600 line";
    item().BodyInk = kInkNote;
  }
  // What stands in the element of this name in the record, or "none".
  std::string Value(const std::string& record, const std::string& name) {
    const std::size_t begin = record.find("<" + name + ">");
    if (begin == std::string::npos) return "none";
    const std::size_t text = begin + name.size() + 2;
    return record.substr(text, record.find('<', text) - text);
  }
};

TEST_F(AppointmentToXml, WritesEveryFieldInItsPlace) {
  UseZone("Europe/Berlin");
  FillFully();
  FakePattern& pattern = MakeRecurring();
  pattern.RecurrenceType = olRecursWeekly;
  pattern.DayOfWeekMask = 42;
  EXPECT_TRUE(EqualsGolden("appointment_full.xml", Document(item_.get())));
}

TEST_F(AppointmentToXml, WritesOnlyTheBusyStatusOfAnAppointmentWithoutValues) {
  EXPECT_TRUE(EqualsGolden("appointment_minimal.xml", Document(item_.get())));
}

TEST_F(AppointmentToXml, WritesAnAllDayEventWithLocalDates) {
  UseZone("Europe/Berlin");
  item().Subject = u"Holiday";
  MakeAllDay(2880);
  EXPECT_TRUE(EqualsGolden("appointment_all_day.xml", Document(item_.get())));
}

TEST_F(AppointmentToXml, WritesTheReducedFormWithoutWhatBelongsToTheSeries) {
  FillFully();
  MakeRecurring();
  EXPECT_EQ(Reduced(),
            "<X><SUBJECT>Review &amp; &lt;plan&gt;</SUBJECT><LOCATION>Room \"7\"</LOCATION>"
            "<EVENT_START>20080215T090500</EVENT_START><EVENT_END>20080215T103500</EVENT_END>"
            "<BusyStatus>3</BusyStatus><NOTES>First line\r\nSecond \xF0\x9F\x98\x80 line</NOTES>"
            "<BodyInk>TRUE</BodyInk></X>");
}

TEST_F(AppointmentToXml, ReadsNothingOfTheSeriesInTheReducedForm) {
  for (const char* call :
       {"Categories", "IsRecurring", "ReminderSet", "ReminderMinutesBeforeStart", "Sensitivity"}) {
    const auto plan = FaultPlan::FailCalls(std::string("IAppointment::get_") + call, 0x80004005);
    Reduced();
    EXPECT_FALSE(plan.fired()) << call;
  }
}

TEST_F(AppointmentToXml, WritesLargeIdentifiersAsNegativeNumbers) {
  item().Oid = -16;
  EXPECT_THAT(Record(), StartsWith("<CALENDAR Oid=\"-16\">"));
}

TEST_F(AppointmentToXml, NeverWritesAFalseFlag) {
  EXPECT_THAT(Record(), Not(HasSubstr("FALSE")));
}

TEST_F(AppointmentToXml, SplitsTheCategories) {
  item().Categories = u"A,  B,,C";
  EXPECT_THAT(Record(), HasSubstr("<CATEGORIES><CATEGORY><Name>A</Name></CATEGORY>"
                                  "<CATEGORY><Name> B</Name></CATEGORY><CATEGORY/>"
                                  "<CATEGORY><Name>C</Name></CATEGORY></CATEGORIES>"));
}

TEST_F(AppointmentToXml, MarksOnlyAPrivateAppointment) {
  for (const LONG sensitivity : {0, 1, 3, -1}) {
    item().Sensitivity = sensitivity;
    EXPECT_THAT(Record(), Not(HasSubstr("Private"))) << sensitivity;
  }
  item().Sensitivity = 2;
  EXPECT_THAT(Record(), HasSubstr("<Private>TRUE</Private>"));
}

TEST_F(AppointmentToXml, KeepsTheMinutesOfAReminderThatIsNotSetToItself) {
  item().ReminderMinutesBeforeStart = 30;
  EXPECT_THAT(Record(), Not(HasSubstr("REMINDER")));
  EXPECT_THAT(Record(), Not(HasSubstr("ReminderMinutes")));
}

TEST_F(AppointmentToXml, WritesTheMinutesBehindTheReminder) {
  item().ReminderSet = VARIANT_TRUE;
  item().ReminderMinutesBeforeStart = 0;
  EXPECT_THAT(Record(),
              HasSubstr("<HAS_REMINDER>TRUE</HAS_REMINDER><ReminderMinutes>0</ReminderMinutes>"));
}

TEST_F(AppointmentToXml, PutsTheRecurrenceDirectlyBehindItsFlag) {
  MakeRecurring();
  EXPECT_THAT(Record(), StartsWith("<CALENDAR Oid=\"7\"><IS_RECURRING>TRUE</IS_RECURRING>"
                                   "<RECURRENCE><TYPE>DAILY</TYPE><END_DATE>0</END_DATE>"
                                   "</RECURRENCE>"));
}

TEST_F(AppointmentToXml, WritesTheExceptionsOfASeries) {
  MakeRecurring().AddDeleted(DateOf(2008, 2, 16));
  EXPECT_THAT(Record(), HasSubstr("<DeletedException>20080216T000000</DeletedException>"));
}

TEST_F(AppointmentToXml, FailsForASeriesWithoutAPattern) {
  item().IsRecurring = VARIANT_TRUE;
  item().Pattern.reset();
  EXPECT_EQ(Record(E_UNEXPECTED), "");
}

// Times.

TEST_F(AppointmentToXml, WritesTimesInUtcByTheRulesOfTheZone) {
  UseZone("Europe/Berlin");
  item().Start = DateOf(2008, 7, 1, 1, 30);
  item().End = DateOf(2008, 12, 1, 0, 30);
  EXPECT_THAT(Record(), HasSubstr("<EVENT_START>20080630T233000</EVENT_START>"
                                  "<EVENT_END>20081130T233000</EVENT_END>"));
}

struct TimesCase {
  DATE start;
  DATE end;
  LONG duration;
  const char* writtenStart;
  const char* writtenEnd;
};

TEST_F(AppointmentToXml, ReckonsTheTimeThatIsZeroFromTheOther) {
  const TimesCase kCases[] = {
      {DateOf(2008, 2, 15, 23, 30), 0.0, 0, "20080215T233000", "20080216T003000"},
      {DateOf(2008, 2, 28, 12), 0.0, 2 * 1440, "20080228T120000", "20080301T120000"},
      {0.0, DateOf(2008, 3, 1, 0, 30), 90, "20080229T230000", "20080301T003000"},
      {0.0, DateOf(2008, 3, 1, 10), 0, "20080301T090000", "20080301T100000"},
      {0.0, 0.0, 60, "18991230T000000", "18991230T000000"},
      {kNoDate, DateOf(2008, 2, 15), 60, "none", "20080215T000000"},
  };
  for (const TimesCase& times : kCases) {
    item().Start = times.start;
    item().End = times.end;
    item().Duration = times.duration;
    const std::string record = Record();
    EXPECT_EQ(Value(record, "EVENT_START"), times.writtenStart);
    EXPECT_EQ(Value(record, "EVENT_END"), times.writtenEnd);
  }
}

TEST_F(AppointmentToXml, FailsForADateThatCannotBeReckonedWith) {
  item().Start = 1.0e9;
  item().End = 0.0;
  EXPECT_EQ(Record(E_UNEXPECTED), "");
}

TEST_F(AppointmentToXml, FailsWhenAnyConversionFails) {
  item().Start = DateOf(2008, 2, 15);
  item().End = 0.0;
  for (const char* call : {"VariantTimeToSystemTime", "SystemTimeToFileTime",
                           "FileTimeToSystemTime", "SystemTimeToVariantTime"}) {
    const auto plan = FaultPlan::FailNthCall(call, 1, ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Record(E_UNEXPECTED), "") << call;
    EXPECT_TRUE(plan.fired()) << call;
  }
}

// All-day events.

TEST_F(AppointmentToXml, WritesTheDatesOfAnAllDayEvent) {
  MakeAllDay(1440);
  item().End = DateOf(2010, 1, 1);  // not used
  EXPECT_THAT(Record(), HasSubstr("<ALL_DAY_EVENT>TRUE</ALL_DAY_EVENT>"
                                  "<EVENT_START>20080215T000000</EVENT_START>"
                                  "<EVENT_END>20080215T000000</EVENT_END>"));
}

struct LastDayCase {
  DWORD version;
  bool recurring;
  LONG duration;
  const char* lastDay;
};

TEST_F(AppointmentToXml, CountsTheLastDayOfAnAllDayEventByTheSystemsVersion) {
  const LastDayCase kCases[] = {
      {5, false, 1440, "20080215T000000"}, {5, false, 2880, "20080216T000000"},
      {5, false, 1439, "20080214T000000"}, {5, false, 0, "20080214T000000"},
      {4, false, 1440, "20080215T000000"}, {4, false, 1439, "20080214T000000"},
      {4, true, 1440, "20080216T000000"},  {4, true, 1439, "20080215T000000"},
      {3, true, 1440, "20080215T000000"},  {5, true, 1440, "20080215T000000"},
      {6, true, 1440, "20080215T000000"},
  };
  for (const LastDayCase& day : kCases) {
    handheld_.SetOsVersion(day.version, 21);
    MakeAllDay(day.duration);
    item().IsRecurring = day.recurring ? VARIANT_TRUE : VARIANT_FALSE;
    EXPECT_EQ(Value(Record(), "EVENT_END"), day.lastDay)
        << day.version << day.recurring << day.duration;
  }
}

TEST_F(AppointmentToXml, TakesAChangedOccurrenceForASingleEventOnVersionFour) {
  handheld_.SetOsVersion(4, 21);
  MakeRecurring();
  MakeAllDay(1440);
  EXPECT_THAT(Reduced(), HasSubstr("<EVENT_END>20080215T000000</EVENT_END>"));
}

TEST_F(AppointmentToXml, WritesNoEndWhenTheSystemDoesNotTellItsVersion) {
  MakeAllDay(1440);
  {
    const auto plan = FaultPlan::FailCalls("GetVersionExW", ERROR_NOT_READY);
    EXPECT_THAT(Record(), HasSubstr("</EVENT_START><BusyStatus>"));
  }
  const auto plan = FaultPlan::FailCalls("GetVersionExW", static_cast<DWORD>(E_FAIL));
  EXPECT_EQ(Record(E_FAIL), "");
}

TEST_F(AppointmentToXml, DoesNotAskForTheVersionForATimedAppointment) {
  const auto plan = FaultPlan::FailCalls("GetVersionExW", ERROR_NOT_READY);
  Record();
  EXPECT_FALSE(plan.fired());
}

// Notes.

TEST_F(AppointmentToXml, ForgivesABodyThatCannotBeRead) {
  item().Subject = u"Kept";
  item().Body = u"lost";
  item().BodyInk = kInkNote;
  for (const DWORD error : {0x80004005u, 0x8007000Eu, 0x8000FFFFu}) {
    const auto plan = FaultPlan::FailCalls("IAppointment::get_Body", error);
    EXPECT_EQ(Record(),
              "<CALENDAR Oid=\"7\"><SUBJECT>Kept</SUBJECT><BusyStatus>2</BusyStatus>"
              "<BodyInk>TRUE</BodyInk></CALENDAR>");
  }
}

TEST_F(AppointmentToXml, FailsWhenTheNotesCannotBeWritten) {
  item().Body = u"note";
  const TestDocument document;
  // The record, its busy status, the notes.
  const auto plan = FaultPlan::FailNthCall("IXMLDOMDocument::createElement", 3, 0x80004005);
  EXPECT_EQ(AddAppointmentToXML(document.document(), document.root(), item_.get()), E_FAIL);
  EXPECT_EQ(document.Inner(), "");
}

TEST_F(AppointmentToXml, ForgivesInkThatTheDeviceLacks) {
  for (const DWORD error : {0x80004001u, 0x80004005u}) {
    const auto plan = FaultPlan::FailCalls("IAppointment::get_BodyInk", error);
    EXPECT_THAT(Record(), EndsWith("<BusyStatus>2</BusyStatus></CALENDAR>"));
  }
}

TEST_F(AppointmentToXml, FailsWhenInkFailsOtherwise) {
  const auto plan = FaultPlan::FailCalls("IAppointment::get_BodyInk", 0x8007000E);
  EXPECT_EQ(Record(E_OUTOFMEMORY), "");
}

TEST_F(AppointmentToXml, MarksOnlyABlockThatIsAnInkNote) {
  item().Body = u"{\\pwi and more";
  for (const std::string_view block : {"{\\pwi", "{\\rtf1 ", "\\pwi{ "}) {
    item().BodyInk = block;
    EXPECT_THAT(Record(), Not(HasSubstr("BodyInk"))) << block;
  }
}

// Failures.

TEST_F(AppointmentToXml, AppendsNoUnfinishedRecord) {
  FillFully();
  MakeRecurring();
  for (const char* call : {"get_Oid", "get_Subject", "get_Location", "get_AllDayEvent",
                           "get_Categories", "get_IsRecurring", "GetRecurrencePattern",
                           "get_ReminderSet", "get_ReminderMinutesBeforeStart", "get_Sensitivity",
                           "get_Duration", "get_Start", "get_End", "get_BusyStatus"}) {
    const auto plan = FaultPlan::FailCalls(std::string("IAppointment::") + call, 0x80004005);
    EXPECT_EQ(Record(E_FAIL), "") << call;
    EXPECT_TRUE(plan.fired()) << call;
  }
}

TEST_F(AppointmentToXml, HandsAnUnfinishedElementOut) {
  item().Subject = u"Ada";
  item().Location = u"never read";
  const auto plan = FaultPlan::FailCalls("IAppointment::get_Location", 0x80004005);
  EXPECT_EQ(Reduced(E_FAIL), "<X><SUBJECT>Ada</SUBJECT></X>");
}

TEST_F(AppointmentToXml, HandsNothingOutWithoutAnElement) {
  const TestDocument document;
  const auto plan = FaultPlan::FailCalls("IXMLDOMDocument::createElement", 0x80004005);
  ComPtr<IXMLDOMElement> element;
  EXPECT_EQ(AddAppointmentFieldsToXML(document.document(), item_.get(), u"X", element.put(), true),
            E_FAIL);
  EXPECT_FALSE(element);
}

TEST_F(AppointmentToXml, SetsTheIdentifierLastOnARecordThatIsInTheTree) {
  const auto plan = FaultPlan::FailCalls("IXMLDOMDocument::createAttribute", 0x80004005);
  EXPECT_EQ(Record(E_FAIL), "<CALENDAR><BusyStatus>2</BusyStatus></CALENDAR>");
}

TEST_F(AppointmentToXml, RefusesNullPointers) {
  const TestDocument document;
  EXPECT_EQ(AddAppointmentToXML(document.document(), document.root(), nullptr), E_POINTER);
  EXPECT_EQ(AddAppointmentToXML(document.document(), nullptr, item_.get()), E_POINTER);
  EXPECT_EQ(AddAppointmentToXML(nullptr, document.root(), item_.get()), E_POINTER);
  EXPECT_EQ(document.Inner(), "");
}

TEST_F(AppointmentToXml, LogsItsSteps) {
  item().Subject = u"Review";
  MakeRecurring();
  SwitchLogOn();
  Record();
  EXPECT_THAT(LogMessages(),
              ElementsAre("AddAppointmentToXML", "Got Subject Review", "AddRecurrenceToChild",
                          "Daily", "Exit AddAppointmentToXML hr = 0x00000000"));
}

TEST_F(AppointmentToXml, LogsItsFailure) {
  SwitchLogOn();
  {
    const auto plan = FaultPlan::FailCalls("IAppointment::get_Subject", 0x80004005);
    Record(E_FAIL);
  }
  EXPECT_THAT(LogMessages(),
              ElementsAre("AddAppointmentToXML", "Exit AddAppointmentToXML hr = 0x80004005"));
}

}  // namespace
}  // namespace corvane::testing
