// Who is meant by a number or an address.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/items/contact.h"
#include "common/phone/phone_numbers.h"

namespace page {

struct LabelledField {
  formats::ContactField field;
  const char* label;
};

// What a person is reached by, the first one first.
std::span<const LabelledField> NumberFields();
std::span<const LabelledField> EmailFields();

// "Dr. Ada Lovelace", else what else there is to call the contact by; never empty.
std::string FullName(const formats::Contact& contact);

// Which of the contacts has a number or an e-mail address; the first, where several have it.
class Directory {
 public:
  // The numbers must outlive it.
  Directory(const std::vector<formats::Contact>& people, const phone::PhoneNumbers& numbers);

  // Equal for addresses that are the same, however they are written; empty for an empty one.
  [[nodiscard]] std::string KeyOf(std::string_view address) const;
  // The place among the contacts, -1 for nobody.
  [[nodiscard]] int Find(const std::string& key) const;

 private:
  const phone::PhoneNumbers& numbers_;
  std::map<std::string, int> places_;
};

}  // namespace page
