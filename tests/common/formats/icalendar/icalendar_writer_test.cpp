#include <gtest/gtest.h>

#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

Appointment Lunch() {
  Appointment lunch;
  lunch.uid = "u";
  lunch.subject = "Lunch";
  lunch.start = At(2008, 2, 15, 12);
  lunch.end = At(2008, 2, 15, 13, 30);
  return lunch;
}

Appointment Days(local_days first, int count) {
  Appointment days;
  days.uid = "u";
  days.allDay = true;
  days.start = first;
  days.end = first + std::chrono::days(count);
  return days;
}

CalendarText WriteOne(const Appointment& appointment, std::string_view zone = "UTC") {
  return WriteICalendar(std::span(&appointment, 1), {}, ZoneOf(zone));
}

CalendarText WriteOne(const Task& task, std::string_view zone = "UTC") {
  return WriteICalendar({}, std::span(&task, 1), ZoneOf(zone));
}

std::string Lines(const std::string& bytes) {
  std::string lines;
  for (const char c : bytes) {
    if (c != '\r') lines += c;
  }
  return lines;
}

// What stands between the lines that every file has.
std::string Body(const CalendarText& text) {
  const std::string begin = "BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//Corvane//Calendar//EN\n";
  const std::string end = "END:VCALENDAR\n";
  const std::string lines = Lines(text.bytes);
  EXPECT_EQ(lines.substr(0, begin.size()), begin);
  EXPECT_TRUE(lines.ends_with(end));
  return lines.substr(begin.size(), lines.size() - begin.size() - end.size());
}

TEST(WriteICalendar, WritesNoItemsAsAnEmptyCalendar) {
  EXPECT_EQ(Body(WriteICalendar({}, {}, ZoneOf("Europe/Berlin"))), "");
}

TEST(WriteICalendar, WritesAnAppointment) {
  Appointment a = Lunch();
  a.location = "Room; 1";
  a.body = "a\nb, c";
  a.categories = {"Work", "Food"};
  a.isPrivate = true;
  a.busyStatus = 1;
  a.reminderMinutes = 15;
  EXPECT_EQ(Body(WriteOne(a)),
            "BEGIN:VEVENT\nUID:u\nDTSTAMP:19700101T000000Z\nDTSTART:20080215T120000Z\n"
            "DTEND:20080215T133000Z\nSUMMARY:Lunch\nLOCATION:Room\\; 1\nDESCRIPTION:a\\nb\\, c\n"
            "CATEGORIES:Work,Food\nCLASS:PRIVATE\nSTATUS:TENTATIVE\nTRANSP:OPAQUE\n"
            "X-MICROSOFT-CDO-BUSYSTATUS:TENTATIVE\nBEGIN:VALARM\nACTION:DISPLAY\n"
            "DESCRIPTION:Reminder\nTRIGGER:-PT15M\nEND:VALARM\nEND:VEVENT\n");
}

TEST(WriteICalendar, WritesDaysWithoutAZone) {
  EXPECT_EQ(Body(WriteOne(Days(Day(2008, 2, 15), 2), "Europe/Berlin")),
            "BEGIN:VEVENT\nUID:u\nDTSTAMP:19700101T000000Z\nDTSTART;VALUE=DATE:20080215\n"
            "DTEND;VALUE=DATE:20080217\nTRANSP:OPAQUE\nX-MICROSOFT-CDO-BUSYSTATUS:BUSY\n"
            "END:VEVENT\n");
}

TEST(WriteICalendar, WritesAZoneWithItsTimes) {
  EXPECT_EQ(Body(WriteOne(Lunch(), "Asia/Kolkata")),
            "BEGIN:VTIMEZONE\nTZID:Asia/Kolkata\nBEGIN:STANDARD\nDTSTART:20070101T000000\n"
            "TZOFFSETFROM:+0530\nTZOFFSETTO:+0530\nEND:STANDARD\nEND:VTIMEZONE\n"
            "BEGIN:VEVENT\nUID:u\nDTSTAMP:19700101T000000Z\n"
            "DTSTART;TZID=Asia/Kolkata:20080215T120000\n"
            "DTEND;TZID=Asia/Kolkata:20080215T133000\nSUMMARY:Lunch\nTRANSP:OPAQUE\n"
            "X-MICROSOFT-CDO-BUSYSTATUS:BUSY\nEND:VEVENT\n");
}

TEST(WriteICalendar, WritesASeriesWithItsExceptions) {
  Appointment a = Lunch();
  a.series.emplace();
  a.series->pattern = calendar::PatternFrom(calendar::PatternType::kWeekly, Day(2008, 2, 15));
  a.series->pattern.until = Day(2008, 12, 31);
  a.series->deleted = {Day(2008, 2, 22)};
  Occurrence changed = Days(Day(2008, 3, 1), 1);
  changed.busyStatus = 0;
  a.series->changed = {{Day(2008, 2, 29), changed}};
  a.isPrivate = true;
  EXPECT_EQ(Body(WriteOne(a)),
            "BEGIN:VEVENT\nUID:u\nDTSTAMP:19700101T000000Z\nDTSTART:20080215T120000Z\n"
            "DTEND:20080215T133000Z\nRRULE:FREQ=WEEKLY;BYDAY=FR;WKST=SU;UNTIL=20081231T120000Z\n"
            "EXDATE:20080222T120000Z\nSUMMARY:Lunch\nCLASS:PRIVATE\nTRANSP:OPAQUE\n"
            "X-MICROSOFT-CDO-BUSYSTATUS:BUSY\nEND:VEVENT\n"
            "BEGIN:VEVENT\nUID:u\nDTSTAMP:19700101T000000Z\nRECURRENCE-ID:20080229T120000Z\n"
            "DTSTART;VALUE=DATE:20080301\nDTEND;VALUE=DATE:20080302\nSUMMARY:\nCLASS:PRIVATE\n"
            "TRANSP:TRANSPARENT\nX-MICROSOFT-CDO-BUSYSTATUS:FREE\nEND:VEVENT\n");
}

TEST(WriteICalendar, WritesAnUntilAsAnInstantOfTheZone) {
  Appointment a = Lunch();
  a.series.emplace();
  a.series->pattern.until = Day(2008, 7, 1);
  EXPECT_NE(WriteOne(a, "Europe/Berlin").bytes.find("UNTIL=20080701T100000Z\r\n"),
            std::string::npos);
  Appointment days = Days(Day(2008, 2, 15), 1);
  days.series = a.series;
  EXPECT_NE(WriteOne(days, "Europe/Berlin").bytes.find("UNTIL=20080701\r\n"), std::string::npos);
}

TEST(WriteICalendar, MovesAStartToTheFirstDayOfItsPattern) {
  Appointment a = Days(Day(2008, 2, 15), 2);
  a.series.emplace();
  a.series->pattern = calendar::PatternFrom(calendar::PatternType::kWeekly, Day(2008, 2, 18));
  const CalendarText text = WriteOne(a);
  EXPECT_NE(text.bytes.find("DTSTART;VALUE=DATE:20080218\r\nDTEND;VALUE=DATE:20080220\r\n"),
            std::string::npos);
  EXPECT_EQ(text.losses, Strings{});
}

TEST(WriteICalendar, WritesATask) {
  Task t;
  t.uid = "u";
  t.subject = "Taxes";
  t.body = "x";
  t.start = Day(2008, 3, 1);
  t.due = Day(2008, 4, 15);
  t.importance = Importance::kHigh;
  t.complete = true;
  t.completed = Day(2008, 4, 10);
  t.reminder = At(2008, 4, 14, 8);
  t.categories = {"Home"};
  t.isPrivate = true;
  t.pattern = calendar::PatternFrom(calendar::PatternType::kYearly, Day(2008, 3, 1));
  t.pattern->until = Day(2010, 3, 1);
  EXPECT_EQ(Body(WriteOne(t, "Europe/Berlin")),
            "BEGIN:VTODO\nUID:u\nDTSTAMP:19700101T000000Z\nSUMMARY:Taxes\n"
            "DTSTART;VALUE=DATE:20080301\nDUE;VALUE=DATE:20080415\n"
            "RRULE:FREQ=YEARLY;BYMONTH=3;BYMONTHDAY=1;UNTIL=20100301\nDESCRIPTION:x\n"
            "CATEGORIES:Home\nCLASS:PRIVATE\nPRIORITY:1\nSTATUS:COMPLETED\n"
            "COMPLETED:20080410T100000Z\nBEGIN:VALARM\nACTION:DISPLAY\nDESCRIPTION:Reminder\n"
            "TRIGGER;VALUE=DATE-TIME:20080414T060000Z\nEND:VALARM\nEND:VTODO\n");
}

TEST(WriteICalendar, WritesTheSameBytesForTheSameItems) {
  EXPECT_EQ(WriteOne(Lunch(), "Europe/Berlin").bytes, WriteOne(Lunch(), "Europe/Berlin").bytes);
}

TEST(WriteICalendar, SaysWhatNoEventCanSay) {
  Appointment noStart = Lunch();
  noStart.start.reset();
  EXPECT_EQ(WriteOne(noStart).losses, Strings{"Lunch: an event needs a start, left out"});
  EXPECT_EQ(Body(WriteOne(noStart)), "");

  Appointment noEnd = Lunch();
  noEnd.end.reset();
  EXPECT_EQ(WriteOne(noEnd).losses, Strings{"Lunch: it has no end, which is written as its start"});

  Appointment backwards = Lunch();
  backwards.end = At(2008, 2, 15, 11);
  EXPECT_EQ(WriteOne(backwards).losses,
            Strings{"Lunch: it ends before it starts, its start is written as its end"});

  Appointment oddDay = Lunch();
  oddDay.allDay = true;
  EXPECT_EQ(WriteOne(oddDay).losses,
            Strings{"Lunch: it is for whole days but has other times, the days are written"});
  EXPECT_NE(WriteOne(oddDay).bytes.find("DTEND;VALUE=DATE:20080216"), std::string::npos);
}

TEST(WriteICalendar, SaysWhichExceptionsHaveNoOccurrence) {
  Appointment a = Lunch();
  a.series.emplace();
  a.series->pattern = calendar::PatternFrom(calendar::PatternType::kWeekly, Day(2008, 2, 15));
  a.series->pattern.occurrences = 3;
  a.series->deleted = {Day(2008, 2, 16), Day(2008, 2, 29)};
  Occurrence noStart = Lunch();
  noStart.start.reset();
  a.series->changed = {{Day(2008, 2, 22), noStart}, {Day(2008, 3, 7), Lunch()}};
  const CalendarText text = WriteOne(a);
  EXPECT_EQ(text.losses, (Strings{"Lunch: it has no occurrence on 2008-02-16 to be deleted",
                                  "Lunch: its occurrence of 2008-02-22 needs a start, not changed",
                                  "Lunch: it has no occurrence on 2008-03-07 to be changed"}));
  EXPECT_NE(text.bytes.find("EXDATE:20080229T120000Z"), std::string::npos);
}

TEST(WriteICalendar, LeavesOutASeriesWithoutADay) {
  Appointment a = Lunch();
  a.series.emplace();
  a.series->pattern.until = Day(2008, 2, 14);
  EXPECT_EQ(WriteOne(a).losses, Strings{"Lunch: its series has no day, left out"});
  Task t;
  t.uid = "u";
  t.subject = "T";
  t.pattern = a.series->pattern;
  EXPECT_EQ(WriteOne(t).losses, Strings{"T: its series has no day, written without it"});
}

TEST(WriteICalendar, FoldsLinesAndKeepsCharactersWhole) {
  Appointment a = Lunch();
  for (int i = 0; i < 100; ++i) a.subject += "山é";
  for (const char* zone : {"UTC", "Europe/Berlin"}) {
    const std::string bytes = WriteOne(a, zone).bytes;
    for (std::size_t start = 0; start < bytes.size();) {
      const std::size_t end = bytes.find("\r\n", start);
      ASSERT_NE(end, std::string::npos);
      EXPECT_LE(end - start, 75u);
      EXPECT_NE(static_cast<unsigned char>(bytes[start + (bytes[start] == ' ')]) & 0xC0, 0x80);
      start = end + 2;
    }
  }
}

}  // namespace
}  // namespace formats::testing
