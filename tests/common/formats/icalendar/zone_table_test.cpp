#include <gtest/gtest.h>

#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

constexpr const char* kEastern =
    "BEGIN:VTIMEZONE\nTZID:US-Eastern\nBEGIN:STANDARD\nDTSTART:19671029T020000\n"
    "RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=10\nTZOFFSETFROM:-0400\nTZOFFSETTO:-0500\nEND:STANDARD\n"
    "BEGIN:DAYLIGHT\nDTSTART:19870405T020000\nRRULE:FREQ=YEARLY;BYDAY=1SU;BYMONTH=4\n"
    "TZOFFSETFROM:-0500\nTZOFFSETTO:-0400\nEND:DAYLIGHT\nEND:VTIMEZONE\n";

std::string Zone(const std::string& tzid, const std::string& offset, const std::string& more = "") {
  return "BEGIN:VTIMEZONE\nTZID:" + tzid + "\n" + more +
         "BEGIN:STANDARD\nDTSTART:19700101T000000\nTZOFFSETFROM:" + offset +
         "\nTZOFFSETTO:" + offset + "\nEND:STANDARD\nEND:VTIMEZONE\n";
}

std::string Event(const std::string& tzid, const std::string& time) {
  return "BEGIN:VEVENT\nDTSTART;TZID=" + tzid + ":" + time + "\nEND:VEVENT\n";
}

// Where the events start in UTC, separated by blanks.
std::string StartsOf(const std::string& lines) {
  std::string starts;
  for (const ParsedAppointment& read : ReadLines(lines, "UTC").appointments) {
    if (!starts.empty()) starts += ' ';
    starts += ShowTimes(read.appointment).substr(0, 16);
  }
  return starts;
}

TEST(ZoneTable, TakesZonesThatTheFileDescribes) {
  EXPECT_EQ(StartsOf(kEastern + Event("US-Eastern", "19980312T083000") +
                     Event("US-Eastern", "19980712T083000")),
            "1998-03-12T13:30 1998-07-12T12:30");
}

TEST(ZoneTable, TakesANameWithCommas) {
  const std::string zone = Zone("Canberra\\, Melbourne\\, Sydney", "+1000");
  EXPECT_EQ(StartsOf(zone + Event("\"Canberra, Melbourne, Sydney\"", "20080712T100000")),
            "2008-07-12T00:00");
  EXPECT_EQ(StartsOf(zone + Event("Canberra, Melbourne, Sydney", "20080712T100000")),
            "2008-07-12T00:00");
}

TEST(ZoneTable, FindsAZoneThatComesBehindItsEvents) {
  EXPECT_EQ(StartsOf(Event("Mine", "20080712T100000") + Zone("Mine", "+0330")), "2008-07-12T06:30");
}

TEST(ZoneTable, PrefersTheSystemsZonesToTheFiles) {
  EXPECT_EQ(StartsOf(Zone("Europe/Berlin", "+0900") + Event("Europe/Berlin", "20080712T100000")),
            "2008-07-12T08:00");
}

TEST(ZoneTable, PrefersTheFilesZonesToWindowsNames) {
  EXPECT_EQ(StartsOf(Event("W. Europe Standard Time", "20080712T100000")), "2008-07-12T08:00");
  EXPECT_EQ(StartsOf(Zone("W. Europe Standard Time", "+0900") +
                     Event("W. Europe Standard Time", "20080712T100000")),
            "2008-07-12T01:00");
}

TEST(ZoneTable, TakesALocationAndAPathAsNames) {
  EXPECT_EQ(StartsOf(Zone("X", "+0900", "X-LIC-LOCATION:Europe/Berlin\n") +
                     Event("X", "20080712T100000")),
            "2008-07-12T08:00");
  EXPECT_EQ(StartsOf(Event("/example.org/Olson_1/America/Chicago", "20080712T100000")),
            "2008-07-12T15:00");
  EXPECT_EQ(StartsOf(Event("/example.org/nowhere", "20080712T100000")), "2008-07-12T10:00");
}

TEST(ZoneTable, PrefersTheZoneOfTheSameCalendar) {
  const auto calendar = [](const std::string& lines) {
    return "BEGIN:VCALENDAR\n" + lines + "END:VCALENDAR\n";
  };
  EXPECT_EQ(StartsOf(calendar(Zone("X", "+0100") + Event("X", "20080712T100000")) +
                     calendar(Zone("X", "+0200") + Event("X", "20080712T100000")) +
                     calendar(Event("X", "20080712T100000"))),
            "2008-07-12T09:00 2008-07-12T08:00 2008-07-12T08:00");
}

TEST(ZoneTable, TakesTheLastOfSeveralOfOneName) {
  EXPECT_EQ(StartsOf(Zone("X", "+0100") + Zone("X", "+0200") + Event("X", "20080712T100000")),
            "2008-07-12T08:00");
}

TEST(ZoneTable, TakesALocalTimeTwiceAsTheFirstAndOneInAGapAsBeforeIt) {
  EXPECT_EQ(
      StartsOf(kEastern + Event("US-Eastern", "19981025T013000") +
               Event("US-Eastern", "19980405T023000") + Event("US-Eastern", "19980405T033000")),
      "1998-10-25T05:30 1998-04-05T07:30 1998-04-05T07:30");
}

TEST(ZoneTable, TakesAZoneBeforeItsFirstChangeAsInItsFirstYear) {
  const std::string zone =
      "BEGIN:VTIMEZONE\nTZID:X\nBEGIN:STANDARD\nDTSTART:19981025T020000\nRDATE:19981025T020000\n"
      "TZOFFSETFROM:-0400\nTZOFFSETTO:-0500\nEND:STANDARD\nBEGIN:DAYLIGHT\n"
      "DTSTART:19990404T020000\nTZOFFSETFROM:-0500\nTZOFFSETTO:-0400\nEND:DAYLIGHT\n"
      "END:VTIMEZONE\n";
  EXPECT_EQ(StartsOf(zone + Event("X", "19980312T083000") + Event("X", "19980712T083000") +
                     Event("X", "19990112T083000") + Event("X", "20050112T083000")),
            "1998-03-12T13:30 1998-07-12T12:30 1999-01-12T13:30 2005-01-12T12:30");
}

TEST(ZoneTable, EndsARuleWithItsUntil) {
  const std::string zone =
      "BEGIN:VTIMEZONE\nTZID:X\nBEGIN:STANDARD\nDTSTART:19671029T020000\n"
      "RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=10\nTZOFFSETFROM:-0400\nTZOFFSETTO:-0500\n"
      "END:STANDARD\nBEGIN:DAYLIGHT\nDTSTART:19870405T020000\n"
      "RRULE:FREQ=YEARLY;BYDAY=1SU;BYMONTH=4;UNTIL=19980405T070000Z\nTZOFFSETFROM:-0500\n"
      "TZOFFSETTO:-0400\nEND:DAYLIGHT\nEND:VTIMEZONE\n";
  EXPECT_EQ(StartsOf(zone + Event("X", "19980712T083000") + Event("X", "19990712T083000")),
            "1998-07-12T12:30 1999-07-12T13:30");
}

TEST(ZoneTable, TakesRulesFrom1601) {
  const std::string zone =
      "BEGIN:VTIMEZONE\nTZID:X\nBEGIN:STANDARD\nDTSTART:16010101T030000\n"
      "RRULE:FREQ=YEARLY;INTERVAL=1;BYDAY=-1SU;BYMONTH=10\nTZOFFSETFROM:+0200\nTZOFFSETTO:+0100\n"
      "END:STANDARD\nBEGIN:DAYLIGHT\nDTSTART:16010101T020000\n"
      "RRULE:FREQ=YEARLY;INTERVAL=1;BYDAY=-1SU;BYMONTH=3\nTZOFFSETFROM:+0100\nTZOFFSETTO:+0200\n"
      "END:DAYLIGHT\nEND:VTIMEZONE\n";
  EXPECT_EQ(StartsOf(zone + Event("X", "20080212T100000") + Event("X", "20080712T100000") +
                     Event("X", "21500712T100000")),
            "2008-02-12T09:00 2008-07-12T08:00 2150-07-12T08:00");
}

TEST(ZoneTable, IgnoresAZoneWithoutOffsets) {
  const CalendarFile file = ReadLines(
      "BEGIN:VTIMEZONE\nTZID:X\nBEGIN:STANDARD\nDTSTART:19700101T000000\nTZOFFSETTO:soon\n"
      "END:STANDARD\nEND:VTIMEZONE\n" +
          Event("X", "20080712T100000"),
      "UTC");
  EXPECT_EQ(Texts(file.notices), Strings{"11: TZID: nothing is known of the zone \"X\", its times "
                                         "are taken as the handheld's"});
}

TEST(ZoneTable, ReadsOffsetsWithSeconds) {
  EXPECT_EQ(StartsOf(Zone("X", "+001932") + Event("X", "19300712T101932")), "1930-07-12T10:00");
}

// A series of one zone on a handheld of another.

TEST(Alignment, KeepsAPatternWhereClocksDifferAlwaysBySoMuch) {
  const ReadItem read = ReadEventLines(
      "DTSTART;TZID=Asia/Tokyo:20080215T090000\nDURATION:PT1H\nRRULE:FREQ=DAILY;UNTIL="
      "20080220T000000Z\n",
      "Asia/Kolkata");
  EXPECT_EQ(ShowTimes(read.appointment), "2008-02-15T05:30:00 - 2008-02-15T06:30:00");
  EXPECT_EQ(ShowRule(read.appointment.series->pattern), "FREQ=DAILY;UNTIL=20080220");
  EXPECT_EQ(read.notices, Strings{});
}

TEST(Alignment, MovesAPatternToTheDayBefore) {
  const ReadItem read = ReadEventLines(
      "DTSTART;TZID=Asia/Tokyo:20080215T010000\nRRULE:FREQ=WEEKLY;BYDAY=SU,FR;UNTIL="
      "20080301T000000Z\nEXDATE;TZID=Asia/Tokyo:20080217T010000\n",
      "Asia/Kolkata");
  EXPECT_EQ(ShowTimes(read.appointment), "2008-02-14T21:30:00 - 2008-02-14T21:30:00");
  EXPECT_EQ(ShowRule(read.appointment.series->pattern),
            "FREQ=WEEKLY;BYDAY=TH,SA;WKST=SU;UNTIL=20080229");
  EXPECT_EQ(ShowDays(read.appointment.series->deleted), Strings{"2008-02-16"});
  EXPECT_EQ(read.notices, Strings{});
}

TEST(Alignment, MovesAYearlyDayAcrossTheYear) {
  const ReadItem read = ReadEventLines(
      "DTSTART;TZID=Asia/Tokyo:20080101T010000\nRRULE:FREQ=YEARLY\n", "Asia/Kolkata");
  EXPECT_EQ(ShowTimes(read.appointment), "2007-12-31T21:30:00 - 2007-12-31T21:30:00");
  EXPECT_EQ(ShowRule(read.appointment.series->pattern), "FREQ=YEARLY;BYMONTH=12;BYMONTHDAY=31");
}

TEST(Alignment, ChangesOccurrencesWhileClocksDifferOtherwise) {
  const ReadItem read = ReadEventLines(
      "SUMMARY:S\nDTSTART;TZID=America/New_York:20080215T090000\nDURATION:PT1H\n"
      "RRULE:FREQ=WEEKLY;COUNT=10\nEXDATE;TZID=America/New_York:20080314T090000\n");
  EXPECT_EQ(ShowTimes(read.appointment), "2008-02-15T15:00:00 - 2008-02-15T16:00:00");
  const Series& series = *read.appointment.series;
  EXPECT_EQ(ShowDays(series.deleted), Strings{"2008-03-14"});
  EXPECT_EQ(ShowChanges(series),
            (Strings{"2008-03-21: 2008-03-21T14:00:00 - 2008-03-21T15:00:00",
                     "2008-03-28: 2008-03-28T14:00:00 - 2008-03-28T15:00:00"}));
  EXPECT_EQ(series.changed[0].occurrence.subject, "S");
  EXPECT_EQ(read.notices, Strings{"7: RRULE: at another time in this zone and kept as changed: "
                                  "2 occurrences"});
}

TEST(Alignment, SaysUntilWhenOccurrencesAreRight) {
  const ReadItem read =
      ReadEventLines("DTSTART;TZID=America/New_York:20080215T090000\nRRULE:FREQ=WEEKLY\n");
  const Series& series = *read.appointment.series;
  EXPECT_EQ(series.changed.back().original, Day(2017, 11, 3));
  EXPECT_EQ(read.notices,
            Strings{"5: RRULE: at another time in this zone and kept as changed: 35 occurrences; "
                    "from 2018-03-16T15:00:00 on all have the time of the others"});
  const ReadItem daily =
      ReadEventLines("DTSTART;TZID=Australia/Sydney:20080215T090000\nRRULE:FREQ=DAILY\n");
  EXPECT_EQ(daily.appointment.series->changed.size(), 400u);
}

TEST(Alignment, ChangesOccurrencesThatFallOnAnotherDay) {
  const ReadItem read =
      ReadEventLines("DTSTART:20080326T223000Z\nRRULE:FREQ=DAILY;UNTIL=20080331T223000Z\n");
  EXPECT_EQ(ShowTimes(read.appointment), "2008-03-26T23:30:00 - 2008-03-26T23:30:00");
  EXPECT_EQ(ShowChanges(*read.appointment.series),
            (Strings{"2008-03-30: 2008-03-31T00:30:00 - 2008-03-31T00:30:00",
                     "2008-03-31: 2008-04-01T00:30:00 - 2008-04-01T00:30:00"}));
}

TEST(Alignment, MakesAppointmentsWhereNoPatternHasTheDays) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART;TZID=Asia/Tokyo:20080212T010000\n"
      "RRULE:FREQ=MONTHLY;BYDAY=2TU;COUNT=8\nEND:VEVENT\n",
      "Asia/Kolkata");
  ASSERT_EQ(file.appointments.size(), 8u);
  EXPECT_EQ(file.appointments[0].appointment.uid, "u/20080212T010000");
  EXPECT_EQ(ShowTimes(file.appointments[7].appointment),
            "2008-09-08T21:30:00 - 2008-09-08T21:30:00");
}

TEST(Alignment, LeavesDaysAsTheyAre) {
  const ReadItem read =
      ReadEventLines("DTSTART;VALUE=DATE:20080215\nRRULE:FREQ=WEEKLY\n", "Pacific/Auckland");
  EXPECT_EQ(ShowTimes(read.appointment), "2008-02-15 - 2008-02-15");
  EXPECT_EQ(read.notices, Strings{});
}

}  // namespace
}  // namespace formats::testing
