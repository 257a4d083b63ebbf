#include "agent/pim_import/exceptions_from_xml.h"

#include <gmock/gmock.h>

#include "tests/support/calendar_upload_runs.h"
#include "tests/support/fake_calendar.h"
#include "tests/support/parsed_record.h"

namespace corvane::testing {
namespace {

using namespace ce;
using host::FaultPlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

std::string Deleted(const std::string& date) {
  return Element("DeletedException", date);
}
std::string Changed(const std::string& date, const std::string& fields) {
  return Element("ChangedException", fields + Element("OriginalDate", date));
}

// A series that starts on 2008-02-15 at 10:30:05.
class ExceptionsFromXml : public FakeCalendarTest {
 protected:
  ExceptionsFromXml() { HaveOccurrences(); }
  HRESULT Parse(const std::string& children) {
    list_.calls.clear();
    const ParsedRecord element(Element("RECURRENCE", children));
    return ParseXMLExceptions(element.get(), &pattern(), start_);
  }
  std::vector<std::string> Parsed(const std::string& children, HRESULT expected = S_OK) {
    EXPECT_EQ(Parse(children), expected) << children;
    return list_.calls;
  }

  DATE start_ = DateOf(2008, 2, 15, 10, 30) + 5.0 / 86400;
};

TEST_F(ExceptionsFromXml, DeletesTheOccurrenceAtTheStartsTimeOfDay) {
  EXPECT_THAT(Parsed(Deleted("20080301T000000")),
              ElementsAre("GetOccurrence 2008-03-01 10:30:05", "Delete"));
}

TEST_F(ExceptionsFromXml, DeletesByTheWholeTextOfTheElement) {
  for (const char* date :
       {"2008<!-- c -->0301", "<![CDATA[2008]]>03<![CDATA[01]]>", "<b/>20080301",
        "\n<!---->  2008\n <!---->   03 01", "20080301T000000<!---->000000000"}) {
    EXPECT_THAT(Parsed(Deleted(date)), ElementsAre("GetOccurrence 2008-03-01 10:30:05", "Delete"))
        << date;
  }
}

TEST_F(ExceptionsFromXml, ChangesTheOccurrenceWithTheFieldsOfAnOccurrence) {
  EXPECT_THAT(
      Parsed(Changed("20080301T000000",
                     Element("SUBJECT", "s") + TimedEvent() + Element("LOCATION", "l") +
                         Element("CATEGORIES", "") + Element("Private", "TRUE") +
                         Element("HAS_REMINDER", "TRUE") + Element("IS_RECURRING", "TRUE"))),
      ElementsAre("GetOccurrence 2008-03-01 10:30:05", "put_Subject s", "get_Body",
                  "put_AllDayEvent FALSE", "put_BusyStatus 0", "put_Start 2008-02-15 10:00:00",
                  "put_End 2008-02-15 11:00:00", "put_Location l", "Save"));
}

TEST_F(ExceptionsFromXml, GoesThroughTheElementsInOrder) {
  EXPECT_THAT(
      Parsed(Daily() + Deleted("20080303") + "<!--c-->" + Changed("20080302", "") +
             Deleted("20080301")),
      ElementsAre("GetOccurrence 2008-03-03 10:30:05", "Delete",
                  "GetOccurrence 2008-03-02 10:30:05", "put_Subject", "get_Body",
                  "put_AllDayEvent FALSE", "put_BusyStatus 0", "put_Start none", "put_End none",
                  "put_Location", "Save", "GetOccurrence 2008-03-01 10:30:05", "Delete"));
}

TEST_F(ExceptionsFromXml, SkipsADateWithoutAnOccurrence) {
  pattern().Occurrence.reset();
  EXPECT_THAT(
      Parsed(Deleted("20080301") + Changed("20080302", "")),
      ElementsAre("GetOccurrence 2008-03-01 10:30:05", "GetOccurrence 2008-03-02 10:30:05"));
}

TEST_F(ExceptionsFromXml, FailsWhenTheOccurrencesCannotBeLookedUp) {
  list_.answers["GetOccurrence"] = E_OUTOFMEMORY;
  EXPECT_THAT(Parsed(Deleted("20080301") + Deleted("20080302"), E_OUTOFMEMORY),
              ElementsAre("GetOccurrence 2008-03-01 10:30:05"));
  EXPECT_EQ(Parse(Changed("20080301", "")), E_OUTOFMEMORY);
}

TEST_F(ExceptionsFromXml, FailsWhenTheOccurrenceCannotBeDeletedOrSaved) {
  list_.answers["Delete"] = E_FAIL;
  list_.answers["Save"] = E_OUTOFMEMORY;
  EXPECT_EQ(Parse(Deleted("20080301") + Changed("20080302", "")), E_FAIL);
  EXPECT_EQ(Parse(Changed("20080302", "") + Deleted("20080301")), E_OUTOFMEMORY);
}

TEST_F(ExceptionsFromXml, FailsAtADateThatDoesNotScan) {
  for (const char* date : {"", "soon", "200803"}) {
    EXPECT_THAT(Parsed(Deleted(date) + Deleted("20080301"), E_INVALIDARG), IsEmpty()) << date;
  }
  EXPECT_THAT(Parsed(Changed("soon", ""), E_INVALIDARG), IsEmpty());
}

TEST_F(ExceptionsFromXml, FailsAtADateThatDoesNotExist) {
  EXPECT_THAT(Parsed(Deleted("20080231") + Deleted("20080301"), ERROR_INVALID_PARAMETER),
              IsEmpty());
  EXPECT_THAT(Parsed(Changed("20080231", "") + Deleted("20080301"), ERROR_INVALID_PARAMETER),
              IsEmpty());
}

TEST_F(ExceptionsFromXml, FailsAtAChangeWithoutAnOriginalDate) {
  EXPECT_THAT(Parsed(Element("ChangedException", Element("SUBJECT", "s")), E_FAIL), IsEmpty());
  EXPECT_THAT(Parsed(Changed("", ""), E_FAIL), IsEmpty());
}

TEST_F(ExceptionsFromXml, FailsAtAFieldThatIsNotRight) {
  EXPECT_EQ(Parse(Changed("20080301", Element("EVENT_START", "soon")) + Deleted("20080301")),
            E_INVALIDARG);
  EXPECT_THAT(list_.calls, ::testing::Not(::testing::Contains("Delete")));
}

TEST_F(ExceptionsFromXml, KeepsWhatWasAppliedBeforeAFailure) {
  EXPECT_THAT(Parsed(Deleted("20080301") + Deleted("soon") + Deleted("20080302"), E_INVALIDARG),
              ElementsAre("GetOccurrence 2008-03-01 10:30:05", "Delete"));
}

TEST_F(ExceptionsFromXml, FailsWhenTheStartIsNoTime) {
  start_ = 1e9;
  EXPECT_THAT(Parsed(Deleted("20080301"), E_UNEXPECTED), IsEmpty());
  EXPECT_THAT(Parsed(Changed("20080301", ""), E_UNEXPECTED), IsEmpty());
}

TEST_F(ExceptionsFromXml, TakesMidnightForASeriesWithoutAStart) {
  start_ = kNoDate;
  EXPECT_THAT(Parsed(Deleted("20080301")),
              ElementsAre("GetOccurrence 2008-03-01 00:00:00", "Delete"));
}

TEST_F(ExceptionsFromXml, HasNothingToDoWithoutElements) {
  EXPECT_THAT(Parsed(""), IsEmpty());
  EXPECT_THAT(Parsed(Daily(Element("END_DATE", "0"))), IsEmpty());
}

TEST_F(ExceptionsFromXml, IgnoresDeletionsInOtherPlaces) {
  EXPECT_THAT(Parsed(Element("RECURRENCE", Deleted("20080301")) + Element("X", Deleted("1"))),
              IsEmpty());
}

TEST_F(ExceptionsFromXml, LogsADeletion) {
  SwitchLogOn();
  Parse(Daily() + Deleted("20080301"));
  EXPECT_THAT(
      ReaderMessages(LogMessages()),
      ElementsAre("bstrNodeName = TYPE", "startTime hr = 10, minute = 30, day = 15, month = 2",
                  "exceptionTime hr = 10, minute = 30, day = 1, month = 3",
                  MatchesRegex("pAppintment is 0x[0-9A-F]{8}, hr is 0x00000000"),
                  "bstrNodeName = DeletedException", "returning 0x00000000"));
}

TEST_F(ExceptionsFromXml, LogsAChange) {
  SwitchLogOn();
  Parse(Changed("20080301", ""));
  EXPECT_THAT(ReaderMessages(LogMessages()),
              ElementsAre("exceptionTime hr = 10, minute = 30, day = 1, month = 3",
                          MatchesRegex("pAppintment is 0x[0-9A-F]{8}, hr is 0x00000000"),
                          "ParseXMLAppointmentToRecord returned 0x00000000",
                          "bstrNodeName = ChangedException", "returning 0x00000000"));
}

TEST_F(ExceptionsFromXml, LogsADateWithoutAnOccurrence) {
  pattern().Occurrence.reset();
  SwitchLogOn();
  Parse(Deleted("20080301"));
  EXPECT_THAT(ReaderMessages(LogMessages()),
              ::testing::Contains("pAppintment is 0x00000000, hr is 0x80070057"));
}

TEST_F(ExceptionsFromXml, LogsDatesThatAreNone) {
  SwitchLogOn();
  Parse(Deleted("soon"));
  Parse(Deleted("20081301"));
  EXPECT_THAT(ReaderMessages(LogMessages()),
              ElementsAre("startTime hr = 10, minute = 30, day = 15, month = 2",
                          "bstrNodeName = DeletedException", "returning 0x80070057",
                          "startTime hr = 10, minute = 30, day = 15, month = 2",
                          "exceptionTime hr = 10, minute = 30, day = 1, month = 13",
                          "SystemTimeToVariantTime hr = 87", "bstrNodeName = DeletedException",
                          "returning 0x00000057"));
}

// The same with the handheld's own occurrences.
class SeriesUpload : public CalendarUpload {
 protected:
  std::vector<std::string> Exceptions(const std::string& elements) {
    const auto appointment = AddedAppointment(TimedEvent() + Recurring(Daily() + elements));
    return appointment ? ExceptionsOf(*appointment.get()) : std::vector<std::string>{};
  }
  static std::string At(const std::string& start, const std::string& end) {
    return Element("EVENT_START", start) + Element("EVENT_END", end);
  }
};

TEST_F(SeriesUpload, DeletesAndChangesOccurrences) {
  EXPECT_THAT(
      Exceptions(Deleted("20080216") +
                 Changed("20080217", At("20080217T150000", "20080217T160000"))),
      ElementsAre("2008-02-16 10:00:00 deleted", "2008-02-17 10:00:00 -> 2008-02-17 15:00:00"));
}

TEST_F(SeriesUpload, ChangesNothingForADateWithoutAnOccurrence) {
  EXPECT_THAT(Exceptions(Deleted("20080101") + Deleted("19000101") + Deleted("29991231") +
                         Deleted("01000101") + Deleted("99991231") +
                         Changed("20080101", At("20080217T150000", "20080217T160000"))),
              ElementsAre("2999-12-31 10:00:00 deleted"));
}

TEST_F(SeriesUpload, DeletesAnOccurrenceOnceForRepeatedElements) {
  EXPECT_THAT(Exceptions(Deleted("20080216") + Deleted("20080216")),
              ElementsAre("2008-02-16 10:00:00 deleted"));
}

TEST_F(SeriesUpload, LeavesADeletedOccurrenceDeleted) {
  EXPECT_THAT(Exceptions(Deleted("20080216") +
                         Changed("20080216", At("20080216T150000", "20080216T160000"))),
              ElementsAre("2008-02-16 10:00:00 deleted"));
}

TEST_F(SeriesUpload, MayChangeAnOccurrenceToADayOfTheSeries) {
  EXPECT_THAT(
      Exceptions(Changed("20080216", At("20080217T100000", "20080217T110000")) +
                 Deleted("20080217")),
      ElementsAre("2008-02-16 10:00:00 -> 2008-02-17 10:00:00", "2008-02-17 10:00:00 deleted"));
}

TEST_F(SeriesUpload, MayChangeAnOccurrenceToAWholeDay) {
  const auto appointment = AddedAppointment(
      TimedEvent() + Recurring(Daily(Changed("20080216", AllDayEvent("20080216", "20080217")))));
  ASSERT_THAT(ExceptionsOf(*appointment.get()),
              ElementsAre("2008-02-16 10:00:00 -> 2008-02-16 00:00:00"));
}

TEST_F(SeriesUpload, OfWholeDaysHasExceptions) {
  for (const DWORD major : {4u, 5u}) {
    handheld_.SetOsVersion(major, 0);
    const auto appointment = AddedAppointment(
        AllDayEvent("20080215", major == 4 ? "20080216" : "20080215") +
        Recurring(Daily(Deleted("20080216T000000") +
                        Changed("20080218", AllDayEvent("20080301", "20080302")))));
    EXPECT_EQ(ValueOf(*appointment.get(), &IAppointment::get_Duration), 1440);
    EXPECT_THAT(
        ExceptionsOf(*appointment.get()),
        ElementsAre("2008-02-16 00:00:00 deleted", "2008-02-18 00:00:00 -> 2008-03-01 00:00:00"));
  }
}

TEST_F(SeriesUpload, FindsOccurrencesOnBothSidesOfADaylightChange) {
  UseZone("Europe/Berlin");
  const auto appointment = AddedAppointment(
      At("20080320T130000", "20080320T140000") +
      Recurring(Daily(Deleted("20080329") + Deleted("20080330") + Deleted("20080331"))));
  EXPECT_THAT(ExceptionsOf(*appointment.get()),
              ElementsAre("2008-03-29 14:00:00 deleted", "2008-03-30 14:00:00 deleted",
                          "2008-03-31 14:00:00 deleted"));
}

TEST_F(SeriesUpload, TakesThousandsOfExceptions) {
  std::string elements;
  constexpr int kCount = 10'000;
  SYSTEMTIME day{};
  for (int index = 0; index < kCount; ++index) {
    ASSERT_TRUE(VariantTimeToSystemTime(DateOf(2008, 2, 16) + index, &day));
    const int date = day.wYear * 10000 + day.wMonth * 100 + day.wDay;
    elements += Deleted(std::to_string(date));
  }
  EXPECT_EQ(Exceptions(elements).size(), static_cast<std::size_t>(kCount));
}

}  // namespace
}  // namespace corvane::testing
