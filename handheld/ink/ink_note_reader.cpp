#include <array>
#include <unordered_map>
#include <vector>

#include "common/text/little_endian.h"
#include "handheld/ink/ink_note.h"
#include "handheld/ink/note_formats.h"

namespace ce::host {
namespace {

BYTE ByteAt(std::string_view bytes, std::size_t at) {
  return static_cast<BYTE>(bytes[at]);
}

struct Paragraph {
  WORD id;
  std::string_view stream;
};

struct Zones {
  std::vector<Paragraph> paragraphs;  // as in the file
  std::vector<WORD> listed;           // ids, in the text's order
};

void AddListed(std::string_view zone, std::vector<WORD>& listed) {
  for (std::size_t at = ink::kListHeadBytes; at + ink::kListEntryBytes <= zone.size();
       at += ink::kListEntryBytes) {
    listed.push_back(text::HalfWordAt(zone, at + 4));
  }
}

// False when a zone is cut off.
bool ReadZones(std::string_view bytes, Zones& zones) {
  while (!bytes.empty()) {
    if (bytes.size() < 2) return false;
    const WORD type = text::HalfWordAt(bytes, 0);
    if (type == ink::kEnd) return true;
    if (bytes.size() < ink::kZoneHeaderBytes) return false;
    const WORD id = text::HalfWordAt(bytes, 2);
    std::size_t length = text::HalfWordAt(bytes, 4);
    length = type == ink::kObjectData ? length | std::size_t{id} << 16 : length * ink::kZoneUnit;
    bytes.remove_prefix(ink::kZoneHeaderBytes);
    if (length > bytes.size()) return false;
    const std::string_view zone = bytes.substr(0, length);
    if (type == ink::kParagraphList) AddListed(zone, zones.listed);
    if (type == ink::kParagraph) {
      if (length < ink::kParagraphHeadBytes) return false;
      zones.paragraphs.push_back({id, zone.substr(ink::kParagraphHeadBytes)});
    }
    bytes.remove_prefix(length);
  }
  return true;  // a note without its end has all its zones
}

// The streams in the order of the text.
std::vector<std::string_view> InOrder(const Zones& zones) {
  std::vector<std::string_view> inFile;
  std::unordered_map<WORD, std::size_t> byId;
  bool repeated = false;
  for (const Paragraph& paragraph : zones.paragraphs) {
    repeated |= !byId.emplace(paragraph.id, inFile.size()).second;
    inFile.push_back(paragraph.stream);
  }
  std::vector<std::string_view> ordered;
  std::vector<bool> taken(inFile.size());
  for (const WORD id : zones.listed) {
    const auto found = byId.find(id);
    if (found == byId.end()) continue;  // strokes, or nothing at all
    repeated |= taken[found->second];
    taken[found->second] = true;
    ordered.push_back(inFile[found->second]);
  }
  if (repeated) return inFile;
  for (std::size_t i = 0; i < inFile.size(); ++i) {
    if (!taken[i]) ordered.push_back(inFile[i]);
  }
  return ordered;
}

// How many bytes follow a control that carries no text.
constexpr std::size_t ParameterBytes(BYTE control) {
  switch (control) {
    case 0xC2:  // a drawing's zone
    case 0xC3:
    case 0xC5:  // an object's zone
    case 0xE5:  // font
    case 0xE6:  // size
    case 0xE7:  // colour
    case 0xE8:  // weight
      return 2;
    case 0xE9:  // italic
    case 0xEA:  // underline
    case 0xEB:  // struck out
    case 0xEC:  // highlighted
      return 1;
    case 0xEF:
      return 3;
    case 0xF1:
      return 7;
    default:
      return 0;
  }
}

constexpr std::size_t SpecialParameterBytes(BYTE special) {
  if (special == 0x19) return 2;
  return special == ink::kPrivate ? 6 : 0;
}

// One paragraph's stream, read unit by unit.
class StreamReader {
 public:
  StreamReader(std::string_view stream, std::u16string& text) : rest_(stream), text_(text) {}

  // False when the stream ends before its end is told.
  bool Read() {
    while (!rest_.empty() && !ended_) {
      const BYTE first = ByteAt(rest_, 0);
      const bool whole = first < ink::kFirstControl ? ReadCharacter(first) : ReadControl(first);
      if (!whole) return false;
    }
    return ended_;
  }

 private:
  bool ReadCharacter(BYTE first) {
    if (first < ink::kFirstLead) {
      text_.push_back(first);
      return Skip(1);
    }
    if (rest_.size() < 2) return false;
    text_.push_back(static_cast<char16_t>((first & 0x3F) | ByteAt(rest_, 1) << 6));
    return Skip(2);
  }

  bool ReadControl(BYTE control) {
    switch (control) {
      case ink::kAnyUnit:
        if (rest_.size() < 3) return false;
        text_.push_back(text::HalfWordAt(rest_, 1));
        return Skip(3);
      case ink::kLatin:
        if (rest_.size() < 2) return false;
        text_.push_back(ByteAt(rest_, 1));
        return Skip(2);
      case ink::kSpecial:
        return ReadSpecial();
      default:
        return Skip(1 + ParameterBytes(control));
    }
  }

  bool ReadSpecial() {
    if (rest_.size() < 2) return false;
    const BYTE special = ByteAt(rest_, 1);
    ended_ = special == ink::kEndOfStream;
    if (special == ink::kTab) text_.push_back(u'\t');
    return Skip(2 + SpecialParameterBytes(special));
  }

  bool Skip(std::size_t bytes) {
    if (bytes > rest_.size()) return false;
    rest_.remove_prefix(bytes);
    return true;
  }

  std::string_view rest_;
  std::u16string& text_;
  bool ended_ = false;
};

bool IsJoined(std::string_view stream) {
  constexpr char kStart[] = {static_cast<char>(ink::kSpecial), static_cast<char>(ink::kPrivate)};
  return stream.starts_with(std::string_view(kStart, sizeof kStart)) &&
         stream.substr(sizeof kStart).starts_with(ink::kJoined);
}

}  // namespace

std::optional<std::u16string> ReadInkNote(std::string_view bytes) {
  if (bytes.size() < ink::kHeaderBytes || !bytes.starts_with(ink::kMagic)) return std::nullopt;
  const WORD version = text::HalfWordAt(bytes, ink::kMagic.size());
  if (version < ink::kOldestVersion || version > ink::kNewestVersion) return std::nullopt;
  Zones zones;
  if (!ReadZones(bytes.substr(ink::kHeaderBytes), zones)) return std::nullopt;
  std::u16string text;
  bool isFirst = true;
  for (const std::string_view stream : InOrder(zones)) {
    if (!isFirst && !IsJoined(stream)) text += kParagraphBreak;
    isFirst = false;
    if (!StreamReader(stream, text).Read()) return std::nullopt;
  }
  return text;
}

}  // namespace ce::host
