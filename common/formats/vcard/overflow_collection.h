// What of a card's numbers and addresses goes to the lines at the end of the note.
#pragma once

#include "common/formats/items/contact.h"
#include "common/formats/vcard/overflow.h"
#include "common/formats/vcard/overflow_block.h"
#include "common/formats/vcard/slot_placement.h"

namespace formats {

struct PlacedProperties {
  const PropertyRefs& phones;
  const PropertyRefs& emails;
  const PropertyRefs& addresses;
  const PropertyRefs& webPages;
};

// After they were placed. Adds the numbers and e-mails that have no slot, and describes the slots
// of numbers of another kind or none and of what has a label of its own. For the wire the numbers
// of slots that it does not carry are taken out of them.
void CollectOverflow(const PlacedProperties& properties, Overflow overflow, Contact& contact,
                     OverflowBlock& block);
// A description that came with the note is good as long as its slot holds the value.
void KeepDescriptions(const OverflowBlock& known, const Contact& contact, OverflowBlock& block);

}  // namespace formats
