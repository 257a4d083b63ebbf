// What a card says and a contact has no field for, kept in lines at the end of its note.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/items/contact.h"
#include "common/formats/lines/vcard_property.h"

namespace formats {

// The note's last lines, between two that mark them. Each is a property as a vCard writes it, but
// that it is not folded.
class OverflowBlock {
 public:
  // Takes the block off a note that has one. What stands between the marks and is no property of
  // these kinds makes all of it a part of the note. `line` is that of the file, for notices.
  static OverflowBlock TakeFrom(std::string& note, std::size_t line = 0);
  void AppendTo(std::string& note) const;

  // What has no slot; what is there already is not added again. `value` is as it is written.
  void Add(const Property& property, std::string value);
  // What a slot does not say of the value in it, such as the kind of a number that was moved. The
  // first one stays.
  void Describe(ContactField slot, const Property& property, std::string value);

  const std::vector<Property>& lines() const { return lines_; }
  // The description of what is in the slot, with that value; null without one.
  const Property* Find(ContactField slot, std::string_view value) const;
  const std::map<ContactField, Property>& descriptions() const { return descriptions_; }

 private:
  bool Take(const Property& property);

  std::vector<Property> lines_;
  std::set<std::string> known_;  // of them
  std::map<ContactField, Property> descriptions_;
};

// A line of a card: the property's name with its parameters. A description names its slot.
std::string HeadOf(const Property& property);

// What a person calls it, on one line; empty for a word that names a kind.
std::string OwnLabelOf(const Property& property);

// In which a description names its slot.
inline constexpr std::string_view kKeptAs = "X-KEPT-AS";

}  // namespace formats
