#include "common/formats/items/contact.h"

#include "common/text/text.h"

namespace formats {
namespace {

constexpr std::string_view kFieldNames[] = {
#define FORMATS_FIELD_NAME(Name) #Name,
    FORMATS_CONTACT_FIELDS(FORMATS_FIELD_NAME)
#undef FORMATS_FIELD_NAME
};

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
  const std::string last = text::OnOneLine(contact[ContactField::kLastName]);
  const std::string first = text::OnOneLine(contact[ContactField::kFirstName]);
  if (!last.empty() && !first.empty()) return last + ", " + first;
  if (!last.empty() || !first.empty()) return last + first;
  for (ContactField field : kCallNames) {
    if (std::string name = text::OnOneLine(contact[field]); !name.empty()) return name;
  }
  return "(no name)";
}

}  // namespace formats
