#include "handheld/ink/note_formats.h"

#include <algorithm>
#include <iterator>

#include "common/text/code_page.h"
#include "common/text/unicode.h"
#include "handheld/ink/ink_note.h"
#include "handheld/ink/rich_text.h"
#include "handheld/system/language.h"
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
  return text::DecodeText(SystemCodePage(), bytes, wellFormed);
}

std::optional<std::string> WritePlainText(std::u16string_view text) {
  std::optional<text::EncodedText> encoded = text::EncodeText(SystemCodePage(), text, '?');
  if (!encoded) return std::nullopt;
  return std::move(encoded->bytes);
}

std::optional<std::u16string> ReadUnicodeText(std::string_view bytes) {
  if (bytes.size() % 2 != 0) return std::nullopt;
  if (bytes.starts_with("\xFF\xFE")) bytes.remove_prefix(2);
  return text::FromUtf16Le(bytes);
}

std::optional<std::string> WriteUnicodeText(std::u16string_view text) {
  return text::ToUtf16Le(text);
}

}  // namespace ce::host
