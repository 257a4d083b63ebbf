// What a card says, line by line, and in what two contacts differ.
#pragma once

#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "common/formats/items/contact.h"
#include "common/formats/vcard/vcard.h"
#include "desktop/folder/raw_line.h"

namespace desktop {

// One line of the card that says a contact in its plainest form.
struct CanonicalLine {
  RawLine line;
  std::string text;  // all of it
  std::string key;   // its name and its value
};

// Without what a card needs for its form, UID, categories, and FN, which says again what N says.
// Blanks around texts do not count; numbers of a kind and e-mail addresses stand one after the
// other, whatever slots are free between them.
std::vector<CanonicalLine> CanonicalLines(const formats::Contact& contact,
                                          formats::VCardVersion version);

// What the contact would be called.
std::string FormattedName(const formats::Contact& contact);

// One value that one has and the other has not. A field of several slots, such as that of e-mail
// addresses, is one field here, and its values are in no order.
struct ContactDifference {
  std::string field;
  bool missing = false;  // else it is there and should not be
  std::string value;
  friend bool operator==(const ContactDifference&, const ContactDifference&) = default;
  friend bool operator<(const ContactDifference& a, const ContactDifference& b) {
    return std::tie(a.field, a.missing, a.value) < std::tie(b.field, b.missing, b.value);
  }
};
using ContactDifferences = std::set<ContactDifference>;

// From what it has to what it should have; of all but the UID.
ContactDifferences DifferencesOf(const formats::Contact& has, const formats::Contact& should);

// Every text of the contact, as it counts.
std::set<std::string> ValuesOf(const formats::Contact& contact);

}  // namespace desktop
