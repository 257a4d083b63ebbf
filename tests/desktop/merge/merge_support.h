// What the tests of merging share: items in a line, and a merge from what each side made of a base.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "common/formats/items/item_json.h"
#include "desktop/merge/three_way.h"

namespace desktop {

inline std::ostream& operator<<(std::ostream& out, const FieldConflict& conflict) {
  return out << conflict.field << ": " << conflict.desk << " | " << conflict.handheld;
}

}  // namespace desktop

namespace desktop::testing {

using formats::Appointment;
using formats::Contact;
using formats::ContactField;
using formats::Task;

using Conflicts = std::vector<FieldConflict>;

inline constexpr Winner kWinners[] = {Winner::kDesk, Winner::kHandheld};

inline std::string Shown(const Item& item) {
  return std::visit(
      [](const auto& each) {
        using T = std::decay_t<decltype(each)>;
        if constexpr (std::is_same_v<T, Contact>) {
          return formats::ContactToJson(each, 0);
        } else if constexpr (std::is_same_v<T, Appointment>) {
          return formats::AppointmentToJson(each, 0);
        } else {
          return formats::TaskToJson(each, 0);
        }
      },
      item);
}

inline Merged MergeOf(const Item& base, const Item& desk, const Item& handheld,
                      Winner winner = Winner::kDesk) {
  return Merge({&base, desk, &base, handheld}, winner, phone::PhoneNumbers("DE"));
}

inline Merged MergeOfJoined(const Item& desk, const Item& handheld, Winner winner = Winner::kDesk) {
  return Merge({nullptr, desk, nullptr, handheld}, winner, phone::PhoneNumbers("DE"));
}

inline void ExpectContent(const Item& actual, const Item& expected, const char* side) {
  EXPECT_TRUE(SameContent(actual, expected))
      << side << " is " << Shown(actual) << "\ninstead of " << Shown(expected);
}

// Both sides have it, and nothing is in conflict.
inline void ExpectAgreed(const Merged& merged, const Item& expected) {
  ExpectContent(merged.desk, expected, "the desk");
  ExpectContent(merged.handheld, expected, "the handheld");
  EXPECT_EQ(merged.conflicts, Conflicts());
}

inline Contact EvaBerg() {
  Contact contact;
  contact[ContactField::kFirstName] = "Eva";
  contact[ContactField::kLastName] = "Berg";
  return contact;
}

template <typename Edit>
Contact Edited(Contact contact, const Edit& edit) {
  edit(contact);
  return contact;
}

inline Contact Set(Contact contact, ContactField field, std::string text) {
  contact[field] = std::move(text);
  return contact;
}

}  // namespace desktop::testing
