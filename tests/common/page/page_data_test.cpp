#include "common/page/page_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <rapidcheck/gtest.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "common/calendar/wall_time.h"
#include "common/page/calendar.h"

namespace page::testing {
namespace {

using formats::Appointment;
using formats::Contact;
using formats::ContactField;
using formats::local_days;
using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr local_days kToday{std::chrono::year{2026} / 11 / 22};

Contents Nothing() {
  return {.name = "pda",
          .country = "DE",
          .zone = *calendar::Zone::Find("Europe/Berlin"),
          .now = kToday + std::chrono::hours(14)};
}

json Data(const Contents& contents) {
  return json::parse(DataOf(contents));
}

std::int64_t Number(local_days day) {
  return day.time_since_epoch().count();
}
local_days On(int year, unsigned month, unsigned day) {
  return local_days{std::chrono::year{year} / std::chrono::month{month} / std::chrono::day{day}};
}

Appointment At(local_days day, int hour, const std::string& subject) {
  Appointment appointment;
  appointment.subject = subject;
  appointment.start = day + std::chrono::hours(hour);
  appointment.end = *appointment.start + std::chrono::minutes(45);
  return appointment;
}

Appointment Weekly(local_days day, int daysOfWeek, const std::string& subject) {
  Appointment appointment = At(day, 9, subject);
  appointment.series.emplace();
  appointment.series->pattern.type = calendar::PatternType::kWeekly;
  appointment.series->pattern.daysOfWeek = daysOfWeek;
  return appointment;
}

// The days of an event, which are told by their distances.
std::vector<std::int64_t> DaysOf(const json& event) {
  std::vector<std::int64_t> days;
  std::int64_t day = 0;
  for (const json& step : event["days"]) days.push_back(day += step.get<std::int64_t>());
  return days;
}

TEST(PageData, IsEmptyForAnEmptyHandheld) {
  const json data = Data(Nothing());
  EXPECT_EQ(data["name"], "pda");
  EXPECT_EQ(data["zone"], "Europe/Berlin");
  for (const char* kind : {"people", "events", "tasks", "threads", "calls", "notes", "volumes"})
    EXPECT_TRUE(data[kind].is_array() && data[kind].empty()) << kind;
}

TEST(PageData, PutsEveryOccurrenceInItsPlace) {
  constexpr int kMondayAndWednesday = 2 + 8;
  Appointment meeting = Weekly(On(2026, 11, 2), kMondayAndWednesday, "Meeting");
  meeting.series->pattern.occurrences = 5;
  meeting.series->deleted = {On(2026, 11, 4)};
  formats::ChangedOccurrence changed{On(2026, 11, 11), meeting};
  changed.occurrence.subject = "Moved";
  changed.occurrence.start = On(2026, 11, 13) + std::chrono::hours(14);
  changed.occurrence.end = On(2026, 11, 13) + std::chrono::hours(15);
  meeting.series->changed = {changed};
  Contents contents = Nothing();
  contents.appointments = {meeting};
  const json events = Data(contents)["events"];
  ASSERT_EQ(events.size(), 2u);
  EXPECT_THAT(DaysOf(events[0]), ElementsAre(Number(On(2026, 11, 2)), Number(On(2026, 11, 9)),
                                             Number(On(2026, 11, 16))));
  EXPECT_EQ(events[0]["minute"], 9 * 60);
  EXPECT_EQ(events[0]["length"], 45);
  EXPECT_EQ(events[0]["repeats"], "weekly on Mon, Wed, 5 times");
  EXPECT_EQ(events[1]["subject"], "Moved");
  EXPECT_EQ(events[1]["minute"], 14 * 60);
  EXPECT_EQ(events[1]["instead"], Number(On(2026, 11, 11)));
  EXPECT_THAT(DaysOf(events[1]), ElementsAre(Number(On(2026, 11, 13))));
}

TEST(PageData, EndsASeriesWithoutAnEndTwoYearsBehindToday) {
  constexpr int kMonday = 2;
  Contents contents = Nothing();
  contents.appointments = {Weekly(On(2026, 11, 2), kMonday, "Meeting")};
  const json data = Data(contents);
  EXPECT_EQ(data["from"], Number(On(2026, 11, 2)));
  EXPECT_EQ(data["until"], Number(On(2028, 11, 30)));
  EXPECT_EQ(DaysOf(data["events"][0]).back(), Number(On(2028, 11, 27)));
}

TEST(PageData, ShowsWhatLiesBehindTheRange) {
  constexpr int kMonday = 2;
  Contents contents = Nothing();
  contents.appointments = {Weekly(On(2040, 1, 2), kMonday, "Far"), At(On(2050, 5, 5), 8, "Single")};
  const json events = Data(contents)["events"];
  EXPECT_THAT(DaysOf(events[0]), ElementsAre(Number(On(2040, 1, 2))));
  EXPECT_THAT(DaysOf(events[1]), ElementsAre(Number(On(2050, 5, 5))));
}

TEST(PageData, LeavesOutTheOldestDaysOfWhatHasTooMany) {
  Appointment daily = At(On(1900, 1, 1), 8, "Daily");
  daily.series.emplace();
  Contents contents = Nothing();
  contents.appointments.assign(1'000, daily);
  const json events = Data(contents)["events"];
  const auto most = static_cast<std::int64_t>(kMostDaysOfAll / 1'000);
  for (const json& event : events) {
    const std::vector<std::int64_t> days = DaysOf(event);
    ASSERT_EQ(days.size(), static_cast<std::size_t>(most));
    EXPECT_EQ(days.back(), Number(On(2028, 11, 30)));
    EXPECT_EQ(event["earlier"], days.front() - Number(On(1900, 1, 1)));
  }
}

TEST(PageData, KnowsAnAppointmentWithoutADay) {
  Contents contents = Nothing();
  contents.appointments.emplace_back().subject = "Odd";
  const json event = Data(contents)["events"][0];
  EXPECT_EQ(event["subject"], "Odd");
  EXPECT_THAT(DaysOf(event), IsEmpty());
  EXPECT_FALSE(event.contains("repeats"));
}

TEST(PageData, CountsTheDaysOfAnAllDayEvent) {
  Appointment holiday;
  holiday.allDay = true;
  holiday.start = On(2026, 12, 21);
  holiday.end = On(2027, 1, 4);
  Contents contents = Nothing();
  contents.appointments = {holiday};
  const json event = Data(contents)["events"][0];
  EXPECT_EQ(event["length"], 14);
  EXPECT_FALSE(event.contains("minute"));
}

// Against a walk from day to day.
RC_GTEST_PROP(PageDataProperty, HasTheDaysOfThePattern, ()) {
  Appointment appointment = Weekly(On(2026, 1, 1) + std::chrono::days(*rc::gen::inRange(0, 2'000)),
                                   *rc::gen::inRange(1, 128), "x");
  calendar::Pattern& pattern = appointment.series->pattern;
  if (*rc::gen::arbitrary<bool>()) {
    pattern.type = calendar::PatternType::kMonthly;
    pattern.daysOfWeek = 0;
    pattern.dayOfMonth = *rc::gen::inRange(1, 32);
  }
  pattern.interval = *rc::gen::inRange(1, 6);
  const DayRange range = RangeOf({appointment}, kToday);
  const local_days start = formats::DayOf(*appointment.start);
  std::vector<std::int64_t> expected;
  for (local_days day = start; day <= range.last; day += std::chrono::days(1))
    if (calendar::IsDayOf(pattern, start, day)) expected.push_back(Number(day));
  std::vector<std::int64_t> days = DaysOf(EventsOf({appointment}, range)[0]);
  if (expected.empty()) {
    RC_ASSERT(days.size() == 1u);  // the first one, which lies behind the range
    RC_ASSERT(days[0] > Number(range.last));
  } else {
    RC_ASSERT(days == expected);
  }
}

Contact Person(const std::string& first, const std::string& mobile, const std::string& work = {}) {
  Contact contact;
  contact[ContactField::kFirstName] = first;
  contact[ContactField::kMobileTelephoneNumber] = mobile;
  contact[ContactField::kBusinessTelephoneNumber] = work;
  return contact;
}

formats::MessageTime Minute(int minute) {
  return formats::MessageTime{std::chrono::minutes(minute)};
}

formats::TextMessage From(const std::string& address, int minute, const std::string& text) {
  formats::TextMessage message;
  message.from.address = address;
  message.time = Minute(minute);
  message.text = text;
  return message;
}
formats::TextMessage To(const std::vector<std::string>& addresses, int minute,
                        const std::string& text) {
  formats::TextMessage message;
  message.folder = "/Sent Items";
  message.flags.fromMe = true;
  for (const std::string& address : addresses) message.to.push_back({address, ""});
  message.time = Minute(minute);
  message.text = text;
  return message;
}

std::vector<std::string> TextsOf(const json& thread) {
  std::vector<std::string> texts;
  for (const json& message : thread["messages"]) texts.push_back(message[2]);
  return texts;
}

TEST(PageData, BringsAPersonsNumbersTogetherHoweverTheyAreWritten) {
  Contents contents = Nothing();
  contents.people = {Person("Ada", "+49 170 5550101", "030 555011")};
  contents.messages = {To({"+4930555011"}, 3, "third"), From("01705550101", 1, "first"),
                       From("0049 170 / 5550101", 2, "second"), From("12345", 9, "other")};
  const json threads = Data(contents)["threads"];
  ASSERT_EQ(threads.size(), 2u);
  EXPECT_EQ(threads[0]["names"], json::array({"12345"}));
  EXPECT_FALSE(threads[0].contains("people"));
  EXPECT_EQ(threads[1]["people"], json::array({0}));
  EXPECT_THAT(TextsOf(threads[1]), ElementsAre("first", "second", "third"));
}

TEST(PageData, TellsSidesStatesAndTimes) {
  Contents contents = Nothing();
  formats::TextMessage unread = From("Bank", 60, "balance");
  unread.from.name = "The Bank";
  formats::TextMessage draft = To({"Bank"}, 0, "draft");
  draft.folder = "/Drafts";
  draft.flags.unsent = true;
  draft.time = std::nullopt;
  contents.messages = {unread, draft};
  const json threads = Data(contents)["threads"];
  ASSERT_EQ(threads.size(), 1u);
  EXPECT_EQ(threads[0]["names"], json::array({"The Bank"}));
  // Without a time it comes first; Berlin had UTC+1 on that day.
  EXPECT_EQ(threads[0]["messages"],
            json::parse(R"([[null,3,"draft",0,"/Drafts"],[7200,1,"balance",1,"/Inbox"]])"));
}

TEST(PageData, KeepsWhatWentToSeveralApart) {
  Contents contents = Nothing();
  contents.people = {Person("Ada", "111"), Person("Ben", "222")};
  contents.messages = {To({"222", "111"}, 1, "both"), To({"111"}, 2, "one"), To({}, 3, "nobody")};
  const json threads = Data(contents)["threads"];
  ASSERT_EQ(threads.size(), 3u);
  EXPECT_FALSE(threads[0].contains("people") || threads[0].contains("names"));
  EXPECT_EQ(threads[1]["people"], json::array({0}));
  EXPECT_EQ(threads[2]["people"], json::array({0, 1}));
}

TEST(PageData, MatchesCallsWithPeople) {
  Contents contents = Nothing();
  contents.people = {Person("Ada", "+491705550101")};
  formats::Call call;
  call.number = "0170 5550101";
  call.start = Minute(0);
  call.end = Minute(2);
  call.outgoing = true;
  formats::Call hidden;
  hidden.missed = true;
  contents.calls = {hidden, call};
  EXPECT_EQ(Data(contents)["calls"],
            json::parse(R"([[3600,120,2,"0170 5550101","",0,""],[null,null,0,"","",-1,""]])"));
}

TEST(PageData, NamesAndSortsPeople) {
  Contact contact = Person("Åsa", "+46705550101");
  contact[ContactField::kLastName] = "Björkman";
  contact[ContactField::kTitle] = "Dr.";
  contact[ContactField::kHomeAddressStreet] = "Gatan 1";
  contact[ContactField::kHomeAddressPostalCode] = "123";
  contact[ContactField::kHomeAddressCity] = "Lund";
  contact.birthday = std::chrono::year{1971} / 9 / 4;
  Contents contents = Nothing();
  contents.people = {contact, Contact()};
  const json people = Data(contents)["people"];
  EXPECT_EQ(people[0]["name"], "Dr. Åsa Björkman");
  EXPECT_EQ(people[0]["sort"], "Björkman, Åsa");
  EXPECT_EQ(people[0]["numbers"], json::parse(R"([["Mobile","+46705550101"]])"));
  EXPECT_EQ(people[0]["addresses"], json::parse(R"([["Home","Gatan 1\n123 Lund"]])"));
  EXPECT_EQ(people[0]["more"], json::parse(R"([["Birthday","1971-09-04"]])"));
  EXPECT_EQ(people[1]["name"], "(no name)");
}

TEST(PageData, RepairsTextThatIsNone) {
  Contents contents = Nothing();
  contents.notes = {{"\\a.txt", "one\r\ntwo\xFF"}};
  EXPECT_EQ(Data(contents)["notes"][0]["text"], "one\ntwo\xEF\xBF\xBD");
}

}  // namespace
}  // namespace page::testing
