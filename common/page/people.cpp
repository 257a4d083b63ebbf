#include "common/page/people.h"

#include <initializer_list>

#include "common/calendar/wall_time.h"
#include "common/formats/items/identity.h"

namespace page {
namespace {

using formats::Contact;
using formats::ContactField;

struct LabelledField {
  ContactField field;
  const char* label;
};

constexpr LabelledField kNumbers[] = {
    {ContactField::kMobileTelephoneNumber, "Mobile"},
    {ContactField::kHomeTelephoneNumber, "Home"},
    {ContactField::kHome2TelephoneNumber, "Home 2"},
    {ContactField::kBusinessTelephoneNumber, "Work"},
    {ContactField::kBusiness2TelephoneNumber, "Work 2"},
    {ContactField::kCarTelephoneNumber, "Car"},
    {ContactField::kRadioTelephoneNumber, "Radio"},
    {ContactField::kPagerNumber, "Pager"},
    {ContactField::kHomeFaxNumber, "Home fax"},
    {ContactField::kBusinessFaxNumber, "Work fax"},
    {ContactField::kAssistantTelephoneNumber, "Assistant"},
};
constexpr LabelledField kEmails[] = {
    {ContactField::kEmail1Address, "E-mail"},
    {ContactField::kEmail2Address, "E-mail 2"},
    {ContactField::kEmail3Address, "E-mail 3"},
};
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

std::string NameOf(const Contact& contact) {
  std::string name = Joined({contact[ContactField::kTitle], contact[ContactField::kFirstName],
                             contact[ContactField::kMiddleName], contact[ContactField::kLastName],
                             contact[ContactField::kSuffix]},
                            " ");
  return name.empty() ? formats::DisplayName(contact) : name;
}

}  // namespace

Json PersonOf(const Contact& contact) {
  Json person = Json::object();
  const std::string sorted = formats::WithFileAs(contact)[ContactField::kFileAs];
  person["name"] = Clean(NameOf(contact));
  AddText(person, "sort", sorted);
  AddText(person, "line",
          Joined({contact[ContactField::kJobTitle], contact[ContactField::kCompanyName]}, ", "));
  AddTexts(person, "categories", contact.categories);
  AddList(person, "numbers", Labelled(contact, kNumbers));
  AddList(person, "emails", Labelled(contact, kEmails));
  AddList(person, "addresses", AddressesOf(contact));
  Json more = Labelled(contact, kMore);
  if (contact.birthday) more.push_back({"Birthday", formats::IsoDate(*contact.birthday)});
  if (contact.anniversary) more.push_back({"Anniversary", formats::IsoDate(*contact.anniversary)});
  AddList(person, "more", std::move(more));
  AddText(person, "web", contact[ContactField::kWebPage]);
  AddText(person, "note", contact[ContactField::kBody]);
  return person;
}

Directory::Directory(const std::vector<Contact>& people, const phone::PhoneNumbers& numbers)
    : numbers_(numbers) {
  int place = 0;
  for (const Contact& contact : people) {
    for (const auto& [field, label] : kNumbers) places_.emplace(KeyOf(contact[field]), place);
    for (const auto& [field, label] : kEmails) places_.emplace(KeyOf(contact[field]), place);
    ++place;
  }
  places_.erase("");
}

std::string Directory::KeyOf(std::string_view address) const {
  return numbers_.KeyOf(address);
}

int Directory::Find(const std::string& key) const {
  const auto found = places_.find(key);
  return found == places_.end() ? -1 : found->second;
}

}  // namespace page
