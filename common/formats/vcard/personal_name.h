// The parts of a name that was only given whole.
#pragma once

#include <span>
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

// Whether a name has no word that none of the texts has, in whatever case, order and punctuation;
// the first letter of one counts for it.
bool IsMadeOfWords(std::string_view name, std::span<const std::string_view> texts);

}  // namespace formats
