// People as a page shows them, and who is meant by a number.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "common/page/contents.h"
#include "common/page/json.h"
#include "common/phone/phone_numbers.h"

namespace page {

Json PersonOf(const formats::Contact& contact);

// Which of the contacts has a number or an e-mail address; the first, where several have it.
class Directory {
 public:
  // Both must outlive it.
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
