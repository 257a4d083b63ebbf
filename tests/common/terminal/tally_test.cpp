#include "common/terminal/tally.h"

#include <gtest/gtest.h>

namespace terminal::testing {
namespace {

using Lines = std::vector<std::string>;
constexpr Noun kContacts = {"contact", "contacts"};

TEST(Grouped, PartsThousands) {
  EXPECT_EQ(Grouped(0), "0");
  EXPECT_EQ(Grouped(999), "999");
  EXPECT_EQ(Grouped(1000), "1,000");
  EXPECT_EQ(Grouped(50000), "50,000");
  EXPECT_EQ(Grouped(1234567), "1,234,567");
}

TEST(Counted, SaysOneAndMany) {
  EXPECT_EQ(Counted(1, kContacts), "1 contact");
  EXPECT_EQ(Counted(0, kContacts), "0 contacts");
  EXPECT_EQ(Counted(12000, kContacts), "12,000 contacts");
}

TEST(Tally, SumsUpWhatIsTheSameInTheOrderOfTheFirst) {
  Tally tally;
  EXPECT_TRUE(tally.empty());
  tally.Add("PHOTO", kContacts);
  tally.Add("BDAY", kContacts);
  tally.Add("PHOTO", kContacts);
  tally.Add("PHOTO", {"task", "tasks"});
  EXPECT_EQ(tally.Lines(), (Lines{"PHOTO: 2 contacts", "BDAY: 1 contact", "PHOTO: 1 task"}));
}

TEST(Tally, CountsAnOwnerOnce) {
  Tally tally;
  tally.Add("PHOTO", kContacts, {}, 1);
  tally.Add("PHOTO", kContacts, {}, 1);
  tally.Add("PHOTO", kContacts, {}, 2);
  tally.Add("BDAY", kContacts, {}, 2);
  EXPECT_EQ(tally.Lines(), (Lines{"PHOTO: 2 contacts", "BDAY: 1 contact"}));
}

TEST(Tally, TellsAReasonThatAllHave) {
  Tally tally;
  tally.Add("PHOTO", kContacts, "no pictures");
  tally.Add("PHOTO", kContacts, "no pictures");
  tally.Add("N", kContacts, "cut from 8 to 5");
  tally.Add("N", kContacts, "cut from 9 to 5");
  tally.Add("N", kContacts, "cut from 8 to 5");
  EXPECT_EQ(tally.Lines(), (Lines{"PHOTO: 2 contacts (no pictures)", "N: 3 contacts"}));
}

}  // namespace
}  // namespace terminal::testing
