#include "desktop/merge/joins.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <set>
#include <string>
#include <vector>

namespace desktop::testing {
namespace {

using formats::Appointment;
using formats::Contact;
using formats::ContactField;
using formats::Task;
using std::chrono::hours;
using std::chrono::local_days;

local_days DayAt(int day) {
  return local_days{std::chrono::year{2008} / 2 / 1} + std::chrono::days{day - 1};
}

Contact Person(const char* first, const char* last) {
  Contact contact;
  contact[ContactField::kFirstName] = first;
  contact[ContactField::kLastName] = last;
  return contact;
}

Contact With(Contact contact, ContactField field, const std::string& text) {
  contact[field] = text;
  return contact;
}

Appointment Event(const char* subject, int day, int hour) {
  Appointment event;
  event.subject = subject;
  event.start = DayAt(day) + hours{hour};
  event.end = *event.start + hours{1};
  return event;
}

Task Todo(const char* subject, int due = 0) {
  Task task;
  task.subject = subject;
  if (due > 0) task.due = DayAt(due);
  return task;
}

Joins Find(const std::vector<Item>& desk, const std::vector<Item>& handheld) {
  return FindJoins(desk, handheld, phone::PhoneNumbers("DE"));
}

const std::vector<Join> kNone;
const std::vector<Join> kFirst = {{0, 0}};

void ExpectSure(const Item& desk, const Item& handheld) {
  const Joins joins = Find({desk}, {handheld});
  EXPECT_EQ(joins.sure, kFirst);
  EXPECT_EQ(joins.unsure, kNone);
}

void ExpectUnsure(const Item& desk, const Item& handheld) {
  const Joins joins = Find({desk}, {handheld});
  EXPECT_EQ(joins.sure, kNone);
  EXPECT_EQ(joins.unsure, kFirst);
}

void ExpectNone(const Item& desk, const Item& handheld) {
  const Joins joins = Find({desk}, {handheld});
  EXPECT_EQ(joins.sure, kNone);
  EXPECT_EQ(joins.unsure, kNone);
}

constexpr auto kMobile = ContactField::kMobileTelephoneNumber;
constexpr auto kHome = ContactField::kHomeTelephoneNumber;

TEST(Joins, SureByTheSameUid) {
  Contact desk = Person("Eva", "Berg");
  Contact handheld = Person("Eve", "Hill");
  desk.uid = handheld.uid = "u1";
  ExpectSure(desk, handheld);
}

TEST(Joins, SureWhenEqualInTheCommonForm) {
  Contact desk = With(Person("Eva", "Berg"), ContactField::kBody, "one\r\ntwo\n");
  desk.uid = "u1";
  desk.categories = {"b", "a"};
  Contact handheld = With(Person("Eva", "Berg"), ContactField::kBody, "one\ntwo");
  handheld[ContactField::kFileAs] = "Berg, Eva";
  handheld.categories = {"a", "b"};
  ExpectSure(desk, handheld);
}

TEST(Joins, SureByNameAndNumberInAnySpellingAndSlot) {
  ExpectSure(With(Person("Eva", "Berg"), kMobile, "+49 170 1234567"),
             With(Person("EVA", "berg "), kHome, "0170/1234567"));
}

TEST(Joins, SureByNameAndAddress) {
  ExpectSure(With(Person("Eva", "Berg"), ContactField::kEmail1Address, "eva@berg.example"),
             With(Person("Eva", "Berg"), ContactField::kEmail3Address, "Eva@Berg.example"));
}

TEST(Joins, SureByNameHoweverItIsParted) {
  Contact handheld = With(Person("Eva", "Berg"), kMobile, "0170 1234567");
  handheld[ContactField::kMiddleName] = "Maria";
  ExpectSure(With(Person("Eva Maria", "Berg"), kMobile, "0170 1234567"), handheld);
}

TEST(Joins, SureByCompanyAndNumberWithoutAPerson) {
  Contact company;
  company[ContactField::kCompanyName] = "Berg AG";
  company[kMobile] = "030 1234";
  Contact other = company;
  other[ContactField::kFileAs] = "Berg AG (Berlin)";
  ExpectSure(company, other);
}

TEST(Joins, NotSureOfFatherAndSon) {
  ExpectUnsure(With(Person("Max", "Berg"), kHome, "030 1234"),
               With(With(Person("Max", "Berg"), kHome, "030 1234"), ContactField::kSuffix, "jun."));
}

TEST(Joins, UnsureByTheNameAlone) {
  ExpectUnsure(With(Person("Eva", "Berg"), kMobile, "0170 1234567"),
               With(Person("Eva", "Berg"), kMobile, "0170 7654321"));
}

TEST(Joins, UnsureByTheNumberOfTwoWithoutAName) {
  Contact other = With({}, kHome, "0170 1234567");
  other[ContactField::kBody] = "who is it?";
  ExpectUnsure(With({}, kMobile, "+49 170 1234567"), other);
}

TEST(Joins, NotByTheNumberOfAHousehold) {
  ExpectNone(With(Person("Eva", "Berg"), kHome, "030 1234"),
             With(Person("Max", "Berg"), kHome, "030 1234"));
}

TEST(Joins, SureBySubjectAndStart) {
  Appointment handheld = Event("standup ", 4, 9);
  handheld.location = "Room 2";
  ExpectSure(Event("Standup", 4, 9), handheld);
}

TEST(Joins, UnsureBySubjectAndDay) {
  ExpectUnsure(Event("Standup", 4, 9), Event("Standup", 4, 10));
}

TEST(Joins, AWholeDayIsNotMidnight) {
  Appointment wholeDay = Event("Fair", 4, 0);
  wholeDay.allDay = true;
  wholeDay.end = *wholeDay.start + hours{24};
  ExpectUnsure(wholeDay, Event("Fair", 4, 0));
}

TEST(Joins, NotByTheStartAlone) {
  ExpectNone(Event("Standup", 4, 9), Event("Dentist", 4, 9));
  Appointment note = Event("", 4, 9);
  note.location = "here";
  ExpectNone(note, Event("", 4, 9));
}

TEST(Joins, SureBySubjectAndDueDay) {
  Task handheld = Todo("Buy milk", 5);
  handheld.body = "two";
  ExpectSure(Todo("Buy milk", 5), handheld);
  ExpectUnsure(Todo("Buy milk", 5), Todo("Buy milk", 6));
}

TEST(Joins, WithoutADueDayAnOpenTaskIsNotACompleteOne) {
  Task handheld = Todo("Water plants");
  handheld.body = "all";
  ExpectSure(Todo("Water plants"), handheld);
  handheld.complete = true;
  ExpectUnsure(Todo("Water plants"), handheld);
}

TEST(Joins, TakeEachItemOnce) {
  const Contact eva = With(Person("Eva", "Berg"), kMobile, "0170 1234567");
  const Joins joins = Find({eva, eva, eva}, {eva, eva});
  EXPECT_EQ(joins.sure, (std::vector<Join>{{0, 0}, {1, 1}}));
  EXPECT_EQ(joins.unsure, kNone);
}

TEST(Joins, PreferWhatIsSurer) {
  Contact desk = With(Person("Eva", "Berg"), kMobile, "0170 1234567");
  Contact other = With(desk, ContactField::kBody, "another");
  EXPECT_EQ(Find({desk}, {other, desk}).sure, (std::vector<Join>{{0, 1}}));
  desk.uid = other.uid = "u1";
  EXPECT_EQ(Find({desk}, {With(desk, kHome, "030 1"), other}).sure, (std::vector<Join>{{0, 0}}));
}

// Everything alike, and nothing the same: the worst that a name can do.
std::size_t LooksOf(int count) {
  std::vector<Item> desk;
  std::vector<Item> handheld;
  for (int i = 0; i < count; ++i) {
    desk.push_back(With(With(Person("Eva", "Berg"), kMobile, "0170 1" + std::to_string(i)), kHome,
                        "030 1234"));
    handheld.push_back(With(With(Person("Eva", "Berg"), kMobile, "0171 1" + std::to_string(i)),
                            ContactField::kBusinessTelephoneNumber, "030 1234"));
  }
  const Joins joins = Find(desk, handheld);
  std::set<std::size_t> desks;
  std::set<std::size_t> handhelds;
  for (const Join& join : joins.sure) {
    desks.insert(join.desk);
    handhelds.insert(join.handheld);
  }
  EXPECT_EQ(joins.sure.size(), static_cast<std::size_t>(count));
  EXPECT_EQ(desks.size(), joins.sure.size());
  EXPECT_EQ(handhelds.size(), joins.sure.size());
  return joins.looks;
}

TEST(Joins, TwiceTheItemsAreTwiceTheWork) {
  const std::size_t once = LooksOf(500);
  EXPECT_GT(once, 500U);
  EXPECT_LE(LooksOf(1000), 2 * once + 10);
}

}  // namespace
}  // namespace desktop::testing
