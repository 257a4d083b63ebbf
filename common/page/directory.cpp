#include "common/page/directory.h"

#include <initializer_list>

namespace page {
namespace {

using formats::Contact;
using formats::ContactField;

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

}  // namespace

std::span<const LabelledField> NumberFields() {
  return kNumbers;
}
std::span<const LabelledField> EmailFields() {
  return kEmails;
}

std::string FullName(const Contact& contact) {
  std::string name;
  for (const ContactField field :
       {ContactField::kTitle, ContactField::kFirstName, ContactField::kMiddleName,
        ContactField::kLastName, ContactField::kSuffix}) {
    if (contact[field].empty()) continue;
    if (!name.empty()) name += ' ';
    name += contact[field];
  }
  return name.empty() ? formats::DisplayName(contact) : name;
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
