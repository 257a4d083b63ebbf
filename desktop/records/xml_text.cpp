#include "desktop/records/xml_text.h"

#include <cstddef>

namespace desktop {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool IsContinuation(unsigned char byte) {
  return (byte & 0xC0) == 0x80;
}

// The length of the well-formed UTF-8 sequence at the front, 0 when there is none.
std::size_t SequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0x80                   ? 1
                             : lead >= 0xC2 && lead < 0xE0 ? 2
                             : lead >= 0xE0 && lead < 0xF0 ? 3
                             : lead >= 0xF0 && lead < 0xF5 ? 4
                                                           : 0;
  if (length == 0 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(byte(i))) return 0;
  }
  // Overlong forms, surrogates and what lies beyond U+10FFFF.
  if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) >= 0xA0)) return 0;
  if ((lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) >= 0x90)) return 0;
  return length;
}

bool IsNonCharacter(std::string_view sequence) {
  return sequence == "\xEF\xBF\xBE" || sequence == "\xEF\xBF\xBF";
}

void AppendAscii(std::string& xml, char c) {
  switch (c) {
    case '&':
      xml += "&amp;";
      break;
    case '<':
      xml += "&lt;";
      break;
    case '>':
      xml += "&gt;";
      break;
    default:
      if (static_cast<unsigned char>(c) >= ' ' || c == '\n' || c == '\t') xml += c;
  }
}

}  // namespace

std::string XmlText(std::string_view text) {
  std::string xml;
  xml.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = SequenceLength(text);
    if (length == 1 && text.starts_with('\r') && !text.substr(1).starts_with('\n')) {
      xml += '\n';
    } else if (length == 1) {
      AppendAscii(xml, text[0]);
    } else if (length == 0) {
      xml += kReplacement;
    } else if (!IsNonCharacter(text.substr(0, length))) {
      xml += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return xml;
}

bool HasWhatXmlLeavesOut(std::string_view text) {
  constexpr std::string_view kCarried = "\t\n\r";
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool control = static_cast<unsigned char>(text[i]) < ' ';
    if (control && kCarried.find(text[i]) == std::string_view::npos) return true;
    if (IsNonCharacter(text.substr(i, 3))) return true;
  }
  return false;
}

}  // namespace desktop
