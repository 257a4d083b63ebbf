// The ink-note format (.pwi): a header, and zones of which the paragraphs hold the text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace ce::host {

namespace ink {

inline constexpr std::string_view kMagic{"\x7B\x5C\x70\x77\x69\x15\x00\x00\x01\x01", 10};
inline constexpr std::size_t kHeaderBytes = 14;  // the magic, u16 version, u16 0
inline constexpr WORD kOldestVersion = 6;
inline constexpr WORD kNewestVersion = 7;

// Zones: u16 type, u16 id, u16 length in units of 4 bytes.
inline constexpr std::size_t kZoneHeaderBytes = 6;
inline constexpr std::size_t kZoneUnit = 4;
inline constexpr WORD kFonts = 0x00;
inline constexpr WORD kParagraphList = 0x40;
inline constexpr WORD kParagraph = 0x41;
inline constexpr WORD kObjectData = 0x55;  // length in bytes; the id is its high word
inline constexpr WORD kEnd = 0x82;

inline constexpr std::size_t kListHeadBytes = 24;
inline constexpr std::size_t kListEntryBytes = 8;  // u16 lines, u16 characters, u16 zone id, u16 0
inline constexpr std::size_t kParagraphHeadBytes = 24;

// The stream of a paragraph. A byte below 0x80 is a character; one below 0xC0 holds a character's
// low six bits, and the next byte its high ones.
inline constexpr BYTE kFirstLead = 0x80;
inline constexpr BYTE kFirstControl = 0xC0;
inline constexpr BYTE kAnyUnit = 0xC0;  // our own: the unit's low byte, its high byte
inline constexpr BYTE kLatin = 0xC1;    // one byte: a character up to U+00FF
inline constexpr BYTE kSpecial = 0xC4;  // one byte says which
inline constexpr BYTE kEndOfStream = 0x00;
inline constexpr BYTE kTab = 0x04;
inline constexpr BYTE kPrivate = 0x1B;  // six bytes, which other readers pass over
// At the start of a stream, after kSpecial and kPrivate: our own mark that the paragraph goes on
// where the one before it ended.
inline constexpr std::string_view kJoined = "joined";

}  // namespace ink

// The text of a note, its paragraphs parted by CR LF. They come in the order of the paragraph list,
// those that it does not name behind the others; where ids are given twice, in the file's order.
// Strokes are no text. Nothing when a zone is cut off or a stream does not end in its zone.
std::optional<std::u16string> ReadInkNote(std::string_view bytes);

// Any text; reading gives it again, unit by unit. A paragraph of more than 20,000 units is carried
// in several, all but the first marked as joined.
std::optional<std::string> WriteInkNote(std::u16string_view text);

}  // namespace ce::host
