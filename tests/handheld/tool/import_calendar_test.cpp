#include <gmock/gmock.h>

#include "handheld/base/fault.h"
#include "handheld/tool/remove_records.h"
#include "tests/handheld/tool/item_support.h"

namespace tool::testing {
namespace {

using ce::host::FaultPlan;
using formats::Appointment;
using formats::Task;
using ::testing::HasSubstr;
using ::testing::Not;

std::string Calendar(const std::string& components) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//test//EN\r\n" + components +
         "END:VCALENDAR\r\n";
}

std::string Event(const std::string& lines) {
  return "BEGIN:VEVENT\r\nDTSTAMP:20080101T000000Z\r\n" + lines + "END:VEVENT\r\n";
}

std::string Todo(const std::string& lines) {
  return "BEGIN:VTODO\r\nDTSTAMP:20080101T000000Z\r\n" + lines + "END:VTODO\r\n";
}

const std::string kMeeting =
    Event("UID:meeting\r\nSUMMARY:Meeting\r\nDTSTART:20080215T090000\r\nDTEND:20080215T100000\r\n");
const std::string kShopping =
    Todo("UID:shopping\r\nSUMMARY:Shopping\r\nDUE;VALUE=DATE:20080215\r\n");
// Mondays and Wednesdays; the second is left out, the third is later.
const std::string kStandup =
    Event(
        "UID:standup\r\nSUMMARY:Standup\r\nDTSTART:20080218T090000\r\nDTEND:20080218T091500\r\n"
        "RRULE:FREQ=WEEKLY;BYDAY=MO,WE;COUNT=6\r\nEXDATE:20080220T090000\r\n") +
    Event(
        "UID:standup\r\nRECURRENCE-ID:20080225T090000\r\nSUMMARY:Standup with cake\r\n"
        "DTSTART:20080225T160000\r\nDTEND:20080225T170000\r\n");

class ImportCalendar : public MaintenanceTest {
 protected:
  ImportCalendar() { Init({.zone = "Europe/Berlin"}); }

  Outcome ImportText(const std::string& components, const ImportOptions& options = {}) {
    return Import({WriteFile("in.ics", Calendar(components))}, options);
  }
  template <typename Record>
  Record Only() {
    Session session(HandheldPath());
    return OnlyRecord<Record>(session);
  }
  std::string All() { return Shown<Appointment>() + Shown<Task>(); }
};

TEST_F(ImportCalendar, AddsEachEventAndTaskAndSaysSo) {
  EXPECT_EQ(ImportText(kMeeting + kShopping), Outcome::kDone);
  EXPECT_EQ(out_, "added             1  Meeting\nadded             2  Shopping\n" +
                      (directory_ / "in.ics").string() +
                      ": 2 added, 0 changed, 0 unchanged, 0 failed; 0 notices\n");
  EXPECT_EQ(err_, "");
  EXPECT_EQ(Only<Appointment>().start, At(Day(2008, 2, 15), 9));
  EXPECT_EQ(Only<Task>().due, Day(2008, 2, 15));
}

TEST_F(ImportCalendar, TakesTheHandheldsZone) {
  ImportText(
      Event("UID:1\r\nSUMMARY:Call\r\nDTSTART:20080715T120000Z\r\nDTEND:20080715T130000Z\r\n"));
  EXPECT_EQ(Only<Appointment>().start, At(Day(2008, 7, 15), 14));
}

TEST_F(ImportCalendar, StoresASeriesWithItsExceptions) {
  ImportText(kStandup);
  const Appointment standup = Only<Appointment>();
  ASSERT_TRUE(standup.series);
  EXPECT_EQ(standup.series->pattern.daysOfWeek, 2 | 8);
  EXPECT_EQ(standup.series->pattern.until, Day(2008, 3, 5));
  EXPECT_EQ(standup.series->deleted, std::vector{Day(2008, 2, 20)});
  ASSERT_EQ(standup.series->changed.size(), 1u);
  EXPECT_EQ(standup.series->changed[0].original, Day(2008, 2, 25));
  EXPECT_EQ(standup.series->changed[0].occurrence.subject, "Standup with cake");
  EXPECT_EQ(standup.series->changed[0].occurrence.start, At(Day(2008, 2, 25), 16));
}

TEST_F(ImportCalendar, ChangesNothingWhenTheSameFileComesAgain) {
  const std::string all = kMeeting + kStandup + kShopping +
                          Event("SUMMARY:Without UID\r\nDTSTART;VALUE=DATE:20080701\r\n");
  ImportText(all);
  const std::string before = All();
  EXPECT_EQ(ImportText(all), Outcome::kDone);
  EXPECT_THAT(out_, HasSubstr("0 added, 0 changed, 4 unchanged"));
  EXPECT_EQ(All(), before);
}

TEST_F(ImportCalendar, ChangesTheItemWhenItsEventOrTaskChanged) {
  ImportText(kStandup + kShopping);
  ImportText(Event("UID:standup\r\nSUMMARY:Standup\r\nDTSTART:20080218T100000\r\n"
                   "DTEND:20080218T101500\r\nRRULE:FREQ=DAILY;COUNT=3\r\n") +
             Todo("UID:shopping\r\nSUMMARY:Shopping\r\nDUE;VALUE=DATE:20080216\r\n"));
  EXPECT_THAT(out_, HasSubstr("changed           1  Standup\nchanged           2  Shopping\n"));
  const Appointment standup = Only<Appointment>();
  EXPECT_EQ(standup.series->pattern.type, calendar::PatternType::kDaily);
  EXPECT_TRUE(standup.series->deleted.empty());
  EXPECT_TRUE(standup.series->changed.empty());
  EXPECT_EQ(Only<Task>().due, Day(2008, 2, 16));
}

TEST_F(ImportCalendar, LeavesAnItemAloneThatIsAlreadyAsItsEventHasIt) {
  ImportText(kStandup);
  std::string dated = kStandup;
  dated.replace(dated.find("COUNT=6"), 7, "UNTIL=20080306T080000Z");
  ImportText(dated);
  EXPECT_THAT(out_, HasSubstr("0 added, 0 changed, 1 unchanged"));
}

TEST_F(ImportCalendar, KeepsKindsApartThatHaveTheSameUid) {
  ImportText(Event("UID:1\r\nSUMMARY:Event\r\nDTSTART:20080215T090000\r\n") +
             Todo("UID:1\r\nSUMMARY:Task\r\n"));
  EXPECT_THAT(out_, HasSubstr("2 added"));
  Import({WriteFile("a.vcf", "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:1\r\nN:Doe;;;;\r\nEND:VCARD\r\n")});
  EXPECT_THAT(out_, HasSubstr("added             3  Doe\n"));
}

TEST_F(ImportCalendar, AddsAgainWhatWasRemovedSince) {
  ImportText(kMeeting);
  Run([](Session& session, const Report& report) { return RemoveItems(session, {1}, report); });
  ImportText(kMeeting);
  EXPECT_THAT(out_, HasSubstr("added             2  Meeting\n"));
}

TEST_F(ImportCalendar, AddsOnceMoreWhenADuplicateIsForced) {
  ImportText(kStandup + kShopping);
  ImportText(kStandup + kShopping, {.dryRun = false, .duplicate = true});
  EXPECT_EQ(Stored<Appointment>(), 2u);
  EXPECT_EQ(Stored<Task>(), 2u);
}

TEST_F(ImportCalendar, StoresNothingInADryRunAndCountsAsItWould) {
  const std::string wordy =
      Event("UID:wordy\r\nSUMMARY:" + std::string(5000, 'x') + "\r\nDTSTART:20080215T090000\r\n");
  EXPECT_EQ(ImportText(kStandup + kShopping + wordy, {.dryRun = true}), Outcome::kDone);
  EXPECT_THAT(out_, HasSubstr("would be added    Standup\n"));
  EXPECT_THAT(out_, HasSubstr("would be 3 added, 0 changed, 0 unchanged"));
  EXPECT_THAT(err_, HasSubstr("Subject: cut from 5000 to 4095 characters"));
  EXPECT_EQ(All(), "");
}

TEST_F(ImportCalendar, NamesInADryRunWhatAChangedOccurrenceWouldNotKeep) {
  std::string wordy = kStandup;
  wordy.replace(wordy.find("Standup with cake"), 17, std::string(5000, 'x'));
  ImportText(wordy, {.dryRun = true});
  const std::string tried = err_;
  EXPECT_THAT(tried, HasSubstr("in.ics:4: 2008-02-25: Subject: cut from 5000 to 4095"));
  ImportText(wordy);
  EXPECT_EQ(err_, tried);
}

TEST_F(ImportCalendar, NamesTheLineOfWhatItCannotKeep) {
  EXPECT_EQ(ImportText(Event("UID:1\r\nSUMMARY:Call\r\nDTSTART:20080215T090000\r\n"
                             "GEO:48.2;16.3\r\n")),
            Outcome::kDone);
  EXPECT_THAT(err_, HasSubstr("in.ics:9: GEO: ")) << err_;
  EXPECT_THAT(out_, HasSubstr("; 1 notices\n"));
}

TEST_F(ImportCalendar, KnowsACalendarByItsContentElse) {
  EXPECT_EQ(Import({WriteFile("calendar", Calendar(kMeeting))}), Outcome::kDone);
  EXPECT_EQ(Import({WriteFile("shouting.ICS", Calendar(kShopping))}), Outcome::kDone);
  EXPECT_EQ(Stored<Appointment>(), 1u);
  EXPECT_EQ(Stored<Task>(), 1u);
}

TEST_F(ImportCalendar, SaysThatAFileHoldsNeitherAppointmentsNorTasks) {
  const auto good = WriteFile("good.ics", Calendar(kMeeting));
  const auto empty = WriteFile("empty.ics", Calendar(""));
  EXPECT_EQ(Import({empty}), Outcome::kFailed);
  EXPECT_THAT(err_, HasSubstr("empty.ics: no appointments or tasks in it\n"));
  EXPECT_EQ(Import({WriteFile("letter.ics", "Dear Ada"), good}), Outcome::kPartlyDone);
  EXPECT_THAT(err_, HasSubstr("letter.ics: no appointments or tasks in it\n"));
}

TEST_F(ImportCalendar, SaysThatTheHandheldsZoneIsUnknown) {
  Session session(HandheldPath());
  session.handheld().Set(ce::host::setting::kZone, u"Mars/Base");
  Capture capture;
  EXPECT_THROW(
      ImportFiles(session, {WriteFile("in.ics", Calendar(kMeeting))}, {}, capture.report()),
      ce::host::HandheldError);
}

TEST_F(ImportCalendar, NeverLeavesHalfASeriesWhenAPlatformCallFails) {
  const auto file = WriteFile("in.ics", Calendar(kStandup + kShopping));
  Import({file});
  const Appointment whole = Only<Appointment>();
  const auto check = [&](Outcome outcome) {
    const std::size_t series = Stored<Appointment>();
    EXPECT_TRUE(series == 0 || Only<Appointment>() == whole);
    EXPECT_TRUE(outcome != Outcome::kDone || (series == 1 && Stored<Task>() == 1u));
  };
  EXPECT_GE(ImportFailingEachCall(file, {.zone = "Europe/Berlin"}, check), 100u);
}

TEST_F(ImportCalendar, LeavesASeriesAsItWasWhenChangingItFails) {
  const auto before = WriteFile("before.ics", Calendar(kStandup));
  std::string later = kStandup;
  later.replace(later.find("EXDATE:20080220"), 15, "EXDATE:20080227");
  const auto after = WriteFile("after.ics", Calendar(later));
  Import({before});
  const Appointment old = Only<Appointment>();
  const std::pair<const char*, std::uint64_t> calls[] = {{"IAppointment::Save", 1},
                                                         {"IAppointment::Save", 2},
                                                         {"IAppointment::Delete", 1},
                                                         {"IRecurrencePattern::GetOccurrence", 2},
                                                         {"ImportLedger::Remember", 1}};
  for (const auto& [call, n] : calls) {
    {
      const auto plan = FaultPlan::FailNthCall(call, n, ce::ERROR_DISK_FULL);
      EXPECT_EQ(Import({after}), Outcome::kFailed) << call;
    }
    EXPECT_THAT(err_, HasSubstr("import the file again")) << call;
    EXPECT_EQ(Only<Appointment>(), old) << call;
  }
  EXPECT_EQ(Import({after}), Outcome::kDone);
  EXPECT_THAT(out_, HasSubstr("0 added, 1 changed"));
}

}  // namespace
}  // namespace tool::testing
