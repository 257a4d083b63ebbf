// vCard 2.1, 3.0 (RFC 2426) and 4.0 (RFC 6350): reading what other programs wrote, writing 3.0 and
// 4.0 for them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "formats/contact.h"

namespace formats {

// One thing that was read but could not be kept, or that was odd.
struct Notice {
  std::size_t line = 0;  // 1-based line of the input where it begins
  std::string text;      // what and why: "PHOTO: a contact holds no pictures"
};

struct ParsedContact {
  Contact contact;
  std::size_t line = 0;  // of BEGIN:VCARD
  std::vector<Notice> notices;
};

struct VCardFile {
  std::vector<ParsedContact> contacts;
  std::vector<Notice> notices;  // about lines outside any card, a card that is cut off
};

// Never fails: whatever is not a vCard becomes a notice. Any bytes are accepted.
VCardFile ReadVCards(std::string_view bytes);

enum class VCardVersion { k30, k40 };
// One card, CRLF line ends, lines folded at 75 octets. Reading it back gives the same contact.
std::string WriteVCard(const Contact& contact, VCardVersion version);

}  // namespace formats
