#include <string>

#include "handheld/ink/note_formats.h"
#include "handheld/ink/rich_text.h"

namespace ce::host {
namespace {

constexpr std::string_view kPrologue =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fnil\\fcharset0 Tahoma;}}\r\n"
    "\\uc1\\pard\\plain\\f0\\fs20 ";
constexpr std::string_view kParagraph = "\\par\r\n";
constexpr std::string_view kClosing = "}\r\n";

void AddRichUnit(std::string& document, char16_t unit) {
  switch (unit) {
    case u'\\':
    case u'{':
    case u'}':
      document += '\\';
      document += static_cast<char>(unit);
      return;
    case u'\t':
      document += "\\tab ";
      return;
    case u'\r':
    case u'\n':
      document += "\\line ";
      return;
    default:
      break;
  }
  if (unit >= 0x20 && unit < 0x7F) {
    document += static_cast<char>(unit);
    return;
  }
  // The number is signed.
  document += "\\u" + std::to_string(static_cast<std::int16_t>(unit)) + '?';
}

}  // namespace

std::optional<std::string> WriteRichText(std::u16string_view text) {
  std::string document(kPrologue);
  while (!text.empty()) {
    if (text.starts_with(kParagraphBreak)) {
      document += kParagraph;
      text.remove_prefix(kParagraphBreak.size());
      continue;
    }
    AddRichUnit(document, text.front());
    text.remove_prefix(1);
  }
  document += kParagraph;
  document += kClosing;
  return document;
}

}  // namespace ce::host
