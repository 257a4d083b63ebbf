// A contact as people's programs exchange it: independent of wire, store and vCard.
//
// Text is UTF-8. Line breaks may be LF, CR LF or CR; programs mean the same by each. The fields are
// those of a Pocket Outlook contact.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace formats {

enum class ContactField {
  kEmail1Address,
  kEmail2Address,
  kEmail3Address,
  kFirstName,
  kLastName,
  kCompanyName,
  kFileAs,
  kBusinessFaxNumber,
  kDepartment,
  kMobileTelephoneNumber,
  kPagerNumber,
  kBusinessTelephoneNumber,
  kJobTitle,
  kHomeTelephoneNumber,
  kSpouse,
  kHome2TelephoneNumber,
  kHomeFaxNumber,
  kAssistantName,
  kChildren,
  kWebPage,
  kBusiness2TelephoneNumber,
  kTitle,
  kMiddleName,
  kSuffix,
  kHomeAddressStreet,
  kHomeAddressCity,
  kHomeAddressState,
  kHomeAddressPostalCode,
  kHomeAddressCountry,
  kOtherAddressStreet,
  kOtherAddressCity,
  kOtherAddressState,
  kOtherAddressPostalCode,
  kOtherAddressCountry,
  kBusinessAddressStreet,
  kBusinessAddressCity,
  kBusinessAddressState,
  kBusinessAddressPostalCode,
  kBusinessAddressCountry,
  kRadioTelephoneNumber,
  kBody,
  kYomiCompanyName,
  kYomiFirstName,
  kYomiLastName,
  // Kept on the handheld but never carried by the wire.
  kOfficeLocation,
  kCarTelephoneNumber,
  kAssistantTelephoneNumber,
};
inline constexpr std::size_t kContactFieldCount =
    static_cast<std::size_t>(ContactField::kAssistantTelephoneNumber) + 1;

// The Pocket Outlook property's name, such as "FirstName".
std::string_view ContactFieldName(ContactField field);

struct Date {
  int year = 0;
  int month = 0;  // 1 to 12
  int day = 0;
  friend bool operator==(const Date&, const Date&) = default;
};

struct Contact {
  std::string uid;  // the identity that the other program gave it; empty for none
  std::array<std::string, kContactFieldCount> fields;
  // Names: none empty, none twice, none with a comma, which the handheld separates them by.
  std::vector<std::string> categories;
  std::optional<Date> birthday;  // days of the years 1900 to 2999
  std::optional<Date> anniversary;

  std::string& operator[](ContactField field) { return fields[static_cast<std::size_t>(field)]; }
  const std::string& operator[](ContactField field) const {
    return fields[static_cast<std::size_t>(field)];
  }
  friend bool operator==(const Contact&, const Contact&) = default;
};

// "Last, First", a company, an address: what to call the contact in a message; never empty.
std::string DisplayName(const Contact& contact);

}  // namespace formats
