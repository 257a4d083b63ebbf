#include "common/formats/backup/sms_backup_tags.h"

#include <algorithm>

#include "common/formats/backup/sms_backup.h"
#include "common/formats/backup/sms_backup_references.h"
#include "common/text/text.h"

namespace formats {
namespace {

constexpr std::size_t kLongestTag = 8 << 20;  // the parser takes no more than 10 million bytes
constexpr std::size_t kLongestName = 64;
constexpr std::size_t kLongestInstruction = 200;
constexpr std::string_view kReplacement = "&#65533;";
constexpr std::string_view kCannotCarry = "characters that XML cannot carry were left out";
constexpr std::string_view kNotUtf8 = "bytes that are not UTF-8 were replaced";

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20;
}

// Nothing of a value's meaning, in it or at its ends.
bool IsPlain(char c, char quote) {
  return !IsControl(c) && static_cast<unsigned char>(c) < 0x80 && c != '&' && c != '<' &&
         c != quote;
}

std::size_t Utf8Length(unsigned char lead) {
  if (lead >= 0xF0) return 4;
  return lead >= 0xE0 ? 3 : 2;
}

bool IsCarriedByXml(unsigned long c) {
  return (c >= 0x20 && c != 0xFFFE && c != 0xFFFF) || c == '\t' || c == '\n' || c == '\r';
}

}  // namespace

void BackupTags::Feed(std::string_view bytes) {
  if (stopped()) return;
  buffer_.erase(0, position_);
  position_ = 0;
  buffer_ += bytes;
  Run();
}

bool BackupTags::End() {
  atEnd_ = true;
  if (!stopped()) Run();
  return state_ == State::kText || state_ == State::kStart || stopped();
}

void BackupTags::Run() {
  Step step = Step::kTaken;
  while (step == Step::kTaken && !stopped() && position_ < buffer_.size()) {
    switch (state_) {
      case State::kStart:
        step = TakeStart();
        break;
      case State::kText:
        step = TakeText();
        break;
      case State::kSkipping:
        step = TakeSkipped();
        break;
      case State::kTag:
        step = TakeInTag();
        break;
      case State::kValue:
        step = TakeInValue();
        break;
      case State::kStopped:
        break;
    }
  }
}

void BackupTags::Advance(std::size_t bytes) {
  const std::string_view passed = rest().substr(0, bytes);
  line_ += static_cast<std::size_t>(std::count(passed.begin(), passed.end(), '\n'));
  position_ += passed.size();
}

void BackupTags::StopWith(std::string_view why) {
  tally_.Add(line_, why);
  Stop();
}

BackupTags::Step BackupTags::TakeStart() {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (rest().size() < kMark.size() && !atEnd_) return Step::kNeedsMore;
  if (rest().starts_with("\xFF\xFE") || rest().starts_with("\xFE\xFF")) {
    StopWith("the file is UTF-16; backups are UTF-8");
    return Step::kTaken;
  }
  if (rest().starts_with(kMark)) Advance(kMark.size());
  state_ = State::kText;
  return Step::kTaken;
}

BackupTags::Step BackupTags::TakeText() {
  constexpr std::string_view kComment = "<!--";
  constexpr std::string_view kCdata = "<![CDATA[";
  const std::size_t length = std::min(rest().find('<'), rest().size());
  if (length > 0) {
    const std::string_view text = rest().substr(0, length);
    if (!textNoticed_ && !std::all_of(text.begin(), text.end(), IsBlank)) {
      tally_.Add(line_, "text between the elements has no meaning and was left out");
      textNoticed_ = true;
    }
    Advance(length);
    return Step::kTaken;
  }
  const std::string_view open = rest().substr(0, kCdata.size());
  if (!atEnd_ && (open == "<" || (open.size() < kCdata.size() && open[1] == '!'))) {
    return Step::kNeedsMore;
  }
  textNoticed_ = false;
  if (open.starts_with("<?")) {
    BeginSkipping("?>", true);
  } else if (open.starts_with(kComment)) {
    Advance(kComment.size());
    BeginSkipping("-->", false);
  } else if (open == kCdata) {
    BeginSkipping("]]>", false);
  } else if (open.starts_with("<!")) {
    StopWith("a document type declaration is not accepted");
  } else {
    state_ = State::kTag;
    tagLine_ = line_;
    tag_ = "<";
    name_.clear();
    nameEnded_ = false;
    Advance(1);
  }
  return Step::kTaken;
}

void BackupTags::BeginSkipping(std::string_view end, bool isInstruction) {
  state_ = State::kSkipping;
  skipEnd_ = end;
  isInstruction_ = isInstruction;
  instruction_.clear();
}

BackupTags::Step BackupTags::TakeSkipped() {
  const std::size_t end = rest().find(skipEnd_);
  const bool found = end != std::string_view::npos;
  // The last bytes may be the beginning of the end.
  const std::size_t kept = std::min(rest().size(), skipEnd_.size() - 1);
  const std::size_t length = found ? end : rest().size() - kept;
  if (isInstruction_ && instruction_.size() < kLongestInstruction) {
    instruction_ += rest().substr(0, std::min(length, kLongestInstruction));
  }
  Advance(length);
  if (!found) return Step::kNeedsMore;
  if (isInstruction_) CheckEncoding();
  Advance(skipEnd_.size());
  state_ = State::kText;
  return Step::kTaken;
}

void BackupTags::CheckEncoding() {
  const std::string_view text = instruction_;
  if (!text.starts_with("<?xml ")) return;
  const std::size_t at = text.find("encoding=");
  if (at == std::string_view::npos) return;
  std::string_view name = text.substr(at + std::string_view("encoding=").size());
  if (name.empty()) return;
  const char quote = name.front();
  name.remove_prefix(1);
  name = name.substr(0, name.find(quote));
  if (EqualsNoCase(name, "UTF-8") || EqualsNoCase(name, "US-ASCII")) return;
  tally_.Add(line_, "the file is read as UTF-8, not as " + Excerpt(RepairUtf8(name)));
}

BackupTags::Step BackupTags::TakeInTag() {
  const char c = rest().front();
  if (tag_.size() > kLongestTag) {
    StopWith("an element this long is not read");
    return Step::kTaken;
  }
  if (IsBlank(c)) {
    tag_ += ' ';
    nameEnded_ = true;
  } else if (c == '"' || c == '\'') {
    tag_ += c;
    quote_ = c;
    dropsValue_ = name_ == "data";
    cutsValue_ = false;
    valueBytes_ = 0;
    state_ = State::kValue;
  } else if (c == '>') {
    Advance(1);
    EndTag();
    return Step::kTaken;
  } else if (IsControl(c) || static_cast<unsigned char>(c) >= 0x80) {
    return TakeCharacter(tag_, false);
  } else {
    tag_ += c;
    if (c != '=') {
      if (nameEnded_) name_.clear();
      nameEnded_ = false;
      if (name_.size() < kLongestName) name_ += c;
    }
  }
  Advance(1);
  return Step::kTaken;
}

void BackupTags::EndTag() {
  tag_ += '>';
  state_ = State::kText;
  sink_(tag_, tagLine_);
}

BackupTags::Step BackupTags::TakeInValue() {
  const char c = rest().front();
  if (c == quote_) {
    tag_ += c;
    nameEnded_ = true;
    state_ = State::kTag;
  } else if (c == '&') {
    return TakeReference();
  } else if (c == '<') {
    AppendToValue("&lt;", 1);
  } else if (c == '\r') {
    if (rest().size() < 2 && !atEnd_) return Step::kNeedsMore;
    if (!rest().substr(1).starts_with('\n')) AppendToValue("&#10;", 1);
  } else if (c == '\n') {
    AppendToValue("&#10;", 1);
  } else if (c == '\t') {
    AppendToValue("&#9;", 1);
  } else if (IsPlain(c, quote_)) {
    return TakePlainRun();
  } else {
    return TakeCharacter(tag_, true);
  }
  Advance(1);
  return Step::kTaken;
}

BackupTags::Step BackupTags::TakePlainRun() {
  const std::string_view text = rest();
  const auto end =
      std::find_if_not(text.begin(), text.end(), [this](char c) { return IsPlain(c, quote_); });
  const std::string_view run = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  const std::size_t room = kLongestBackupValue - std::min(kLongestBackupValue, valueBytes_);
  if (room > 0) AppendToValue(run.substr(0, room), std::min(run.size(), room));
  if (run.size() > room) AppendToValue(run.substr(room), run.size() - room);
  Advance(run.size());
  return Step::kTaken;
}

// A control character, or one beyond ASCII.
BackupTags::Step BackupTags::TakeCharacter(std::string& out, bool inValue) {
  const char c = rest().front();
  if (IsControl(c)) {
    tally_.Add(line_, kCannotCarry);
    Advance(1);
    return Step::kTaken;
  }
  const std::size_t length = Utf8Length(static_cast<unsigned char>(c));
  if (rest().size() < length && !atEnd_) return Step::kNeedsMore;
  const std::string_view sequence = rest().substr(0, length);
  if (sequence.size() < length || !IsValidUtf8(sequence)) {
    if (!dropsValue_ || !inValue) tally_.Add(line_, kNotUtf8);
    if (inValue) AppendToValue(kReplacement, 3);
    Advance(1);
    return Step::kTaken;
  }
  if (sequence == "\xEF\xBF\xBE" || sequence == "\xEF\xBF\xBF") {
    tally_.Add(line_, kCannotCarry);
  } else if (inValue) {
    AppendToValue(sequence, length);
  } else {
    out += sequence;
  }
  Advance(length);
  return Step::kTaken;
}

BackupTags::Step BackupTags::TakeReference() {
  if (!atEnd_ && IsReferenceCutOff(rest())) return Step::kNeedsMore;
  const std::optional<Reference> reference = ReadReference(rest());
  if (!reference) {
    AppendToValue("&amp;", 1);
    Advance(1);
    return Step::kTaken;
  }
  const std::string_view following = rest().substr(reference->length);
  if (!reference->isNumber) {
    AppendToValue(rest().substr(0, reference->length), 1);
  } else if (IsHighSurrogate(reference->number)) {
    if (!atEnd_ && IsReferenceCutOff(following)) return Step::kNeedsMore;
    const std::optional<Reference> low = ReadReference(following);
    if (low && low->isNumber && IsLowSurrogate(low->number)) {
      AppendCodePoint(0x10000 + ((reference->number - 0xD800) << 10) + (low->number - 0xDC00));
      Advance(low->length);
    } else {
      AppendCodePoint(reference->number);
    }
  } else {
    AppendCodePoint(reference->number);
  }
  Advance(reference->length);
  return Step::kTaken;
}

void BackupTags::AppendCodePoint(unsigned long codePoint) {
  if (!IsCarriedByXml(codePoint)) {
    tally_.Add(line_, kCannotCarry);
  } else if (IsHighSurrogate(codePoint) || IsLowSurrogate(codePoint)) {
    tally_.Add(line_, "halves of surrogate pairs were replaced");
    AppendToValue(kReplacement, 3);
  } else if (codePoint > 0x10FFFF) {
    tally_.Add(line_, "numbers that are no characters were replaced");
    AppendToValue(kReplacement, 3);
  } else {
    const std::size_t bytes = codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : 3;
    AppendToValue("&#" + std::to_string(codePoint) + ";", codePoint > 0xFFFF ? 4 : bytes);
  }
}

void BackupTags::AppendToValue(std::string_view written, std::size_t bytes) {
  if (dropsValue_ || cutsValue_) return;
  if (valueBytes_ + bytes > kLongestBackupValue) {
    tally_.Add(line_, Excerpt(name_) + ": cut off after " + std::to_string(kLongestBackupValue) +
                          " bytes");
    cutsValue_ = true;
    return;
  }
  valueBytes_ += bytes;
  tag_ += written;
}

}  // namespace formats
