// Any bytes as a vCard file: the reader takes them, and what it made of them can be written and
// read again without a loss.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "common/formats/vcard/vcard.h"
#include "common/text/unicode.h"
#include "fuzz/require.h"

namespace {

using fuzz::Require;

void RequireUtf8(const formats::Contact& contact) {
  Require(text::IsValidUtf8(contact.uid));
  for (const std::string& field : contact.fields) Require(text::IsValidUtf8(field));
  for (const std::string& category : contact.categories) {
    Require(text::IsValidUtf8(category));
    Require(!category.empty() && category.find(',') == std::string::npos);
  }
}

void ReadAndWrite(std::string_view bytes, formats::Overflow overflow) {
  const formats::VCardFile file = formats::ReadVCards(bytes, overflow);
  for (const formats::ParsedContact& read : file.contacts) {
    RequireUtf8(read.contact);
    for (const formats::Notice& notice : read.notices) {
      Require(notice.line >= read.line && text::IsValidUtf8(notice.text));
    }
    Require(!formats::DisplayName(read.contact).empty());
    for (auto version : {formats::VCardVersion::k30, formats::VCardVersion::k40}) {
      const formats::VCardFile again =
          formats::ReadVCards(formats::WriteVCard(read.contact, version, overflow), overflow);
      Require(again.contacts.size() == 1 && again.contacts.front().contact == read.contact);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  ReadAndWrite(bytes, formats::Overflow::kLeftOut);
  ReadAndWrite(bytes, formats::Overflow::kNote);
  return 0;
}
