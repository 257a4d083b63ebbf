// Pushing appointments and tasks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "desktop/commands/commands_pull.h"
#include "desktop/transfer/mapping.h"
#include "tests/desktop/fixtures.h"
#include "tests/desktop/push_fixture.h"

namespace desktop::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

std::string Calendar(const std::string& components) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//T//T//EN\r\n" + components +
         "END:VCALENDAR\r\n";
}

std::string Event(const std::string& uid, const std::string& summary,
                  const std::string& more = {}) {
  return "BEGIN:VEVENT\r\n" + (uid.empty() ? "" : "UID:" + uid + "\r\n") +
         "DTSTAMP:20240101T000000Z\r\nDTSTART:20240506T090000\r\nDTEND:20240506T100000\r\n"
         "SUMMARY:" +
         summary + "\r\n" + more + "END:VEVENT\r\n";
}

std::string Todo(const std::string& uid, const std::string& summary, const std::string& more = {}) {
  return "BEGIN:VTODO\r\nUID:" + uid + "\r\nDTSTAMP:20240101T000000Z\r\nSUMMARY:" + summary +
         "\r\n" + more + "END:VTODO\r\n";
}

class CalendarPush : public PushTest {
 protected:
  CalendarPush() {
    options_.files = {directory_ / "in.ics"};
    options_.zone = ZoneNamed("Europe/Berlin");
  }
  void ExpectPush(int code, const std::string& output) {
    EXPECT_EQ(PushTo(store_), code) << err();
    EXPECT_EQ(out(), output);
  }
};

TEST_F(CalendarPush, SendsEventsAndTasksInTheOrderOfTheFile) {
  Input(Calendar(Todo("t1", "Tax") + Event("e1", "Choir") + Todo("t2", "Rent")));
  ExpectPush(kDone, place(4) + "Tax: added with OID 101\n" + place(9) +
                        "Choir: added with OID 102\n" + place(16) + "Rent: added with OID 103\n");
  EXPECT_EQ(err(), "3 added\n");
  EXPECT_THAT(store_.items[101], HasSubstr("<TASK><SUBJECT>Tax</SUBJECT>"));
  EXPECT_THAT(store_.items[102], HasSubstr("<EVENT_START>20240506T070000</EVENT_START>"));
  ExpectPush(kDone, place(4) + "Tax: unchanged (OID 101)\n" + place(9) +
                        "Choir: unchanged (OID 102)\n" + place(16) + "Rent: unchanged (OID 103)\n");
}

TEST_F(CalendarPush, SendsLocalTimesOfTheZoneGiven) {
  options_.zone = ZoneNamed("America/New_York");
  Input(Calendar(Event("e1", "Choir")));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_THAT(store_.items[101], HasSubstr("<EVENT_START>20240506T130000</EVENT_START>"));
}

TEST_F(CalendarPush, ChangesTheSameItemAndKnowsItByContentWithoutAUid) {
  Input(Calendar(Event("e1", "Choir") + Event("", "Nameless")));
  EXPECT_EQ(PushTo(store_), kDone);
  Input(Calendar(Event("e1", "Concert") + Event("", "Nameless")));
  ExpectPush(kDone, place(4) + "Concert: changed (OID 101)\n" + place(11) +
                        "Nameless: unchanged (OID 102)\n");
}

TEST_F(CalendarPush, TellsAnEventAndATaskOfOneUidApart) {
  Input(Calendar(Event("same", "Choir") + Todo("same", "Tax")));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(store_.items.size(), 2U);
  store_.requests.clear();
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), "2 unchanged\n");
  EXPECT_EQ(store_.requests, std::vector<std::string>(2, "DownloadSpecificPIMRecords"));
}

TEST_F(CalendarPush, FindsAConflictOfEitherKind) {
  Input(Calendar(Event("e1", "Choir") + Todo("t1", "Tax")));
  EXPECT_EQ(PushTo(store_), kDone);
  store_.items[101] = "<CALENDAR><SUBJECT>Mine</SUBJECT></CALENDAR>";
  store_.items[102] = "<TASK><SUBJECT>Mine</SUBJECT></TASK>";
  EXPECT_EQ(PushTo(store_), kFailed);
  EXPECT_THAT(err(), HasSubstr("2 conflict\n"));
  options_.policy.force = true;
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), "2 changed\n");
}

// The end of a series in both ways, the day of completion, a reminder as a time.
TEST_F(CalendarPush, TakesWhatTheHandheldMakesOfARecordForNoConflict) {
  Input(Calendar(Event("e1", "Choir", "RRULE:FREQ=WEEKLY;UNTIL=20240526T070000Z\r\n") +
                 Todo("t1", "Tax",
                      "DUE;VALUE=DATE:20240531\r\nSTATUS:COMPLETED\r\n"
                      "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:x\r\n"
                      "TRIGGER;VALUE=DATE-TIME:20240531T070000Z\r\nEND:VALARM\r\n")));
  EXPECT_EQ(PushTo(store_), kDone) << err();
  store_.items[101] =
      "<CALENDAR><SUBJECT>Choir</SUBJECT><IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE>"
      "<TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>1</DAYS_OF_WEEK><END_DATE>20240520T000000</END_DATE>"
      "<Occurrences>3</Occurrences></RECURRENCE><EVENT_START>20240506T070000</EVENT_START>"
      "<EVENT_END>20240506T080000</EVENT_END><BusyStatus>2</BusyStatus></CALENDAR>";
  store_.items[102] =
      "<TASK><SUBJECT>Tax</SUBJECT><DUE_DATE>20240531T000000</DUE_DATE>"
      "<HAS_REMINDER>TRUE</HAS_REMINDER><ReminderTime>20240531T070000</ReminderTime>"
      "<ReminderMinutes>-540</ReminderMinutes><COMPLETED>TRUE</COMPLETED>"
      "<DateCompleted>20240601T000000</DateCompleted><PRIORITY>3</PRIORITY></TASK>";
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), "2 unchanged\n");
}

TEST_F(CalendarPush, AddsNothingTwiceWhenTheAnswersOfTheFirstTimeWereLost) {
  Input(Calendar(Event("e1", "Choir") + Todo("t1", "Tax")));
  EXPECT_EQ(PushTo(store_, 0), kFailed);
  // The fake agent stores all that came and answers nothing.
  const FakeAgent::Script serve = store_.Serve();
  store_.items = {{101,
                   "<CALENDAR><SUBJECT>Choir</SUBJECT><EVENT_START>20240506T070000"
                   "</EVENT_START><EVENT_END>20240506T080000</EVENT_END><BusyStatus>2"
                   "</BusyStatus></CALENDAR>"},
                  {102, "<TASK><SUBJECT>Tax</SUBJECT><PRIORITY>3</PRIORITY></TASK>"}};
  FakeAgent agent({serve, serve, serve, serve, serve});
  EXPECT_EQ(Run(agent.options()), kDone);
  EXPECT_EQ(err(), "2 unchanged\n");
  EXPECT_TRUE(Mapping(directory_ / "map.json").expected().empty());
}

TEST_F(CalendarPush, NamesNoticesOfTheReaderBeforeItSends) {
  Input(Calendar(Event("e1", "Choir", "ATTENDEE:mailto:ada@example.org\r\n")));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_THAT(err(), HasSubstr(options_.files[0].string() + ":"));
  EXPECT_THAT(err(), HasSubstr("ATTENDEE"));
}

TEST_F(CalendarPush, NamesWhatARecordLosesOnlyWhenItIsSent) {
  Input(Calendar(Todo("t1", "Tax", "STATUS:COMPLETED\r\nCOMPLETED:20240530T100000Z\r\n")));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), place(4) +
                       "DateCompleted: the wire does not carry it, the handheld takes the day on "
                       "which it learns of it\n1 added\n");
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), "1 unchanged\n");
}

TEST_F(CalendarPush, ShowsWhatADryRunWouldSend) {
  options_.policy.dryRun = true;
  Input(Calendar(Event("e1", "Choir")));
  EXPECT_EQ(Run(NobodyThere()), kDone);
  EXPECT_EQ(out(), place(4) +
                       "Choir: would be added\n  <CALENDAR><SUBJECT>Choir</SUBJECT><EVENT_START>"
                       "20240506T070000</EVENT_START><EVENT_END>20240506T080000</EVENT_END>"
                       "<BusyStatus>2</BusyStatus></CALENDAR>\n");
}

TEST_F(CalendarPush, TellsTheKindOfAFileByItsContentWhereItsNameDoesNot) {
  options_.files = {directory_ / "one", directory_ / "two", directory_ / "three"};
  directory_.Write(options_.files[0], Calendar(Event("e1", "Choir")));
  directory_.Write(options_.files[1], Card("c1", "Lee"));
  directory_.Write(options_.files[2], "\n<root><TASK><SUBJECT>Tax</SUBJECT></TASK></root>");
  EXPECT_EQ(PushTo(store_), kDone) << err();
  ASSERT_EQ(store_.items.size(), 3U);
  EXPECT_THAT(store_.items[101], HasSubstr("<CALENDAR"));
  EXPECT_THAT(store_.items[102], HasSubstr("<CONTACT"));
  EXPECT_THAT(store_.items[103], HasSubstr("<TASK"));
}

TEST_F(CalendarPush, RefusesAFileThatIsNoCalendarThoughItShouldBe) {
  Input("Dear diary");
  EXPECT_EQ(Run(NobodyThere()), kFailed);
  EXPECT_EQ(err(), "corvane-desktop: " + options_.files[0].string() + ": no calendar in it\n");
}

TEST_F(CalendarPush, HasNothingToSendOfAnEmptyCalendar) {
  Input(Calendar({}));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), "nothing to send\n");
}

TEST_F(CalendarPush, KnowsARecordDocumentWithoutIdentifiersAgain) {
  options_.files = {directory_ / "in.xml"};
  Input(
      "<root><CALENDAR><SUBJECT>Choir</SUBJECT><IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE>"
      "<TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>1</DAYS_OF_WEEK><END_DATE>20240526</END_DATE></RECURRENCE>"
      "<EVENT_START>20240506T070000</EVENT_START><EVENT_END>20240506T080000</EVENT_END>"
      "</CALENDAR></root>");
  EXPECT_EQ(PushTo(store_), kDone);
  store_.items[101] =
      "<CALENDAR><SUBJECT>Choir</SUBJECT><IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE>"
      "<TYPE>WEEKLY</TYPE><DAYS_OF_WEEK>1</DAYS_OF_WEEK><END_DATE>20240520T000000</END_DATE>"
      "<Occurrences>3</Occurrences></RECURRENCE><EVENT_START>20240506T070000</EVENT_START>"
      "<EVENT_END>20240506T080000</EVENT_END><BusyStatus>0</BusyStatus></CALENDAR>";
  ExpectPush(kDone, place(1) + "Choir: unchanged (OID 101)\n");
}

class CalendarPull : public CalendarPush {
 protected:
  CalendarPull() {
    pull_.mapping = options_.mapping;
    pull_.zone = options_.zone;
    pull_.output = options_.files[0];
  }
  int PullFrom(Store& store, RecordKind kind) {
    console_.out.str("");
    console_.err.str("");
    pull_.kind = kind;
    FakeAgent agent({store.Serve()});
    return Pull(agent.options(), pull_, console_.console);
  }
  std::string File() const { return directory_.Read(options_.files[0]); }

  PullOptions pull_;
};

constexpr char kChoir[] =
    "<CALENDAR><SUBJECT>Choir</SUBJECT><CATEGORIES><CATEGORY><Name>Music</Name></CATEGORY>"
    "</CATEGORIES><IS_RECURRING>TRUE</IS_RECURRING><RECURRENCE><TYPE>WEEKLY</TYPE>"
    "<DAYS_OF_WEEK>1</DAYS_OF_WEEK><END_DATE>20240610T000000</END_DATE>"
    "<Occurrences>6</Occurrences><ChangedException><SUBJECT>Concert</SUBJECT><EVENT_START>"
    "20240514T170000</EVENT_START><EVENT_END>20240514T190000</EVENT_END><BusyStatus>3</BusyStatus>"
    "<OriginalDate>20240513T000000</OriginalDate></ChangedException><DeletedException>"
    "20240520T000000</DeletedException></RECURRENCE><HAS_REMINDER>TRUE</HAS_REMINDER>"
    "<ReminderMinutes>15</ReminderMinutes><EVENT_START>20240506T070000</EVENT_START>"
    "<EVENT_END>20240506T080000</EVENT_END><BusyStatus>2</BusyStatus>"
    "<NOTES>one&#13;\ntwo</NOTES></CALENDAR>";

TEST_F(CalendarPull, GivesUidsByWhichAPushKnowsEachAgain) {
  store_.items = {{7, kChoir},
                  {8,
                   "<CALENDAR><SUBJECT>Trip</SUBJECT><ALL_DAY_EVENT>TRUE"
                   "</ALL_DAY_EVENT><EVENT_START>20240601T000000</EVENT_START>"
                   "<EVENT_END>20240603T000000</EVENT_END><BusyStatus>0"
                   "</BusyStatus></CALENDAR>"}};
  EXPECT_EQ(PullFrom(store_, RecordKind::kAppointments), kDone);
  EXPECT_EQ(out(), options_.files[0].string() + ": 2 appointments\n");
  EXPECT_EQ(err(), "");
  const std::string first = File();
  EXPECT_THAT(first, HasSubstr("\r\nRECURRENCE-ID"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), "2 unchanged\n");
  EXPECT_EQ(PullFrom(store_, RecordKind::kAppointments), kDone);
  EXPECT_EQ(Mapping(directory_ / "map.json").FindOid(7)->kind, "appointment");
}

TEST_F(CalendarPull, OfTasksDoesTheSame) {
  store_.items = {{7, kChoir},
                  {9,
                   "<TASK><SUBJECT>Tax</SUBJECT><DUE_DATE>20240531T000000</DUE_DATE>"
                   "<HAS_REMINDER>TRUE</HAS_REMINDER><ReminderTime>20240531T070000"
                   "</ReminderTime><ReminderMinutes>-540</ReminderMinutes>"
                   "<COMPLETED>TRUE</COMPLETED><DateCompleted>20240601T000000</DateCompleted>"
                   "<PRIORITY>2</PRIORITY></TASK>"}};
  EXPECT_EQ(PullFrom(store_, RecordKind::kTasks), kDone);
  EXPECT_EQ(out(), options_.files[0].string() + ": 1 task\n");
  EXPECT_THAT(File(), HasSubstr("BEGIN:VTODO"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), "1 unchanged\n");
}

TEST_F(CalendarPull, KnowsTheFileThatWasPushedAgainAfterwards) {
  Input(Calendar(Event("e1", "Choir", "RRULE:FREQ=WEEKLY;UNTIL=20240526T070000Z\r\n")));
  EXPECT_EQ(PushTo(store_), kDone);
  pull_.output = directory_ / "other.ics";
  EXPECT_EQ(PullFrom(store_, RecordKind::kAppointments), kDone);
  EXPECT_THAT(directory_.Read("other.ics"), HasSubstr("UID:e1\r\n"));
  EXPECT_EQ(PushTo(store_), kDone);
  EXPECT_EQ(err(), "1 unchanged\n");
}

// Two with handwriting, and one without a start.
std::map<Oid, std::string> ItemsThatLoseSomething() {
  const std::string sketch =
      "<CALENDAR><SUBJECT>Sketch</SUBJECT><EVENT_START>20240506T070000</EVENT_START>"
      "<EVENT_END>20240506T080000</EVENT_END><BusyStatus>2</BusyStatus><BodyInk>TRUE</BodyInk>"
      "</CALENDAR>";
  return {{7, sketch},
          {8, sketch},
          {9, "<CALENDAR><SUBJECT>Odd: one</SUBJECT><BusyStatus>2</BusyStatus></CALENDAR>"}};
}

TEST_F(CalendarPull, CountsWhatEventsCannotSay) {
  store_.items = ItemsThatLoseSomething();
  console_.console.verbosity = Verbosity::kSummary;
  EXPECT_EQ(PullFrom(store_, RecordKind::kAppointments), kDone);
  EXPECT_THAT(err(), HasSubstr("BodyInk: the wire does not carry the handwriting of its notes: 2 "
                               "appointments\nan event needs a start, left out: 1 appointment\n"));
}

TEST_F(CalendarPull, NamesWhatEachEventCannotSayWhenToldSo) {
  store_.items = ItemsThatLoseSomething();
  console_.console.verbosity = Verbosity::kAll;
  EXPECT_EQ(PullFrom(store_, RecordKind::kAppointments), kDone);
  EXPECT_THAT(err(),
              HasSubstr("Sketch: BodyInk: the wire does not carry the handwriting of its notes\n"
                        "Sketch: BodyInk: the wire does not carry the handwriting of its notes\n"
                        "Odd: one: an event needs a start, left out\n"));
}

TEST_F(CalendarPull, ForgetsTheVanishedOfItsKindAlone) {
  {
    Mapping mapping(*options_.mapping);
    mapping.Put({97, "contact", "c", "", "h"});
    mapping.Put({98, "appointment", "a", "", "h"});
    mapping.Put({99, "task", "t", "", "h"});
    mapping.Save();
  }
  EXPECT_EQ(PullFrom(store_, RecordKind::kTasks), kDone);
  const Mapping mapping(*options_.mapping);
  EXPECT_NE(mapping.FindOid(97), nullptr);
  EXPECT_NE(mapping.FindOid(98), nullptr);
  EXPECT_EQ(mapping.FindOid(99), nullptr);
}

TEST_F(CalendarPull, MergesTheDocumentsAsXmlWithoutAMapping) {
  store_.items = {{7, kChoir}};
  pull_.format = RecordFormat::kXml;
  EXPECT_EQ(PullFrom(store_, RecordKind::kAppointments), kDone);
  EXPECT_EQ(File(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n" + WithOid(kChoir, 7) +
                        "\n</root>\n");
  EXPECT_FALSE(std::filesystem::exists(*options_.mapping));
}

TEST_F(CalendarPull, WritesJsonInTheHandheldsZone) {
  store_.items = {{7, kChoir}};
  pull_.format = RecordFormat::kJson;
  EXPECT_EQ(PullFrom(store_, RecordKind::kAppointments), kDone);
  EXPECT_THAT(File(), HasSubstr("\"Start\":\"2024-05-06T09:00:00\""));
  EXPECT_THAT(File(), HasSubstr("{\"oid\":7,"));
}

TEST_F(CalendarPull, LeavesOutRecordsOfOtherKinds) {
  pull_.format = RecordFormat::kXml;
  pull_.kind = RecordKind::kAppointments;
  FakeAgent agent({[](Peer& peer) {
    peer.ReceiveCounted();
    peer.Send(Word(0) + Counted(Document("<TASK Oid='1'/>")) + Word(0) + Word(0));
  }});
  EXPECT_EQ(Pull(agent.options(), pull_, console_.console), kDone);
  EXPECT_EQ(err(), "left out: TASK is no appointment\n");
}

TEST(PullFormats, AreTheOnesThatAKindCanBeHadIn) {
  for (const RecordKind kind : {RecordKind::kContacts, RecordKind::kContacts2}) {
    EXPECT_TRUE(IsFormatOf(RecordFormat::kVcf, kind));
    EXPECT_FALSE(IsFormatOf(RecordFormat::kIcs, kind));
  }
  for (const RecordKind kind : {RecordKind::kAppointments, RecordKind::kTasks}) {
    EXPECT_FALSE(IsFormatOf(RecordFormat::kVcf, kind));
    EXPECT_TRUE(IsFormatOf(RecordFormat::kIcs, kind));
    EXPECT_TRUE(IsFormatOf(RecordFormat::kXml, kind));
    EXPECT_TRUE(IsFormatOf(RecordFormat::kJson, kind));
  }
}

}  // namespace
}  // namespace desktop::testing
