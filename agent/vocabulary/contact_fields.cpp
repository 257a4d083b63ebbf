#include "agent/vocabulary/contact_fields.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace corvane {
namespace {

using ce::IContact;
using enum ContactFieldKind;

#define TEXT_OF(Property) .getText = &IContact::get_##Property, .putText = &IContact::put_##Property
#define DATE_OF(Property) .getDate = &IContact::get_##Property, .putDate = &IContact::put_##Property

constexpr ContactField kFields[] = {
    {.element = u"EMAIL_ADDRESSES", .kind = kEmailList},
    {.element = u"FIRST_NAME", .kind = kText, TEXT_OF(FirstName)},
    {.element = u"LAST_NAME", .kind = kText, TEXT_OF(LastName), .valueTrace = u"Got LastName %s"},
    {.element = u"COMPANY", .kind = kText, TEXT_OF(CompanyName)},
    {.element = u"FileAs", .kind = kText, TEXT_OF(FileAs)},
    {.element = u"PHONE_BUSINESS_FAX", .kind = kText, TEXT_OF(BusinessFaxNumber)},
    {.element = u"DEPARTMENT", .kind = kText, TEXT_OF(Department)},
    {.element = u"PHONE_MOBILE", .kind = kText, TEXT_OF(MobileTelephoneNumber)},
    {.element = u"PHONE_PAGER", .kind = kText, TEXT_OF(PagerNumber)},
    {.element = u"PHONE_BUSINESS", .kind = kText, TEXT_OF(BusinessTelephoneNumber)},
    {.element = u"BUSINESS_TITLE", .kind = kText, TEXT_OF(JobTitle)},
    {.element = u"PHONE_HOME", .kind = kText, TEXT_OF(HomeTelephoneNumber)},
    {.element = u"SPOUSES_NAME", .kind = kText, TEXT_OF(Spouse)},
    {.element = u"PHONE_HOME2", .kind = kText, TEXT_OF(Home2TelephoneNumber)},
    {.element = u"PHONE_HOME_FAX", .kind = kText, TEXT_OF(HomeFaxNumber)},
    {.element = u"Assistant", .kind = kText, TEXT_OF(AssistantName)},
    {.element = u"CHILDREN", .kind = kText, TEXT_OF(Children)},
    {.element = u"CATEGORIES", .kind = kCategoryList, TEXT_OF(Categories), .keyShift = 1},
    {.element = u"BUSINESS_WEB_PAGE", .kind = kText, TEXT_OF(WebPage), .keyShift = -1},
    {.element = u"PHONE_BUSINESS2", .kind = kText, TEXT_OF(Business2TelephoneNumber)},
    {.element = u"TITLE", .kind = kText, TEXT_OF(Title)},
    {.element = u"MiddleName", .kind = kText, TEXT_OF(MiddleName)},
    {.element = u"SUFFIX", .kind = kText, TEXT_OF(Suffix)},
    {.element = u"HOME_ADDRESS", .kind = kMultilineText, TEXT_OF(HomeAddressStreet)},
    {.element = u"HOME_CITY", .kind = kText, TEXT_OF(HomeAddressCity)},
    {.element = u"HOME_STATE", .kind = kText, TEXT_OF(HomeAddressState)},
    {.element = u"HOME_ZIP", .kind = kText, TEXT_OF(HomeAddressPostalCode)},
    {.element = u"HOME_COUNTRY", .kind = kText, TEXT_OF(HomeAddressCountry)},
    {.element = u"OtherStreet", .kind = kMultilineText, TEXT_OF(OtherAddressStreet)},
    {.element = u"OtherCity", .kind = kText, TEXT_OF(OtherAddressCity)},
    {.element = u"OtherState", .kind = kText, TEXT_OF(OtherAddressState)},
    {.element = u"OtherPostalCode", .kind = kText, TEXT_OF(OtherAddressPostalCode)},
    {.element = u"OtherCountry", .kind = kText, TEXT_OF(OtherAddressCountry)},
    {.element = u"BUSINESS_ADDRESS", .kind = kMultilineText, TEXT_OF(BusinessAddressStreet)},
    {.element = u"BUSINESS_CITY", .kind = kText, TEXT_OF(BusinessAddressCity)},
    {.element = u"BUSINESS_STATE", .kind = kText, TEXT_OF(BusinessAddressState)},
    {.element = u"BUSINESS_ZIP", .kind = kText, TEXT_OF(BusinessAddressPostalCode)},
    {.element = u"BUSINESS_COUNTRY", .kind = kText, TEXT_OF(BusinessAddressCountry)},
    {.element = u"RadioPhone", .kind = kText, TEXT_OF(RadioTelephoneNumber)},
    {.element = u"NOTES",
     .kind = kNotes,
     TEXT_OF(Body),
     .statusTrace = u"after get_Body hr = 0x%08X"},
    {.element = u"BodyInk", .kind = kInk, .statusTrace = u"after get_BodyInk hr = 0x%08X"},
    {.element = u"FURIGANA_COMPANY_NAME", .kind = kYomiText, TEXT_OF(YomiCompanyName)},
    {.element = u"FURIGANA_FIRST_NAME", .kind = kYomiText, TEXT_OF(YomiFirstName)},
    {.element = u"FURIGANA_LAST_NAME", .kind = kYomiText, TEXT_OF(YomiLastName)},
    {.element = u"BIRTHDAY",
     .kind = kDate,
     DATE_OF(Birthday),
     .statusTrace = u"after get_Birthday hr = 0x%08X"},
    {.element = u"ANNIVERSARY", .kind = kDate, DATE_OF(Anniversary)},
};
static_assert(std::size(kFields) == 46);

consteval std::array<const ContactField*, std::size(kFields)> InOrderOfKeys() {
  std::array<const ContactField*, std::size(kFields)> ordered{};
  for (std::ptrdiff_t row = 0; const ContactField& field : kFields) {
    ordered.at(static_cast<std::size_t>(row++ + field.keyShift)) = &field;
  }
  return ordered;
}

constexpr auto kKeyFields = InOrderOfKeys();
static_assert(std::ranges::count(kKeyFields, nullptr) == 0);

constexpr ContactEmailSlot kEmailSlots[] = {
    {u"email1", &IContact::get_Email1Address, &IContact::put_Email1Address},
    {u"email2", &IContact::get_Email2Address, &IContact::put_Email2Address},
    {u"email3", &IContact::get_Email3Address, &IContact::put_Email3Address},
};

#undef TEXT_OF
#undef DATE_OF

}  // namespace

std::span<const ContactField> ContactFields() {
  return kFields;
}

std::span<const ContactField* const> ContactKeyFields() {
  return kKeyFields;
}

std::span<const ContactEmailSlot> ContactEmailSlots() {
  return kEmailSlots;
}

}  // namespace corvane
