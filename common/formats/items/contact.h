// A contact as people's programs exchange it: independent of wire, store and vCard.
//
// Text is UTF-8. Line breaks may be LF, CR LF or CR; programs mean the same by each. The fields are
// those of a Pocket Outlook contact.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace formats {

// X(name of the Pocket Outlook property). The last three are kept on the handheld but never carried
// by the wire.
#define FORMATS_CONTACT_FIELDS(X) \
  X(Email1Address)                \
  X(Email2Address)                \
  X(Email3Address)                \
  X(FirstName)                    \
  X(LastName)                     \
  X(CompanyName)                  \
  X(FileAs)                       \
  X(BusinessFaxNumber)            \
  X(Department)                   \
  X(MobileTelephoneNumber)        \
  X(PagerNumber)                  \
  X(BusinessTelephoneNumber)      \
  X(JobTitle)                     \
  X(HomeTelephoneNumber)          \
  X(Spouse)                       \
  X(Home2TelephoneNumber)         \
  X(HomeFaxNumber)                \
  X(AssistantName)                \
  X(Children)                     \
  X(WebPage)                      \
  X(Business2TelephoneNumber)     \
  X(Title)                        \
  X(MiddleName)                   \
  X(Suffix)                       \
  X(HomeAddressStreet)            \
  X(HomeAddressCity)              \
  X(HomeAddressState)             \
  X(HomeAddressPostalCode)        \
  X(HomeAddressCountry)           \
  X(OtherAddressStreet)           \
  X(OtherAddressCity)             \
  X(OtherAddressState)            \
  X(OtherAddressPostalCode)       \
  X(OtherAddressCountry)          \
  X(BusinessAddressStreet)        \
  X(BusinessAddressCity)          \
  X(BusinessAddressState)         \
  X(BusinessAddressPostalCode)    \
  X(BusinessAddressCountry)       \
  X(RadioTelephoneNumber)         \
  X(Body)                         \
  X(YomiCompanyName)              \
  X(YomiFirstName)                \
  X(YomiLastName)                 \
  X(OfficeLocation)               \
  X(CarTelephoneNumber)           \
  X(AssistantTelephoneNumber)

enum class ContactField {
#define FORMATS_CONTACT_FIELD(Name) k##Name,
  FORMATS_CONTACT_FIELDS(FORMATS_CONTACT_FIELD)
#undef FORMATS_CONTACT_FIELD
};
inline constexpr std::size_t kContactFieldCount =
    static_cast<std::size_t>(ContactField::kAssistantTelephoneNumber) + 1;

// The Pocket Outlook property's name, such as "FirstName".
std::string_view ContactFieldName(ContactField field);

struct Contact {
  std::string uid;  // the identity that the other program gave it; empty for none
  std::array<std::string, kContactFieldCount> fields;
  // Names: none empty, none twice, none with a comma, which the handheld separates them by.
  std::vector<std::string> categories;
  std::optional<std::chrono::year_month_day> birthday;  // days of the years 1900 to 2999
  std::optional<std::chrono::year_month_day> anniversary;

  std::string& operator[](ContactField field) { return fields[static_cast<std::size_t>(field)]; }
  const std::string& operator[](ContactField field) const {
    return fields[static_cast<std::size_t>(field)];
  }
  friend bool operator==(const Contact&, const Contact&) = default;
};

// "Last, First", a company, an address: what to call the contact in a message; never empty.
std::string DisplayName(const Contact& contact);

}  // namespace formats
