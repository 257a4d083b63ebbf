#include "desktop/folder/calendar_edit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/desktop/folder/edit_support.h"

namespace desktop::testing {
namespace {

using formats::Appointment;
using formats::local_days;
using formats::Occurrence;
using formats::Task;
using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

const std::string kBerlinZone =
    "BEGIN:VTIMEZONE\r\nTZID:Europe/Berlin\r\nBEGIN:STANDARD\r\nDTSTART:19701025T030000\r\n"
    "TZOFFSETFROM:+0200\r\nTZOFFSETTO:+0100\r\nRRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU\r\n"
    "END:STANDARD\r\nBEGIN:DAYLIGHT\r\nDTSTART:19700329T020000\r\nTZOFFSETFROM:+0100\r\n"
    "TZOFFSETTO:+0200\r\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\r\nEND:DAYLIGHT\r\n"
    "END:VTIMEZONE\r\n";

// All that an appointment cannot hold, in an order and a spelling of its own.
const std::string kRichEvent = Calendar(
    kBerlinZone +
    "BEGIN:VEVENT\r\n"
    "CREATED:20200101T000000Z\r\nLAST-MODIFIED:20200101T000000Z\r\nDTSTAMP:20200101T000000Z\r\n"
    "UID:meet\r\n"
    "summary;LANGUAGE=en:Meeting\r\n"
    "ATTENDEE;CN=Bert:mailto:bert@example.org\r\n"
    "ORGANIZER:mailto:anna@example.org\r\n"
    "DTSTART;TZID=Europe/Berlin:20261123T090000\r\n"
    "DTEND;TZID=Europe/Berlin:20261123T100000\r\n"
    "SEQUENCE:3\r\n"
    "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER;RELATED=START:-PT15M\r\nX-A:1\r\nEND:VALARM\r\n"
    "BEGIN:VALARM\r\nACTION:AUDIO\r\nTRIGGER:-PT5M\r\nEND:VALARM\r\n"
    "X-UNKNOWN:kept\r\n"
    "END:VEVENT\r\n");

std::string Modified(const std::string& text) {
  return Replaced(text, "LAST-MODIFIED:20200101T000000Z", "LAST-MODIFIED:20270115T080000Z");
}

// Every Monday at 9, but for one that is cancelled and one that is at 11 elsewhere.
const std::string kSeries = Calendar(
    kBerlinZone +
    "BEGIN:VEVENT\r\nUID:week\r\nSUMMARY:Weekly\r\nDTSTART;TZID=Europe/Berlin:20261102T090000\r\n"
    "DTEND;TZID=Europe/Berlin:20261102T100000\r\nRRULE:FREQ=WEEKLY;WKST=MO;BYDAY=MO;COUNT=10\r\n"
    "EXDATE;TZID=Europe/"
    "Berlin:20261109T090000\r\nATTENDEE:mailto:bert@example.org\r\nEND:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:week\r\nRECURRENCE-ID;TZID=Europe/Berlin:20261116T090000\r\n"
    "SUMMARY:Weekly\r\nLOCATION:Elsewhere\r\nDTSTART;TZID=Europe/Berlin:20261116T110000\r\n"
    "DTEND;TZID=Europe/Berlin:20261116T120000\r\nX-OWN:1\r\nEND:VEVENT\r\n");

local_days Day(unsigned month, unsigned day) {
  return local_days{std::chrono::year(2026) / static_cast<int>(month) / static_cast<int>(day)};
}

TEST(CalendarEdit, ChangesNoByteWithoutAChange) {
  EXPECT_EQ(EditEvent(kRichEvent, [](Appointment&) {}).bytes, kRichEvent);
  EXPECT_EQ(EditEvent(kSeries, [](Appointment&) {}).bytes, kSeries);
}

TEST(CalendarEdit, KeepsNameAndParametersOfALineWhoseValueChanges) {
  const EditResult result = EditEvent(kRichEvent, [](Appointment& a) { a.subject = "Talk, long"; });
  EXPECT_EQ(result.bytes, Modified(Replaced(kRichEvent, "en:Meeting", "en:Talk\\, long")));
  EXPECT_THAT(result.losses, IsEmpty());
}

TEST(CalendarEdit, InsertsAndRemovesLines) {
  const EditResult result = EditEvent(kRichEvent, [](Appointment& a) {
    a.location = "Room";
    a.isPrivate = true;
  });
  EXPECT_EQ(result.bytes,
            Modified(Replaced(kRichEvent, "X-UNKNOWN:kept\r\n",
                              "X-UNKNOWN:kept\r\nLOCATION:Room\r\nCLASS:PRIVATE\r\n")));
  const std::string located = Replaced(kRichEvent, "SEQUENCE", "LOCATION:Room\r\nSEQUENCE");
  EXPECT_EQ(EditEvent(located, [](Appointment& a) { a.location.clear(); }).bytes,
            Modified(kRichEvent));
}

TEST(CalendarEdit, MovesTimesOnTheClocksThatTheyAreWrittenFor) {
  const auto move = [](Appointment& a) {
    *a.start += hours(2);
    *a.end += hours(2);
  };
  EXPECT_EQ(EditEvent(kRichEvent, move).bytes,
            Modified(Replaced(Replaced(kRichEvent, "20261123T090000", "20261123T110000"),
                              "20261123T100000", "20261123T120000")));
  const std::string utc =
      Calendar(Event("a", "DTSTART:20261123T080000Z\r\nDTEND:20261123T090000Z\r\n"));
  EXPECT_EQ(EditEvent(utc, move).bytes,
            Calendar(Event("a", "DTSTART:20261123T100000Z\r\nDTEND:20261123T110000Z\r\n")));
  const std::string other =
      Calendar(Event("a", "DTSTART;TZID=America/New_York:20261123T030000\r\nDURATION:PT1H\r\n"));
  EXPECT_EQ(
      EditEvent(other, move).bytes,
      Calendar(Event("a", "DTSTART;TZID=America/New_York:20261123T050000\r\nDURATION:PT1H\r\n")));
  const std::string floating = Calendar(Event("a", "DTSTART:20261123T090000\r\n"));
  EXPECT_EQ(EditEvent(floating, move).bytes, Calendar(Event("a", "DTSTART:20261123T110000\r\n")));
}

TEST(CalendarEdit, BringsTheZoneOfATimeThatTheFileDoesNotDefine) {
  const std::string day = Calendar(Event("a", "DTSTART;VALUE=DATE:20261123\r\nSUMMARY:x\r\n") +
                                   Event("b", "DTSTART;VALUE=DATE:20261124\r\n"));
  const EditResult result = EditEvent(day, [](Appointment& a) {
    a.allDay = false;
    *a.start += hours(9);
    a.end = *a.start + hours(1);
  });
  EXPECT_THAT(result.bytes,
              HasSubstr("PRODID:-//Other//EN\r\nBEGIN:VTIMEZONE\r\nTZID:Europe/Berlin"));
  EXPECT_THAT(result.bytes, HasSubstr("DTSTART;TZID=Europe/Berlin:20261123T090000\r\n"
                                      "DTEND;TZID=Europe/Berlin:20261123T100000\r\nSUMMARY:x"));
  EXPECT_THAT(result.bytes, HasSubstr(Event("b", "DTSTART;VALUE=DATE:20261124\r\n")));
  EXPECT_THAT(result.losses, IsEmpty());
}

TEST(CalendarEdit, BringsNoZoneWithAnEditThatChangesNothing) {
  const std::string undefined =
      Calendar(Event("a", "DTSTART;TZID=Europe/Berlin:20261123T090000\r\nDURATION:PT1H\r\n"));
  EXPECT_EQ(EditEvent(undefined, [](Appointment&) {}).bytes, undefined);
}

TEST(CalendarEdit, MakesATimeADay) {
  const EditResult result = EditEvent(kRichEvent, [](Appointment& a) {
    a.allDay = true;
    a.start = Day(11, 23);
    a.end = Day(11, 25);
  });
  EXPECT_THAT(result.bytes,
              HasSubstr("DTSTART;VALUE=DATE:20261123\r\nDTEND;VALUE=DATE:20261125\r\n"));
  EXPECT_THAT(result.losses, IsEmpty());
}

TEST(CalendarEdit, MovesTheFirstAlarmAndKeepsTheOthers) {
  EditResult result = EditEvent(kRichEvent, [](Appointment& a) { a.reminderMinutes = 30; });
  EXPECT_EQ(result.bytes, Modified(Replaced(kRichEvent, "START:-PT15M", "START:-PT30M")));
  result = EditEvent(kRichEvent, [](Appointment& a) { a.reminderMinutes.reset(); });
  EXPECT_EQ(result.bytes,
            Modified(Replaced(kRichEvent,
                              "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER;RELATED=START:-PT15M\r\n"
                              "X-A:1\r\nEND:VALARM\r\n",
                              "")));
  EXPECT_EQ(std::get<Appointment>(result.now).reminderMinutes, 5);
  const std::string bare = Calendar(Event("a", "DTSTART:20261123T090000\r\n"));
  result = EditEvent(bare, [](Appointment& a) { a.reminderMinutes = 10; });
  EXPECT_EQ(result.bytes,
            Calendar(Event("a",
                           "DTSTART:20261123T090000\r\nBEGIN:VALARM\r\nACTION:DISPLAY\r\n"
                           "DESCRIPTION:Reminder\r\nTRIGGER:-PT10M\r\nEND:VALARM\r\n")));
}

TEST(CalendarEdit, SaysHowBusyByTheLinesThatThereAre) {
  const std::string plain = Calendar(Event("a", "DTSTART:20261123T090000\r\nTRANSP:OPAQUE\r\n"));
  EXPECT_EQ(EditEvent(plain, [](Appointment& a) { a.busyStatus = 0; }).bytes,
            Replaced(plain, "OPAQUE", "TRANSPARENT"));
  EXPECT_EQ(EditEvent(plain, [](Appointment& a) { a.busyStatus = 1; }).bytes,
            Replaced(plain, "OPAQUE\r\n", "OPAQUE\r\nSTATUS:TENTATIVE\r\n"));
  EXPECT_EQ(EditEvent(plain, [](Appointment& a) { a.busyStatus = 3; }).losses,
            std::vector<std::string>{});
}

TEST(CalendarEdit, RemovesWhatRepeatsADescriptionThatChanged) {
  const std::string event = Calendar(Event("a",
                                           "DTSTART:20261123T090000\r\nDESCRIPTION:old\r\n"
                                           "X-ALT-DESC;FMTTYPE=text/html:<b>old</b>\r\n"));
  EXPECT_EQ(EditEvent(event, [](Appointment& a) { a.body = "new"; }).bytes,
            Calendar(Event("a", "DTSTART:20261123T090000\r\nDESCRIPTION:new\r\n")));
}

TEST(CalendarEdit, ChangesTheCategoriesByEntry) {
  const std::string event =
      Calendar(Event("a", "DTSTART:20261123T090000\r\nCATEGORIES:A,B\r\nCATEGORIES:C\r\n"));
  EXPECT_EQ(EditEvent(event,
                      [](Appointment& a) {
                        a.categories = {"A", "C", "D"};
                      })
                .bytes,
            Calendar(Event("a", "DTSTART:20261123T090000\r\nCATEGORIES:A\r\nCATEGORIES:C,D\r\n")));
}

TEST(CalendarEdit, ChangesOneEventOfMany) {
  std::string events;
  for (int i = 0; i < 1000; ++i) {
    events += Event("e" + std::to_string(i),
                    "DTSTART:20261123T090000\r\nSUMMARY:Event " + std::to_string(i) + "\r\n");
  }
  const EditResult result = EditEvent(
      Calendar(events), [](Appointment& a) { a.subject = "New"; }, 500);
  EXPECT_EQ(result.bytes, Calendar(Replaced(events, "SUMMARY:Event 500\r\n", "SUMMARY:New\r\n")));
}

TEST(CalendarEdit, EndsARuleAndKeepsItsOtherParts) {
  const EditResult result =
      EditEvent(kSeries, [](Appointment& a) { a.series->pattern.occurrences = 12; });
  EXPECT_EQ(result.bytes, Replaced(kSeries, "COUNT=10", "COUNT=12"));
}

TEST(CalendarEdit, DeletesAnOccurrenceByALineOfItsOwn) {
  const EditResult result =
      EditEvent(kSeries, [](Appointment& a) { a.series->deleted.push_back(Day(11, 23)); });
  EXPECT_EQ(result.bytes,
            Replaced(kSeries, "20261109T090000\r\n",
                     "20261109T090000\r\nEXDATE;TZID=Europe/Berlin:20261123T090000\r\n"));
}

TEST(CalendarEdit, BringsADeletedOccurrenceBack) {
  const EditResult result = EditEvent(kSeries, [](Appointment& a) { a.series->deleted.clear(); });
  EXPECT_EQ(result.bytes, Replaced(kSeries, "EXDATE;TZID=Europe/Berlin:20261109T090000\r\n", ""));
  const std::string list = Replaced(kSeries, "20261109T090000", "20261109T090000,20261130T090000");
  EXPECT_EQ(EditEvent(list, [](Appointment& a) { a.series->deleted = {Day(11, 30)}; }).bytes,
            Replaced(list, "20261109T090000,", ""));
}

TEST(CalendarEdit, ChangesAnOccurrenceThatWasChanged) {
  const EditResult result = EditEvent(
      kSeries, [](Appointment& a) { a.series->changed[0].occurrence.location = "There"; });
  EXPECT_EQ(result.bytes, Replaced(kSeries, "LOCATION:Elsewhere", "LOCATION:There"));
}

TEST(CalendarEdit, ChangesAnOccurrenceByACopyOfTheEvent) {
  const EditResult result = EditEvent(kSeries, [](Appointment& a) {
    Occurrence moved = a;
    *moved.start += days(21) + hours(5);
    *moved.end += days(21) + hours(5);
    moved.subject = "Late";
    a.series->changed.push_back({Day(11, 23), moved});
  });
  EXPECT_EQ(result.bytes,
            Replaced(kSeries, "X-OWN:1\r\nEND:VEVENT\r\n",
                     "X-OWN:1\r\nEND:VEVENT\r\nBEGIN:VEVENT\r\nUID:week\r\n"
                     "RECURRENCE-ID;TZID=Europe/Berlin:20261123T090000\r\nSUMMARY:Late\r\n"
                     "DTSTART;TZID=Europe/Berlin:20261123T140000\r\n"
                     "DTEND;TZID=Europe/Berlin:20261123T150000\r\n"
                     "ATTENDEE:mailto:bert@example.org\r\nEND:VEVENT\r\n"));
}

TEST(CalendarEdit, ChangesTheWordsOfAnOccurrenceAlone) {
  const EditResult result = EditEvent(kSeries, [](Appointment& a) {
    Occurrence same = a;
    *same.start += days(21);
    *same.end += days(21);
    same.subject = "Last";
    a.series->changed.push_back({Day(11, 23), same});
  });
  EXPECT_THAT(result.losses, IsEmpty());
  EXPECT_THAT(result.bytes, HasSubstr("RECURRENCE-ID;TZID=Europe/Berlin:20261123T090000\r\n"
                                      "SUMMARY:Last\r\n"));
}

TEST(CalendarEdit, LetsAChangedOccurrenceBeAsTheOthersAgain) {
  const EditResult result = EditEvent(kSeries, [](Appointment& a) { a.series->changed.clear(); });
  EXPECT_EQ(result.bytes, kSeries.substr(0, kSeries.rfind("BEGIN:VEVENT")) + "END:VCALENDAR\r\n");
}

TEST(CalendarEdit, MovesTheExceptionsOfASeriesWithIt) {
  const EditResult result = EditEvent(kSeries, [](Appointment& a) {
    *a.start += hours(1);
    *a.end += hours(1);
  });
  std::string moved = Replaced(kSeries, "20261102T100000", "20261102T110000");
  moved = Replaced(moved, "20261102T090000", "20261102T100000");
  moved = Replaced(moved, "EXDATE;TZID=Europe/Berlin:20261109T090000",
                   "EXDATE;TZID=Europe/Berlin:20261109T100000");
  moved = Replaced(moved, "20261116T090000", "20261116T100000");
  EXPECT_EQ(result.bytes, moved);
}

TEST(CalendarEdit, MakesASeriesOneEventAndBack) {
  EditResult result = EditEvent(kSeries, [](Appointment& a) { a.series.reset(); });
  EXPECT_THAT(result.losses, IsEmpty());
  EXPECT_THAT(result.bytes, Not(HasSubstr("RRULE:FREQ=WEEKLY")));
  EXPECT_THAT(result.bytes, HasSubstr("ATTENDEE:mailto:bert"));
  result = EditEvent(kRichEvent, [](Appointment& a) {
    a.series.emplace();
    a.series->pattern.occurrences = 5;
  });
  EXPECT_EQ(result.bytes, Modified(Replaced(kRichEvent, "20261123T100000\r\n",
                                            "20261123T100000\r\nRRULE:FREQ=DAILY;COUNT=5\r\n")));
}

TEST(CalendarEdit, LeavesTheTimesOfASeriesOfAnotherZoneToIt) {
  // At 15:00 but for the weeks in which one zone has summer time and the other has not.
  const std::string series =
      Calendar(Event("ny",
                     "SUMMARY:Call\r\nDTSTART;TZID=America/New_York:20260105T090000\r\n"
                     "DURATION:PT30M\r\nRRULE:FREQ=WEEKLY;BYDAY=MO\r\n"));
  const auto rename = [](Appointment& a) {
    a.subject = "Talk";
    for (auto& change : a.series->changed) change.occurrence.subject = "Talk";
  };
  EditResult result = EditEvent(series, rename);
  EXPECT_EQ(result.bytes, Replaced(series, "SUMMARY:Call", "SUMMARY:Talk"));
  EXPECT_THAT(result.losses, IsEmpty());
  // Those that have the old subject have no place in the file.
  result = EditEvent(series, [](Appointment& a) { a.subject = "Talk"; });
  EXPECT_EQ(result.bytes, Replaced(series, "SUMMARY:Call", "SUMMARY:Talk"));
  EXPECT_THAT(result.losses,
              ElementsAre("occurrences that another zone moves: follow their series"));
  result = EditEvent(series, [](Appointment& a) {
    *a.start += minutes(30);
    *a.end += minutes(30);
  });
  EXPECT_EQ(result.bytes, Replaced(series, "20260105T090000", "20260105T093000"));
  result = EditEvent(series, [](Appointment& a) {
    a.series->deleted.push_back(local_days{std::chrono::year(2026) / 3 / 16});
    std::erase_if(a.series->changed,
                  [&](const auto& change) { return change.original == a.series->deleted.back(); });
  });
  EXPECT_THAT(result.bytes, HasSubstr("EXDATE;TZID=America/New_York:20260316T090000\r\n"));
}

// The tenth of June each year but for one, which a time of another zone names.
const std::string kHoliday = Calendar(
    Event("king", "SUMMARY:Holiday\r\nDTSTART;VALUE=DATE:20250610\r\nRRULE:FREQ=YEARLY\r\n") +
    "BEGIN:VEVENT\r\nUID:king\r\nRECURRENCE-ID;TZID=Asia/Tokyo:20260610T000000\r\n"
    "DTSTART;VALUE=DATE:20260609\r\nDTEND;VALUE=DATE:20260610\r\nEND:VEVENT\r\n");

TEST(CalendarEdit, KnowsTheDayOfAnOccurrenceThatATimeOfAnotherZoneNames) {
  const EditResult result = EditEvent(
      kHoliday, [](Appointment& a) { a.series->changed.at(0).occurrence.subject = "Day off"; });
  EXPECT_THAT(result.losses, IsEmpty());
  EXPECT_EQ(result.bytes,
            Replaced(kHoliday, "20260610\r\nEND:", "20260610\r\nSUMMARY:Day off\r\nEND:"));
}

TEST(CalendarEdit, SpellsOutAnOccurrenceThatNoLongerFollowsItsSeries) {
  const EditResult result = EditEvent(kHoliday, [](Appointment& a) { a.location = "Palace"; });
  EXPECT_THAT(result.losses, IsEmpty());
  EXPECT_EQ(std::get<Appointment>(result.now).series->changed.at(0).occurrence.location, "");
  EXPECT_EQ(result.bytes,
            Replaced(Replaced(kHoliday, "YEARLY\r\n", "YEARLY\r\nLOCATION:Palace\r\n"),
                     "20260610\r\nEND:", "20260610\r\nSUMMARY:Holiday\r\nEND:"));
}

TEST(CalendarEdit, LetsAnOccurrenceFollowItsSeriesAsLongAsItIsTheSame) {
  const EditResult result = EditEvent(kHoliday, [](Appointment& a) {
    a.subject = "Feast";
    a.series->changed.at(0).occurrence.subject = "Feast";
  });
  EXPECT_THAT(result.losses, IsEmpty());
  EXPECT_EQ(result.bytes, Replaced(kHoliday, "SUMMARY:Holiday", "SUMMARY:Feast"));
}

TEST(CalendarEdit, ChangesOneOfTheAppointmentsThatARuleBecame) {
  const std::string dates =
      Calendar(Event("d",
                     "SUMMARY:Now and then\r\nDTSTART:20261123T090000\r\nDURATION:PT1H\r\nX-A:1\r\n"
                     "RDATE:20261125T090000,20261130T090000\r\n"));
  ASSERT_EQ(ReadDeskBytes("a.ics", dates, Berlin()).items.size(), 3u);
  const EditResult result = EditEvent(
      dates, [](Appointment& a) { a.subject = "Then"; }, 1);
  EXPECT_THAT(result.losses, IsEmpty());
  EXPECT_EQ(result.bytes,
            Replaced(dates, "END:VEVENT\r\n",
                     "END:VEVENT\r\nBEGIN:VEVENT\r\nUID:d\r\nRECURRENCE-ID:20261125T090000\r\n"
                     "SUMMARY:Then\r\nDTSTART:20261125T090000\r\nDURATION:PT1H\r\nX-A:1\r\n"
                     "END:VEVENT\r\n"));

  const DeskReading reading = ReadDeskBytes("a.ics", dates, Berlin());
  TextEdit text(dates, Berlin(), kEditTime);
  EXPECT_TRUE(text.Remove(reading.items[1].line, reading.items[1].item).done);
  EXPECT_EQ(text.bytes(), Replaced(dates, "PT1H\r\n", "PT1H\r\nEXDATE:20261125T090000\r\n"));
}

TEST(CalendarEdit, KeepsTheTimesOfDayOfATask) {
  const std::string task = Calendar(
      "BEGIN:VTODO\r\nUID:t\r\nSUMMARY:Buy\r\nDTSTART:20261122T080000\r\n"
      "DUE:20261123T170000\r\nX-A:1\r\nEND:VTODO\r\n");
  const EditResult result = EditTask(task, [](Task& t) { *t.due += days(2); });
  EXPECT_EQ(result.bytes, Replaced(task, "DUE:20261123T170000", "DUE:20261125T170000"));
}

TEST(CalendarEdit, CompletesATaskAndTakesItBack) {
  const std::string open = Calendar(
      "BEGIN:VTODO\r\nUID:t\r\nSUMMARY:Buy\r\nPERCENT-COMPLETE:50\r\n"
      "STATUS:IN-PROCESS\r\nPRIORITY:3\r\nEND:VTODO\r\n");
  const EditResult done = EditTask(open, [](Task& t) {
    t.complete = true;
    t.completed = Day(11, 22);
  });
  EXPECT_EQ(done.bytes,
            Calendar("BEGIN:VTODO\r\nUID:t\r\nSUMMARY:Buy\r\nSTATUS:COMPLETED\r\nPRIORITY:3\r\n"
                     "COMPLETED:20261122T110000Z\r\nEND:VTODO\r\n"));
  const EditResult back = EditTask(done.bytes, [](Task& t) {
    t.complete = false;
    t.completed.reset();
  });
  EXPECT_EQ(back.bytes, Calendar("BEGIN:VTODO\r\nUID:t\r\nSUMMARY:Buy\r\nSTATUS:NEEDS-ACTION\r\n"
                                 "PRIORITY:3\r\nEND:VTODO\r\n"));
}

TEST(CalendarEdit, RefusesAnEventThatIsNotAsItWasRead) {
  const DeskReading reading = ReadDeskBytes("a.ics", kRichEvent, Berlin());
  Appointment other = std::get<Appointment>(reading.items[0].item);
  other.subject = "Another";
  TextEdit text(kRichEvent, Berlin(), kEditTime);
  EXPECT_FALSE(text.Change(reading.items[0].line, other, other).done);
  EXPECT_EQ(text.bytes(), kRichEvent);
}

// An alarm's END is its own, and what it says of a UID is none of the event's.
TEST(CalendarEdit, TakesAUidWithinAnAlarmForNoneOfTheEvents) {
  const std::string other = Event("b", "DTSTART:20261123T090000\r\n");
  const std::string calendar =
      Calendar(other +
               "BEGIN:VEVENT\r\nBEGIN:VALARM\r\nTRIGGER:-PT5M\r\nEND:X-NONE\r\nUID:b\r\n"
               "END:VALARM\r\nUID:a\r\nDTSTART:20261124T090000\r\nEND:VEVENT\r\n");
  const DeskReading reading = ReadDeskBytes("a.ics", calendar, Berlin());
  ASSERT_EQ(reading.items.size(), 2U);
  ASSERT_EQ(UidOf(reading.items[1].item), "a");
  TextEdit text(calendar, Berlin(), kEditTime);
  EXPECT_TRUE(text.Remove(reading.items[1].line, reading.items[1].item).done);
  EXPECT_EQ(text.bytes(), Calendar(other));
}

TEST(CalendarEdit, RefusesATaskWithinACardThatKeepsTheBlanksOfFolds) {
  const std::string file =
      "BEGIN:VCARD\r\nVERSION:2.1\r\nBEGIN:VTODO\r\nUID:t\r\nSUMMARY:Buy\r\nEND:VTODO\r\n";
  const DeskReading reading = ReadDeskBytes("a.ics", file, Berlin());
  ASSERT_EQ(reading.items.size(), 1U);
  formats::Task other = std::get<formats::Task>(reading.items[0].item);
  other.body = std::string(200, 'a');
  TextEdit text(file, Berlin(), kEditTime);
  const TextChange change = text.Change(reading.items[0].line, reading.items[0].item, other);
  EXPECT_FALSE(change.done);
  EXPECT_THAT(change.losses, ::testing::ElementsAre("the VTODO is folded as a vCard 2.1"));
  EXPECT_EQ(text.bytes(), file);
}

}  // namespace
}  // namespace desktop::testing
