#include "common/formats/backup/sms_backup_tags.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "common/files/stream_pieces.h"
#include "common/formats/backup/sms_backup.h"
#include "common/text/text.h"
#include "common/text/unicode.h"

namespace formats {
namespace {

constexpr std::size_t kLongestTag = 8 << 20;
constexpr std::size_t kLongestName = 1 << 15;
constexpr std::size_t kLongestReference = 17;
constexpr std::size_t kDeepest = 64;
constexpr std::string_view kPictures = "data";  // the attribute
constexpr std::string_view kReplacement = "\uFFFD";
constexpr std::string_view kCannotCarry = "characters that XML cannot carry were left out";
constexpr std::string_view kNotUtf8 = "bytes that are not UTF-8 were replaced";

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Stands for itself in a value, without a look at what follows.
bool IsPlain(char c, char quote) {
  return static_cast<unsigned char>(c) < 0x80 && (c >= 0x20 || c == '\t') && c != '&' && c != quote;
}

bool IsNameCharacter(std::string_view character, bool first) {
  if (character.empty()) return false;
  const char c = character.front();
  const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':';
  if (letter || static_cast<unsigned char>(c) >= 0x80) return true;
  return !first && ((c >= '0' && c <= '9') || c == '-' || c == '.');
}

struct Character {
  std::string_view bytes;
  std::string_view problem;  // empty for none
};

Character FirstCharacter(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x20 && !IsBlank(text.front())) return {text.substr(0, 1), kCannotCarry};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0x80 ? 2 : 1;
  const std::string_view bytes = text.substr(0, length);
  if (!text::IsValidUtf8(bytes)) return {text.substr(0, 1), kNotUtf8};
  if (bytes == "\xEF\xBF\xBE" || bytes == "\xEF\xBF\xBF") return {bytes, kCannotCarry};
  return {bytes, {}};
}

// "&...;": a number or one of XML's five names.
struct Reference {
  std::size_t length = 0;
  unsigned long number = 0;
};
constexpr std::pair<std::string_view, char> kNames[] = {
    {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

std::optional<Reference> ReadReference(std::string_view text) {
  const std::size_t end = text.substr(0, kLongestReference).find(';');
  if (!text.starts_with('&') || end == std::string_view::npos) return std::nullopt;
  Reference reference{end + 1};
  std::string_view inner = text.substr(1, end - 1);
  for (const auto& [name, c] : kNames) {
    reference.number = static_cast<unsigned char>(c);
    if (inner == name) return reference;
  }
  if (!inner.starts_with('#')) return std::nullopt;
  inner.remove_prefix(1);
  const bool hexadecimal = inner.starts_with('x') || inner.starts_with('X');
  if (hexadecimal) inner.remove_prefix(1);
  const char* const last = inner.data() + inner.size();
  const auto read = std::from_chars(inner.data(), last, reference.number, hexadecimal ? 16 : 10);
  if (read.ec != std::errc() || read.ptr != last) return std::nullopt;
  return reference;
}

bool IsHighSurrogate(unsigned long number) {
  return number >= 0xD800 && number <= 0xDBFF;
}
bool IsLowSurrogate(unsigned long number) {
  return number >= 0xDC00 && number <= 0xDFFF;
}

bool IsCarriedByXml(unsigned long number) {
  return number < 0x20 ? IsBlank(static_cast<char>(number)) : number != 0xFFFE && number != 0xFFFF;
}

}  // namespace

BackupTags::BackupTags(std::istream& in, NoticeTally& tally) : in_(in), tally_(tally) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  const std::string_view start = Ahead(kMark.size());
  if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF")) {
    Stop(line_, "the file is UTF-16; backups are UTF-8");
  } else if (start.starts_with(kMark)) {
    Advance(kMark.size());
  }
}

std::string_view BackupTags::Ahead(std::size_t least) {
  while (buffer_.size() - position_ < least) {
    const std::string_view bytes = files::ReadPiece(in_, piece_);
    if (bytes.empty()) break;
    buffer_.erase(0, position_);
    position_ = 0;
    buffer_ += bytes;
  }
  return std::string_view(buffer_).substr(position_);
}

void BackupTags::Advance(std::size_t bytes) {
  const std::string_view passed = std::string_view(buffer_).substr(position_, bytes);
  line_ += static_cast<std::size_t>(std::ranges::count(passed, '\n'));
  position_ += passed.size();
}

bool BackupTags::Stop(std::size_t line, std::string_view why) {
  tally_.Add(line, why);
  end_ = End::kStopped;
  return false;
}

bool BackupTags::StopAtDamage(const BackupTag& tag, std::string_view what) {
  return Stop(tag.line, "the file is damaged here, and only what stands before is kept: " +
                            std::string(what) + ": <" + text::Excerpt(tag.name) + ">");
}

std::optional<BackupTag> BackupTags::Next() {
  constexpr std::string_view kComment = "<!--";
  constexpr std::string_view kCdata = "<![CDATA[";
  bool going = end_ != End::kStopped;
  while (going && SkipText()) {
    const std::string_view open = Ahead(kCdata.size());
    if (open.starts_with("<?")) {
      going = SkipInstruction();
    } else if (open.starts_with(kComment)) {
      Advance(kComment.size());
      going = SkipPast("-->");
    } else if (open.starts_with(kCdata)) {
      going = SkipPast("]]>");
    } else if (open.starts_with("<!")) {
      going = Stop(line_, "a document type declaration is not accepted");
    } else {
      BackupTag tag;
      if (TakeTag(tag)) return tag;
      going = false;
    }
  }
  return std::nullopt;
}

bool BackupTags::SkipText() {
  for (bool noticed = false;;) {
    const std::string_view rest = Ahead(1);
    if (rest.starts_with('<')) return true;
    if (rest.empty()) {
      if (open_.empty()) end_ = End::kWhole;
      return false;
    }
    const std::string_view text = rest.substr(0, rest.find('<'));
    if (!noticed && !std::ranges::all_of(text, IsBlank)) {
      tally_.Add(line_, "text between the elements has no meaning and was left out");
      noticed = true;
    }
    Advance(text.size());
  }
}

bool BackupTags::SkipPast(std::string_view end) {
  for (;;) {
    const std::string_view rest = Ahead(end.size());
    if (rest.size() < end.size()) return false;
    const std::size_t at = rest.find(end);
    const bool found = at != std::string_view::npos;
    Advance(found ? at + end.size() : rest.size() - (end.size() - 1));
    if (found) return true;
  }
}

bool BackupTags::SkipInstruction() {
  constexpr std::size_t kLongestDeclaration = 200;
  constexpr std::string_view kEnd = "?>";
  constexpr std::string_view kEncoding = "encoding=";
  const std::string start(Ahead(kLongestDeclaration).substr(0, kLongestDeclaration));
  if (!SkipPast(kEnd)) return false;
  std::string_view name = std::string_view(start).substr(0, start.find(kEnd));
  const std::size_t at = name.find(kEncoding);
  if (!name.starts_with("<?xml ") || at == std::string_view::npos) return true;
  name.remove_prefix(at + kEncoding.size());
  if (name.empty()) return true;
  const char quote = name.front();
  name.remove_prefix(1);
  name = name.substr(0, name.find(quote));
  if (!text::EqualsNoCase(name, "UTF-8") && !text::EqualsNoCase(name, "US-ASCII")) {
    tally_.Add(line_, "the file is read as UTF-8, not as " + text::Excerpt(text::RepairUtf8(name)));
  }
  return true;
}

std::string_view BackupTags::NextCharacter() {
  for (;;) {
    const std::string_view rest = Ahead(4);
    if (rest.empty()) return rest;
    const Character character = FirstCharacter(rest);
    if (character.problem.empty()) return character.bytes;
    tally_.Add(line_, character.problem);
    Advance(character.bytes.size());
  }
}

bool BackupTags::Take(char c) {
  if (!NextCharacter().starts_with(c)) return false;
  Advance(1);
  return true;
}

bool BackupTags::SkipBlanks() {
  bool any = false;
  while (Take(' ') || Take('\t') || Take('\n') || Take('\r')) any = true;
  return any;
}

std::string BackupTags::TakeName() {
  std::string name;
  std::string_view character = NextCharacter();
  while (IsNameCharacter(character, name.empty()) && name.size() < kLongestName) {
    name += character;
    Advance(character.size());
    character = NextCharacter();
  }
  return name;
}

bool BackupTags::TakeTag(BackupTag& tag) {
  constexpr std::size_t kCostOfAny = 64;
  tag.line = line_;
  Advance(1);
  tag.ends = Take('/');
  tag.starts = !tag.ends;
  tag.name = TakeName();
  std::size_t bytes = 0;
  for (bool separated = SkipBlanks(); !Take('>'); separated = SkipBlanks()) {
    if (tag.starts && Take('/')) {
      tag.ends = true;
      if (Take('>')) break;
    }
    if (tag.ends || !separated || !TakeAttribute(tag)) {
      return SkipTag() && StopAtDamage(tag, "a tag that cannot be read");
    }
    const auto& [name, value] = tag.attributes.list.back();
    bytes += kCostOfAny + name.size() + value.size();
    if (bytes > kLongestTag) return Stop(line_, "an element this long is not read");
  }
  return Nest(tag);
}

// The rest of one that cannot be read. False when the file ends before it does.
bool BackupTags::SkipTag() {
  for (std::string ignored;;) {
    const std::string_view character = NextCharacter();
    if (character.empty()) return false;
    const char c = character.front();
    Advance(character.size());
    if (c == '>') return true;
    if ((c == '"' || c == '\'') && !TakeValue(kPictures, c, ignored)) return false;
  }
}

bool BackupTags::Nest(BackupTag& tag) {
  std::vector<std::string_view> names;
  for (const auto& [name, value] : tag.attributes.list) names.push_back(name);
  std::ranges::sort(names);
  if (tag.name.empty()) return StopAtDamage(tag, "a tag without a name");
  if (std::ranges::adjacent_find(names) != names.end()) {
    return StopAtDamage(tag, "an attribute that comes twice");
  }
  if (tag.starts) {
    if (open_.empty() && anyElement_) return StopAtDamage(tag, "an element after the last");
    if (open_.size() == kDeepest) return Stop(tag.line, "elements are nested too deeply");
    anyElement_ = true;
    open_.push_back(tag.name);
  }
  tag.depth = open_.size();
  if (!tag.ends) return true;
  if (open_.empty() || open_.back() != tag.name) {
    return StopAtDamage(tag, "the end of what has not begun");
  }
  open_.pop_back();
  return true;
}

bool BackupTags::TakeAttribute(BackupTag& tag) {
  std::string name = TakeName();
  SkipBlanks();
  if (name.empty() || !Take('=')) return false;
  SkipBlanks();
  std::string value;
  const bool taken = Take('"')    ? TakeValue(name, '"', value)
                     : Take('\'') ? TakeValue(name, '\'', value)
                                  : false;
  if (taken) tag.attributes.list.emplace_back(std::move(name), std::move(value));
  return taken;
}

bool BackupTags::TakeValue(std::string_view name, char quote, std::string& value) {
  const bool isPicture = name == kPictures;
  bool keeps = !isPicture;
  // What cannot be parted is kept whole or not at all.
  const auto append = [&](std::string_view text, bool canBeParted) {
    const std::size_t room = kLongestBackupValue - value.size();
    if (!keeps) return;
    if (text.size() <= room || canBeParted) value += text.substr(0, room);
    if (text.size() <= room) return;
    tally_.Add(line_, text::Excerpt(name) + ": cut off after " +
                          std::to_string(kLongestBackupValue) + " bytes");
    keeps = false;
  };
  for (;;) {
    const std::string_view rest = Ahead(4);
    if (rest.empty()) return false;
    const auto end = std::ranges::find_if_not(rest, [&](char c) { return IsPlain(c, quote); });
    if (end != rest.begin()) {
      const std::string_view run = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
      append(run, true);
      Advance(run.size());
      continue;
    }
    if (rest.front() == quote) {
      Advance(1);
      return true;
    }
    if (rest.front() == '&') {
      append(TakeReference(), false);
      continue;
    }
    const Character character = FirstCharacter(rest);
    std::string_view text = character.bytes;
    if (text == "\r") text = rest.substr(1).starts_with('\n') ? "" : "\n";
    if (!character.problem.empty()) {
      const bool isText = character.problem == kNotUtf8;
      text = isText ? kReplacement : "";
      if (!isText || !isPicture) tally_.Add(line_, character.problem);
    }
    append(text, false);
    Advance(character.bytes.size());
  }
}

// Backups have a character beyond U+FFFF as two references, one for each half of its pair.
std::string BackupTags::TakeReference() {
  const std::string_view rest = Ahead(2 * kLongestReference);
  const std::optional<Reference> reference = ReadReference(rest);
  if (!reference) {
    Advance(1);
    return "&";
  }
  const unsigned long number = reference->number;
  std::size_t length = reference->length;
  std::u16string units(1, static_cast<char16_t>(number));
  if (!IsCarriedByXml(number)) {
    tally_.Add(line_, kCannotCarry);
    units.clear();
  } else if (number > 0x10FFFF) {
    tally_.Add(line_, "numbers that are no characters were replaced");
    units = u"\uFFFD";
  } else if (number > 0xFFFF) {
    units = {static_cast<char16_t>(0xD7C0 + (number >> 10)),
             static_cast<char16_t>(0xDC00 + (number & 0x3FF))};
  } else if (IsHighSurrogate(number) || IsLowSurrogate(number)) {
    const std::optional<Reference> low = ReadReference(rest.substr(length));
    if (IsHighSurrogate(number) && low && IsLowSurrogate(low->number)) {
      units += static_cast<char16_t>(low->number);
      length += low->length;
    } else {
      tally_.Add(line_, "halves of surrogate pairs were replaced");
    }
  }
  Advance(length);
  return text::ToUtf8Lossy(units);
}

}  // namespace formats
