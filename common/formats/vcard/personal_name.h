// The parts of a name that was only given whole.
#pragma once

#include <string>
#include <string_view>

namespace formats {

struct PersonalName {
  std::string title;
  std::string first;
  std::string middle;
  std::string last;
  std::string suffix;
};

// "Last, First", or words: titles and suffixes that are known go to their fields, "van der" and the
// like stay with the last name, a single word is a first name.
PersonalName SplitFullName(std::string_view name);

// The parts in the order in which a person would say them.
std::string JoinFullName(const PersonalName& name);

}  // namespace formats
