// Where a contact keeps numbers and addresses: the slots of each kind and what a vCard calls them.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "common/formats/items/contact.h"

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

struct PhoneSlots {
  PhoneKind kind;
  std::string_view type30;  // the TYPE parameter's value
  std::string_view type40;
  std::array<ContactField, 2> fields;
  std::size_t count;  // how many of `fields` there are

  std::span<const ContactField> slots() const { return std::span(fields).first(count); }
};

// In the order of PhoneKind.
inline constexpr std::array<PhoneSlots, 9> kPhoneSlots = {{
    {PhoneKind::kWork,
     "WORK,VOICE",
     "work,voice",
     {ContactField::kBusinessTelephoneNumber, ContactField::kBusiness2TelephoneNumber},
     2},
    {PhoneKind::kHome,
     "HOME,VOICE",
     "home,voice",
     {ContactField::kHomeTelephoneNumber, ContactField::kHome2TelephoneNumber},
     2},
    {PhoneKind::kMobile, "CELL", "cell", {ContactField::kMobileTelephoneNumber}, 1},
    {PhoneKind::kWorkFax, "WORK,FAX", "work,fax", {ContactField::kBusinessFaxNumber}, 1},
    {PhoneKind::kHomeFax, "HOME,FAX", "home,fax", {ContactField::kHomeFaxNumber}, 1},
    {PhoneKind::kPager, "PAGER", "pager", {ContactField::kPagerNumber}, 1},
    {PhoneKind::kCar, "CAR", "x-car", {ContactField::kCarTelephoneNumber}, 1},
    {PhoneKind::kRadio, "X-RADIO", "x-radio", {ContactField::kRadioTelephoneNumber}, 1},
    {PhoneKind::kAssistant,
     "X-ASSISTANT",
     "x-assistant",
     {ContactField::kAssistantTelephoneNumber},
     1},
}};

inline constexpr std::array<ContactField, 3> kEmailSlots = {
    ContactField::kEmail1Address, ContactField::kEmail2Address, ContactField::kEmail3Address};

struct AddressSlot {
  std::string_view type30;
  std::string_view type40;  // empty for none
  std::string_view words;   // what to call it in a message
  ContactField street;
  ContactField city;
  ContactField state;
  ContactField postalCode;
  ContactField country;

  std::array<ContactField, 5> fields() const { return {street, city, state, postalCode, country}; }
};

inline constexpr std::size_t kHomeAddress = 0;
inline constexpr std::size_t kWorkAddress = 1;
inline constexpr std::size_t kOtherAddress = 2;
inline constexpr std::array<AddressSlot, 3> kAddressSlots = {{
    {"HOME", "home", "home", ContactField::kHomeAddressStreet, ContactField::kHomeAddressCity,
     ContactField::kHomeAddressState, ContactField::kHomeAddressPostalCode,
     ContactField::kHomeAddressCountry},
    {"WORK", "work", "business", ContactField::kBusinessAddressStreet,
     ContactField::kBusinessAddressCity, ContactField::kBusinessAddressState,
     ContactField::kBusinessAddressPostalCode, ContactField::kBusinessAddressCountry},
    {"OTHER", "", "other", ContactField::kOtherAddressStreet, ContactField::kOtherAddressCity,
     ContactField::kOtherAddressState, ContactField::kOtherAddressPostalCode,
     ContactField::kOtherAddressCountry},
}};

// Whether the texts in these slots would find the same slots again when they come in order: no gap
// before one, none twice.
bool FillsSlotsInOrder(const Contact& contact, std::span<const ContactField> slots);

}  // namespace formats
