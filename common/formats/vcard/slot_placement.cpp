#include "common/formats/vcard/slot_placement.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <span>

#include "common/formats/vcard/contact_slots.h"
#include "common/formats/vcard/overflow_block.h"
#include "common/text/text.h"

namespace formats {
namespace {

using Field = ContactField;
using Fields = std::span<const ContactField>;

constexpr Field kUntypedOrder[] = {Field::kHomeTelephoneNumber, Field::kBusinessTelephoneNumber,
                                   Field::kHome2TelephoneNumber, Field::kBusiness2TelephoneNumber,
                                   Field::kMobileTelephoneNumber};
constexpr Field kOverflowOrder[] = {Field::kHome2TelephoneNumber, Field::kBusiness2TelephoneNumber,
                                    Field::kHomeTelephoneNumber, Field::kBusinessTelephoneNumber,
                                    Field::kMobileTelephoneNumber};
constexpr Field kNumberSlots[] = {Field::kBusinessTelephoneNumber, Field::kBusiness2TelephoneNumber,
                                  Field::kHomeTelephoneNumber,     Field::kHome2TelephoneNumber,
                                  Field::kMobileTelephoneNumber,   Field::kBusinessFaxNumber,
                                  Field::kHomeFaxNumber,           Field::kPagerNumber,
                                  Field::kCarTelephoneNumber,      Field::kRadioTelephoneNumber,
                                  Field::kAssistantTelephoneNumber};
constexpr Field kFaxOrder[] = {Field::kBusinessFaxNumber, Field::kHomeFaxNumber};

bool Holds(const Contact& contact, Fields fields, const std::string& text) {
  return std::any_of(fields.begin(), fields.end(),
                     [&](Field field) { return contact[field] == text; });
}

std::optional<Field> PutIntoFirstFree(Contact& contact, Fields fields, const std::string& text) {
  for (Field field : fields) {
    if (!contact[field].empty()) continue;
    contact[field] = text;
    return field;
  }
  return std::nullopt;
}

// The one of `all` that a description names, or the one of its own that X-SLOT names, counted from
// 1, when it is free.
bool PutIntoNamedSlot(const Property& property, Contact& contact, Fields all, Fields fields,
                      const std::string& text) {
  if (const std::string* name = property.Parameter(kKeptAs)) {
    const auto named = std::ranges::find(all, std::string_view(*name), ContactFieldName);
    return named != all.end() && PutIntoFirstFree(contact, {&*named, 1}, text);
  }
  const std::string* slot = property.Parameter("X-SLOT");
  std::size_t number = 0;
  if (slot == nullptr ||
      std::from_chars(slot->data(), slot->data() + slot->size(), number).ec != std::errc() ||
      number < 1 || number > fields.size() || !contact[fields[number - 1]].empty()) {
    return false;
  }
  contact[fields[number - 1]] = text;
  return true;
}

std::optional<PhoneKind> KindOf(const Property& property) {
  const auto has = [&](std::string_view type) { return property.HasType(type); };
  if (has("ASSISTANT") || has("X-ASSISTANT") || has("X-EVOLUTION-ASSISTANT")) {
    return PhoneKind::kAssistant;
  }
  if (has("RADIO") || has("X-RADIO") || has("X-EVOLUTION-RADIO")) return PhoneKind::kRadio;
  if (has("FAX")) return has("HOME") ? PhoneKind::kHomeFax : PhoneKind::kWorkFax;
  if (has("PAGER")) return PhoneKind::kPager;
  if (has("CAR") || has("X-CAR")) return PhoneKind::kCar;
  if (has("CELL") || has("MOBILE") || has("PCS")) return PhoneKind::kMobile;
  if (has("WORK") || has("COMPANY")) return PhoneKind::kWork;
  if (has("HOME")) return PhoneKind::kHome;
  return std::nullopt;
}

struct Number {
  const Property* property;
  std::string text;
  std::optional<PhoneKind> kind;
  bool placed = false;

  Fields ownSlots() const {
    return kind ? kPhoneSlots[static_cast<std::size_t>(*kind)].slots : Fields{};
  }
};

bool IsFax(const Number& number) {
  return number.kind == PhoneKind::kWorkFax || number.kind == PhoneKind::kHomeFax;
}

// A fax that is neither for work nor for home waits until those have their slots.
bool IsLoose(const Number& number) {
  return IsFax(number) && !number.property->HasType("WORK") && !number.property->HasType("HOME");
}

// The slots that a number may take when those of its kind are full, the most fitting first.
std::vector<Field> OverflowSlots(const Number& number) {
  std::vector<Field> fields;
  const auto add = [&](Fields more) { fields.insert(fields.end(), more.begin(), more.end()); };
  if (!number.kind) {
    add(kUntypedOrder);
  } else if (IsFax(number)) {
    add(kFaxOrder);
  } else if (number.kind == PhoneKind::kWork || number.kind == PhoneKind::kHome) {
    add(kOverflowOrder);
  } else if (number.kind == PhoneKind::kMobile || number.kind == PhoneKind::kCar) {
    if (number.property->HasType("WORK")) add(Fields(kOverflowOrder).subspan(1, 1));
    add(kOverflowOrder);
  }
  return fields;
}

bool IsKeptAnywhere(const Contact& contact, const std::string& text) {
  return std::ranges::any_of(
      kPhoneSlots, [&](const PhoneSlots& kind) { return Holds(contact, kind.slots, text); });
}

void PlaceLeftOver(const Number& number, Overflow overflow, Contact& contact, NoticeList& notices) {
  if (IsKeptAnywhere(contact, number.text)) return;
  const std::optional<Field> field = PutIntoFirstFree(contact, OverflowSlots(number), number.text);
  const std::string what = text::Excerpt(number.text);
  if (!field) {
    if (overflow == Overflow::kLeftOut)
      notices.Add(*number.property, "no slot is left for " + what);
  } else if (!number.kind) {
    notices.Add(*number.property,
                "of no kind, " + what + " is kept as " + std::string(ContactFieldName(*field)));
  } else if (!IsLoose(number)) {
    notices.Add(*number.property, "the slots of its kind are full, " + what + " is kept as " +
                                      std::string(ContactFieldName(*field)));
  }
}

using Address = std::array<std::string, 5>;  // in the order of AddressSlot::fields()

bool IsEmpty(const Address& address) {
  return std::all_of(address.begin(), address.end(), [](const auto& part) { return part.empty(); });
}

Address AddressOf(const Property& property, NoticeList& notices) {
  std::vector<std::string> parts = ComponentsOf(property);
  const bool more = std::any_of(parts.begin() + std::min<std::ptrdiff_t>(7, std::ssize(parts)),
                                parts.end(), [](const auto& part) { return !part.empty(); });
  if (more) notices.Add(property, "an address has seven parts, what follows was left out");
  parts.resize(7);
  Address address = {"", parts[3], parts[4], parts[5], parts[6]};
  for (std::size_t i = 0; i < 3; ++i) {  // post office box, extended address, street
    if (parts[i].empty()) continue;
    if (!address[0].empty()) address[0] += '\n';
    address[0] += parts[i];
  }
  if (IsEmpty(address)) {
    if (const std::string* label = property.Parameter("LABEL")) address[0] = *label;
  }
  return address;
}

bool IsFree(const Contact& contact, std::size_t slot) {
  const auto fields = kAddressSlots[slot].fields();
  return std::all_of(fields.begin(), fields.end(),
                     [&](Field field) { return contact[field].empty(); });
}

// True, too, when the slot has the very address already.
bool PutAddress(Contact& contact, std::size_t slot, const Address& address) {
  const auto fields = kAddressSlots[slot].fields();
  if (!IsFree(contact, slot)) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (contact[fields[i]] != address[i]) return false;
    }
    return true;
  }
  for (std::size_t i = 0; i < fields.size(); ++i) contact[fields[i]] = address[i];
  return true;
}

bool PutIntoAny(Contact& contact, std::span<const std::size_t> slots, const Address& address) {
  return std::any_of(slots.begin(), slots.end(),
                     [&](std::size_t slot) { return PutAddress(contact, slot, address); });
}

constexpr std::size_t kHomeThenWork[] = {kHomeAddress, kWorkAddress};
constexpr std::size_t kOtherFirst[] = {kOtherAddress, kHomeAddress, kWorkAddress};

// The slot that a description names, or those that a property's own type names.
std::span<const std::size_t> NamedSlots(const Property& property) {
  if (const std::string* name = property.Parameter(kKeptAs)) {
    for (const std::size_t& slot : kOtherFirst)
      if (*name == ContactFieldName(kAddressSlots[slot].street)) return {&slot, 1};
  }
  const bool home = property.HasType("HOME");
  const bool work = property.HasType("WORK");
  const std::span<const std::size_t> both(kHomeThenWork);
  if (home) return work ? both : both.first(1);
  return work ? both.last(1) : std::span<const std::size_t>{};
}

void PlaceLabel(const Property& label, Contact& contact, NoticeList& notices) {
  std::string text = TextOf(label);
  if (text.empty()) return;
  const std::span<const std::size_t> named = NamedSlots(label);
  const std::size_t slot = named.empty() ? kOtherAddress : named.front();
  const bool standsIn = named.empty()
                            ? IsFree(contact, kHomeAddress) && IsFree(contact, kWorkAddress) &&
                                  IsFree(contact, kOtherAddress)
                            : IsFree(contact, slot);
  if (standsIn) {
    contact[kAddressSlots[slot].street] = std::move(text);
  } else {
    notices.Add(label, "the address is kept without its printed form");
  }
}

}  // namespace

// A value that a program wrote without care for blanks, unless it says that the text is exact.
std::string LooseTextOf(const Property& property) {
  std::string text = TextOf(property);
  const std::string* value = property.Parameter("VALUE");
  if (value != nullptr && text::EqualsNoCase(*value, "text")) return text;
  return std::string(text::TrimBlanks(text));
}

// "tel:+1-418-656-9254;ext=102" is +1-418-656-9254 ext. 102.
std::string NumberOf(const Property& property) {
  const std::string* value = property.Parameter("VALUE");
  std::string text = LooseTextOf(property);
  if ((value != nullptr && text::EqualsNoCase(*value, "text")) ||
      !text::StartsWithNoCase(text, "tel:")) {
    return text;
  }
  const std::vector<std::string_view> parts = SplitValue(std::string_view(text).substr(4), ';');
  std::string number(parts.front());
  for (std::string_view part : parts) {
    if (text::StartsWithNoCase(part, "ext=")) number += " ext. " + std::string(part.substr(4));
  }
  return number;
}

void PlacePhones(const PropertyRefs& phones, Overflow overflow, Contact& contact,
                 NoticeList& notices) {
  std::vector<Number> numbers;
  for (const Property* property : phones) {
    std::string text = NumberOf(*property);
    if (!text.empty()) numbers.push_back({property, std::move(text), KindOf(*property)});
  }
  for (Number& number : numbers) {
    number.placed =
        PutIntoNamedSlot(*number.property, contact, kNumberSlots, number.ownSlots(), number.text);
  }
  for (Number& number : numbers) {
    if (number.placed || IsLoose(number)) continue;
    number.placed = Holds(contact, number.ownSlots(), number.text) ||
                    PutIntoFirstFree(contact, number.ownSlots(), number.text);
  }
  for (const Number& number : numbers) {
    if (!number.placed) PlaceLeftOver(number, overflow, contact, notices);
  }
}

void PlaceEmails(const PropertyRefs& emails, Overflow overflow, Contact& contact,
                 NoticeList& notices) {
  PropertyRefs unnamed;
  for (const Property* email : emails) {
    if (!PutIntoNamedSlot(*email, contact, kEmailSlots, kEmailSlots, LooseTextOf(*email))) {
      unnamed.push_back(email);
    }
  }
  for (const Property* email : unnamed) {
    const std::string text = LooseTextOf(*email);
    if (text.empty() || Holds(contact, kEmailSlots, text)) continue;
    if (!PutIntoFirstFree(contact, kEmailSlots, text) && overflow == Overflow::kLeftOut) {
      notices.Add(*email,
                  "a contact has three addresses, no slot is left for " + text::Excerpt(text));
    }
  }
}

void PlaceAddresses(const PropertyRefs& addresses, const PropertyRefs& labels, Contact& contact,
                    NoticeList& notices) {
  struct Waiting {
    const Property* property;
    Address address;
  };
  std::vector<Waiting> untyped;
  std::vector<Waiting> tooMany;
  for (const Property* property : addresses) {
    Address address = AddressOf(*property, notices);
    if (IsEmpty(address)) continue;
    const std::span<const std::size_t> named = NamedSlots(*property);
    if (PutIntoAny(contact, named, address)) continue;
    (named.empty() ? untyped : tooMany).push_back({property, std::move(address)});
  }
  for (const Waiting& waiting : untyped) {
    if (!PutIntoAny(contact, kOtherFirst, waiting.address)) {
      notices.Add(*waiting.property, "a contact has three addresses, this one was left out");
    }
  }
  for (const Waiting& waiting : tooMany) {
    if (PutAddress(contact, kOtherAddress, waiting.address)) {
      notices.Add(*waiting.property, "a second one of its kind, kept as the other address");
    } else {
      notices.Add(*waiting.property, "no place is left for a second address of its kind");
    }
  }
  for (const Property* label : labels) PlaceLabel(*label, contact, notices);
}

void PlaceWebPages(const PropertyRefs& pages, Contact& contact, NoticeList& notices) {
  PropertyRefs ordered = pages;
  std::stable_partition(ordered.begin(), ordered.end(),
                        [](const Property* page) { return page->HasType("WORK"); });
  std::string& field = contact[Field::kWebPage];
  for (const Property* page : ordered) {
    const std::string text = LooseTextOf(*page);
    if (text.empty() || text == field) continue;
    if (field.empty()) {
      field = text;
    } else {
      notices.Add(*page, "a contact has one web page, no slot is left for " + text::Excerpt(text));
    }
  }
}

std::optional<Field> SlotOfPhone(const Property& phone, const Contact& contact) {
  const std::string text = NumberOf(phone);
  std::optional<Field> found;
  for (const PhoneSlots& kind : kPhoneSlots) {
    for (const Field field : kind.slots) {
      if (contact[field] != text) continue;
      if (IsOfItsKind(phone, field)) return field;
      if (!found) found = field;
    }
  }
  return found;
}

std::optional<Field> SlotOfEmail(const Property& email, const Contact& contact) {
  const auto found = std::ranges::find(kEmailSlots, LooseTextOf(email),
                                       [&](Field field) { return contact[field]; });
  return found == kEmailSlots.end() ? std::nullopt : std::optional(*found);
}

std::optional<Field> SlotOfAddress(const Property& address, const Contact& contact) {
  NoticeList said;  // when it was placed
  const Address parts = AddressOf(address, said);
  for (const AddressSlot& slot : kAddressSlots) {
    const auto fields = slot.fields();
    const auto same = [&](std::size_t i) { return contact[fields[i]] == parts[i]; };
    if (same(0) && same(1) && same(2) && same(3) && same(4)) return slot.street;
  }
  return std::nullopt;
}

bool IsOfItsKind(const Property& phone, Field slot) {
  const Number number{&phone, {}, KindOf(phone)};
  const Fields slots = IsLoose(number) ? Fields(kFaxOrder) : number.ownSlots();
  return std::ranges::find(slots, slot) != slots.end();
}

}  // namespace formats
