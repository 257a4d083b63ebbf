// The formats that a note is read from and written in.
//
// Between them a note is its text. CR LF parts paragraphs; every other unit is the text's own, a
// lone CR or LF and a surrogate without its partner included.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace ce::host {

inline constexpr std::size_t kMaxNoteBytes = 16u << 20;  // of a note, read or written
inline constexpr std::u16string_view kParagraphBreak = u"\r\n";

// A reader gives nothing for damaged bytes, a writer for a code page that the host does not know.
struct NoteFormat {
  DWORD number;  // as in a stream message
  std::optional<std::u16string> (*read)(std::string_view bytes);
  std::optional<std::string> (*write)(std::u16string_view text);
};

// Null for a number that stands for none.
const NoteFormat* FindNoteFormat(DWORD number);

// In the current handheld's 8-bit code page; what that lacks is written as '?'.
std::optional<std::u16string> ReadPlainText(std::string_view bytes);
std::optional<std::string> WritePlainText(std::u16string_view text);
// UTF-16LE. A byte-order mark is read over and not written; half a unit is damage.
std::optional<std::u16string> ReadUnicodeText(std::string_view bytes);
std::optional<std::string> WriteUnicodeText(std::u16string_view text);

}  // namespace ce::host
