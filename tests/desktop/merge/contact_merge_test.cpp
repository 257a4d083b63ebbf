#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/desktop/merge/merge_support.h"

namespace desktop::testing {
namespace {

using Field = ContactField;

Contact WithEmails(const std::vector<std::string>& emails) {
  Contact contact = EvaBerg();
  constexpr Field kFields[] = {Field::kEmail1Address, Field::kEmail2Address, Field::kEmail3Address};
  for (std::size_t i = 0; i < emails.size(); ++i) contact[kFields[i]] = emails[i];
  return contact;
}

const Contact& AsContact(const Item& item) {
  return std::get<Contact>(item);
}

TEST(ContactMerge, NothingChangedIsNothing) {
  ExpectAgreed(MergeOf(EvaBerg(), EvaBerg(), EvaBerg()), EvaBerg());
}

TEST(ContactMerge, AChangeOnTheDeskTravels) {
  const Contact desk = Set(EvaBerg(), Field::kJobTitle, "Engineer");
  ExpectAgreed(MergeOf(EvaBerg(), desk, EvaBerg()), desk);
}

TEST(ContactMerge, AChangeOnTheHandheldTravels) {
  const Contact handheld = Set(EvaBerg(), Field::kJobTitle, "Engineer");
  ExpectAgreed(MergeOf(EvaBerg(), EvaBerg(), handheld), handheld);
}

TEST(ContactMerge, AClearedFieldTravels) {
  const Contact base = Set(EvaBerg(), Field::kJobTitle, "Engineer");
  ExpectAgreed(MergeOf(base, EvaBerg(), base), EvaBerg());
  ExpectAgreed(MergeOf(base, base, EvaBerg()), EvaBerg());
}

TEST(ContactMerge, DifferentFieldsOfBothSidesComeTogether) {
  const Contact desk = Set(EvaBerg(), Field::kJobTitle, "Engineer");
  const Contact handheld = Set(EvaBerg(), Field::kSpouse, "Max");
  ExpectAgreed(MergeOf(EvaBerg(), desk, handheld), Set(desk, Field::kSpouse, "Max"));
}

TEST(ContactMerge, TheSameChangeOnBothSidesIsNoConflict) {
  const Contact both = Set(EvaBerg(), Field::kBody, "one\r\ntwo\n");
  ExpectAgreed(MergeOf(EvaBerg(), both, Set(EvaBerg(), Field::kBody, "one\ntwo")), both);
}

TEST(ContactMerge, BlanksAroundATextAreNoChange) {
  const Contact base = Set(EvaBerg(), Field::kBody, "note");
  const Merged merged = MergeOf(base, Set(base, Field::kBody, "note\r\n"), base);
  EXPECT_EQ(AsContact(merged.desk)[Field::kBody], "note\r\n");
  EXPECT_EQ(AsContact(merged.handheld)[Field::kBody], "note");
}

TEST(ContactMerge, AFieldThatBothChangedGoesToTheWinner) {
  const Contact desk = Set(EvaBerg(), Field::kJobTitle, "Engineer");
  const Contact handheld = Set(EvaBerg(), Field::kJobTitle, "Director");
  for (const Winner winner : kWinners) {
    const Merged merged = MergeOf(EvaBerg(), desk, handheld, winner);
    const Contact& expected = winner == Winner::kDesk ? desk : handheld;
    ExpectContent(merged.desk, expected, "the desk");
    ExpectContent(merged.handheld, expected, "the handheld");
    EXPECT_EQ(merged.conflicts, (Conflicts{{"Job title", "Engineer", "Director"}}));
  }
}

TEST(ContactMerge, ClearedHereAndChangedThereIsAConflict) {
  const Contact base = Set(EvaBerg(), Field::kJobTitle, "Engineer");
  const Contact handheld = Set(EvaBerg(), Field::kJobTitle, "Director");
  EXPECT_EQ(MergeOf(base, EvaBerg(), handheld).conflicts,
            (Conflicts{{"Job title", "", "Director"}}));
}

TEST(ContactMerge, WhatTheHandheldCannotHoldStaysOnTheDesk) {
  const Contact handheldBase = EvaBerg();
  const Contact deskBase = Set(EvaBerg(), Field::kYomiLastName, "berugu");
  const Contact desk = Set(deskBase, Field::kJobTitle, "Engineer");
  const Contact handheld = Set(handheldBase, Field::kSpouse, "Max");
  const Item deskItem = deskBase;
  const Item handheldItem = handheldBase;
  const Merged merged =
      Merge({&deskItem, desk, &handheldItem, handheld}, Winner::kDesk, phone::PhoneNumbers(""));
  ExpectContent(merged.desk, Set(desk, Field::kSpouse, "Max"), "the desk");
  ExpectContent(merged.handheld, Set(handheld, Field::kJobTitle, "Engineer"), "the handheld");
  EXPECT_EQ(merged.conflicts, Conflicts());
}

TEST(ContactMerge, EachSideKeepsItsUid) {
  Contact desk = Set(EvaBerg(), Field::kJobTitle, "Engineer");
  desk.uid = "d";
  Contact handheld = EvaBerg();
  handheld.uid = "h";
  const Merged merged = MergeOf(EvaBerg(), desk, handheld);
  EXPECT_EQ(UidOf(merged.desk), "d");
  EXPECT_EQ(UidOf(merged.handheld), "h");
}

// E-mail addresses, by entry.

struct EmailCase {
  const char* name;
  std::vector<std::string> base;
  std::vector<std::string> desk;
  std::vector<std::string> handheld;
  std::vector<std::string> expected;
};

class ContactEmails : public ::testing::TestWithParam<EmailCase> {};

TEST_P(ContactEmails, MergeByEntry) {
  const EmailCase& each = GetParam();
  ExpectAgreed(MergeOf(WithEmails(each.base), WithEmails(each.desk), WithEmails(each.handheld)),
               WithEmails(each.expected));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ContactEmails,
    ::testing::Values(
        EmailCase{"AddedOnEachSide", {"a"}, {"a", "d"}, {"a", "h"}, {"a", "d", "h"}},
        EmailCase{"AddedOnEachSideToNone", {}, {"d"}, {"h"}, {"d", "h"}},
        EmailCase{"TheSameAddedOnBoth", {"a"}, {"a", "x"}, {"a", "x"}, {"a", "x"}},
        EmailCase{"TheSameAddedAmongOthers", {}, {"x", "d"}, {"h", "x"}, {"x", "d", "h"}},
        EmailCase{"ChangedHereAddedThere", {"a"}, {"a2"}, {"a", "h"}, {"a2", "h"}},
        EmailCase{"RemovedHereAddedThere", {"a", "b"}, {"b"}, {"a", "b", "h"}, {"b", "h"}},
        EmailCase{"RemovedHereChangedOtherThere", {"a", "b"}, {"b"}, {"a", "b2"}, {"b2"}},
        EmailCase{"RemovedHereChangedThere", {"a", "b"}, {"b"}, {"a2", "b"}, {"a2", "b"}},
        EmailCase{"RemovedOnBoth", {"a", "b"}, {"b"}, {"b"}, {"b"}},
        EmailCase{"DifferentOnesRemoved", {"a", "b", "c"}, {"b", "c"}, {"a", "b"}, {"b"}},
        EmailCase{"DifferentOnesChanged", {"a", "b"}, {"a2", "b"}, {"a", "b2"}, {"a2", "b2"}},
        EmailCase{"MovedHere", {"a", "b"}, {"b", "a"}, {"a", "b"}, {"b", "a"}},
        EmailCase{"MovedHereAddedThere", {"a", "b"}, {"b", "a"}, {"a", "b", "h"}, {"b", "a", "h"}},
        EmailCase{"PutBeforeHere", {"a"}, {"d", "a"}, {"a"}, {"d", "a"}},
        EmailCase{"BothChangedToTheSame", {"a", "b"}, {"x", "b"}, {"a", "x"}, {"x"}}),
    [](const auto& info) { return info.param.name; });

TEST(ContactMerge, AnAddressThatBothChangedIsAConflictOfItsOwn) {
  const Merged merged = MergeOf(WithEmails({"a", "b"}), WithEmails({"a1", "b", "c"}),
                                WithEmails({"a2", "b"}), Winner::kHandheld);
  ExpectContent(merged.desk, WithEmails({"a2", "b", "c"}), "the desk");
  ExpectContent(merged.handheld, WithEmails({"a2", "b", "c"}), "the handheld");
  EXPECT_EQ(merged.conflicts, (Conflicts{{"E-mail 1", "a1", "a2"}}));
}

TEST(ContactMerge, MoreAddressesThanSlotsAreAConflict) {
  const Contact desk = WithEmails({"a", "d1", "d2"});
  const Contact handheld = WithEmails({"a", "h"});
  for (const Winner winner : kWinners) {
    const Merged merged = MergeOf(WithEmails({"a"}), desk, handheld, winner);
    const Contact& expected = winner == Winner::kDesk ? desk : handheld;
    ExpectContent(merged.desk, expected, "the desk");
    ExpectContent(merged.handheld, expected, "the handheld");
    EXPECT_EQ(merged.conflicts, (Conflicts{{"E-mail addresses", "a, d1, d2", "a, h"}}));
  }
}

TEST(ContactMerge, AddressesAreKnownThoughEachSideHasItsOwnOrder) {
  const Item deskBase = WithEmails({"a", "b"});
  const Item handheldBase = WithEmails({"b", "", "a"});
  const Merged merged = Merge({&deskBase, WithEmails({"a", "b2"}), &handheldBase, handheldBase},
                              Winner::kDesk, phone::PhoneNumbers(""));
  ExpectContent(merged.desk, WithEmails({"a", "b2"}), "the desk");
  ExpectContent(merged.handheld, WithEmails({"b2", "", "a"}), "the handheld");
  EXPECT_EQ(merged.conflicts, Conflicts());
}

// Numbers.

TEST(ContactMerge, ANumberAddedOnEachSideTakesBothSlotsOfItsKind) {
  const Contact desk = Set(EvaBerg(), Field::kHomeTelephoneNumber, "030 1");
  const Contact handheld = Set(EvaBerg(), Field::kHomeTelephoneNumber, "030 2");
  ExpectAgreed(MergeOf(EvaBerg(), desk, handheld),
               Set(desk, Field::kHome2TelephoneNumber, "030 2"));
}

TEST(ContactMerge, OneSlotTakesOneNumber) {
  const Contact desk = Set(EvaBerg(), Field::kMobileTelephoneNumber, "0170 1");
  const Contact handheld = Set(EvaBerg(), Field::kMobileTelephoneNumber, "0170 2");
  const Merged merged = MergeOf(EvaBerg(), desk, handheld, Winner::kHandheld);
  ExpectContent(merged.desk, handheld, "the desk");
  EXPECT_EQ(merged.conflicts, (Conflicts{{"Mobile telephone number", "0170 1", "0170 2"}}));
}

TEST(ContactMerge, TheSameNumberInTwoSpellingsIsTheSameChange) {
  const Contact desk = Set(EvaBerg(), Field::kMobileTelephoneNumber, "+49 170 1234567");
  const Contact handheld = Set(EvaBerg(), Field::kMobileTelephoneNumber, "0170 1234567");
  const Merged merged = MergeOf(EvaBerg(), desk, handheld);
  ExpectContent(merged.desk, desk, "the desk");
  ExpectContent(merged.handheld, handheld, "the handheld");
  EXPECT_EQ(merged.conflicts, Conflicts());
}

TEST(ContactMerge, ANewSpellingTravels) {
  const Contact base = Set(EvaBerg(), Field::kMobileTelephoneNumber, "0170 1234567");
  const Contact desk = Set(EvaBerg(), Field::kMobileTelephoneNumber, "+49 170 1234567");
  ExpectAgreed(MergeOf(base, desk, base), desk);
}

// An address of a kind is one field.

TEST(ContactMerge, PartsOfAnAddressAreNotMixed) {
  const Contact desk = Set(EvaBerg(), Field::kHomeAddressStreet, "Hauptstr. 1");
  const Contact handheld = Set(EvaBerg(), Field::kHomeAddressCity, "Bonn");
  const Merged merged = MergeOf(EvaBerg(), desk, handheld);
  ExpectContent(merged.desk, desk, "the desk");
  ExpectContent(merged.handheld, desk, "the handheld");
  EXPECT_EQ(merged.conflicts, (Conflicts{{"Home address", "Hauptstr. 1", "Bonn"}}));
}

TEST(ContactMerge, AddressesOfDifferentKindsAreDifferentFields) {
  const Contact desk = Set(EvaBerg(), Field::kHomeAddressStreet, "Hauptstr. 1");
  const Contact handheld = Set(EvaBerg(), Field::kBusinessAddressCity, "Bonn");
  ExpectAgreed(MergeOf(EvaBerg(), desk, handheld), Set(desk, Field::kBusinessAddressCity, "Bonn"));
}

TEST(ContactMerge, DatesAreFieldsOfTheirOwn) {
  using std::chrono::year;
  Contact desk = EvaBerg();
  desk.birthday = year{1980} / 5 / 6;
  Contact handheld = EvaBerg();
  handheld.anniversary = year{2001} / 7 / 8;
  Contact both = desk;
  both.anniversary = handheld.anniversary;
  ExpectAgreed(MergeOf(EvaBerg(), desk, handheld), both);
  handheld.birthday = year{1980} / 5 / 7;
  EXPECT_EQ(MergeOf(EvaBerg(), desk, handheld).conflicts,
            (Conflicts{{"Birthday", "1980-05-06", "1980-05-07"}}));
}

// Categories, by entry.

Contact WithCategories(std::vector<std::string> categories) {
  Contact contact = EvaBerg();
  contact.categories = std::move(categories);
  return contact;
}

TEST(ContactMerge, CategoriesOfBothSidesComeTogether) {
  ExpectAgreed(MergeOf(WithCategories({"a", "b"}), WithCategories({"b", "d"}),
                       WithCategories({"a", "b", "h"})),
               WithCategories({"b", "d", "h"}));
}

TEST(ContactMerge, ACategoryAddedOnBothSidesIsThereOnce) {
  const Merged merged =
      MergeOf(WithCategories({}), WithCategories({"x", "d"}), WithCategories({"h", "x"}));
  EXPECT_EQ(AsContact(merged.desk).categories, (std::vector<std::string>{"x", "d", "h"}));
  EXPECT_EQ(AsContact(merged.handheld).categories, (std::vector<std::string>{"h", "x", "d"}));
}

TEST(ContactMerge, TheOrderOfCategoriesIsNoChange) {
  const Contact base = WithCategories({"a", "b"});
  const Merged merged = MergeOf(base, WithCategories({"b", "a"}), base);
  EXPECT_EQ(AsContact(merged.handheld).categories, base.categories);
}

// FileAs.

TEST(ContactMerge, ADerivedFileAsFollowsTheName) {
  const Item deskBase = EvaBerg();
  const Item handheldBase = Set(EvaBerg(), Field::kFileAs, "Berg, Eva");
  const Contact desk = Set(EvaBerg(), Field::kLastName, "Hill");
  const Merged merged =
      Merge({&deskBase, desk, &handheldBase, handheldBase}, Winner::kDesk, phone::PhoneNumbers(""));
  EXPECT_EQ(AsContact(merged.desk)[Field::kFileAs], "");
  EXPECT_EQ(AsContact(merged.handheld)[Field::kFileAs], "Hill, Eva");
  EXPECT_EQ(merged.conflicts, Conflicts());
}

TEST(ContactMerge, AFileAsThatWasLeftBehindFollowsTheNameOnBothSides) {
  const Contact base = Set(EvaBerg(), Field::kFileAs, "Berg, Eva");
  const Contact renamed = Set(base, Field::kLastName, "Hill");
  const Contact expected = Set(renamed, Field::kFileAs, "Hill, Eva");
  ExpectAgreed(MergeOf(base, renamed, base), expected);
  ExpectAgreed(MergeOf(base, base, renamed), expected);
}

TEST(ContactMerge, ATypedFileAsStaysWhenTheNameChanges) {
  const Contact base = Set(EvaBerg(), Field::kFileAs, "Evi");
  const Contact desk = Set(base, Field::kLastName, "Hill");
  ExpectAgreed(MergeOf(base, desk, base), desk);
}

TEST(ContactMerge, ATypedFileAsTravels) {
  const Item deskBase = EvaBerg();
  const Contact derived = Set(EvaBerg(), Field::kFileAs, "Berg, Eva");
  const Item handheldBase = derived;
  const Contact handheld = Set(EvaBerg(), Field::kFileAs, "Evi");
  ExpectAgreed(
      Merge({&deskBase, deskBase, &handheldBase, handheld}, Winner::kDesk, phone::PhoneNumbers("")),
      handheld);
}

TEST(ContactMerge, AFileAsThatIsDerivedAgainIsNotTyped) {
  const Contact typed = Set(EvaBerg(), Field::kFileAs, "Evi");
  const Merged merged = MergeOf(typed, EvaBerg(), typed);
  EXPECT_EQ(AsContact(merged.handheld)[Field::kFileAs], "Berg, Eva");
  ExpectAgreed(merged, EvaBerg());
}

TEST(ContactMerge, ANameAndAFileAsChangedApartComeTogether) {
  const Contact base = Set(EvaBerg(), Field::kFileAs, "Berg, Eva");
  const Contact desk = Set(base, Field::kLastName, "Hill");
  const Contact handheld = Set(base, Field::kFileAs, "Evi");
  ExpectAgreed(MergeOf(base, desk, handheld), Set(desk, Field::kFileAs, "Evi"));
}

// Joined a moment ago: no base.

TEST(ContactMerge, JoinedAnEmptyValueYieldsToAFilledOne) {
  const Contact desk = Set(EvaBerg(), Field::kJobTitle, "Engineer");
  const Contact handheld = Set(EvaBerg(), Field::kMobileTelephoneNumber, "0170 1");
  ExpectAgreed(MergeOfJoined(desk, handheld), Set(desk, Field::kMobileTelephoneNumber, "0170 1"));
}

TEST(ContactMerge, JoinedDifferentValuesAreInConflict) {
  const Contact desk = Set(EvaBerg(), Field::kJobTitle, "Engineer");
  const Contact handheld = Set(EvaBerg(), Field::kJobTitle, "Director");
  EXPECT_EQ(MergeOfJoined(desk, handheld).conflicts,
            (Conflicts{{"Job title", "Engineer", "Director"}}));
}

TEST(ContactMerge, JoinedEqualNumbersAgree) {
  const Contact desk = Set(EvaBerg(), Field::kMobileTelephoneNumber, "+49 170 1234567");
  const Contact handheld = Set(EvaBerg(), Field::kMobileTelephoneNumber, "0170 1234567");
  EXPECT_EQ(MergeOfJoined(desk, handheld).conflicts, Conflicts());
}

TEST(ContactMerge, JoinedEqualAddressesInOtherSlotsAgree) {
  ExpectAgreed(MergeOfJoined(WithEmails({"eva@x.example", "b"}), WithEmails({"b"})),
               WithEmails({"eva@x.example", "b"}));
}

}  // namespace
}  // namespace desktop::testing
