// vCard 2.1, 3.0 (RFC 2426) and 4.0 (RFC 6350): reading what other programs wrote, writing 3.0 and
// 4.0 for them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/items/contact.h"
#include "common/formats/items/notice.h"
#include "common/formats/vcard/overflow.h"

namespace formats {

struct ParsedContact {
  Contact contact;
  std::size_t line = 0;  // of BEGIN:VCARD
  std::vector<Notice> notices;
};

struct VCardFile {
  std::vector<ParsedContact> contacts;
  std::vector<Notice> notices;  // about lines outside any card, a card that is cut off
};

// Never fails: whatever is not a vCard becomes a notice. Any bytes are accepted: UTF-8, UTF-16 with
// a byte-order mark, character sets that a property names, otherwise Windows-1252. The text that
// comes out is UTF-8 with LF for a line break, unless our writer noted another. A card has at most
// 201 notices, in the order of their lines. docs/contact-mapping.md tells what becomes of each
// property.
VCardFile ReadVCards(std::string_view bytes, Overflow overflow = Overflow::kLeftOut);

enum class VCardVersion { k30, k40 };
// One card, CRLF line ends, lines folded at 75 octets. Reading it back gives the same contact when
// its text is valid UTF-8 and its categories and dates are as Contact asks; a date that is none is
// left out. Lines at the end of the note stay in it, unless they are asked for: then they are the
// card's own, and reading it with the same Overflow gives the same contact.
std::string WriteVCard(const Contact& contact, VCardVersion version,
                       Overflow overflow = Overflow::kLeftOut);

}  // namespace formats
