// Any bytes as rich text: what can be read comes out of a document of our own again. Lone line
// breaks become ones of a paragraph.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "handheld/ink/rich_text.h"

namespace {

using ce::host::ReadRichText;
using ce::host::WriteRichText;

std::u16string WithWholeBreaks(const std::u16string& text) {
  std::u16string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != u'\r' && text[i] != u'\n') {
      result += text[i];
      continue;
    }
    result += u"\r\n";
    if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
  }
  return result;
}

void RequireRoundTrip(const std::u16string& text) {
  if (ReadRichText(*WriteRichText(text)) != WithWholeBreaks(text)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (const auto text = ReadRichText(bytes)) RequireRoundTrip(*text);
  // Few bytes begin as a document does.
  const std::string document = "{\\rtf1 " + std::string(bytes) + "}";
  if (const auto text = ReadRichText(document)) RequireRoundTrip(*text);
  return 0;
}
