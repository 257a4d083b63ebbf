// Which items of two sides that have not met are the same ones.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "common/phone/phone_numbers.h"
#include "desktop/merge/item.h"

namespace desktop {

struct Join {
  std::size_t desk;
  std::size_t handheld;
  friend bool operator==(const Join&, const Join&) = default;
};

struct Joins {
  std::vector<Join> sure;
  std::vector<Join> unsure;  // alike, for a person to look at
  // How many candidates were looked at, which grows with the items and not with their product.
  std::size_t looks = 0;
};

// Items of one kind on both sides, each in one join at most, by their positions.
//
// Sure are, the first that fits: the same UID; equal in the common form; contacts of the same name
// with a number or an e-mail address in common; appointments of the same subject and start; tasks
// of the same subject and due day, or without one of the same subject and start, both open or both
// complete. Unsure are of the others: contacts of the same first and last name, or without a name
// of their own with a number or address in common; appointments of the same subject on the same
// day; tasks of the same subject. A name or subject that is empty is like no other.
Joins FindJoins(std::span<const Item> desk, std::span<const Item> handheld,
                const phone::PhoneNumbers& numbers);

}  // namespace desktop
