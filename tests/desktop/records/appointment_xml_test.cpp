#include "desktop/records/appointment_xml.h"

#include <gtest/gtest.h>

#include "tests/desktop/fixtures.h"

namespace desktop::testing {
namespace {

using calendar::PatternType;
using calendar::Zone;
using formats::Appointment;
using formats::Occurrence;

const Zone& Berlin() {
  static const Zone zone = ZoneNamed("Europe/Berlin");
  return zone;
}

Appointment ParsedAppointment(const std::string& children) {
  return AppointmentFromXml(ElementOf("<CALENDAR>" + children + "</CALENDAR>"), Berlin());
}

// Every element that a record can have.
Appointment FullAppointment() {
  Appointment full;
  full.subject = "Choir";
  full.location = "Hall";
  full.body = "two\nlines";
  full.start = At(Day(2024, 5, 6), 19, 30);
  full.end = At(Day(2024, 5, 6), 21);
  full.busyStatus = 3;
  full.categories = {"Music", "Evening"};
  full.isPrivate = true;
  full.reminderMinutes = 15;
  formats::Series series;
  series.pattern = {.type = PatternType::kWeekly, .daysOfWeek = 2};
  series.deleted = {Day(2024, 5, 13)};
  Occurrence change;
  change.subject = "Concert";
  change.allDay = true;
  change.start = At(Day(2024, 12, 21), 0);
  change.end = At(Day(2024, 12, 23), 0);
  change.busyStatus = 0;
  series.changed = {{Day(2024, 12, 23), change}};
  full.series = series;
  return full;
}

constexpr char kFullAppointmentXml[] =
    "<CALENDAR>"
    "<SUBJECT>Choir</SUBJECT>"
    "<LOCATION>Hall</LOCATION>"
    "<CATEGORIES><CATEGORY><Name>Music</Name></CATEGORY>"
    "<CATEGORY><Name>Evening</Name></CATEGORY></CATEGORIES>"
    "<IS_RECURRING>TRUE</IS_RECURRING>"
    "<RECURRENCE><TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>1</DAYS_OF_WEEK><END_DATE>0</END_DATE>"
    "<DeletedException>20240513T000000</DeletedException>"
    "<ChangedException><SUBJECT>Concert</SUBJECT><ALL_DAY_EVENT>TRUE</ALL_DAY_EVENT>"
    "<EVENT_START>20241221T000000</EVENT_START><EVENT_END>20241222T000000</EVENT_END>"
    "<BusyStatus>0</BusyStatus><OriginalDate>20241223T000000</OriginalDate></ChangedException>"
    "</RECURRENCE>"
    "<HAS_REMINDER>TRUE</HAS_REMINDER>"
    "<ReminderMinutes>15</ReminderMinutes>"
    "<Private>TRUE</Private>"
    "<EVENT_START>20240506T173000</EVENT_START>"
    "<EVENT_END>20240506T190000</EVENT_END>"
    "<BusyStatus>3</BusyStatus>"
    "<NOTES>two\nlines</NOTES>"
    "</CALENDAR>";

TEST(AppointmentToXml, WritesEveryFieldInTheWiresOrder) {
  EXPECT_EQ(AppointmentToXml(FullAppointment(), Berlin()), kFullAppointmentXml);
}

TEST(AppointmentFromXml, ReadsEveryFieldBack) {
  EXPECT_EQ(AppointmentFromXml(ElementOf(kFullAppointmentXml), Berlin()), FullAppointment());
}

TEST(AppointmentToXml, WritesTheBusyStatusAlwaysAndNoEmptyField) {
  EXPECT_EQ(AppointmentToXml({}, Berlin()), "<CALENDAR><BusyStatus>2</BusyStatus></CALENDAR>");
}

TEST(AppointmentToXml, EndsAnAllDayEventOnItsLastDay) {
  Appointment appointment;
  appointment.allDay = true;
  appointment.start = At(Day(2008, 2, 15), 0);
  appointment.end = At(Day(2008, 2, 17), 0);
  const std::string xml = AppointmentToXml(appointment, Berlin());
  EXPECT_EQ(xml,
            "<CALENDAR><ALL_DAY_EVENT>TRUE</ALL_DAY_EVENT><EVENT_START>20080215T000000"
            "</EVENT_START><EVENT_END>20080216T000000</EVENT_END><BusyStatus>2</BusyStatus>"
            "</CALENDAR>");
  EXPECT_EQ(AppointmentFromXml(ElementOf(xml), Berlin()), appointment);
}

TEST(AppointmentFromXml, GivesAnAllDayEventADayAtLeast) {
  for (const char* end : {"20080215T000000", "20080214T000000", "", "nonsense"}) {
    const Appointment appointment = ParsedAppointment(
        "<ALL_DAY_EVENT>TRUE</ALL_DAY_EVENT><EVENT_START>20080215T000000</EVENT_START>"
        "<EVENT_END>" +
        std::string(end) + "</EVENT_END>");
    EXPECT_EQ(appointment.start, At(Day(2008, 2, 15), 0)) << end;
    EXPECT_EQ(appointment.end, At(Day(2008, 2, 16), 0)) << end;
  }
}

TEST(AppointmentFromXml, TakesWholeDaysAsTheyStandInEveryZone) {
  for (const char* name : {"Pacific/Kiritimati", "America/Los_Angeles", "UTC"}) {
    const Appointment appointment = AppointmentFromXml(
        ElementOf("<CALENDAR><ALL_DAY_EVENT>TRUE</ALL_DAY_EVENT><EVENT_START>20080301</EVENT_START>"
                  "<EVENT_END>20080301T000000</EVENT_END></CALENDAR>"),
        ZoneNamed(name));
    EXPECT_EQ(appointment.start, At(Day(2008, 3, 1), 0)) << name;
    EXPECT_EQ(appointment.end, At(Day(2008, 3, 2), 0)) << name;
  }
}

TEST(AppointmentFromXml, LeavesOutTimesThatDoNotExistOrLieTooFarAway) {
  for (const char* text : {"", "20080215", "20080231T100000", "18991231T100000", "30000102T100000",
                           "20080215T250000"}) {
    const Appointment appointment = ParsedAppointment(
        "<EVENT_START>" + std::string(text) + "</EVENT_START><EVENT_END>" + text + "</EVENT_END>");
    EXPECT_EQ(appointment.start, std::nullopt) << text;
    EXPECT_EQ(appointment.end, std::nullopt) << text;
  }
  EXPECT_EQ(ParsedAppointment(
                "<ALL_DAY_EVENT>TRUE</ALL_DAY_EVENT><EVENT_START>18991230T000000</EVENT_START>"
                "<EVENT_END>18991230T000000</EVENT_END>")
                .start,
            std::nullopt);
}

TEST(AppointmentFromXml, EndsNothingBeforeItsStart) {
  const Appointment appointment = ParsedAppointment(
      "<EVENT_START>20080215T100000</EVENT_START><EVENT_END>20080215T090000</EVENT_END>");
  EXPECT_EQ(appointment.end, appointment.start);
}

TEST(AppointmentFromXml, IsFreeWithoutABusyStatusAndKeepsOddOnes) {
  EXPECT_EQ(ParsedAppointment("").busyStatus, 0);
  EXPECT_EQ(ParsedAppointment("<BusyStatus>17</BusyStatus>").busyStatus, 17);
}

TEST(AppointmentFromXml, ReadsMinutesOfAReminderThatIsSetAlone) {
  EXPECT_EQ(ParsedAppointment("<ReminderMinutes>5</ReminderMinutes>").reminderMinutes,
            std::nullopt);
  EXPECT_EQ(ParsedAppointment("<HAS_REMINDER>TRUE</HAS_REMINDER>").reminderMinutes, 0);
  EXPECT_EQ(
      ParsedAppointment("<HAS_REMINDER>TRUE</HAS_REMINDER><ReminderMinutes>-30</ReminderMinutes>")
          .reminderMinutes,
      -30);
}

TEST(AppointmentFromXml, HasASeriesOnlyWhenItSaysSoAndThePatternIsUnderstood) {
  const std::string recurrence = "<RECURRENCE><TYPE>DAILY</TYPE></RECURRENCE>";
  EXPECT_FALSE(ParsedAppointment(recurrence).series);
  EXPECT_FALSE(ParsedAppointment("<IS_RECURRING>TRUE</IS_RECURRING>").series);
  EXPECT_FALSE(ParsedAppointment("<IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE/>").series);
  EXPECT_TRUE(ParsedAppointment("<IS_RECURRING>TRUE</IS_RECURRING>" + recurrence).series);
}

TEST(AppointmentFromXml, OrdersExceptionsAndLetsDeletionsGoFirst) {
  const auto changed = [](const std::string& day) {
    return "<ChangedException><SUBJECT>" + day + "</SUBJECT><OriginalDate>" + day +
           "</OriginalDate></ChangedException>";
  };
  const Appointment appointment = ParsedAppointment(
      "<IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE><TYPE>DAILY</TYPE>" + changed("20240503") +
      changed("20240501") + changed("20240502") +
      "<DeletedException>20240509T000000</DeletedException><DeletedException>20240502"
      "</DeletedException><DeletedException>20240509</DeletedException><DeletedException>x"
      "</DeletedException><ChangedException><SUBJECT>lost</SUBJECT></ChangedException>"
      "</RECURRENCE>");
  ASSERT_TRUE(appointment.series);
  EXPECT_EQ(appointment.series->deleted,
            (std::vector<formats::local_days>{Day(2024, 5, 2), Day(2024, 5, 9)}));
  ASSERT_EQ(appointment.series->changed.size(), 2U);
  EXPECT_EQ(appointment.series->changed[0].original, Day(2024, 5, 1));
  EXPECT_EQ(appointment.series->changed[1].occurrence.subject, "20240503");
}

// The time of year at another time of day in UTC: what the handheld does, by its present rules.
TEST(AppointmentToXml, SendsTimesAsTheHandheldConvertsThem) {
  Appointment appointment;
  appointment.start = At(Day(2024, 1, 15), 9);
  appointment.end = At(Day(2024, 7, 15), 9);
  const std::string xml = AppointmentToXml(appointment, Berlin());
  EXPECT_NE(xml.find("<EVENT_START>20240115T080000</EVENT_START>"), std::string::npos);
  EXPECT_NE(xml.find("<EVENT_END>20240715T070000</EVENT_END>"), std::string::npos);
  EXPECT_EQ(AppointmentFromXml(ElementOf(xml), Berlin()), appointment);
}

TEST(AppointmentFromXml, IgnoresWhatItDoesNotKnow) {
  EXPECT_EQ(ParsedAppointment("<NEW>x</NEW><BodyInk>TRUE</BodyInk><BusyStatus>2</BusyStatus>"),
            Appointment());
}

}  // namespace
}  // namespace desktop::testing
