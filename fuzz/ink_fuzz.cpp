// Any bytes as a note: what can be read comes out of a note of our own again, and so do the bytes
// themselves as a text.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "handheld/ink/ink_note.h"
#include "handheld/ink/note_formats.h"

namespace {

using ce::host::ReadInkNote;
using ce::host::WriteInkNote;

void RequireRoundTrip(const std::u16string& text) {
  if (ReadInkNote(*WriteInkNote(text)) != text) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (const auto text = ReadInkNote(bytes)) RequireRoundTrip(*text);
  if (const auto text = ce::host::ReadUnicodeText(bytes)) RequireRoundTrip(*text);
  return 0;
}
