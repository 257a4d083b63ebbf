#include "desktop/sync/kept_item.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstddef>
#include <string>

#include "desktop/wire/error.h"
#include "tests/desktop/merge/merge_cases.h"

namespace desktop::testing {
namespace {

Item AnyItem() {
  Item item;
  switch (*rc::gen::inRange(0, 3)) {
    case 0:
      item = AnyCase<Contact>(false).base;
      break;
    case 1:
      item = AnyCase<Appointment>(false).base;
      break;
    default:
      item = AnyCase<Task>(false).base;
  }
  SetUid(item, *rc::gen::arbitrary<std::string>());
  return item;
}

Contact FullContact() {
  Contact contact;
  contact.uid = "full@desk";
  for (std::size_t i = 0; i < contact.fields.size(); ++i) {
    contact.fields[i] = std::string(40 * i, 'x') + std::to_string(i);
  }
  contact.categories = {"Friends", std::string("a\0b", 3)};
  contact.birthday = std::chrono::year{1900} / 1 / 1;
  contact.anniversary = std::chrono::year{2999} / 12 / 31;
  return contact;
}

RC_GTEST_PROP(KeptItem, IsReadBackAsItWas, ()) {
  const Item item = AnyItem();
  RC_ASSERT(ItemFromKept(KeptItem(item)) == item);
}

TEST(KeptItem, HasEveryFieldOfAContact) {
  const Item item = FullContact();
  EXPECT_EQ(ItemFromKept(KeptItem(item)), item);
}

TEST(KeptItem, HasTimesAndNumbersOfAnySign) {
  Appointment appointment;
  appointment.start = local_days{std::chrono::year{1900} / 1 / 1} + hours{9};
  appointment.end = local_days{std::chrono::year{2999} / 12 / 31};
  appointment.reminderMinutes = -1'000'000;
  appointment.busyStatus = -1;
  appointment.series.emplace().pattern.until = local_days{std::chrono::year{1901} / 2 / 3};
  const Item item = appointment;
  EXPECT_EQ(ItemFromKept(KeptItem(item)), item);
}

TEST(KeptItem, IsRefusedWhenAnythingIsMissingOrTooMuch) {
  const std::string bytes = KeptItem(FullContact());
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_THROW(ItemFromKept(bytes.substr(0, size)), Error) << size;
  }
  EXPECT_THROW(ItemFromKept(bytes + '\0'), Error);
  EXPECT_THROW(ItemFromKept("\x06" + bytes.substr(1)), Error) << "of no kind";
}

RC_GTEST_PROP(KeptItem, OfAnyBytesIsAnItemOrRefused, ()) {
  std::string bytes = KeptItem(AnyItem());
  for (int i = *rc::gen::inRange(1, 4); i > 0; --i) {
    bytes[*rc::gen::inRange<std::size_t>(0, bytes.size())] = *rc::gen::arbitrary<char>();
  }
  try {
    const Item item = ItemFromKept(bytes);
    RC_ASSERT(ItemFromKept(KeptItem(item)) == item);
  } catch (const Error&) {
    RC_CLASSIFY(true, "refused");
  }
}

}  // namespace
}  // namespace desktop::testing
