#include "common/formats/items/contact.h"

#include "common/text/text.h"

namespace formats {
namespace {

constexpr std::array<std::string_view, kContactFieldCount> kFieldNames = {
    "Email1Address",
    "Email2Address",
    "Email3Address",
    "FirstName",
    "LastName",
    "CompanyName",
    "FileAs",
    "BusinessFaxNumber",
    "Department",
    "MobileTelephoneNumber",
    "PagerNumber",
    "BusinessTelephoneNumber",
    "JobTitle",
    "HomeTelephoneNumber",
    "Spouse",
    "Home2TelephoneNumber",
    "HomeFaxNumber",
    "AssistantName",
    "Children",
    "WebPage",
    "Business2TelephoneNumber",
    "Title",
    "MiddleName",
    "Suffix",
    "HomeAddressStreet",
    "HomeAddressCity",
    "HomeAddressState",
    "HomeAddressPostalCode",
    "HomeAddressCountry",
    "OtherAddressStreet",
    "OtherAddressCity",
    "OtherAddressState",
    "OtherAddressPostalCode",
    "OtherAddressCountry",
    "BusinessAddressStreet",
    "BusinessAddressCity",
    "BusinessAddressState",
    "BusinessAddressPostalCode",
    "BusinessAddressCountry",
    "RadioTelephoneNumber",
    "Body",
    "YomiCompanyName",
    "YomiFirstName",
    "YomiLastName",
    "OfficeLocation",
    "CarTelephoneNumber",
    "AssistantTelephoneNumber",
};
static_assert(!kFieldNames.back().empty());

// What a contact without a name is called by, the best first.
constexpr ContactField kCallNames[] = {
    ContactField::kFileAs,
    ContactField::kCompanyName,
    ContactField::kEmail1Address,
    ContactField::kEmail2Address,
    ContactField::kEmail3Address,
    ContactField::kMobileTelephoneNumber,
    ContactField::kHomeTelephoneNumber,
    ContactField::kBusinessTelephoneNumber,
    ContactField::kHome2TelephoneNumber,
    ContactField::kBusiness2TelephoneNumber,
    ContactField::kPagerNumber,
    ContactField::kWebPage,
};

}  // namespace

std::string_view ContactFieldName(ContactField field) {
  return kFieldNames[static_cast<std::size_t>(field)];
}

std::string DisplayName(const Contact& contact) {
  const std::string last = OnOneLine(contact[ContactField::kLastName]);
  const std::string first = OnOneLine(contact[ContactField::kFirstName]);
  if (!last.empty() && !first.empty()) return last + ", " + first;
  if (!last.empty() || !first.empty()) return last + first;
  for (ContactField field : kCallNames) {
    if (std::string name = OnOneLine(contact[field]); !name.empty()) return name;
  }
  return "(no name)";
}

}  // namespace formats
