#include "common/text/xml_text.h"

#include <algorithm>
#include <iterator>

#include "common/text/unicode.h"

namespace text {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

constexpr Range kNameStart[] = {
    {':', ':'},       {'A', 'Z'},       {'_', '_'},       {'a', 'z'},
    {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
    {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
constexpr Range kNameOther[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

template <std::size_t N>
bool Contains(const Range (&ranges)[N], char32_t code) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [code](Range range) { return code >= range.first && code <= range.last; });
}

// U+FFFE and U+FFFF, three bytes each.
bool IsNonCharacter(std::string_view sequence) {
  return sequence == "\xEF\xBF\xBE" || sequence == "\xEF\xBF\xBF";
}

// True for every byte beyond ASCII.
bool IsCarried(char c) {
  return static_cast<unsigned char>(c) >= ' ' || c == '\n' || c == '\t';
}

}  // namespace

std::u16string XmlCharacters(std::u16string_view text) {
  std::u16string kept;
  kept.reserve(text.size());
  while (!text.empty()) {
    const std::u16string_view from = text;
    const char32_t character = TakeCharacter(text);
    if (character >= 0x10000 || IsXmlUnit(static_cast<char16_t>(character))) {
      kept += from.substr(0, from.size() - text.size());
    }
  }
  return kept;
}

bool IsXmlName(std::u16string_view text) {
  if (text.empty() || !Contains(kNameStart, TakeCharacter(text))) return false;
  while (!text.empty()) {
    const char32_t code = TakeCharacter(text);
    if (!Contains(kNameStart, code) && !Contains(kNameOther, code)) return false;
  }
  return true;
}

bool IsXmlSpace(std::u16string_view text) {
  return text.find_first_not_of(u" \t\r\n") == std::u16string_view::npos;
}

std::string XmlText(std::string_view text) {
  if (text.empty()) return {};
  const std::string valid = RepairUtf8(text);
  std::string xml;
  xml.reserve(valid.size());
  for (std::string_view rest = valid; !rest.empty(); rest.remove_prefix(1)) {
    const char c = rest.front();
    if (c == '&') {
      xml += "&amp;";
    } else if (c == '<') {
      xml += "&lt;";
    } else if (c == '>') {
      xml += "&gt;";
    } else if (c == '\r' && !rest.starts_with("\r\n")) {
      xml += '\n';
    } else if (IsNonCharacter(rest.substr(0, 3))) {
      rest.remove_prefix(2);
    } else if (IsCarried(c)) {
      xml += c;
    }
  }
  return xml;
}

bool HasWhatXmlLeavesOut(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!IsCarried(text[i]) && text[i] != '\r') return true;
    if (IsNonCharacter(text.substr(i, 3))) return true;
  }
  return false;
}

}  // namespace text
