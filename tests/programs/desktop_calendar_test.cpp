// corvane-desktop against the real agent: appointments and tasks both ways.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>
#include <iterator>

#include "tests/programs/tool_test.h"

namespace corvane::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// A series from which one evening is missing and one is otherwise, a holiday, a single hour, a
// task.
constexpr char kCalendar[] =
    "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Tests//EN\r\n"
    "BEGIN:VEVENT\r\nUID:choir\r\nDTSTAMP:20240101T000000Z\r\n"
    "DTSTART:20240506T193000\r\nDTEND:20240506T210000\r\n"
    "SUMMARY:Choir\r\nLOCATION:Hall\r\nDESCRIPTION:Bring\\nthe music\r\nCATEGORIES:Music\r\n"
    "RRULE:FREQ=WEEKLY;COUNT=6\r\nEXDATE:20240520T193000\r\n"
    "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:Choir\r\nTRIGGER:-PT30M\r\nEND:VALARM\r\n"
    "END:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:choir\r\nRECURRENCE-ID:20240513T193000\r\nDTSTAMP:20240101T000000Z\r\n"
    "DTSTART:20240514T180000\r\nDTEND:20240514T220000\r\nSUMMARY:Concert\r\nCATEGORIES:Music\r\n"
    "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:Choir\r\nTRIGGER:-PT30M\r\nEND:VALARM\r\n"
    "END:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:trip\r\nDTSTAMP:20240101T000000Z\r\n"
    "DTSTART;VALUE=DATE:20240601\r\nDTEND;VALUE=DATE:20240604\r\nSUMMARY:Trip\r\nEND:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:winter\r\nDTSTAMP:20240101T000000Z\r\n"
    "DTSTART:20241220T120000Z\r\nDTEND:20241220T133000Z\r\nSUMMARY:Lunch\r\nCLASS:PRIVATE\r\n"
    "END:VEVENT\r\n"
    "BEGIN:VTODO\r\nUID:tax\r\nDTSTAMP:20240101T000000Z\r\nDTSTART;VALUE=DATE:20240501\r\n"
    "DUE;VALUE=DATE:20240531\r\nSUMMARY:Tax\r\nPRIORITY:1\r\n"
    "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:Tax\r\n"
    "TRIGGER;VALUE=DATE-TIME:20240531T070000Z\r\nEND:VALARM\r\nEND:VTODO\r\n"
    "END:VCALENDAR\r\n";

class DesktopCalendar : public ToolTest {
 protected:
  void SetUp() override {
    const Ended made = Device({"init", Path("handheld"), "--zone", "Europe/Berlin"});
    ASSERT_EQ(made.code, 0) << made.err;
    StartAgent(Path("handheld"));
  }
  Ended Push(const std::string& file) {
    return Desktop({"push", "-v", "--zone", "Europe/Berlin", file});
  }
  Ended Pull(const std::string& kind, Arguments more = {}) {
    Arguments arguments{"pull", kind, "--zone", "Europe/Berlin"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Desktop(arguments);
  }
  std::string Json(const std::string& kind) { return Pull(kind, {"--format", "json"}).out; }
  std::string Contents(const std::string& name) {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void PushTheCalendar() {
    const Ended push = Push(File("calendar.ics", kCalendar));
    ASSERT_EQ(push.code, 0) << push.out << push.err;
  }
};

TEST_F(DesktopCalendar, AddsOnceAndThenKnowsAllUnchanged) {
  const std::string file = File("calendar.ics", kCalendar);
  const Ended first = Push(file);
  EXPECT_EQ(first.code, 0);
  EXPECT_EQ(first.out,
            file + ":4: Choir: added with OID 1\n" + file + ":35: Trip: added with OID 2\n" + file +
                ":42: Lunch: added with OID 3\n" + file + ":50: Tax: added with OID 4\n");
  EXPECT_EQ(first.err, "4 added\n");
  const Ended second = Push(file);
  EXPECT_EQ(second.code, 0);
  EXPECT_EQ(second.err, "4 unchanged\n");
}

TEST_F(DesktopCalendar, TellsTheSeriesWithItsExceptions) {
  PushTheCalendar();
  const std::string json = Json("calendar");
  for (const char* part :
       {"\"Subject\":\"Choir\"", "\"Start\":\"2024-05-06T19:30:00\"",
        "\"End\":\"2024-05-06T21:00:00\"", "\"Location\":\"Hall\"",
        "\"Body\":\"Bring\\nthe music\"", "\"categories\":[\"Music\"]", "\"2024-05-20\"",
        "\"Subject\":\"Concert\"", "\"Start\":\"2024-05-14T18:00:00\"", "\"Subject\":\"Trip\"",
        "\"Start\":\"2024-06-01\"", "\"End\":\"2024-06-03\"",
        "\"Start\":\"2024-12-20T13:00:00\""}) {
    EXPECT_THAT(json, HasSubstr(part));
  }
  const std::string tasks = Json("tasks");
  EXPECT_THAT(tasks, HasSubstr("\"Subject\":\"Tax\""));
  EXPECT_THAT(tasks, HasSubstr("2024-05-31T09:00:00"));
}

TEST_F(DesktopCalendar, CarriesTimesInUtc) {
  PushTheCalendar();
  const std::string xml = Pull("calendar", {"--format", "xml"}).out;
  EXPECT_THAT(xml, HasSubstr("<EVENT_START>20240506T173000</EVENT_START>"));
  EXPECT_THAT(xml, HasSubstr("<EVENT_START>20241220T120000</EVENT_START>"));
  EXPECT_THAT(xml, HasSubstr("<EVENT_START>20240601T000000</EVENT_START>"
                             "<EVENT_END>20240603T000000</EVENT_END>"));
}

TEST_F(DesktopCalendar, KnowsWhatItHasPulled) {
  PushTheCalendar();
  EXPECT_EQ(Pull("calendar", {"-o", Path("pulled.ics")}).out,
            Path("pulled.ics") + ": 3 appointments\n");
  EXPECT_EQ(Pull("tasks", {"-o", Path("tasks.ics")}).out, Path("tasks.ics") + ": 1 task\n");
  EXPECT_THAT(Contents("pulled.ics"), HasSubstr("UID:choir\r\n"));
  EXPECT_THAT(Contents("tasks.ics"), HasSubstr("UID:tax\r\n"));
  const Ended push =
      Desktop({"push", "--zone", "Europe/Berlin", Path("pulled.ics"), Path("tasks.ics")});
  EXPECT_EQ(push.code, 0);
  EXPECT_EQ(push.err, "4 unchanged\n");
  EXPECT_EQ(Push(Path("calendar.ics")).err, "4 unchanged\n") << "nor has the first file changed";
}

// Pulled into a mapping that knows of none of them.
TEST_F(DesktopCalendar, KnowsWhatItHasPulledFirst) {
  PushTheCalendar();
  const std::string map = Path("fresh.json");
  Pull("calendar", {"--map", map, "-o", Path("pulled.ics")});
  Pull("tasks", {"--map", map, "-o", Path("tasks.ics")});
  const Ended push = Desktop(
      {"push", "--zone", "Europe/Berlin", "--map", map, Path("pulled.ics"), Path("tasks.ics")});
  EXPECT_EQ(push.code, 0);
  EXPECT_EQ(push.err, "4 unchanged\n");
}

TEST_F(DesktopCalendar, ChangesTheSameItemsAfterAnEdit) {
  PushTheCalendar();
  std::string edited = kCalendar;
  edited.replace(edited.find("EXDATE:20240520"), 15, "EXDATE:20240527");
  edited.replace(edited.find("SUMMARY:Tax\r\n"), 13, "SUMMARY:Tax\r\nSTATUS:COMPLETED\r\n");
  const Ended push = Push(File("calendar.ics", edited));
  EXPECT_EQ(push.code, 0);
  EXPECT_EQ(push.err, "2 changed, 2 unchanged\n");
  const std::string json = Json("calendar");
  EXPECT_THAT(json, HasSubstr("\"2024-05-27\""));
  EXPECT_THAT(json, Not(HasSubstr("\"2024-05-20\"")));
  EXPECT_THAT(json, HasSubstr("\"Subject\":\"Concert\""));
  const Ended again = Push(Path("calendar.ics"));
  EXPECT_EQ(again.err, "4 unchanged\n") << "though the handheld has stamped the completion";
}

TEST_F(DesktopCalendar, SeesWhatHasBeenChangedOnTheHandheld) {
  PushTheCalendar();
  const Ended change = Push(File("change.xml",
                                 "<root><CALENDAR Oid='3'><SUBJECT>Dinner</SUBJECT><EVENT_START>"
                                 "20241220T180000</EVENT_START><EVENT_END>20241220T190000"
                                 "</EVENT_END></CALENDAR></root>"));
  ASSERT_EQ(change.code, 0) << change.out;
  // By another desktop, as it were: this one's memory of it is the earlier one.
  const std::string map = Path("other.json");
  Pull("calendar", {"--map", map, "-o", Path("pulled.ics")});
  ASSERT_EQ(Push(File("again.xml",
                      "<root><CALENDAR Oid='3'><SUBJECT>Supper</SUBJECT><EVENT_START>"
                      "20241220T180000</EVENT_START><EVENT_END>20241220T190000</EVENT_END>"
                      "</CALENDAR></root>"))
                .code,
            0);
  const Ended push = Desktop({"push", "--zone", "Europe/Berlin", "--map", map, Path("pulled.ics")});
  EXPECT_EQ(push.code, 3);
  EXPECT_EQ(push.err, "2 unchanged, 1 conflict\n");
}

TEST_F(DesktopCalendar, PushesTheSamplesOnceAndKnowsThemEverAfter) {
  const Arguments samples{
      "push", "-v", "--zone", "Europe/Berlin", Sample("calendar.ics"), Sample("tasks.ics")};
  const Ended first = Desktop(samples);
  EXPECT_EQ(first.code, 0) << first.out << first.err;
  const Ended second = Desktop(samples);
  EXPECT_EQ(second.code, 0);
  EXPECT_THAT(second.err, HasSubstr(" unchanged\n"));
  EXPECT_THAT(second.out, Not(HasSubstr(": changed")));
  EXPECT_THAT(second.out, Not(HasSubstr("conflict")));
}

// Days here and in UTC are not the same ones.
TEST_F(DesktopCalendar, KnowsSeriesAtMidnightInEveryZone) {
  const std::string event =
      "DTSTAMP:20240101T000000Z\r\nRRULE:FREQ=WEEKLY;BYDAY=MO;UNTIL=20250101T000000Z\r\n"
      "SUMMARY:Night\r\n";
  const std::string file = File(
      "night.ics",
      "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Tests//EN\r\nBEGIN:VEVENT\r\nUID:a\r\n" + event +
          "DTSTART:20240506T003000\r\nDTEND:20240506T013000\r\nEXDATE:20240513T003000\r\n"
          "END:VEVENT\r\nBEGIN:VEVENT\r\nUID:b\r\n" +
          event +
          "DTSTART:20240506T233000\r\nDTEND:20240507T003000\r\nEXDATE:20241230T233000\r\n"
          "END:VEVENT\r\nEND:VCALENDAR\r\n");
  for (const std::string zone : {"Australia/Sydney", "America/Santiago", "Pacific/Kiritimati"}) {
    StopAgent(SIGTERM);
    const std::string handheld = Path(zone.substr(zone.find('/') + 1));
    ASSERT_EQ(Device({"init", handheld, "--zone", zone}).code, 0);
    StartAgent(handheld);
    EXPECT_EQ(Desktop({"push", "--zone", zone, file}).err, "2 added\n") << zone;
    EXPECT_EQ(Desktop({"push", "--zone", zone, file}).err, "2 unchanged\n") << zone;
    const std::string pulled = handheld + ".ics";
    EXPECT_EQ(Desktop({"pull", "calendar", "--zone", zone, "-o", pulled}).err, "") << zone;
    EXPECT_EQ(Desktop({"push", "--zone", zone, pulled, file}).err, "4 unchanged\n") << zone;
  }
}

// Its own reckoning of an all-day event that recurs is a day shorter, and the same both ways.
TEST_F(DesktopCalendar, KnowsAllDaySeriesOfAnOlderHandheldAgain) {
  StopAgent(SIGTERM);
  ASSERT_EQ(Device({"init", Path("older"), "--zone", "Europe/Berlin", "--os-version", "4.21"}).code,
            0);
  StartAgent(Path("older"));
  const std::string file =
      File("days.ics",
           "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Tests//EN\r\nBEGIN:VEVENT\r\nUID:a\r\n"
           "DTSTAMP:20240101T000000Z\r\nDTSTART;VALUE=DATE:20240506\r\nRRULE:FREQ=YEARLY\r\n"
           "SUMMARY:Birthday\r\nEND:VEVENT\r\nBEGIN:VEVENT\r\nUID:b\r\nDTSTAMP:20240101T000000Z\r\n"
           "DTSTART;VALUE=DATE:20240506\r\nDTEND;VALUE=DATE:20240508\r\nRRULE:FREQ=YEARLY\r\n"
           "SUMMARY:Festival\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n");
  EXPECT_EQ(Push(file).err, "2 added\n");
  EXPECT_EQ(Push(file).err, "2 unchanged\n");
  EXPECT_THAT(Pull("calendar", {"--format", "xml"}).out,
              HasSubstr("<EVENT_START>20240506T000000</EVENT_START>"
                        "<EVENT_END>20240507T000000</EVENT_END>"));
}

TEST_F(DesktopCalendar, DeletesTheAppointmentsNamed) {
  PushTheCalendar();
  const Ended ended = Desktop({"delete", "calendar", "--oid", "1", "--oid", "3"});
  EXPECT_EQ(ended.code, 0);
  EXPECT_EQ(ended.out,
            "appointment: is not there any more (OID 1)\n"
            "appointment: is not there any more (OID 3)\n");
  EXPECT_THAT(Json("calendar"), Not(HasSubstr("Choir")));
  EXPECT_THAT(Json("calendar"), HasSubstr("Trip"));
  EXPECT_THAT(Push(Path("calendar.ics")).err, HasSubstr("2 added, 2 unchanged\n"));
}

TEST_F(DesktopCalendar, DeletesAllOfAKindAlone) {
  PushTheCalendar();
  const Ended unasked = Desktop({"delete", "tasks"});
  EXPECT_EQ(unasked.code, 2);
  EXPECT_EQ(unasked.err, "corvane-desktop: deleting all tasks needs --yes\n");
  const Ended tasks = Desktop({"delete", "tasks", "--yes"});
  EXPECT_EQ(tasks.code, 0);
  EXPECT_EQ(tasks.out, "all tasks deleted\n");
  EXPECT_EQ(Json("tasks"), "");
  EXPECT_THAT(Json("calendar"), HasSubstr("Choir"));
  EXPECT_EQ(Desktop({"delete", "calendar", "--yes"}).out, "all appointments deleted\n");
  EXPECT_EQ(Json("calendar"), "");
}

TEST_F(DesktopCalendar, PrintsTheKeysOfEachKind) {
  const Ended calendar = Desktop({"keys", "calendar"});
  EXPECT_EQ(calendar.code, 0);
  EXPECT_EQ(calendar.out,
            "SUBJECT\nLOCATION\nALL_DAY_EVENT\nCATEGORIES\nIS_RECURRING\nRECURRENCE\nHAS_REMINDER\n"
            "ReminderMinutes\nPrivate\nEVENT_START\nEVENT_END\nBusyStatus\nNOTES\nBodyInk\n");
  EXPECT_EQ(Desktop({"keys", "tasks", "--json"}).out,
            "\"SUBJECT\"\n\"CATEGORIES\"\n\"IS_RECURRING\"\n\"RECURRENCE\"\n\"DUE_DATE\"\n"
            "\"HAS_REMINDER\"\n\"ReminderTime\"\n\"ReminderMinutes\"\n\"StartDate\"\n"
            "\"Private\"\n\"COMPLETED\"\n\"DateCompleted\"\n\"PRIORITY\"\n\"NOTES\"\n"
            "\"BodyInk\"\n");
  const std::string contacts = Desktop({"keys", "contacts"}).out;
  EXPECT_THAT(contacts, HasSubstr("EMAIL_ADDRESSES\nFIRST_NAME\n"));
  EXPECT_EQ(Desktop({"keys", "contacts2"}).out, contacts);
}

TEST_F(DesktopCalendar, RefusesWhatItCannotFollow) {
  for (const Arguments& wrong :
       {Arguments{"pull", "calendar", "--zone", "Middle/Earth"},
        Arguments{"push", "x.ics", "--zone", "Middle/Earth"},
        Arguments{"pull", "calendar", "--format", "vcf"},
        Arguments{"pull", "--format", "ics", "contacts"}, Arguments{"keys", "stones"},
        Arguments{"keys"}, Arguments{"delete", "contacts2"}}) {
    const Ended ended = Desktop(wrong);
    EXPECT_EQ(ended.code, 2) << ended.err;
    EXPECT_EQ(ended.out, "");
    EXPECT_NE(ended.err, "");
  }
}

}  // namespace
}  // namespace corvane::testing
