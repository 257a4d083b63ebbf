#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "common/formats/icalendar/icalendar.h"
#include "handheld/tool/export_records.h"
#include "handheld/tool/remove_records.h"
#include "tests/handheld/tool/item_support.h"
#include "tests/support/json_lines.h"

namespace tool::testing {
namespace {

using calendar::PatternType;
using formats::Appointment;
using formats::Task;
using ::testing::HasSubstr;
using ::testing::Not;

// Stores what its tests list, without any file.
class CalendarListing : public ItemTest {
 protected:
  CalendarListing() : ItemTest({.zone = "Europe/Berlin"}) {}

  template <typename Record>
  void Add(const Record& record) {
    StoreIn(record, *New<Record>().get());
  }
  void AddAppointments() {
    Appointment meeting;
    meeting.subject = "Meeting";
    meeting.location = "Room 1";
    meeting.start = At(Day(2008, 2, 15), 9);
    meeting.end = At(Day(2008, 2, 15), 10, 30);
    Add(meeting);
    Appointment standup = meeting;
    standup.subject = "Standup";
    standup.start = At(Day(2008, 2, 18), 9);
    standup.end = At(Day(2008, 2, 18), 9, 15);
    calendar::Pattern pattern;
    pattern.type = PatternType::kWeekly;
    pattern.daysOfWeek = 2 | 8;
    pattern.until = Day(2008, 6, 30);
    standup.series = {pattern, {Day(2008, 2, 20), Day(2008, 2, 25)}, {}};
    Add(standup);
  }
  void AddTasks() {
    Task shopping;
    shopping.subject = "Shopping";
    shopping.due = Day(2008, 2, 15);
    shopping.importance = formats::Importance::kHigh;
    Add(shopping);
    Task plants;
    plants.subject = "Plants";
    plants.start = Day(2008, 2, 15);
    plants.complete = true;
    plants.pattern = calendar::PatternFrom(PatternType::kDaily, Day(2008, 2, 15));
    Add(plants);
  }
  template <typename Record>
  std::string Show(bool json = false) {
    RunIn(*session_, [&](Session& session, const Report& report) {
      return ShowRecords<Record>(session, json, report);
    });
    return out_;
  }
  template <typename Record>
  Outcome Export(const ExportOptions& options) {
    return RunIn(*session_, [&](Session& session, const Report& report) {
      return ExportRecords<Record>(session, options, report);
    });
  }
  template <typename Record>
  std::string Exported() {
    EXPECT_EQ(Export<Record>({}), Outcome::kDone);
    losses_ = err_;
    return out_;
  }
  std::string Import(const std::string& text) {
    RunIn(*session_, [&](Session& session, const Report& report) {
      return ImportFiles(session, {WriteFile("in.ics", text)}, {}, report);
    });
    return out_;
  }

  std::string losses_;
};

TEST_F(CalendarListing, ListsAnAppointmentALine) {
  AddAppointments();
  EXPECT_EQ(Show<Appointment>(),
            "       OID  Date       Time           Subject                          Place          "
            "      Repeats\n"
            "         1  2008-02-15 09:00-10:30    Meeting                          Room 1         "
            "      \n"
            "         2  2008-02-18 09:00-09:15    Standup                          Room 1         "
            "      weekly on Mon, Wed until 2008-06-30; 2 exceptions\n"
            "2 appointments\n");
}

TEST_F(CalendarListing, ListsTimesAsPeopleSayThem) {
  struct Case {
    const char* times;
    bool allDay;
    std::optional<formats::local_seconds> start, end;
  };
  const formats::local_days day = Day(2008, 2, 15);
  for (const Case& each : {Case{"09:00  ", false, At(day, 9), At(day, 9)},
                           Case{"22:00-02:00 +1", false, At(day, 22), At(day, 26)},
                           Case{"all day", true, day, day + std::chrono::days{1}},
                           Case{"3 days", true, day, day + std::chrono::days{3}},
                           Case{"09:00  ", false, At(day, 9), std::nullopt},
                           Case{"-          -  ", false, std::nullopt, std::nullopt}}) {
    Appointment appointment;
    appointment.allDay = each.allDay;
    appointment.start = each.start;
    appointment.end = each.end;
    const auto item = New<Appointment>();
    StoreIn(appointment, *item.get());
    EXPECT_THAT(Show<Appointment>(), HasSubstr(each.times));
    item->Delete();
  }
}

TEST_F(CalendarListing, ListsATaskALine) {
  AddTasks();
  EXPECT_EQ(
      Show<Task>(),
      "       OID  Done Due        Priority Subject                                  Repeats\n"
      "         1  [ ]  2008-02-15 high     Shopping                                 \n"
      "         2  [x]  -          normal   Plants                                   daily\n"
      "2 tasks\n");
}

TEST_F(CalendarListing, ListsNothingAsNothing) {
  EXPECT_EQ(Show<Appointment>(), "0 appointments\n");
  EXPECT_EQ(Show<Task>(), "0 tasks\n");
  EXPECT_EQ(Show<Appointment>(true), "");
}

TEST_F(CalendarListing, ListsJson) {
  AddAppointments();
  AddTasks();
  const auto calendar = corvane::testing::JsonLines(Show<Appointment>(true));
  ASSERT_EQ(calendar.size(), 2u);
  EXPECT_EQ(calendar[0]["oid"], 1);
  EXPECT_EQ(calendar[0]["Start"], "2008-02-15T09:00:00");
  EXPECT_EQ(calendar[1]["recurrence"]["PatternEndDate"], "2008-06-30");
  EXPECT_EQ(calendar[1]["recurrence"]["deleted"],
            nlohmann::json::array({"2008-02-20", "2008-02-25"}));
  const auto tasks = corvane::testing::JsonLines(Show<Task>(true));
  ASSERT_EQ(tasks.size(), 2u);
  EXPECT_EQ(tasks[0]["DueDate"], "2008-02-15");
  EXPECT_EQ(tasks[1]["Complete"], true);
}

TEST_F(CalendarListing, ExportsICalendarThatImportsAsUnchanged) {
  AddAppointments();
  AddTasks();
  const std::string calendar = Exported<Appointment>();
  EXPECT_THAT(calendar, HasSubstr("SUMMARY:Standup\r\n"));
  EXPECT_THAT(Import(calendar), HasSubstr("0 added, 0 changed, 2 unchanged"));
  const std::string tasks = Exported<Task>();
  EXPECT_THAT(tasks, HasSubstr("BEGIN:VTODO\r\n"));
  EXPECT_THAT(Import(tasks), HasSubstr("0 added, 0 changed, 2 unchanged"));
  EXPECT_EQ(losses_, "");
}

TEST_F(CalendarListing, ExportsWhatWasImportedUnderItsUidAndKnowsBothFilesAgain) {
  const std::string imported =
      "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//test//EN\r\nBEGIN:VEVENT\r\nUID:with-uid\r\n"
      "DTSTAMP:20080101T000000Z\r\nSUMMARY:Standup\r\nDTSTART:20080218T090000\r\n"
      "DTEND:20080218T091500\r\nRRULE:FREQ=WEEKLY;BYDAY=MO,WE;COUNT=6\r\nEND:VEVENT\r\n"
      "END:VCALENDAR\r\n";
  Import(imported);
  const std::string exported = Exported<Appointment>();
  EXPECT_THAT(exported, HasSubstr("UID:with-uid\r\n"));
  EXPECT_THAT(Import(exported), HasSubstr("0 added, 0 changed, 1 unchanged"));
  EXPECT_THAT(Import(imported), HasSubstr("0 added, 0 changed, 1 unchanged"));
}

TEST_F(CalendarListing, ExportsOddItemsWithoutChangingThemWhenTheyComeBack) {
  const auto endless = New<Appointment>();
  endless->put_Start(DateOf(At(Day(2008, 2, 15), 9)));
  endless->put_End(ce::kNoDate);
  ASSERT_EQ(endless->Save(), ce::S_OK);
  Task plants;
  plants.subject = "Plants";
  plants.pattern = calendar::PatternFrom(PatternType::kDaily, Day(2008, 2, 15));
  Add(plants);
  const std::string before = Show<Appointment>(true) + Show<Task>(true);
  EXPECT_THAT(Import(Exported<Appointment>()), HasSubstr("0 added, 0 changed, 1 unchanged"));
  EXPECT_NE(losses_, "");
  EXPECT_THAT(Import(Exported<Task>()), HasSubstr("0 added, 0 changed, 1 unchanged"));
  EXPECT_NE(losses_, "");
  EXPECT_EQ(Show<Appointment>(true) + Show<Task>(true), before);
}

TEST_F(CalendarListing, GivesAnItemTheSameUidEachTime) {
  AddAppointments();
  const auto uids = [&] {
    std::vector<std::string> found;
    const auto zone = session_->Zone();
    for (const auto& parsed : formats::ReadICalendar(Exported<Appointment>(), zone).appointments)
      found.push_back(parsed.appointment.uid);
    return found;
  };
  const auto first = uids();
  EXPECT_EQ(first.size(), 2u);
  EXPECT_EQ(uids(), first);
}

TEST_F(CalendarListing, ExportsToAFileAsAWhole) {
  AddAppointments();
  const auto file = directory_ / "out.ics";
  EXPECT_EQ(Export<Appointment>({.file = file}), Outcome::kDone);
  EXPECT_EQ(formats::ReadICalendar(ReadFile(file), session_->Zone()).appointments.size(), 2u);
  EXPECT_EQ(out_, file.string() + ": 2 appointments\n");
}

TEST_F(CalendarListing, NamesWhatNoEventCanSay) {
  const auto item = New<Appointment>();
  item->put_Subject(ce::Bstr(u"Some day").get());
  item->put_Start(ce::kNoDate);
  item->put_End(ce::kNoDate);
  ASSERT_EQ(item->Save(), ce::S_OK);
  EXPECT_EQ(Export<Appointment>({.file = directory_ / "out.ics"}), Outcome::kPartlyDone);
  EXPECT_THAT(err_, HasSubstr("corvane-device: Some day: "));
  EXPECT_THAT(out_, HasSubstr("out.ics: 0 appointments\n"));
  EXPECT_THAT(ReadFile(directory_ / "out.ics"), Not(HasSubstr("BEGIN:VEVENT")));
}

TEST_F(CalendarListing, RemovesItemsOfEveryKind) {
  AddAppointments();
  AddTasks();
  Import("BEGIN:VCARD\r\nVERSION:3.0\r\nN:Doe;;;;\r\nEND:VCARD\r\n");
  Capture capture;
  EXPECT_EQ(RemoveItems(*session_, {2, 3, 77}, capture.report()), Outcome::kPartlyDone);
  EXPECT_EQ(capture.Out(), "removed          2\nremoved          3\n");
  EXPECT_EQ(capture.Err(), "corvane-device: 77: no such item\n");
  EXPECT_EQ(CountRecords<Appointment>(*session_), 1u);
  EXPECT_EQ(CountRecords<Task>(*session_), 1u);
}

}  // namespace
}  // namespace tool::testing
