#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "common/formats/icalendar/event_series.h"
#include "tests/common/formats/icalendar/calendar_support.h"
#include "tests/support/sanitizers.h"

namespace formats::testing {
namespace {

std::string Repeated(const std::string& text, std::size_t most) {
  const std::size_t count = corvane::testing::Many(most);
  std::string repeated;
  repeated.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) repeated += text;
  return repeated;
}

CalendarFile ReadEvent(const std::string& lines) {
  return ReadLines("BEGIN:VEVENT\nUID:u\n" + lines + "END:VEVENT\n");
}

TEST(HostileCalendar, FollowsARuleThatNeverComesForAWhileOnly) {
  for (const char* frequency :
       {"SECONDLY", "MINUTELY", "HOURLY", "DAILY", "WEEKLY", "MONTHLY", "YEARLY"}) {
    const CalendarFile file = ReadEvent(std::string("DTSTART:20080215T090000\nRRULE:FREQ=") +
                                        frequency + ";BYMONTH=2;BYMONTHDAY=30\n");
    EXPECT_EQ(Uids(file), Strings{"u"}) << frequency;
    EXPECT_EQ(file.notices.size(), 1u) << frequency;
  }
}

TEST(HostileCalendar, KeepsSeriesOnceWhenItsBudgetIsUsedUp) {
  const calendar::Zone zone = ZoneOf("UTC");
  WorkBudget budget;
  ZoneTable zones(zone, budget);
  const auto read = [&](const char* rule) {
    EventGroup group;
    group.master.emplace();
    group.master->fields.uid = "u";
    group.master->start = Moment{At(2008, 2, 15, 9), false, true, zones.own()};
    group.master->rules = {{7, rule}};
    CalendarFile file;
    AddAppointments(std::move(group), zones, budget, file);
    return file;
  };
  const CalendarFile first = read("FREQ=HOURLY;BYMONTH=2;BYMONTHDAY=30");
  EXPECT_EQ(Texts(first.notices),
            Strings{"7: RRULE: it gives no day, left out: FREQ=HOURLY;BYMONTH=2;BYMONTHDAY=30"});
  EXPECT_LT(budget.units, WorkBudget().units - 1'000'000);
  EXPECT_TRUE(read("FREQ=DAILY").appointments.at(0).appointment.series.has_value());
  budget.units = 0;
  const CalendarFile last = read("FREQ=DAILY");
  EXPECT_EQ(Uids(last), Strings{"u"});
  EXPECT_FALSE(last.appointments[0].appointment.series.has_value());
  EXPECT_EQ(Texts(last.notices),
            Strings{"7: RRULE: the series of this file are too many to be followed, left out: "
                    "FREQ=DAILY"});
}

TEST(HostileCalendar, HasABudgetForCopiesOfLongTexts) {
  const CalendarFile file = ReadEvent("DTSTART:20080215T090000\nRRULE:FREQ=HOURLY\nDESCRIPTION:" +
                                      std::string(4 << 20, 'x') + "\n");
  EXPECT_GE(file.appointments.size(), 1u);
  EXPECT_LE(file.appointments.size(), 64u);
}

TEST(HostileCalendar, HasThatBudgetForChangedOccurrencesAndDates) {
  const std::string body = "DESCRIPTION:" + std::string(4 << 20, 'x') + "\n";
  const CalendarFile zones =
      ReadEvent("DTSTART;TZID=Australia/Sydney:20080215T090000\nRRULE:FREQ=DAILY\n" + body);
  EXPECT_LE(zones.appointments.at(0).appointment.series->changed.size(), 64u);
  std::string dates;
  for (int hour = 10; hour < 24; ++hour) {
    for (int minute = 10; minute < 20; ++minute) {
      dates += "20080217T" + std::to_string(hour) + std::to_string(minute) + "00,";
    }
  }
  const CalendarFile listed =
      ReadEvent("DTSTART:20080215T090000\nRRULE:FREQ=DAILY\nRDATE:" + dates + "\n" + body);
  EXPECT_LE(listed.appointments.size(), 65u);
  EXPECT_TRUE(std::any_of(listed.notices.begin(), listed.notices.end(), [](const Notice& notice) {
    return notice.text.find("dates are left out") != std::string::npos;
  }));
}

TEST(HostileCalendar, TakesVeryManyExceptions) {
  std::string lines = "DTSTART:20080215T090000\nRRULE:FREQ=DAILY;COUNT=300000\nEXDATE:";
  lines += Repeated("20080216T090000,", 50'000) + "20080217T090000\n";
  lines += Repeated("EXDATE:20080218T090000\n", 20'000);
  const CalendarFile file = ReadEvent(lines);
  EXPECT_EQ(ShowDays(file.appointments.at(0).appointment.series->deleted),
            (Strings{"2008-02-16", "2008-02-17", "2008-02-18"}));
}

TEST(HostileCalendar, TakesVeryManyDates) {
  const CalendarFile file =
      ReadEvent("DTSTART:20080215T090000\nRDATE:" + Repeated("20080216T090000,", 50'000) + "\n");
  EXPECT_EQ(file.appointments.size(), 2u);
  std::string dates;
  for (int i = 0; i < 5000; ++i) dates += "20080216T09" + std::to_string(1000 + i % 5000) + ",";
  EXPECT_LE(ReadEvent("DTSTART:20080215T090000\nRDATE:" + dates + "\n").appointments.size(), 400u);
}

TEST(HostileCalendar, TakesVeryLongLinesAndValues) {
  const std::string lot(1 << 20, ';');
  const CalendarFile file =
      ReadEvent("DTSTART:20080215T090000\nRRULE:FREQ=DAILY" + lot +
                "\nEXDATE;TZID=" + std::string(1 << 20, 'x') + ":20080215T090000\nSUMMARY" + lot +
                ":x\nSUMMARY:" + Repeated(" \\,\\n", 100'000) + "\n");
  EXPECT_EQ(file.appointments.size(), 1u);
}

TEST(HostileCalendar, TakesVeryManyCategories) {
  std::string lines = "DTSTART:20080215\n";
  for (int i = 0; i < 20'000; ++i) lines += "CATEGORIES:c" + std::to_string(i % 100) + "\n";
  EXPECT_EQ(ReadEvent(lines).appointments.at(0).appointment.categories.size(), 100u);
}

TEST(HostileCalendar, TakesVeryManyStatesOfOneEvent) {
  const std::string state = "BEGIN:VEVENT\nUID:u\nDTSTART:20080215\nEND:VEVENT\n";
  const CalendarFile file = ReadLines(Repeated(state, 20'000));
  EXPECT_EQ(file.appointments.size(), 1u);
  EXPECT_LE(file.notices.size(), 201u);
}

TEST(HostileCalendar, TakesVeryManyZones) {
  std::string lines;
  for (int i = 0; i < 200; ++i) {
    const std::string name = "Z" + std::to_string(i);
    lines += "BEGIN:VTIMEZONE\nTZID:" + name +
             "\nBEGIN:STANDARD\nDTSTART:16010101T000000\nRRULE:FREQ=DAILY\nTZOFFSETFROM:+0100\n"
             "TZOFFSETTO:+0200\nEND:STANDARD\nEND:VTIMEZONE\nBEGIN:VEVENT\nUID:" +
             name + "\nDTSTART;TZID=" + name + ":20080215T090000\nEND:VEVENT\n";
  }
  EXPECT_EQ(ReadLines(lines).appointments.size(), 200u);
}

TEST(HostileCalendar, TakesOffsetsAndTimesAtTheirBounds) {
  const CalendarFile file = ReadLines(
      "BEGIN:VTIMEZONE\nTZID:X\nBEGIN:STANDARD\nDTSTART:00000101T000000\nTZOFFSETFROM:+235959\n"
      "TZOFFSETTO:-235959\nRDATE:99991231T235959\nEND:STANDARD\nEND:VTIMEZONE\n"
      "BEGIN:VEVENT\nUID:a\nDTSTART;TZID=X:00000101T000000\nDTEND;TZID=X:99991231T235959\n"
      "RRULE:FREQ=DAILY;INTERVAL=9999;COUNT=999999999\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:b\nDTSTART:29991231T235959\nDURATION:P1500000D\n"
      "RRULE:FREQ=YEARLY;INTERVAL=9999;UNTIL=00010101\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:c\nDTSTART;VALUE=DATE:99991231\nRRULE:FREQ=DAILY\nEND:VEVENT\n"
      "BEGIN:VTODO\nDUE:99991231T235959Z\nRRULE:FREQ=DAILY\nBEGIN:VALARM\nTRIGGER:P1500000D\n"
      "END:VALARM\nEND:VTODO\n");
  EXPECT_EQ(file.appointments.size(), 0u);
  EXPECT_EQ(file.tasks.size(), 1u);
}

TEST(HostileCalendar, SurvivesEveryCutAndEveryChangedByte) {
  const std::string text =
      "BEGIN:VCALENDAR\r\nBEGIN:VTIMEZONE\r\nTZID:X\r\nBEGIN:STANDARD\r\n"
      "DTSTART:19671029T020000\r\nRRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=10\r\n"
      "TZOFFSETFROM:-0400\r\nTZOFFSETTO:-0500\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n"
      "BEGIN:VEVENT\r\nUID:u\r\nDTSTART;TZID=X:20080215T090000\r\nDURATION:PT1H\r\n"
      "RRULE:FREQ=WEEKLY;COUNT=10;BYDAY=FR\r\nEXDATE;TZID=X:20080222T090000\r\n"
      "RDATE;VALUE=PERIOD:20080217T100000/PT3H\r\nBEGIN:VALARM\r\nTRIGGER:-PT5M\r\nEND:VALARM\r\n"
      "END:VEVENT\r\nBEGIN:VTODO\r\nDUE;VALUE=DATE:20080215\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";
  const calendar::Zone zone = ZoneOf("Europe/Berlin");
  for (std::size_t length = 0; length <= text.size(); ++length) {
    const CalendarFile file = ReadICalendar(text.substr(0, length), zone);
    EXPECT_LE(file.tasks.size(), 1u);
  }
  std::mt19937 random(1);
  for (int i = 0; i < 600; ++i) {
    std::string changed = text;
    for (int n = 0; n < 3; ++n) changed[random() % changed.size()] = static_cast<char>(random());
    EXPECT_LE(ReadICalendar(changed, zone).tasks.size(), 1u);
  }
}

}  // namespace
}  // namespace formats::testing
