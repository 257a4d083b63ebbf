#include <gtest/gtest.h>

#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

TEST(ReadSeries, TakesARuleForAPattern) {
  ForEachCase("event_series.txt", [](const Strings& each) {
    const ReadItem read = ReadEventLines("UID:u\n" + LinesOf(each[1]));
    EXPECT_EQ(read.notices, Strings{});
    EXPECT_EQ(ShowTimes(read.appointment), each[2]);
    ASSERT_TRUE(read.appointment.series.has_value());
    EXPECT_EQ(ShowRule(read.appointment.series->pattern), each[3]);
    EXPECT_EQ(read.appointment.series->deleted.size(), 0u);
    EXPECT_EQ(ShowChanges(*read.appointment.series), Strings{});
  });
}

TEST(ReadSeries, TakesExceptions) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nSUMMARY:S\nDTSTART:20080215T090000\nDURATION:PT1H\nRRULE:FREQ=DAILY\n"
      "EXDATE:20080216T090000,20080217T090000\nEXDATE:20080215T090000 \nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080218T090000\nSUMMARY:Other\nLOCATION:There\n"
      "DTSTART:20080219T120000\nDTEND:20080219T130000\nTRANSP:TRANSPARENT\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080220T090000\nSTATUS:CANCELLED\nEND:VEVENT\n");
  ASSERT_EQ(file.appointments.size(), 1u);
  const Series& series = *file.appointments[0].appointment.series;
  EXPECT_EQ(ShowDays(series.deleted),
            (Strings{"2008-02-15", "2008-02-16", "2008-02-17", "2008-02-20"}));
  EXPECT_EQ(ShowChanges(series), Strings{"2008-02-18: 2008-02-19T12:00:00 - 2008-02-19T13:00:00"});
  EXPECT_EQ(series.changed[0].occurrence.subject, "Other");
  EXPECT_EQ(series.changed[0].occurrence.location, "There");
  EXPECT_EQ(series.changed[0].occurrence.busyStatus, 0);
  EXPECT_EQ(Texts(file.notices), Strings{});
}

TEST(ReadSeries, FindsExceptionsByTheirInstants) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART;TZID=Europe/Berlin:20080215T090000\nRRULE:FREQ=DAILY\n"
      "EXDATE:20080216T080000Z\nEXDATE;TZID=America/New_York:20080217T030000\n"
      "EXDATE;VALUE=DATE:20080218\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080219T080000Z\nSUMMARY:x\nDTSTART:20080219T100000Z\n"
      "END:VEVENT\n");
  const Series& series = *file.appointments.at(0).appointment.series;
  EXPECT_EQ(ShowDays(series.deleted), (Strings{"2008-02-16", "2008-02-17", "2008-02-18"}));
  EXPECT_EQ(ShowChanges(series), Strings{"2008-02-19: 2008-02-19T11:00:00 - 2008-02-19T11:00:00"});
  EXPECT_EQ(Texts(file.notices), Strings{});
}

TEST(ReadSeries, TakesTheDayOfATimeForOneOfWholeDays) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nSUMMARY:S\nDTSTART;VALUE=DATE:20020610\nRRULE:FREQ=YEARLY\n"
      "EXDATE;TZID=Asia/Tokyo:20040610T000000\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID;TZID=Asia/Hong_Kong:20030610T000000\n"
      "DTSTART;VALUE=DATE:20030609\nEND:VEVENT\n");
  const Series& series = *file.appointments.at(0).appointment.series;
  EXPECT_EQ(ShowDays(series.deleted), Strings{"2004-06-10"});
  EXPECT_EQ(ShowChanges(series), Strings{"2003-06-10: 2003-06-09 - 2003-06-09"});
}

TEST(ReadSeries, CompletesAChangeWithoutSummaryFromItsSeries) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nSUMMARY:S\nLOCATION:L\nDESCRIPTION:D\nTRANSP:TRANSPARENT\n"
      "DTSTART:20080215T090000\nDURATION:PT1H\nRRULE:FREQ=DAILY\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080218T090000\nDTSTART:20080218T110000\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080219T090000\nLOCATION:There\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080220T090000\nSUMMARY:\nDTSTART:20080220T110000\n"
      "END:VEVENT\n");
  const Series& series = *file.appointments.at(0).appointment.series;
  EXPECT_EQ(ShowChanges(series),
            (Strings{"2008-02-18: 2008-02-18T11:00:00 - 2008-02-18T12:00:00",
                     "2008-02-19: 2008-02-19T09:00:00 - 2008-02-19T10:00:00",
                     "2008-02-20: 2008-02-20T11:00:00 - 2008-02-20T11:00:00"}));
  EXPECT_EQ(series.changed[0].occurrence.subject, "S");
  EXPECT_EQ(series.changed[0].occurrence.body, "D");
  EXPECT_EQ(series.changed[0].occurrence.busyStatus, 0);
  EXPECT_EQ(series.changed[1].occurrence.location, "There");
  EXPECT_EQ(series.changed[2].occurrence.subject, "");
  EXPECT_EQ(series.changed[2].occurrence.body, "");
}

TEST(ReadSeries, NamesWhatAnOccurrenceCannotHaveOfItsOwn) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART:20080215T090000\nRRULE:FREQ=DAILY\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID;RANGE=THISANDFUTURE:20080218T090000\nSUMMARY:x\n"
      "DTSTART:20080218T110000\nCATEGORIES:c\nCLASS:PRIVATE\nBEGIN:VALARM\nTRIGGER:-PT5M\n"
      "END:VALARM\nEND:VEVENT\n");
  EXPECT_EQ(Texts(file.notices),
            (Strings{"8: CATEGORIES: an occurrence has the categories of its series",
                     "8: CLASS: an occurrence has that of its series",
                     "8: VALARM: an occurrence has the reminder of its series",
                     "10: RECURRENCE-ID: RANGE=THISANDFUTURE: this occurrence alone changes"}));
}

TEST(ReadSeries, KeepsTheLatestOfSeveralChangesOfOneOccurrence) {
  const auto change = [](const char* sequence, const char* subject) {
    return "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080218T090000\nSEQUENCE:" + std::string(sequence) +
           "\nSUMMARY:" + subject + "\nDTSTART:20080218T110000\nEND:VEVENT\n";
  };
  const CalendarFile file =
      ReadLines(change("2", "second") + change("1", "first") +
                "BEGIN:VEVENT\nUID:u\nDTSTART:20080215T090000\nRRULE:FREQ=DAILY\nEND:VEVENT\n");
  const Series& series = *file.appointments.at(0).appointment.series;
  ASSERT_EQ(series.changed.size(), 1u);
  EXPECT_EQ(series.changed[0].occurrence.subject, "second");
  EXPECT_EQ(Texts(file.notices),
            Strings{"10: UID: left out for a later state of the same in line 3"});
}

TEST(ReadSeries, PrefersAChangeToADateThatIsLeftOut) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART:20080215T090000\nRRULE:FREQ=DAILY\nEXDATE:20080218T090000\n"
      "END:VEVENT\nBEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080218T090000\nSUMMARY:x\n"
      "DTSTART:20080218T110000\nEND:VEVENT\n");
  const Series& series = *file.appointments.at(0).appointment.series;
  EXPECT_EQ(series.deleted.size(), 0u);
  EXPECT_EQ(series.changed.size(), 1u);
}

TEST(ReadSeries, NamesExceptionsThatHitNoOccurrence) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART:20080215T090000\nRRULE:FREQ=WEEKLY\nEXDATE:20080216T090000\n"
      "EXDATE:20080222T100000\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080217T090000\nSUMMARY:x\nDTSTART:20080217T110000\n"
      "END:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080218T090000\nSTATUS:CANCELLED\nEND:VEVENT\n");
  EXPECT_EQ(Uids(file), (Strings{"u", "u/20080217T090000"}));
  EXPECT_EQ(file.appointments[0].appointment.series->deleted.size(), 0u);
  EXPECT_EQ(Texts(file.notices),
            (Strings{"7: EXDATE: there is no occurrence on 2008-02-16T09:00:00",
                     "8: EXDATE: there is no occurrence on 2008-02-22T10:00:00",
                     "10: RECURRENCE-ID: there is no occurrence on 2008-02-17T09:00:00, kept as an "
                     "appointment of its own",
                     "16: RECURRENCE-ID: there is no occurrence on 2008-02-18T09:00:00"}));
}

TEST(ReadSeries, TakesNoChangeForTheSeriesItself) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nSUMMARY:S\nDTSTART:20080215T090000\nRRULE:FREQ=DAILY\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:soon\nSUMMARY:x\nDTSTART:20080217T090000\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:soon\nSUMMARY:y\nEND:VEVENT\n");
  ASSERT_EQ(Subjects(file), Strings{"S"});
  EXPECT_EQ(ShowChanges(*file.appointments[0].appointment.series),
            Strings{"2008-02-17: 2008-02-17T09:00:00 - 2008-02-17T09:00:00"});
  EXPECT_EQ(Texts(file.notices),
            (Strings{"11: RECURRENCE-ID: neither a day nor a time, left out: soon",
                     "15: RECURRENCE-ID: nobody knows of which occurrence, left out"}));
}

TEST(ReadSeries, KeepsChangesWhoseSeriesIsMissing) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID;VALUE=DATE:20080217\nSUMMARY:day\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080218T080000Z\nSUMMARY:time\n"
      "DTSTART:20080218T090000Z\nEND:VEVENT\n"
      "BEGIN:VEVENT\nRECURRENCE-ID:20080218T080000Z\nSUMMARY:no uid\n"
      "DTSTART:20080218T090000Z\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID:20080219T080000Z\nSTATUS:CANCELLED\nEND:VEVENT\n");
  EXPECT_EQ(Uids(file), (Strings{"u/20080217", "u/20080218T080000", ""}));
  EXPECT_EQ(ShowTimes(file.appointments[0].appointment), "2008-02-17 - 2008-02-17");
  EXPECT_EQ(file.notices.size(), 4u);
  EXPECT_EQ(file.notices.at(0).text,
            "RECURRENCE-ID: the series is not here, kept as an appointment of its own");
  EXPECT_EQ(file.notices.at(3).text, "STATUS: a cancelled occurrence of a series that is not here");
}

TEST(ReadSeries, KeepsAStartThatIsNoDayOfItsRuleBesideTheSeries) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nSUMMARY:S\nDTSTART:20080214T090000\nDURATION:PT1H\n"
      "RRULE:FREQ=WEEKLY;BYDAY=FR;COUNT=3\nEND:VEVENT\n");
  EXPECT_EQ(Uids(file), (Strings{"u", "u/20080214T090000"}));
  EXPECT_EQ(ShowTimes(file.appointments[0].appointment),
            "2008-02-15T09:00:00 - 2008-02-15T10:00:00");
  EXPECT_EQ(ShowRule(file.appointments[0].appointment.series->pattern),
            "FREQ=WEEKLY;BYDAY=FR;WKST=SU;COUNT=3");
  EXPECT_EQ(ShowTimes(file.appointments[1].appointment),
            "2008-02-14T09:00:00 - 2008-02-14T10:00:00");
  EXPECT_EQ(Texts(file.notices),
            Strings{"3: DTSTART: no day of its rule, an appointment of its own"});
}

TEST(ReadSeries, KeepsAdditionalDatesBesideTheSeries) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART:20080215T090000\nDURATION:PT1H\nRRULE:FREQ=WEEKLY\n"
      "RDATE:20080216T100000,20080222T090000\nRDATE;VALUE=PERIOD:20080217T100000/PT3H,"
      "20080218T100000/20080218T103000\nEXDATE:20080216T100000\nEND:VEVENT\n");
  EXPECT_EQ(Uids(file), (Strings{"u", "u/20080217T100000", "u/20080218T100000"}));
  EXPECT_EQ(ShowTimes(file.appointments[1].appointment),
            "2008-02-17T10:00:00 - 2008-02-17T13:00:00");
  EXPECT_EQ(ShowTimes(file.appointments[2].appointment),
            "2008-02-18T10:00:00 - 2008-02-18T10:30:00");
  EXPECT_EQ(
      Texts(file.notices),
      Strings{"3: RDATE: a series has no additional dates, each is an appointment of its own"});
}

TEST(ReadSeries, MakesAListOfDatesAppointments) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART;VALUE=DATE:20080215\nRDATE;VALUE=DATE:20080301,20080401\n"
      "EXDATE;VALUE=DATE:20080215\nEND:VEVENT\n");
  EXPECT_EQ(Uids(file), (Strings{"u/20080301", "u/20080401"}));
  EXPECT_EQ(Texts(file.notices), Strings{"6: RDATE: a handheld has no lists of dates; kept as 2 "
                                         "appointments of their own"});
}

TEST(ReadSeries, TakesAPeriodOfHoursOfAWholeDayAsThatDay) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART;VALUE=DATE:20080215\n"
      "RDATE;VALUE=PERIOD:20080217T100000/PT3H,20080219T100000/20080220T120000\nEND:VEVENT\n");
  ASSERT_EQ(file.appointments.size(), 3u);
  EXPECT_EQ(ShowTimes(file.appointments[1].appointment), "2008-02-17 - 2008-02-17");
  EXPECT_EQ(ShowTimes(file.appointments[2].appointment), "2008-02-19 - 2008-02-20");
}

TEST(ReadSeries, SaysWhenNothingIsLeft) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART;VALUE=DATE:20090401\nRDATE;VALUE=DATE:20090401\n"
      "EXDATE;VALUE=DATE:20090401\nEND:VEVENT\n");
  EXPECT_TRUE(file.appointments.empty());
  EXPECT_EQ(Texts(file.notices), Strings{"6: RDATE: a handheld has no lists of dates, and no "
                                         "occurrence of it is left"});
}

TEST(ReadSeries, MakesWhatNoPatternSaysAppointments) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nSUMMARY:S\nDTSTART;VALUE=DATE:20041102\n"
      "RRULE:FREQ=YEARLY;BYMONTH=11;BYDAY=TU;BYMONTHDAY=2,3,4,5,6,7,8\n"
      "EXDATE;VALUE=DATE:20081104\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:u\nRECURRENCE-ID;VALUE=DATE:20051108\nSUMMARY:Moved\n"
      "DTSTART;VALUE=DATE:20051109\nEND:VEVENT\n");
  ASSERT_EQ(file.appointments.size(), 9u);
  EXPECT_EQ(file.appointments[0].appointment.uid, "u/20041102");
  EXPECT_EQ(file.appointments[0].line, 3u);
  EXPECT_EQ(file.appointments[7].appointment.uid, "u/20131105");
  EXPECT_EQ(file.appointments[8].appointment.uid, "u/20051108");
  EXPECT_EQ(file.appointments[8].appointment.subject, "Moved");
  EXPECT_EQ(file.appointments[8].line, 10u);
  EXPECT_EQ(Texts(file.notices), Strings{"7: RRULE: no pattern of a handheld says this; kept as 9 "
                                         "appointments of their own, until 2014-11-03"});
}

TEST(ReadSeries, FollowsHoursForFourHundredAppointments) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART;TZID=America/New_York:20080215T090000\nDURATION:PT10M\n"
      "RRULE:FREQ=HOURLY;INTERVAL=12\nEND:VEVENT\n");
  ASSERT_EQ(file.appointments.size(), 400u);
  EXPECT_EQ(file.appointments[1].appointment.uid, "u/20080215T210000");
  EXPECT_EQ(ShowTimes(file.appointments[1].appointment),
            "2008-02-16T03:00:00 - 2008-02-16T03:10:00");
  EXPECT_EQ(Texts(file.notices),
            Strings{"7: RRULE: no pattern of a handheld says this; kept as "
                    "400 appointments of their own, until 2008-09-02T09:00:00"});
}

TEST(ReadSeries, EndsAppointmentsWithTheirRule) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART:20080215T090000\nRRULE:FREQ=DAILY;BYHOUR=9,17;COUNT=3\n"
      "END:VEVENT\n");
  EXPECT_EQ(Uids(file), (Strings{"u/20080215T090000", "u/20080215T170000", "u/20080216T090000"}));
  EXPECT_EQ(Texts(file.notices), Strings{"6: RRULE: no pattern of a handheld says this; kept as 3 "
                                         "appointments of their own"});
}

TEST(ReadSeries, JoinsSeveralRulesAndTakesAwayOthers) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART:20080215T090000\nRRULE:FREQ=DAILY;COUNT=4\n"
      "RRULE:FREQ=WEEKLY;COUNT=3\nEXRULE:FREQ=DAILY;INTERVAL=2;COUNT=2\nEND:VEVENT\n");
  EXPECT_EQ(Uids(file), (Strings{"u/20080216T090000", "u/20080218T090000", "u/20080222T090000",
                                 "u/20080229T090000"}));
}

TEST(ReadSeries, BeginsNoEarlierThan1900) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTART;VALUE=DATE:17530401\nRRULE:FREQ=YEARLY;BYMONTH=4;BYDAY=1SU\n"
      "END:VEVENT\n"
      "BEGIN:VEVENT\nUID:c\nDTSTART;VALUE=DATE:18900101\nRRULE:FREQ=YEARLY;COUNT=15\nEND:VEVENT\n");
  ASSERT_EQ(file.appointments.size(), 2u);
  EXPECT_EQ(ShowTimes(file.appointments[0].appointment), "1900-04-01 - 1900-04-01");
  EXPECT_EQ(ShowRule(file.appointments[0].appointment.series->pattern),
            "FREQ=YEARLY;BYMONTH=4;BYDAY=1SU");
  EXPECT_EQ(ShowTimes(file.appointments[1].appointment), "1900-01-01 - 1900-01-01");
  EXPECT_EQ(ShowRule(file.appointments[1].appointment.series->pattern),
            "FREQ=YEARLY;BYMONTH=1;BYMONTHDAY=1;COUNT=5");
  EXPECT_EQ(Texts(file.notices),
            (Strings{"3: DTSTART: before 1900, the series is kept from 1900-04-01 on",
                     "8: DTSTART: before 1900, the series is kept from 1900-01-01 on"}));
}

TEST(ReadSeries, FollowsALongSeriesFromWhereItWasWritten) {
  const CalendarFile file = ReadLines(
      "BEGIN:VEVENT\nUID:u\nDTSTAMP:20030701T000000Z\nDTSTART;VALUE=DATE:17531106\n"
      "RRULE:FREQ=MONTHLY;BYDAY=TU;BYMONTHDAY=2,3,4,5,6,7,8;BYMONTH=11\nEND:VEVENT\n");
  ASSERT_EQ(file.appointments.size(), 10u);
  EXPECT_EQ(file.appointments[0].appointment.uid, "u/20021105");
  EXPECT_EQ(Texts(file.notices),
            Strings{"7: RRULE: no pattern of a handheld says this; kept as 10 appointments of "
                    "their own, from 2002-06-30, until 2012-06-30"});
}

TEST(ReadSeries, LeavesOutRulesThatAreNone) {
  for (const char* rule :
       {"W1 MO #0", "FREQ=SOMETIMES", "FREQ=DAILY;INTERVAL=0", "FREQ=DAILY;COUNT=0", "INTERVAL=2",
        "FREQ=DAILY;FREQ=DAILY", "FREQ=DAILY;UNTIL=soon", "FREQ", "FREQ=DAILY;NEWPART=1",
        "FREQ=YEARLY;BYMONTH=13"}) {
    const ReadItem read =
        ReadEventLines(std::string("UID:u\nDTSTART:20080215T090000\nRRULE:") + rule + "\n");
    EXPECT_EQ(read.appointment.uid, "u") << rule;
    EXPECT_FALSE(read.appointment.series.has_value()) << rule;
    ASSERT_EQ(read.notices.size(), 1u) << rule;
    EXPECT_EQ(read.notices[0].find("6: RRULE: "), 0u) << read.notices[0];
  }
}

TEST(ReadSeries, KeepsOnceWhatItsRuleNeverGives) {
  const ReadItem read =
      ReadEventLines("UID:u\nDTSTART:20080215T090000\nRRULE:FREQ=DAILY;BYMONTH=2;BYMONTHDAY=30\n");
  EXPECT_EQ(read.appointment.uid, "u");
  EXPECT_FALSE(read.appointment.series.has_value());
  EXPECT_EQ(read.notices,
            Strings{"6: RRULE: it gives no day, left out: FREQ=DAILY;BYMONTH=2;BYMONTHDAY=30"});
}

TEST(ReadSeries, KeepsADayThatIsToComeByTheHourOnce) {
  const ReadItem read = ReadEventLines("UID:u\nDTSTART;VALUE=DATE:20080215\nRRULE:FREQ=HOURLY\n");
  EXPECT_EQ(read.appointment.uid, "u");
  EXPECT_EQ(read.notices,
            Strings{"6: RRULE: a day does not come by the hour, left out: FREQ=HOURLY"});
}

TEST(ReadSeries, NamesAReminderAtATime) {
  const ReadItem read = ReadEventLines(
      "UID:u\nDTSTART;TZID=Europe/Berlin:20080215T093000\nRRULE:FREQ=DAILY\nBEGIN:VALARM\n"
      "TRIGGER;VALUE=DATE-TIME:20080215T083000Z\nEND:VALARM\n");
  EXPECT_EQ(read.appointment.reminderMinutes, 0);
  EXPECT_EQ(read.notices,
            Strings{"8: TRIGGER: taken as so long before every occurrence as before the first"});
}

}  // namespace
}  // namespace formats::testing
