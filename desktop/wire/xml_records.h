// Documents of records: what the agent sends, and what people hand in to be sent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace desktop {

// Object identifiers: unsigned 32-bit numbers that XML writes as signed decimals.
using Oid = std::uint32_t;

// Decimal, signed or not, or hexadecimal with 0x, within 32 bits; nothing for other text and for 0,
// which names no item.
std::optional<Oid> ParseOid(std::string_view text);
// As the attribute "Oid" has it.
std::string OidAttribute(Oid oid);

struct XmlElement {
  std::string name;
  std::string text;  // its own, without that of its children; line ends are line feeds
  std::vector<XmlElement> children;

  // The first child of that name, or null.
  [[nodiscard]] const XmlElement* Child(std::string_view childName) const;
  // The text of the first child of that name, empty when there is none.
  [[nodiscard]] std::string_view ChildText(std::string_view childName) const;
  bool operator==(const XmlElement&) const = default;
};

struct Record {
  XmlElement element;
  std::optional<Oid> oid;  // nothing when the attribute is missing or 0
  std::string oidText;     // the attribute as it stands, for an odd one
  bool deletes = false;    // the attribute "Delete" is not 0
  std::size_t line = 0;    // in the document, 1-based
  // The element as UTF-8. The very bytes of the document, unless that was in another encoding or
  // the element had an "Oid" of 0, which is left out.
  std::string bytes;
};

// The element children of the document's root. The declaration may be written "<?XML".
// Throws Error with the line when the document is not well-formed or declares a document type;
// nothing outside the document is ever read.
std::vector<Record> ParseRecords(std::string_view document);

// Stands in a download for an item that could not be sent, and why: the status.
inline constexpr std::string_view kErrorElement = "Error";
std::int32_t ErrorValue(const Record& error);

// The record, which must have no "Oid", with one.
std::string WithOid(std::string_view record, Oid oid);

}  // namespace desktop
