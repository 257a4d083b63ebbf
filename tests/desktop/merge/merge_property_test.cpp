// What holds for every merge, whatever each side has done.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/calendar/wall_time.h"
#include "common/formats/items/identity.h"
#include "common/formats/items/normal_form.h"
#include "common/formats/vcard/contact_slots.h"
#include "tests/desktop/merge/merge_cases.h"
#include "tests/desktop/merge/merge_support.h"

namespace desktop::testing {
namespace {

// With its numbers and addresses in an order that does not depend on their slots.
Item Sorted(Item item) {
  auto* contact = std::get_if<Contact>(&item);
  if (contact == nullptr) return item;
  const auto sort = [&](std::span<const ContactField> slots) {
    std::vector<std::string> texts;
    for (const ContactField slot : slots) texts.push_back((*contact)[slot]);
    std::ranges::sort(texts);
    for (std::size_t i = 0; i < slots.size(); ++i) (*contact)[slots[i]] = texts[i];
  };
  sort(formats::kEmailSlots);
  for (const formats::PhoneSlots& kind : formats::kPhoneSlots) sort(kind.slots);
  return item;
}

bool SameOutcome(const Merged& a, const Merged& b) {
  return SameContent(Sorted(a.desk), Sorted(b.desk)) &&
         SameContent(Sorted(a.handheld), Sorted(b.handheld));
}

template <typename T>
class EveryMerge : public ::testing::Test {};

struct KindNames {
  template <typename T>
  static std::string GetName(int index) {
    constexpr const char* kNames[] = {"Contacts", "Appointments", "Tasks"};
    return kNames[index];
  }
};
using Kinds = ::testing::Types<Contact, Appointment, Task>;
TYPED_TEST_SUITE(EveryMerge, Kinds, KindNames);

// Who changed the name alone has changed a FileAs that was derived of it, too.
template <typename T>
Item Filed(const Item& /*base*/, const T& edited) {
  return edited;
}
Item Filed(const Item& base, const Contact& edited) {
  const auto derived = [](Contact contact) {
    contact[ContactField::kFileAs].clear();
    return formats::WithFileAs(contact);
  };
  const auto& before = std::get<Contact>(base);
  const bool same = SameText(before[ContactField::kFileAs], edited[ContactField::kFileAs]);
  const bool untyped =
      SameText(before[ContactField::kFileAs], derived(before)[ContactField::kFileAs]);
  return same && untyped && !before[ContactField::kFileAs].empty() ? derived(edited) : edited;
}

TYPED_TEST(EveryMerge, OfAnUntouchedSideIsTheOthersEdit) {
  EXPECT_TRUE(rc::check([] {
    Case each = AnyCase<TypeParam>(false);
    const bool onDesk = OneIn(2);
    (onDesk ? each.handheld : each.desk) = each.base;
    const Item edited = Filed(each.base, std::get<TypeParam>(onDesk ? each.desk : each.handheld));
    Log(each);
    const Merged merged = each.Run(AnyWinner());
    Log(merged);
    RC_ASSERT(merged.conflicts.empty());
    RC_ASSERT(SameContent(merged.desk, edited));
    RC_ASSERT(SameContent(merged.handheld, edited));
  }));
}

TYPED_TEST(EveryMerge, OfAnUntouchedSideThatHoldsLessIsTheOthersEditAsItHoldsIt) {
  EXPECT_TRUE(rc::check([] {
    Case each = AnyCase<TypeParam>(true);
    each.handheld = each.handheldBase;
    Log(each);
    const Merged merged = each.Run(AnyWinner());
    Log(merged);
    RC_ASSERT(merged.conflicts.empty());
    const Item edited = Filed(each.base, std::get<TypeParam>(each.desk));
    RC_ASSERT(SameContent(merged.desk, edited));
    RC_ASSERT(SameContent(AsKept(std::get<TypeParam>(merged.handheld)),
                          AsKept(std::get<TypeParam>(edited))));
  }));
}

TYPED_TEST(EveryMerge, IsTheSameFromEitherSide) {
  EXPECT_TRUE(rc::check([] {
    const Case each = AnyCase<TypeParam>(OneIn(2));
    Log(each);
    const Case swapped = {each.handheldBase, each.handheld, each.base, each.desk};
    const Merged one = each.Run(Winner::kDesk);
    const Merged other = swapped.Run(Winner::kHandheld);
    Log(one);
    Log(other);
    RC_ASSERT(one.desk == other.handheld);
    RC_ASSERT(one.handheld == other.desk);
    RC_ASSERT(one.conflicts.size() == other.conflicts.size());
    for (std::size_t i = 0; i < one.conflicts.size(); ++i) {
      RC_ASSERT(one.conflicts[i].desk == other.conflicts[i].handheld);
      RC_ASSERT(one.conflicts[i].field == other.conflicts[i].field);
    }
  }));
}

TYPED_TEST(EveryMerge, MakesBothSidesAlikeThatHoldAlike) {
  EXPECT_TRUE(rc::check([] {
    const Case each = AnyCase<TypeParam>(false);
    Log(each);
    const Merged merged = each.Run(AnyWinner());
    Log(merged);
    Item desk = merged.desk;
    Item handheld = merged.handheld;
    RC_ASSERT(SameContent(desk, handheld));
  }));
}

TYPED_TEST(EveryMerge, LeavesNothingToMerge) {
  EXPECT_TRUE(rc::check([] {
    const Case each = AnyCase<TypeParam>(OneIn(2));
    Log(each);
    const Merged merged = each.Run(AnyWinner());
    Log(merged);
    const Case next = {merged.desk, merged.desk, merged.handheld, merged.handheld};
    const Merged again = next.Run(AnyWinner());
    RC_ASSERT(again.conflicts.empty());
    RC_ASSERT(SameOutcome(again, merged));
  }));
}

// A run that ends before it has remembered what it did, or between one side and the other.
TYPED_TEST(EveryMerge, ComesToTheSameWhenItIsDoneAgain) {
  EXPECT_TRUE(rc::check([] {
    const Case each = AnyCase<TypeParam>(OneIn(2));
    const Winner winner = AnyWinner();
    Log(each);
    const Merged merged = each.Run(winner);
    Log(merged);
    Case half = each;
    half.desk = merged.desk;
    const Merged fromDesk = half.Run(winner);
    Log(fromDesk);
    RC_ASSERT(SameOutcome(fromDesk, merged));
    half.handheld = merged.handheld;
    RC_ASSERT(SameOutcome(half.Run(winner), merged));
    RC_ASSERT(half.Run(winner).conflicts.empty());
    // Whose value won a conflict is not known any more once the loser has it.
    if (!merged.conflicts.empty()) return;
    half.desk = each.desk;
    RC_ASSERT(SameOutcome(half.Run(winner), merged));
  }));
}

// Every text of an item.
std::set<std::string> TextsOf(const Contact& contact) {
  std::set<std::string> texts(contact.categories.begin(), contact.categories.end());
  for (std::size_t i = 0; i < formats::kContactFieldCount; ++i) {
    const auto field = static_cast<ContactField>(i);
    if (field != ContactField::kFileAs) texts.insert(CommonText(contact[field]));
  }
  return texts;
}
std::set<std::string> TextsOf(const Appointment& appointment) {
  std::set<std::string> texts(appointment.categories.begin(), appointment.categories.end());
  const auto add = [&](const Occurrence& occurrence) {
    texts.insert(CommonText(occurrence.subject));
    texts.insert(CommonText(occurrence.location));
    texts.insert(CommonText(occurrence.body));
  };
  add(appointment);
  if (appointment.series) {
    for (const auto& change : appointment.series->changed) add(change.occurrence);
  }
  return texts;
}
std::set<std::string> TextsOf(const Task& task) {
  std::set<std::string> texts(task.categories.begin(), task.categories.end());
  texts.insert(CommonText(task.subject));
  texts.insert(CommonText(task.body));
  return texts;
}

TYPED_TEST(EveryMerge, InventsNoText) {
  EXPECT_TRUE(rc::check([] {
    const Case each = AnyCase<TypeParam>(OneIn(2));
    Log(each);
    const Merged merged = each.Run(AnyWinner());
    Log(merged);
    const auto textsOf = [](const Item& item) { return TextsOf(std::get<TypeParam>(item)); };
    std::set<std::string> known = textsOf(each.desk);
    known.merge(textsOf(each.handheld));
    known.insert("");
    for (const Item* out : {&merged.desk, &merged.handheld}) {
      const std::set<std::string> texts = textsOf(*out);
      RC_ASSERT(std::ranges::includes(known, texts));
    }
  }));
}

bool KeepsTheRules(const std::vector<std::string>& categories) {
  const std::set<std::string> names(categories.begin(), categories.end());
  return names.size() == categories.size() && !names.contains("");
}
bool KeepsTheRules(const Contact& contact) {
  return KeepsTheRules(contact.categories);
}
bool KeepsTheRules(const Occurrence& occurrence) {
  if (occurrence.start && (!occurrence.end || *occurrence.end < *occurrence.start)) return false;
  return !occurrence.allDay || *occurrence.start == formats::DayOf(*occurrence.start);
}
bool KeepsTheRules(const Appointment& appointment) {
  const Occurrence& first = appointment;
  if (!KeepsTheRules(appointment.categories) || !KeepsTheRules(first)) return false;
  if (!appointment.series) return true;
  std::vector<local_days> exceptions = appointment.series->deleted;
  if (!std::ranges::is_sorted(exceptions)) return false;
  for (const auto& change : appointment.series->changed) {
    if (!KeepsTheRules(change.occurrence)) return false;
    exceptions.push_back(change.original);
  }
  if (!std::ranges::is_sorted(appointment.series->changed, {},
                              &formats::ChangedOccurrence::original)) {
    return false;
  }
  const std::set<local_days> once(exceptions.begin(), exceptions.end());
  return once.size() == exceptions.size() && std::ranges::all_of(once, [&](local_days day) {
           return IsDayOf(appointment.series->pattern, formats::DayOf(*appointment.start), day);
         });
}
bool KeepsTheRules(const Task& task) {
  return KeepsTheRules(task.categories) && (task.complete || !task.completed) &&
         (!task.pattern || task.start || task.due);
}

TYPED_TEST(EveryMerge, GivesItemsThatKeepTheirRules) {
  EXPECT_TRUE(rc::check([] {
    const Case each = AnyCase<TypeParam>(OneIn(2));
    Log(each);
    const Merged merged = each.Run(AnyWinner());
    Log(merged);
    RC_ASSERT(KeepsTheRules(std::get<TypeParam>(merged.desk)));
    RC_ASSERT(KeepsTheRules(std::get<TypeParam>(merged.handheld)));
  }));
}

TYPED_TEST(EveryMerge, OfJoinedItemsKeepsWhatOneSideHasAlone) {
  EXPECT_TRUE(rc::check([] {
    const Case each = AnyCase<TypeParam>(false);
    const Item empty = TypeParam{};
    Log(each);
    const Merged merged = MergeOfJoined(each.desk, empty, AnyWinner());
    Log(merged);
    RC_ASSERT(merged.conflicts.empty());
    RC_ASSERT(SameContent(merged.desk, each.desk));
    RC_ASSERT(SameContent(merged.handheld, each.desk));
  }));
}

std::vector<ContactField> SingleFields() {
  std::vector<ContactField> fields;
  for (std::size_t i = 0; i < formats::kContactFieldCount; ++i) {
    fields.push_back(static_cast<ContactField>(i));
  }
  const auto drop = [&](std::span<const ContactField> slots) {
    for (const ContactField field : slots) std::erase(fields, field);
  };
  drop(formats::kEmailSlots);
  for (const formats::PhoneSlots& kind : formats::kPhoneSlots) drop(kind.slots);
  for (const formats::AddressSlot& address : formats::kAddressSlots) drop(address.fields());
  std::erase(fields, ContactField::kFileAs);
  return fields;
}

TEST(EveryContactMerge, KeepsWhatOneSideTypedAndNobodyChanged) {
  const std::vector<ContactField> single = SingleFields();
  EXPECT_TRUE(rc::check([&] {
    const Case each = AnyCase<Contact>(false);
    Log(each);
    const Merged merged = each.Run(AnyWinner());
    Log(merged);
    const auto& base = std::get<Contact>(each.base);
    const auto& desk = std::get<Contact>(each.desk);
    const auto& handheld = std::get<Contact>(each.handheld);
    for (const ContactField field : single) {
      if (!SameText(base[field], handheld[field])) continue;
      RC_ASSERT(SameText(std::get<Contact>(merged.desk)[field], desk[field]));
      RC_ASSERT(SameText(std::get<Contact>(merged.handheld)[field], desk[field]));
    }
  }));
}

std::set<std::string> Entries(const Contact& contact, std::span<const ContactField> slots) {
  std::set<std::string> entries;
  for (const ContactField field : slots) {
    if (!contact[field].empty()) entries.insert(CommonText(contact[field]));
  }
  return entries;
}

TEST(EveryContactMerge, KeepsAddedAddressesUnlessItNamesThem) {
  EXPECT_TRUE(rc::check([&] {
    const Case each = AnyCase<Contact>(OneIn(2));
    Log(each);
    const Merged merged = each.Run(AnyWinner());
    Log(merged);
    const bool named = std::ranges::any_of(merged.conflicts, [](const FieldConflict& conflict) {
      return conflict.field.starts_with("E-mail");
    });
    RC_PRE(!named);
    const auto entries = [](const Item& item) {
      return Entries(std::get<Contact>(item), formats::kEmailSlots);
    };
    const auto keeps = [&](const Item& base, const Item& side) {
      for (const std::string& entry : entries(side)) {
        if (entries(base).contains(entry)) continue;
        RC_ASSERT(entries(merged.desk).contains(entry));
        RC_ASSERT(entries(merged.handheld).contains(entry));
      }
    };
    keeps(each.base, each.desk);
    keeps(each.handheldBase, each.handheld);
  }));
}

}  // namespace
}  // namespace desktop::testing
