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

TEST(ReadEvent, HasTheTimesOfTheHandheld) {
  ForEachCase("event_times.txt", [](const Strings& each) {
    const ReadItem read = ReadEventLines(LinesOf(each[1]));
    EXPECT_EQ(ShowTimes(read.appointment), each[2]);
    EXPECT_EQ(Joined(read.notices), each[3]);
  });
}

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

TEST(ReadEvent, TakesAnAlarmForTheReminder) {
  ForEachCase("event_alarms.txt", [](const Strings& each) {
    const ReadItem read = ReadEventLines("DTSTART:20080215T090000Z\nDURATION:PT1H\nBEGIN:VALARM\n" +
                                         LinesOf(each[1]) + "END:VALARM\n");
    const std::optional<int> minutes = read.appointment.reminderMinutes;
    EXPECT_EQ(minutes ? std::to_string(*minutes) : "none", each[2]);
    EXPECT_EQ(Joined(read.notices), each[3]);
  });
}

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
