#include "common/formats/vcard/overflow_collection.h"

#include <optional>
#include <string>

#include "common/formats/lines/content_writer.h"
#include "common/formats/vcard/contact_slots.h"

namespace formats {
namespace {

using Field = ContactField;

constexpr Field kNotOnTheWire[] = {Field::kCarTelephoneNumber, Field::kAssistantTelephoneNumber};

std::string Escaped(const std::string& text) {
  return ContentValue().Add(text).text();
}

class Collection {
 public:
  Collection(Overflow overflow, Contact& contact, OverflowBlock& block)
      : overflow_(overflow), contact_(contact), block_(block) {}

  void TakePhone(const Property& phone) {
    const std::optional<Field> slot = SlotOfPhone(phone, contact_);
    if (!slot || IsMissing(*slot)) {
      block_.Add(phone, Escaped(NumberOf(phone)));
    } else if (!OwnLabelOf(phone).empty() || !IsOfItsKind(phone, *slot)) {
      block_.Describe(*slot, phone, SlotValue(contact_, *slot));
    }
  }

  void TakeEmail(const Property& email) {
    const std::optional<Field> slot = SlotOfEmail(email, contact_);
    if (!slot)
      block_.Add(email, Escaped(LooseTextOf(email)));
    else
      TakeLabel(email, slot);
  }

  void TakeLabel(const Property& property, const std::optional<Field>& slot) {
    if (slot && !OwnLabelOf(property).empty())
      block_.Describe(*slot, property, SlotValue(contact_, *slot));
  }

  // What stands in the block is not to be kept twice.
  void ClearWhatIsMissing() {
    if (overflow_ != Overflow::kNoteForWire) return;
    for (const Field field : kNotOnTheWire) contact_[field].clear();
  }

 private:
  bool IsMissing(Field slot) const {
    return overflow_ == Overflow::kNoteForWire &&
           (slot == kNotOnTheWire[0] || slot == kNotOnTheWire[1]);
  }

  const Overflow overflow_;
  Contact& contact_;
  OverflowBlock& block_;
};

}  // namespace

void CollectOverflow(const PlacedProperties& properties, Overflow overflow, Contact& contact,
                     OverflowBlock& block) {
  Collection collection(overflow, contact, block);
  for (const Property* phone : properties.phones)
    if (!NumberOf(*phone).empty()) collection.TakePhone(*phone);
  for (const Property* email : properties.emails)
    if (!LooseTextOf(*email).empty()) collection.TakeEmail(*email);
  for (const Property* address : properties.addresses)
    if (!OwnLabelOf(*address).empty())
      collection.TakeLabel(*address, SlotOfAddress(*address, contact));
  for (const Property* page : properties.webPages)
    if (LooseTextOf(*page) == contact[Field::kWebPage])
      collection.TakeLabel(*page, Field::kWebPage);
  collection.ClearWhatIsMissing();
}

void KeepDescriptions(const OverflowBlock& known, const Contact& contact, OverflowBlock& block) {
  for (const auto& [slot, property] : known.descriptions())
    if (property.value == SlotValue(contact, slot)) block.Describe(slot, property, property.value);
}

}  // namespace formats
