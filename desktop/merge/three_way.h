// Brings together what has been changed on the desk and what has been changed on the handheld.
#pragma once

#include <string>
#include <vector>

#include "common/phone/phone_numbers.h"
#include "desktop/merge/item.h"

namespace desktop {

// Each side changed the field, and otherwise than the other one. The values are as people read
// them, empty for none.
struct FieldConflict {
  std::string field;
  std::string desk;
  std::string handheld;
  friend bool operator==(const FieldConflict&, const FieldConflict&) = default;
};

// Items of one kind. The bases are what each side had when both last agreed; they need not be the
// same, since a handheld does not hold everything. Null when the two have just been joined: as a
// base that holds nothing.
struct MergeSides {
  const Item* deskBase;
  const Item& desk;
  const Item* handheldBase;
  const Item& handheld;
};

enum class Winner { kDesk, kHandheld };

struct Merged {
  Item desk;
  Item handheld;
  std::vector<FieldConflict> conflicts;
};

// What a side changed since its base is carried over to the other one, field by field; everything
// else stays on each side as it is, the UID too. A field that both changed to the same value is no
// conflict; of those in conflict both sides get the winner's value.
//
// One field each: a text, a date, an address of a kind, when an appointment is (whole days, start
// and end), whether and when a task was completed, the pattern of a series. Categories are taken by
// entry; so are e-mail addresses and the numbers of a kind, which take free slots where both sides
// added some; so are the exceptions of a series, by day, and of a changed occurrence what is
// otherwise than the series, field by field. A FileAs that nobody typed
// follows the name, on the side too where the name was changed without it.
Merged Merge(const MergeSides& sides, Winner winner, const phone::PhoneNumbers& numbers);

}  // namespace desktop
