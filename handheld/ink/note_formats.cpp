#include "handheld/ink/note_formats.h"

#include <algorithm>
#include <iterator>

#include "handheld/ink/ink_note.h"
#include "handheld/ink/rich_text.h"
#include "handheld/system/code_page.h"
#include "platform/windows.h"

namespace ce::host {
namespace {

constexpr NoteFormat kFormats[] = {
    {SF_TEXT, ReadPlainText, WritePlainText},
    {SF_RTF, ReadRichText, WriteRichText},
    {SF_TEXT_UNICODE, ReadUnicodeText, WriteUnicodeText},
    {SF_INK_NOTE, ReadInkNote, WriteInkNote},
};

}  // namespace

const NoteFormat* FindNoteFormat(DWORD number) {
  const auto found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                  [&](const NoteFormat& row) { return row.number == number; });
  return found == std::end(kFormats) ? nullptr : found;
}

std::optional<std::u16string> ReadPlainText(std::string_view bytes) {
  bool wellFormed = true;  // what stands for nothing becomes U+FFFD
  return DecodeText(SystemCodePage(), bytes, wellFormed);
}

std::optional<std::string> WritePlainText(std::u16string_view text) {
  std::optional<EncodedText> encoded = EncodeText(SystemCodePage(), text, '?');
  if (!encoded) return std::nullopt;
  return std::move(encoded->bytes);
}

std::optional<std::u16string> ReadUnicodeText(std::string_view bytes) {
  if (bytes.size() % 2 != 0) return std::nullopt;
  if (bytes.starts_with("\xFF\xFE")) bytes.remove_prefix(2);
  std::u16string text(bytes.size() / 2, u'\0');
  for (std::size_t i = 0; i < text.size(); ++i) {
    text[i] = static_cast<char16_t>(static_cast<BYTE>(bytes[2 * i]) |
                                    static_cast<BYTE>(bytes[2 * i + 1]) << 8);
  }
  return text;
}

std::optional<std::string> WriteUnicodeText(std::u16string_view text) {
  std::string bytes(text.size() * 2, '\0');
  for (std::size_t i = 0; i < text.size(); ++i) {
    bytes[2 * i] = static_cast<char>(text[i] & 0xFF);
    bytes[2 * i + 1] = static_cast<char>(text[i] >> 8);
  }
  return bytes;
}

}  // namespace ce::host
