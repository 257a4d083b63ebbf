#include <gtest/gtest.h>

#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

constexpr const char* kEventA =
    "BEGIN:VEVENT\nUID:a\nSUMMARY:A\nDTSTART:20080215T090000\nEND:VEVENT\n";
constexpr const char* kEventB =
    "BEGIN:VEVENT\nUID:b\nSUMMARY:B\nDTSTART:20080216T090000\nEND:VEVENT\n";

CalendarFile Read(std::string_view text) {
  return ReadICalendar(text, ZoneOf("Europe/Berlin"));
}

TEST(ReadICalendar, TakesSeveralCalendarsAndTellsTheLines) {
  const std::string text = std::string("\r\nBEGIN:VCALENDAR\r\n") + kEventA +
                           "END:VCALENDAR\n\nbegin:vcalendar\r\n" + kEventB + "end:vcalendar";
  const CalendarFile file = Read(text);
  EXPECT_EQ(Subjects(file), (Strings{"A", "B"}));
  EXPECT_EQ(file.appointments.at(0).line, 3u);
  EXPECT_EQ(file.appointments.at(1).line, 11u);
  EXPECT_EQ(Texts(file.notices), Strings{});
}

TEST(ReadICalendar, TakesAnEventOutsideOfACalendar) {
  const CalendarFile file = Read(kEventA);
  EXPECT_EQ(Subjects(file), Strings{"A"});
  EXPECT_EQ(Texts(file.notices), Strings{});
}

TEST(ReadICalendar, HasNoItemsInOtherText) {
  EXPECT_EQ(Texts(Read("").notices), Strings{});
  const CalendarFile file = Read("<html>\nnothing here\n");
  EXPECT_TRUE(file.appointments.empty());
  EXPECT_EQ(Texts(file.notices), Strings{"1: not part of a calendar, left out"});
}

TEST(ReadICalendar, KeepsAnEventThatIsCutOff) {
  const CalendarFile file =
      Read("BEGIN:VCALENDAR\nBEGIN:VEVENT\nSUMMARY:A\nDTSTART:20080215T090000");
  EXPECT_EQ(Subjects(file), Strings{"A"});
  EXPECT_EQ(Texts(file.notices), Strings{"2: the VEVENT that begins here has no END:VEVENT"});
}

TEST(ReadICalendar, EndsAnEventWhereTheNextBegins) {
  const CalendarFile file =
      Read(std::string("BEGIN:VCALENDAR\nBEGIN:VEVENT\nSUMMARY:A\nDTSTART:20080215T090000\n") +
           kEventB + "END:VCALENDAR\n");
  EXPECT_EQ(Subjects(file), (Strings{"A", "B"}));
  EXPECT_EQ(Texts(file.notices), Strings{"2: the VEVENT that begins here has no END:VEVENT"});
}

TEST(ReadICalendar, NamesEachKindOfComponentThatIsNotKeptOnce) {
  const CalendarFile file =
      Read(std::string("BEGIN:VCALENDAR\nBEGIN:VJOURNAL\nSUMMARY:x\nEND:VJOURNAL\nBEGIN:VFREEBUSY\n"
                       "END:VFREEBUSY\nBEGIN:VJOURNAL\nEND:VJOURNAL\nBEGIN:X-OWN\nBEGIN:VALARM\n"
                       "END:VALARM\nEND:X-OWN\n") +
           kEventA + "END:VCALENDAR\n");
  EXPECT_EQ(Subjects(file), Strings{"A"});
  EXPECT_EQ(Texts(file.notices),
            (Strings{"2: VJOURNAL: a handheld keeps no journal",
                     "5: VFREEBUSY: a handheld keeps no free and busy times"}));
}

TEST(ReadICalendar, SkipsAComponentWithinAnEvent) {
  const CalendarFile file = Read(
      "BEGIN:VEVENT\nDTSTART:20080215T090000\nBEGIN:PARTICIPANT\nSUMMARY:not this\n"
      "BEGIN:VLOCATION\nEND:VLOCATION\nEND:PARTICIPANT\nSUMMARY:A\nEND:VEVENT\n");
  EXPECT_EQ(Subjects(file), Strings{"A"});
  EXPECT_EQ(Texts(file.notices), Strings{"3: PARTICIPANT: a handheld has no place for it"});
}

TEST(ReadICalendar, EndsAComponentWithinAnEventWithWhatIsAroundIt) {
  const CalendarFile file = Read(
      "BEGIN:VEVENT\nDTSTART:20080215T090000\nBEGIN:VALARM\nBEGIN:X-OWN\nEND:VALARM\nSUMMARY:A\n"
      "BEGIN:X-OWN\nEND:VCALENDAR\nLOCATION:not this\nEND:VEVENT\n");
  EXPECT_EQ(Subjects(file), Strings{"A"});
  EXPECT_EQ(file.appointments.at(0).appointment.location, "");
}

TEST(ReadICalendar, FindsTheEndOfAnEventBehindAComponentWithoutEnd) {
  const CalendarFile file = Read(std::string("BEGIN:VEVENT\nDTSTART:20080215T090000\nSUMMARY:A\n"
                                             "BEGIN:VLOCATION\nNAME:x\nEND:VEVENT\n") +
                                 kEventB);
  EXPECT_EQ(Subjects(file), (Strings{"A", "B"}));
}

TEST(ReadICalendar, NamesAnEndOfNothing) {
  const CalendarFile file = Read(std::string("BEGIN:VCALENDAR\nEND:VALARM\n") + kEventA);
  EXPECT_EQ(Subjects(file), Strings{"A"});
  EXPECT_EQ(Texts(file.notices), Strings{"2: END:VALARM: nothing of that name is open"});
}

TEST(ReadICalendar, RepairsNamesThatAreNoUtf8) {
  const CalendarFile file =
      Read(std::string("BEGIN:VCALENDAR\nEND:\xFFx\nBEGIN:\xFEy\n") + kEventA);
  EXPECT_EQ(Texts(file.notices), (Strings{"2: END:\uFFFDX: nothing of that name is open",
                                          "3: \uFFFDY: a handheld has no place for it"}));
}

TEST(ReadICalendar, BoundsNesting) {
  std::string text = "BEGIN:VCALENDAR\n";
  for (int i = 0; i < 100'000; ++i) text += "BEGIN:X\n";
  for (int i = 0; i < 100'000; ++i) text += "END:X\n";
  EXPECT_EQ(Subjects(Read(text + kEventA)), Strings{"A"});
}

TEST(ReadICalendar, BoundsNotices) {
  std::string text = "BEGIN:VCALENDAR\nBEGIN:VEVENT\nDTSTART:20080215T090000\n";
  for (int i = 0; i < 1000; ++i) text += "rubbish\nX-A:x\n";
  for (int i = 0; i < 1000; ++i) text += "P" + std::to_string(i) + ":x\n";
  const CalendarFile file = Read(text + "END:VEVENT\nEND:VCALENDAR\n");
  EXPECT_EQ(file.appointments.size(), 1u);
  EXPECT_EQ(file.notices.size(), 402u);
  EXPECT_EQ(file.notices.back().text, "800 more notices were left out");
}

TEST(ReadICalendar, UnfoldsLinesOfAnyEnd) {
  for (const char* end : {"\n", "\r\n", "\r"}) {
    std::string text;
    for (const char* line : {"BEGIN:VEVENT", "DTSTART:20080215", " T090000", "SUMMARY:fol", "\tded",
                             "", "END:VEVENT", ""}) {
      text += std::string(line) + end;
    }
    const CalendarFile file = Read(text);
    EXPECT_EQ(Subjects(file), Strings{"folded"});
    EXPECT_EQ(ShowTimes(file.appointments.at(0).appointment),
              "2008-02-15T09:00:00 - 2008-02-15T09:00:00");
  }
}

TEST(ReadICalendar, ReadsUtf16AndBytesThatAreNoUtf8) {
  std::string wide = "\xFF\xFE";
  for (const char c : std::string("BEGIN:VEVENT\nDTSTART:20080215\nSUMMARY:Zo\xEB\nEND:VEVENT\n")) {
    wide += {c, '\0'};
  }
  EXPECT_EQ(Subjects(Read(wide)), Strings{"Zoë"});
  EXPECT_EQ(Texts(Read(wide.substr(0, wide.size() - 1)).notices).at(0),
            "1: bytes that are no UTF-16 were replaced");
  const CalendarFile file = Read("BEGIN:VEVENT\nDTSTART:20080215\nSUMMARY:Zo\xEB\nEND:VEVENT\n");
  EXPECT_EQ(Subjects(file), Strings{"Zoë"});
  EXPECT_EQ(Texts(file.notices), Strings{"3: SUMMARY: not UTF-8, read as Windows-1252"});
}

TEST(ReadICalendar, NamesACalendarThatIsNotGregorian) {
  const CalendarFile file =
      Read(std::string("BEGIN:VCALENDAR\nCALSCALE:HEBREW\n") + kEventA + "END:VCALENDAR\n");
  EXPECT_EQ(Texts(file.notices),
            Strings{"2: CALSCALE: dates are read as Gregorian ones, not as HEBREW"});
}

TEST(ReadICalendar, KeepsTheLatestStateOfAnEvent) {
  const auto state = [](const char* sequence, const char* stamp, const char* summary) {
    return std::string("BEGIN:VEVENT\nUID:a\nDTSTART:20080215T090000\nSEQUENCE:") + sequence +
           "\nDTSTAMP:" + stamp + "\nSUMMARY:" + summary + "\nEND:VEVENT\n";
  };
  const std::string old = state("1", "20080101T000000Z", "old");
  const std::string late = state("1", "20080102T000000Z", "late");
  const std::string higher = state("2", "20070101T000000Z", "higher");
  EXPECT_EQ(Subjects(Read(old + late)), Strings{"late"});
  EXPECT_EQ(Subjects(Read(late + old)), Strings{"late"});
  EXPECT_EQ(Subjects(Read(late + higher + old)), Strings{"higher"});
  EXPECT_EQ(Texts(Read(old + late).notices),
            Strings{"1: UID: left out for a later state of the same in line 8"});
}

TEST(ReadICalendar, KeepsEventsWithoutUidApart) {
  const std::string event = "BEGIN:VEVENT\nSUMMARY:x\nDTSTART:20080215T090000\nEND:VEVENT\n";
  EXPECT_EQ(Uids(Read(event + event)), (Strings{"", ""}));
}

TEST(ReadICalendar, LeavesOutTheCancelled) {
  const CalendarFile file = ReadLines(
      "METHOD:CANCEL\nBEGIN:VEVENT\nUID:a\nDTSTART:20080215T090000\nEND:VEVENT\n"
      "BEGIN:VTODO\nUID:b\nEND:VTODO\n");
  EXPECT_TRUE(file.appointments.empty());
  EXPECT_TRUE(file.tasks.empty());
  EXPECT_EQ(Texts(file.notices), (Strings{"4: STATUS: the event is cancelled, left out",
                                          "8: STATUS: the task is cancelled, left out"}));
}

TEST(LooksLikeICalendar, TellsItFromOtherFiles) {
  EXPECT_TRUE(LooksLikeICalendar("BEGIN:VCALENDAR\r\n"));
  EXPECT_TRUE(LooksLikeICalendar("\xEF\xBB\xBF\n\nbegin : vcalendar\n"));
  EXPECT_TRUE(LooksLikeICalendar("junk before\nBEGIN:VTODO\n"));
  EXPECT_TRUE(
      LooksLikeICalendar(std::string_view("\xFF\xFE"
                                          "B\0E\0G\0I\0N\0:\0V\0E\0V\0E\0N\0T\0",
                                          26)));
  EXPECT_FALSE(LooksLikeICalendar(""));
  EXPECT_FALSE(LooksLikeICalendar("BEGIN:VCARD\nVERSION:3.0\nNOTE:BEGIN:VCALENDAR\n"));
  EXPECT_FALSE(LooksLikeICalendar("{\"BEGIN\":\"VCALENDAR\"}"));
}

}  // namespace
}  // namespace formats::testing
