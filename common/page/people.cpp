#include "common/page/people.h"

#include <initializer_list>

#include "common/calendar/wall_time.h"
#include "common/formats/items/identity.h"
#include "common/page/directory.h"

namespace page {
namespace {

using formats::Contact;
using formats::ContactField;

constexpr LabelledField kMore[] = {
    {ContactField::kJobTitle, "Job title"},
    {ContactField::kDepartment, "Department"},
    {ContactField::kCompanyName, "Company"},
    {ContactField::kOfficeLocation, "Office"},
    {ContactField::kAssistantName, "Assistant"},
    {ContactField::kSpouse, "Partner"},
    {ContactField::kChildren, "Children"},
    {ContactField::kYomiLastName, "Last name, as spoken"},
    {ContactField::kYomiFirstName, "First name, as spoken"},
    {ContactField::kYomiCompanyName, "Company, as spoken"},
};

struct AddressFields {
  const char* label;
  ContactField street, postalCode, city, state, country;
};
constexpr AddressFields kAddresses[] = {
    {"Home", ContactField::kHomeAddressStreet, ContactField::kHomeAddressPostalCode,
     ContactField::kHomeAddressCity, ContactField::kHomeAddressState,
     ContactField::kHomeAddressCountry},
    {"Work", ContactField::kBusinessAddressStreet, ContactField::kBusinessAddressPostalCode,
     ContactField::kBusinessAddressCity, ContactField::kBusinessAddressState,
     ContactField::kBusinessAddressCountry},
    {"Other", ContactField::kOtherAddressStreet, ContactField::kOtherAddressPostalCode,
     ContactField::kOtherAddressCity, ContactField::kOtherAddressState,
     ContactField::kOtherAddressCountry},
};

// The texts that are not empty.
std::string Joined(std::initializer_list<std::string_view> texts, std::string_view between) {
  std::string joined;
  for (const std::string_view text : texts) {
    if (text.empty()) continue;
    if (!joined.empty()) joined += between;
    joined += text;
  }
  return joined;
}

template <typename Rows>
Json Labelled(const Contact& contact, const Rows& rows) {
  Json list = Json::array();
  for (const LabelledField& row : rows)
    if (!contact[row.field].empty()) list.push_back({row.label, Clean(contact[row.field])});
  return list;
}

Json AddressesOf(const Contact& contact) {
  Json list = Json::array();
  for (const AddressFields& row : kAddresses) {
    const std::string town = Joined({contact[row.postalCode], contact[row.city]}, " ");
    const std::string text =
        Joined({contact[row.street], town, contact[row.state], contact[row.country]}, "\n");
    if (!text.empty()) list.push_back({row.label, Clean(text)});
  }
  return list;
}

}  // namespace

Json PersonOf(const Contact& contact) {
  Json person = Json::object();
  const std::string sorted = formats::WithFileAs(contact)[ContactField::kFileAs];
  person["name"] = Clean(FullName(contact));
  AddText(person, "sort", sorted);
  AddText(person, "line",
          Joined({contact[ContactField::kJobTitle], contact[ContactField::kCompanyName]}, ", "));
  AddTexts(person, "categories", contact.categories);
  AddList(person, "numbers", Labelled(contact, NumberFields()));
  AddList(person, "emails", Labelled(contact, EmailFields()));
  AddList(person, "addresses", AddressesOf(contact));
  Json more = Labelled(contact, kMore);
  if (contact.birthday) more.push_back({"Birthday", formats::IsoDate(*contact.birthday)});
  if (contact.anniversary) more.push_back({"Anniversary", formats::IsoDate(*contact.anniversary)});
  AddList(person, "more", std::move(more));
  AddText(person, "web", contact[ContactField::kWebPage]);
  AddText(person, "note", contact[ContactField::kBody]);
  return person;
}

}  // namespace page
