#include <algorithm>
#include <vector>

#include "common/text/little_endian.h"
#include "handheld/ink/ink_note.h"
#include "handheld/ink/note_formats.h"

namespace ce::host {
namespace {

// The stream, three bytes a unit at most, must fit the paragraph's 16-bit lengths.
constexpr std::size_t kMaxParagraphUnits = 20000;
// What a list's zone has room for.
constexpr std::size_t kMaxListed =
    (0xFFFF * ink::kZoneUnit - ink::kListHeadBytes) / ink::kListEntryBytes;
constexpr std::size_t kFontHeadBytes = 16;
constexpr std::size_t kFontEntryBytes = 80;
constexpr std::size_t kFontNameAt = 16;
constexpr std::u16string_view kFontName = u"Tahoma";
constexpr WORD kNoBullet = 0xFF;

struct Piece {
  std::u16string_view text;
  bool joined = false;  // goes on where the piece before it ended
};

std::vector<Piece> Split(std::u16string_view text) {
  std::vector<Piece> pieces;
  while (true) {
    const std::size_t end = text.find(kParagraphBreak);
    std::u16string_view paragraph = text.substr(0, end);
    bool joined = false;
    do {
      pieces.push_back({paragraph.substr(0, kMaxParagraphUnits), joined});
      paragraph.remove_prefix(pieces.back().text.size());
      joined = true;
    } while (!paragraph.empty());
    if (end == std::u16string_view::npos) return pieces;
    text.remove_prefix(end + kParagraphBreak.size());
  }
}

void AddUnit(std::string& stream, char16_t unit) {
  if (unit == u'\t') {
    stream.push_back(static_cast<char>(ink::kSpecial));
    stream.push_back(static_cast<char>(ink::kTab));
  } else if (unit != 0 && unit < 0x80) {
    stream.push_back(static_cast<char>(unit));
  } else if (unit >= 0x80 && unit <= 0xFF) {
    stream.push_back(static_cast<char>(ink::kLatin));
    stream.push_back(static_cast<char>(unit));
  } else if (unit > 0xFF && unit < 0x4000) {
    stream.push_back(static_cast<char>(ink::kFirstLead | (unit & 0x3F)));
    stream.push_back(static_cast<char>(unit >> 6));
  } else {
    stream.push_back(static_cast<char>(ink::kAnyUnit));
    text::PutHalfWord(stream, unit);
  }
}

std::string StreamOf(const Piece& piece) {
  std::string stream;
  if (piece.joined) {
    stream.push_back(static_cast<char>(ink::kSpecial));
    stream.push_back(static_cast<char>(ink::kPrivate));
    stream += ink::kJoined;
  }
  for (const char16_t unit : piece.text) AddUnit(stream, unit);
  stream.push_back(static_cast<char>(ink::kSpecial));
  stream.push_back(static_cast<char>(ink::kEndOfStream));
  return stream;
}

void AddZone(std::string& note, WORD type, std::size_t id, std::string data) {
  data.resize((data.size() + ink::kZoneUnit - 1) / ink::kZoneUnit * ink::kZoneUnit);
  text::PutHalfWord(note, type);
  text::PutHalfWord(note, id);
  text::PutHalfWord(note, data.size() / ink::kZoneUnit);
  note += data;
}

std::string Fonts() {
  std::string data(kFontHeadBytes + kFontEntryBytes, '\0');
  data[4] = 1;  // how many
  for (std::size_t i = 0; i < kFontName.size(); ++i) {
    data[kFontHeadBytes + kFontNameAt + 2 * i] = static_cast<char>(kFontName[i]);
  }
  return data;
}

// Ids start over when the list is full: a note that repeats them is read in the file's order.
std::size_t IdOf(std::size_t index) {
  return index % kMaxListed + 1;
}

std::string ListOf(const std::vector<Piece>& pieces) {
  std::string data(ink::kListHeadBytes, '\0');
  for (std::size_t i = 0; i < std::min(pieces.size(), kMaxListed); ++i) {
    text::PutHalfWord(data, 1);
    text::PutHalfWord(data, pieces[i].text.size() + 1);
    text::PutHalfWord(data, IdOf(i));
    text::PutHalfWord(data, 0);
  }
  return data;
}

std::string ParagraphOf(const Piece& piece) {
  const std::string stream = StreamOf(piece);
  std::string data;
  text::PutHalfWord(data, piece.text.size() + 1);
  text::PutHalfWord(data, stream.size());
  text::PutHalfWord(data, 1);       // lines
  text::PutHalfWord(data, 0xFFFF);  // marker
  data.resize(ink::kParagraphHeadBytes);
  data[18] = static_cast<char>(kNoBullet);
  return data + stream;
}

}  // namespace

std::optional<std::string> WriteInkNote(std::u16string_view text) {
  const std::vector<Piece> pieces = Split(text);
  std::string note(ink::kMagic);
  text::PutHalfWord(note, ink::kNewestVersion);
  text::PutHalfWord(note, 0);
  AddZone(note, ink::kFonts, 0, Fonts());
  AddZone(note, ink::kParagraphList, 0, ListOf(pieces));
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    AddZone(note, ink::kParagraph, IdOf(i), ParagraphOf(pieces[i]));
  }
  AddZone(note, ink::kEnd, 0, {});
  return note;
}

}  // namespace ce::host
