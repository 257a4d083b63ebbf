#include <gtest/gtest.h>

#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

constexpr const char* kStart = "DTSTART:20080215T090000\n";

TEST(ReadEvent, TakesEveryField) {
  const ReadItem read = ReadEventLines(
      "UID:u@x\nDTSTAMP:20080101T000000Z\nSUMMARY:Lunch\\, with Ada\nLOCATION:Room 1\n"
      "DESCRIPTION:a\\nb\\;\nDTSTART:20080215T120000\nDTEND:20080215T130000\n"
      "CATEGORIES:Work,Food\nCLASS:PRIVATE\nX-FOO:bar\nCREATED:20080101T000000Z\n"
      "LAST-MODIFIED:20080101T000000Z\nSEQUENCE:3\nPRIORITY:5\n");
  const Appointment& a = read.appointment;
  EXPECT_EQ(a.uid, "u@x");
  EXPECT_EQ(a.subject, "Lunch, with Ada");
  EXPECT_EQ(a.location, "Room 1");
  EXPECT_EQ(a.body, "a\nb;");
  EXPECT_EQ(ShowTimes(a), "2008-02-15T12:00:00 - 2008-02-15T13:00:00");
  EXPECT_EQ(a.categories, (Strings{"Work", "Food"}));
  EXPECT_TRUE(a.isPrivate);
  EXPECT_EQ(a.busyStatus, 2);
  EXPECT_EQ(a.reminderMinutes, std::nullopt);
  EXPECT_FALSE(a.series.has_value());
  EXPECT_EQ(read.notices, Strings{});
}

struct TimesCase {
  const char* name;
  const char* lines;
  const char* times;
  Strings notices = {};
};
void PrintTo(const TimesCase& test, std::ostream* out) {
  *out << test.lines;
}
class EventTimesTest : public ::testing::TestWithParam<TimesCase> {};

TEST_P(EventTimesTest, AreThoseOfTheHandheld) {
  const ReadItem read = ReadEventLines(GetParam().lines);
  EXPECT_EQ(ShowTimes(read.appointment), GetParam().times);
  EXPECT_EQ(read.notices, GetParam().notices);
}

INSTANTIATE_TEST_SUITE_P(
    ReadEvent, EventTimesTest,
    ::testing::Values(
        TimesCase{"Floating", "DTSTART:20080215T090000\nDTEND:20080215T100000\n",
                  "2008-02-15T09:00:00 - 2008-02-15T10:00:00"},
        TimesCase{"Utc", "DTSTART:20080215T090000Z\nDTEND:20080215T100000Z\n",
                  "2008-02-15T10:00:00 - 2008-02-15T11:00:00"},
        TimesCase{"UtcInSummer", "DTSTART:20080715T090000Z\nDTEND:20080715T100000Z\n",
                  "2008-07-15T11:00:00 - 2008-07-15T12:00:00"},
        TimesCase{"OwnZone",
                  "DTSTART;TZID=Europe/Berlin:20080215T090000\n"
                  "DTEND;TZID=Europe/Berlin:20080215T100000\n",
                  "2008-02-15T09:00:00 - 2008-02-15T10:00:00"},
        TimesCase{"OwnZoneInAGap", "DTSTART;TZID=Europe/Berlin:20080330T023000\nDURATION:P1D\n",
                  "2008-03-30T02:30:00 - 2008-03-31T02:30:00"},
        TimesCase{"TwoZones",
                  "DTSTART;TZID=Europe/London:20080215T090000\n"
                  "DTEND;TZID=America/New_York:20080215T090000\n",
                  "2008-02-15T10:00:00 - 2008-02-15T15:00:00"},
        TimesCase{"Duration", "DTSTART:20080215T090000\nDURATION:PT1H30M\n",
                  "2008-02-15T09:00:00 - 2008-02-15T10:30:00"},
        TimesCase{"ExactDurationOverAChange",
                  "DTSTART;TZID=Europe/Berlin:20080329T230000\nDURATION:PT8H\n",
                  "2008-03-29T23:00:00 - 2008-03-30T08:00:00"},
        TimesCase{"NominalDurationOverAChange",
                  "DTSTART;TZID=Europe/Berlin:20080329T230000\nDURATION:P1D\n",
                  "2008-03-29T23:00:00 - 2008-03-30T23:00:00"},
        TimesCase{"NoEnd", "DTSTART:20080215T090000\n",
                  "2008-02-15T09:00:00 - 2008-02-15T09:00:00"},
        TimesCase{"OneDay", "DTSTART;VALUE=DATE:20080215\n", "2008-02-15 - 2008-02-15"},
        TimesCase{"Days", "DTSTART;VALUE=DATE:20080215\nDTEND;VALUE=DATE:20080218\n",
                  "2008-02-15 - 2008-02-17"},
        TimesCase{"DaysByDuration", "DTSTART;VALUE=DATE:20080215\nDURATION:P1W\n",
                  "2008-02-15 - 2008-02-21"},
        TimesCase{"DaysByHours", "DTSTART;VALUE=DATE:20080215\nDURATION:PT25H\n",
                  "2008-02-15 - 2008-02-16"},
        TimesCase{"DayThatEndsWhereItBegins",
                  "DTSTART;VALUE=DATE:20080215\nDTEND;VALUE=DATE:20080215\n",
                  "2008-02-15 - 2008-02-15"},
        TimesCase{"DateWithoutItsName", "DTSTART:20080215\n", "2008-02-15 - 2008-02-15"},
        TimesCase{"TimedFromMidnightToMidnight", "DTSTART:20080215T000000\nDTEND:20080216T000000\n",
                  "2008-02-15T00:00:00 - 2008-02-16T00:00:00"},
        TimesCase{"TimedMidnightsThatAreSaidToBeDays",
                  "DTSTART;TZID=Asia/Tokyo:20080215T000000\n"
                  "DTEND;TZID=Asia/Tokyo:20080217T000000\nX-MICROSOFT-CDO-ALLDAYEVENT:TRUE\n",
                  "2008-02-15 - 2008-02-16"},
        TimesCase{"EndBeforeStart",
                  "DTSTART:20080215T090000\nDTEND:20080215T080000\n",
                  "2008-02-15T09:00:00 - 2008-02-15T09:00:00",
                  {"3: DTEND: before DTSTART, left out"}},
        TimesCase{"UnreadableEnd",
                  "DTSTART:20031114T170000\nDTEND:20031114T18300\n",
                  "2003-11-14T17:00:00 - 2003-11-14T17:00:00",
                  {"5: DTEND: neither a day nor a time, left out: 20031114T18300"}},
        TimesCase{"EndAndDuration",
                  "DTSTART:20080215T090000\nDTEND:20080215T100000\nDURATION:PT5H\n",
                  "2008-02-15T09:00:00 - 2008-02-15T10:00:00",
                  {"3: DURATION: DTEND is given, too"}},
        TimesCase{"NegativeDuration",
                  "DTSTART:20080215T090000\nDURATION:-PT5H\n",
                  "2008-02-15T09:00:00 - 2008-02-15T09:00:00",
                  {"5: DURATION: not a duration, left out: -PT5H"}},
        TimesCase{"EndThatIsADay",
                  "DTSTART:20080215T090000\nDTEND;VALUE=DATE:20080216\n",
                  "2008-02-15T09:00:00 - 2008-02-16T00:00:00",
                  {"3: DTEND: a day, taken as its midnight"}},
        TimesCase{"UnknownZone",
                  "DTSTART;TZID=Nowhere:20080215T090000\nDTEND;TZID=Nowhere:20080215T100000\n",
                  "2008-02-15T09:00:00 - 2008-02-15T10:00:00",
                  {"4: TZID: nothing is known of the zone \"Nowhere\", its times are taken as the "
                   "handheld's"}},
        TimesCase{"LastDay", "DTSTART;VALUE=DATE:29991231\n", "2999-12-31 - 2999-12-31"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(ReadEvent, LeavesOutWhatHasNoStartOrAnUnkeepableOne) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nSUMMARY:x\nEND:VEVENT\nBEGIN:VEVENT\nDTSTART:18991231T120000\nEND:VEVENT\n"
      "BEGIN:VEVENT\nDTSTART;VALUE=DATE:30000101\nEND:VEVENT\n");
  EXPECT_TRUE(file.appointments.empty());
  EXPECT_EQ(Texts(file.notices),
            (Strings{"3: DTSTART: an event without a start, left out",
                     "6: DTSTART: outside of the years 1900 to 2999, left out",
                     "9: DTSTART: outside of the years 1900 to 2999, left out"}));
}

int BusyStatusOf(const std::string& lines) {
  return ReadEventLines(kStart + lines).appointment.busyStatus;
}

TEST(ReadEvent, TellsTheBusyStatus) {
  EXPECT_EQ(BusyStatusOf(""), 2);
  EXPECT_EQ(BusyStatusOf("TRANSP:OPAQUE\n"), 2);
  EXPECT_EQ(BusyStatusOf("TRANSP:TRANSPARENT\n"), 0);
  EXPECT_EQ(BusyStatusOf("STATUS:TENTATIVE\n"), 1);
  EXPECT_EQ(BusyStatusOf("STATUS:CONFIRMED\n"), 2);
  EXPECT_EQ(BusyStatusOf("TRANSP:OPAQUE\nX-MICROSOFT-CDO-BUSYSTATUS:OOF\n"), 3);
  EXPECT_EQ(BusyStatusOf("X-MICROSOFT-CDO-BUSYSTATUS:tentative\n"), 1);
  EXPECT_EQ(BusyStatusOf("X-MICROSOFT-CDO-BUSYSTATUS:7\n"), 7);
  EXPECT_EQ(BusyStatusOf("X-MICROSOFT-CDO-BUSYSTATUS:-7\n"), -7);
  EXPECT_EQ(BusyStatusOf("X-MICROSOFT-CDO-BUSYSTATUS:unheard of\n"), 2);
}

TEST(ReadEvent, TakesEveryClassButPublicAsPrivate) {
  const auto isPrivate = [](const char* name) {
    return ReadEventLines(std::string(kStart) + "CLASS:" + name + "\n").appointment.isPrivate;
  };
  EXPECT_FALSE(isPrivate("PUBLIC"));
  EXPECT_FALSE(isPrivate(""));
  EXPECT_TRUE(isPrivate("PRIVATE"));
  EXPECT_TRUE(isPrivate("confidential"));
  EXPECT_TRUE(isPrivate("X-SECRET"));
}

TEST(ReadEvent, GathersCategories) {
  const ReadItem read = ReadEventLines(
      "DTSTART:20080215T090000\nCATEGORIES:Work, Food ,,Work\nCATEGORIES:A\\,B\nCATEGORIES:Food\n");
  EXPECT_EQ(read.appointment.categories, (Strings{"Work", "Food", "A;B"}));
  EXPECT_EQ(read.notices, Strings{"6: CATEGORIES: a category's name cannot hold a comma, kept with "
                                  "a semicolon"});
}

TEST(ReadEvent, NamesOnceWhatPeopleWouldMiss) {
  const ReadItem read = ReadEventLines(
      "DTSTART:20080215T090000\nORGANIZER:mailto:a@b\nATTENDEE:mailto:a@b\nATTENDEE:mailto:c@d\n"
      "URL:http://x\nATTACH:http://x\nGEO:1;2\nCOMMENT:x\nRELATED-TO:x\nPRIORITY:1\nFUTURE:x\n"
      "CONTACT:\nSUMMARY:one\nSUMMARY:two\n");
  EXPECT_EQ(read.notices, (Strings{"5: ORGANIZER: a handheld keeps no participants",
                                   "6: ATTENDEE: a handheld keeps no participants",
                                   "8: URL: a handheld keeps no files or links",
                                   "9: ATTACH: a handheld keeps no files or links",
                                   "10: GEO: a handheld keeps no position",
                                   "11: COMMENT: a handheld keeps the description alone",
                                   "12: RELATED-TO: a handheld keeps no relations between items",
                                   "13: PRIORITY: an appointment has no priority",
                                   "14: FUTURE: a handheld has no field for it",
                                   "17: SUMMARY: an event has one, left out: two"}));
  EXPECT_EQ(read.appointment.subject, "one");
}

struct AlarmCase {
  const char* name;
  const char* alarm;  // within BEGIN and END, from line 6 on
  std::optional<int> minutes;
  Strings notices = {};
};
void PrintTo(const AlarmCase& test, std::ostream* out) {
  *out << test.alarm;
}
class AlarmTest : public ::testing::TestWithParam<AlarmCase> {};

TEST_P(AlarmTest, BecomesTheReminder) {
  const ReadItem read =
      ReadEventLines(std::string("DTSTART:20080215T090000Z\nDURATION:PT1H\nBEGIN:VALARM\n") +
                     GetParam().alarm + "END:VALARM\n");
  EXPECT_EQ(read.appointment.reminderMinutes, GetParam().minutes);
  EXPECT_EQ(read.notices, GetParam().notices);
}

INSTANTIATE_TEST_SUITE_P(
    ReadEvent, AlarmTest,
    ::testing::Values(
        AlarmCase{"Before", "ACTION:DISPLAY\nTRIGGER:-PT15M\n", 15},
        AlarmCase{"AtTheStart", "ACTION:AUDIO\nTRIGGER:PT0S\n", 0},
        AlarmCase{"After", "TRIGGER:P1DT25M\n", -1465},
        AlarmCase{"DayBefore", "ACTION:DISPLAY\nTRIGGER;VALUE=DURATION:-P1D\n", 1440},
        AlarmCase{"BeforeTheEnd", "ACTION:DISPLAY\nTRIGGER;RELATED=END:-PT90M\n", 30},
        AlarmCase{"Absolute", "ACTION:DISPLAY\nTRIGGER;VALUE=DATE-TIME:20080215T083000Z\n", 30},
        AlarmCase{
            "Seconds", "TRIGGER:-PT90S\n", 1, {"7: TRIGGER: a reminder is on a whole minute"}},
        AlarmCase{"Repeated",
                  "TRIGGER:-PT5M\nREPEAT:2\nDURATION:PT5M\n",
                  5,
                  {"6: VALARM: a reminder is not repeated"}},
        AlarmCase{"None", "ACTION:NONE\nTRIGGER;VALUE=DATE-TIME:19760401T005545Z\n", std::nullopt},
        AlarmCase{"Mail",
                  "ACTION:EMAIL\nTRIGGER:-PT5M\n",
                  std::nullopt,
                  {"6: VALARM: a reminder sends no mail and starts no program"}},
        AlarmCase{"NoTrigger",
                  "ACTION:DISPLAY\n",
                  std::nullopt,
                  {"6: VALARM: it does not say when, left out"}},
        AlarmCase{"UnreadableTrigger",
                  "ACTION:DISPLAY\nTRIGGER:soon\n",
                  std::nullopt,
                  {"8: TRIGGER: neither a duration nor a time, left out: soon"}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(ReadEvent, TakesTheFirstOfSeveralAlarms) {
  const ReadItem read = ReadEventLines(
      "DTSTART:20080215T090000\nBEGIN:VALARM\nACTION:EMAIL\nTRIGGER:-PT5M\nEND:VALARM\n"
      "BEGIN:VALARM\nACTION:DISPLAY\nTRIGGER:-PT10M\nEND:VALARM\n"
      "BEGIN:VALARM\nACTION:DISPLAY\nTRIGGER:-PT20M\nEND:VALARM\n");
  EXPECT_EQ(read.appointment.reminderMinutes, 10);
  EXPECT_EQ(read.notices, (Strings{"5: VALARM: a reminder sends no mail and starts no program",
                                   "13: VALARM: there is one reminder, this one is left out"}));
}

}  // namespace
}  // namespace formats::testing
