// Where a contact keeps numbers and addresses: the slots of each kind and what a vCard calls them.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "common/formats/items/contact.h"
#include "common/formats/lines/content_writer.h"

namespace formats {

enum class PhoneKind {
  kWork,
  kHome,
  kMobile,
  kWorkFax,
  kHomeFax,
  kPager,
  kCar,
  kRadio,
  kAssistant
};

template <ContactField... Fields>
inline constexpr ContactField kSlots[] = {Fields...};

struct PhoneSlots {
  std::string_view type30;  // the TYPE parameter's value
  std::string_view type40;
  std::span<const ContactField> slots;
};

// In the order of PhoneKind.
inline constexpr PhoneSlots kPhoneSlots[] = {
    {"WORK,VOICE", "work,voice",
     kSlots<ContactField::kBusinessTelephoneNumber, ContactField::kBusiness2TelephoneNumber>},
    {"HOME,VOICE", "home,voice",
     kSlots<ContactField::kHomeTelephoneNumber, ContactField::kHome2TelephoneNumber>},
    {"CELL", "cell", kSlots<ContactField::kMobileTelephoneNumber>},
    {"WORK,FAX", "work,fax", kSlots<ContactField::kBusinessFaxNumber>},
    {"HOME,FAX", "home,fax", kSlots<ContactField::kHomeFaxNumber>},
    {"PAGER", "pager", kSlots<ContactField::kPagerNumber>},
    {"CAR", "x-car", kSlots<ContactField::kCarTelephoneNumber>},
    {"X-RADIO", "x-radio", kSlots<ContactField::kRadioTelephoneNumber>},
    {"X-ASSISTANT", "x-assistant", kSlots<ContactField::kAssistantTelephoneNumber>},
};

inline constexpr std::span<const ContactField> kEmailSlots =
    kSlots<ContactField::kEmail1Address, ContactField::kEmail2Address,
           ContactField::kEmail3Address>;

struct AddressSlot {
  std::string_view type30;
  std::string_view type40;  // empty for none
  ContactField street;

  // Street, city, state, postal code and country, which follow each other in a contact.
  std::array<ContactField, 5> fields() const {
    std::array<ContactField, 5> fields{};
    for (std::size_t i = 0; i < fields.size(); ++i) {
      fields[i] = static_cast<ContactField>(static_cast<std::size_t>(street) + i);
    }
    return fields;
  }
};

inline constexpr std::size_t kHomeAddress = 0;
inline constexpr std::size_t kWorkAddress = 1;
inline constexpr std::size_t kOtherAddress = 2;
inline constexpr AddressSlot kAddressSlots[] = {
    {"HOME", "home", ContactField::kHomeAddressStreet},
    {"WORK", "work", ContactField::kBusinessAddressStreet},
    {"OTHER", "", ContactField::kOtherAddressStreet},
};

// Whether the texts in these slots would find the same slots again when they come in order: no gap
// before one, none twice.
bool FillsSlotsInOrder(const Contact& contact, std::span<const ContactField> slots);

// As a card has it: a post office box and what is beside the street are empty.
ContentValue AddressValue(const Contact& contact, const AddressSlot& slot);

// What a card has for the slot, as it is written; of an address all of it, for its street.
std::string SlotValue(const Contact& contact, ContactField slot);

// Readers drop blanks around numbers and addresses and a "tel:" before them, unless they are told
// that the value is plain text.
bool MustBeExact(std::string_view text);

}  // namespace formats
