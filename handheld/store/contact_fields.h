// The contact's text properties: one row each, in the order of the interface.
#pragma once

#include <cstddef>

#include "handheld/store/item_texts.h"

namespace ce::host {

// X(property, kind)
#define CE_CONTACT_TEXTS(X)            \
  X(BusinessAddressStreet, kPlain)     \
  X(BusinessAddressCity, kPlain)       \
  X(BusinessAddressState, kPlain)      \
  X(BusinessAddressPostalCode, kPlain) \
  X(BusinessAddressCountry, kPlain)    \
  X(BusinessFaxNumber, kPlain)         \
  X(BusinessTelephoneNumber, kPlain)   \
  X(CompanyName, kPlain)               \
  X(Department, kPlain)                \
  X(Email1Address, kPlain)             \
  X(MobileTelephoneNumber, kPlain)     \
  X(OfficeLocation, kPlain)            \
  X(PagerNumber, kPlain)               \
  X(JobTitle, kPlain)                  \
  X(HomeTelephoneNumber, kPlain)       \
  X(Email2Address, kPlain)             \
  X(Spouse, kPlain)                    \
  X(Email3Address, kPlain)             \
  X(Home2TelephoneNumber, kPlain)      \
  X(HomeFaxNumber, kPlain)             \
  X(CarTelephoneNumber, kPlain)        \
  X(AssistantName, kPlain)             \
  X(AssistantTelephoneNumber, kPlain)  \
  X(Children, kPlain)                  \
  X(Categories, kPlain)                \
  X(WebPage, kPlain)                   \
  X(Business2TelephoneNumber, kPlain)  \
  X(Title, kPlain)                     \
  X(FirstName, kPlain)                 \
  X(MiddleName, kPlain)                \
  X(LastName, kPlain)                  \
  X(Suffix, kPlain)                    \
  X(HomeAddressStreet, kPlain)         \
  X(HomeAddressCity, kPlain)           \
  X(HomeAddressState, kPlain)          \
  X(HomeAddressPostalCode, kPlain)     \
  X(HomeAddressCountry, kPlain)        \
  X(OtherAddressStreet, kPlain)        \
  X(OtherAddressCity, kPlain)          \
  X(OtherAddressState, kPlain)         \
  X(OtherAddressPostalCode, kPlain)    \
  X(OtherAddressCountry, kPlain)       \
  X(RadioTelephoneNumber, kPlain)      \
  X(FileAs, kFileAs)                   \
  X(Body, kBody)                       \
  X(YomiCompanyName, kYomi)            \
  X(YomiFirstName, kYomi)              \
  X(YomiLastName, kYomi)

enum class ContactText {
#define CE_CONTACT_TEXT(Name, Kind) k##Name,
  CE_CONTACT_TEXTS(CE_CONTACT_TEXT)
#undef CE_CONTACT_TEXT
};

inline constexpr TextRow kContactTexts[] = {
#define CE_CONTACT_TEXT(Name, Kind) {#Name, TextKind::Kind},
    CE_CONTACT_TEXTS(CE_CONTACT_TEXT)
#undef CE_CONTACT_TEXT
};
inline constexpr std::size_t kContactTextCount = std::size(kContactTexts);
static_assert(kContactTextCount == 48);

}  // namespace ce::host
