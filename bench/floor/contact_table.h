// The fields of a contact: the element on the wire and the column in the store.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace floors {

enum class FieldKind { kText, kEmail, kCategories, kDate, kUnsent };

struct ContactField {
  std::string_view element;  // of an e-mail address, its TYPE
  std::string_view column;
  FieldKind kind = FieldKind::kText;
};

// In the order of the wire, what never travels last.
inline constexpr std::array kContactFields = {
    ContactField{"email1", "Email1Address", FieldKind::kEmail},
    ContactField{"email2", "Email2Address", FieldKind::kEmail},
    ContactField{"email3", "Email3Address", FieldKind::kEmail},
    ContactField{"FIRST_NAME", "FirstName"},
    ContactField{"LAST_NAME", "LastName"},
    ContactField{"COMPANY", "CompanyName"},
    ContactField{"FileAs", "FileAs"},
    ContactField{"PHONE_BUSINESS_FAX", "BusinessFaxNumber"},
    ContactField{"DEPARTMENT", "Department"},
    ContactField{"PHONE_MOBILE", "MobileTelephoneNumber"},
    ContactField{"PHONE_PAGER", "PagerNumber"},
    ContactField{"PHONE_BUSINESS", "BusinessTelephoneNumber"},
    ContactField{"BUSINESS_TITLE", "JobTitle"},
    ContactField{"PHONE_HOME", "HomeTelephoneNumber"},
    ContactField{"SPOUSES_NAME", "Spouse"},
    ContactField{"PHONE_HOME2", "Home2TelephoneNumber"},
    ContactField{"PHONE_HOME_FAX", "HomeFaxNumber"},
    ContactField{"Assistant", "AssistantName"},
    ContactField{"CHILDREN", "Children"},
    ContactField{"CATEGORIES", "Categories", FieldKind::kCategories},
    ContactField{"BUSINESS_WEB_PAGE", "WebPage"},
    ContactField{"PHONE_BUSINESS2", "Business2TelephoneNumber"},
    ContactField{"TITLE", "Title"},
    ContactField{"MiddleName", "MiddleName"},
    ContactField{"SUFFIX", "Suffix"},
    ContactField{"HOME_ADDRESS", "HomeAddressStreet"},
    ContactField{"HOME_CITY", "HomeAddressCity"},
    ContactField{"HOME_STATE", "HomeAddressState"},
    ContactField{"HOME_ZIP", "HomeAddressPostalCode"},
    ContactField{"HOME_COUNTRY", "HomeAddressCountry"},
    ContactField{"OtherStreet", "OtherAddressStreet"},
    ContactField{"OtherCity", "OtherAddressCity"},
    ContactField{"OtherState", "OtherAddressState"},
    ContactField{"OtherPostalCode", "OtherAddressPostalCode"},
    ContactField{"OtherCountry", "OtherAddressCountry"},
    ContactField{"BUSINESS_ADDRESS", "BusinessAddressStreet"},
    ContactField{"BUSINESS_CITY", "BusinessAddressCity"},
    ContactField{"BUSINESS_STATE", "BusinessAddressState"},
    ContactField{"BUSINESS_ZIP", "BusinessAddressPostalCode"},
    ContactField{"BUSINESS_COUNTRY", "BusinessAddressCountry"},
    ContactField{"RadioPhone", "RadioTelephoneNumber"},
    ContactField{"NOTES", "Body"},
    ContactField{"BIRTHDAY", "Birthday", FieldKind::kDate},
    ContactField{"ANNIVERSARY", "Anniversary", FieldKind::kDate},
    ContactField{"", "OfficeLocation", FieldKind::kUnsent},
    ContactField{"", "CarTelephoneNumber", FieldKind::kUnsent},
    ContactField{"", "AssistantTelephoneNumber", FieldKind::kUnsent},
    ContactField{"", "YomiCompanyName", FieldKind::kUnsent},
    ContactField{"", "YomiFirstName", FieldKind::kUnsent},
    ContactField{"", "YomiLastName", FieldKind::kUnsent},
};

}  // namespace floors
