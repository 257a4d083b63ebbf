#include <unordered_map>
#include <utility>
#include <vector>

#include "common/text/code_page.h"
#include "handheld/ink/note_formats.h"
#include "handheld/ink/rich_text.h"
#include "handheld/ink/rich_text_tokens.h"
#include "handheld/ink/rich_text_words.h"

namespace ce::host {
namespace {

constexpr std::string_view kOpening = "{\\rtf";

enum class Destination { kText, kFontTable, kUnicodePair, kSkipped };

// What ends with its group.
struct Group {
  Destination destination = Destination::kText;
  INT font = 0;
  INT fallbackCount = 1;  // characters that stand behind a \u for readers without it
};

class RichTextReader {
 public:
  explicit RichTextReader(std::string_view bytes) : tokens_(bytes) {}

  std::optional<std::u16string> Read() {
    do {
      if (!Take(tokens_.Next())) return std::nullopt;
    } while (!groups_.empty());
    FlushBytes();
    if (text_.size() == endedAt_) text_.resize(text_.size() - kParagraphBreak.size());
    return std::move(text_);
  }

 private:
  using Kind = RichToken::Kind;

  // False when this is the end of what can be read.
  bool Take(const RichToken& token) {
    const bool mayBeIgnored = std::exchange(mayBeIgnored_, false);
    switch (token.kind) {
      case Kind::kOpen:
        return Open();
      case Kind::kClose:
        groups_.pop_back();
        fallbackLeft_ = 0;
        return true;
      case Kind::kEnd:
        return false;
      case Kind::kWord:
        return TakeWord(token, mayBeIgnored);
      case Kind::kSymbol:
        TakeSymbol(token.byte);
        return true;
      case Kind::kHexByte:
      case Kind::kByte:
        AddByte(token.byte);
        return true;
    }
    return false;
  }

  bool Open() {
    if (groups_.size() == kMaxRichTextDepth) return false;
    fallbackLeft_ = 0;
    groups_.push_back(groups_.empty() ? Group{} : groups_.back());
    return true;
  }

  bool TakeWord(const RichToken& token, bool mayBeIgnored) {
    const RichWordRow* row = FindRichWord(token.word);
    // Its bytes are raw, so they are passed over even where nothing counts.
    if (row && row->word == RichWord::kBinary && token.number > 0 &&
        !tokens_.SkipRaw(static_cast<std::size_t>(token.number))) {
      return false;
    }
    if (IsFallback()) return true;
    if (mayBeIgnored && !(row && row->word == RichWord::kUnicodeHalf)) {
      groups_.back().destination = Destination::kSkipped;
    } else if (row) {
      TakeKnownWord(*row, token);
    }
    return true;
  }

  void TakeKnownWord(const RichWordRow& row, const RichToken& token) {
    Group& group = groups_.back();
    switch (row.word) {
      case RichWord::kBreak:
        AddBreak(false);
        break;
      case RichWord::kParagraphEnd:
        AddBreak(true);
        break;
      case RichWord::kCharacter:
        AddUnit(static_cast<char16_t>(row.value));
        break;
      case RichWord::kUnicode:
        if (!token.hasNumber) break;
        AddUnit(static_cast<char16_t>(token.number));
        fallbackLeft_ = group.fallbackCount;
        break;
      case RichWord::kFallbackCount:
        group.fallbackCount = token.number;
        break;
      case RichWord::kBinary:
        break;
      case RichWord::kFontTable:
        Enter(Destination::kFontTable);
        break;
      case RichWord::kUnicodePair:
        Enter(Destination::kUnicodePair);
        break;
      case RichWord::kUnicodeHalf:
        if (group.destination == Destination::kUnicodePair) {
          group.destination = Destination::kText;
        }
        break;
      case RichWord::kSkipped:
        Enter(Destination::kSkipped);
        break;
      default:
        TakeFontWord(row, token);
    }
  }

  void TakeFontWord(const RichWordRow& row, const RichToken& token) {
    Group& group = groups_.back();
    switch (row.word) {
      case RichWord::kFont:
        group.font = token.number;
        break;
      case RichWord::kPlain:
        group.font = defaultFont_;
        break;
      case RichWord::kDefaultFont:
        group.font = defaultFont_ = token.number;
        break;
      case RichWord::kCharset:
        if (group.destination != Destination::kFontTable) break;
        if (const auto page = CodePageOfCharset(token.number)) fontPages_[group.font] = *page;
        break;
      case RichWord::kFontCodePage:
        if (group.destination != Destination::kFontTable || token.number <= 0) break;
        fontPages_[group.font] = static_cast<UINT>(token.number);
        break;
      case RichWord::kCodePage:
        if (token.number > 0) documentPage_ = static_cast<UINT>(token.number);
        break;
      default:
        documentPage_ = row.value;
    }
  }

  void TakeSymbol(char symbol) {
    if (symbol == '*') {
      mayBeIgnored_ = true;
      return;
    }
    if (IsFallback()) return;
    if (symbol == '\r' || symbol == '\n') return AddBreak(true);
    if (const char16_t unit = RichSymbol(symbol)) AddUnit(unit);
  }

  // A group within one that is no text stays so.
  void Enter(Destination destination) {
    Group& group = groups_.back();
    if (group.destination == Destination::kText) group.destination = destination;
  }

  bool IsText() const { return groups_.back().destination == Destination::kText; }

  // Whether what comes now only stands for a character that was read.
  bool IsFallback() {
    if (fallbackLeft_ <= 0) return false;
    --fallbackLeft_;
    return true;
  }

  // Bytes wait until those are over that are of one code page: they may be parts of one character.
  void AddByte(char byte) {
    if (IsFallback() || !IsText()) return;
    const UINT page = CurrentPage();
    if (page != bytesPage_) FlushBytes();
    bytesPage_ = page;
    bytes_.push_back(byte);
  }

  void AddUnit(char16_t unit) {
    if (!IsText()) return;
    FlushBytes();
    text_.push_back(unit);
  }

  void AddBreak(bool endsParagraph) {
    if (!IsText()) return;
    FlushBytes();
    text_ += kParagraphBreak;
    endedAt_ = endsParagraph ? text_.size() : kNever;
  }

  UINT CurrentPage() const {
    const auto found = fontPages_.find(groups_.back().font);
    return found == fontPages_.end() ? documentPage_ : found->second;
  }

  void FlushBytes() {
    if (bytes_.empty()) return;
    bool wellFormed = true;
    std::optional<std::u16string> decoded = text::DecodeText(bytesPage_, bytes_, wellFormed);
    if (!decoded) decoded = text::DecodeText(text::kWesternPage, bytes_, wellFormed);
    text_ += *decoded;
    bytes_.clear();
  }

  static constexpr std::size_t kNever = std::u16string::npos;

  RichTokens tokens_;
  std::vector<Group> groups_;
  bool mayBeIgnored_ = false;  // \* was the last token
  INT fallbackLeft_ = 0;
  UINT documentPage_ = text::kWesternPage;
  INT defaultFont_ = 0;
  std::unordered_map<INT, UINT> fontPages_;
  std::string bytes_;
  UINT bytesPage_ = text::kWesternPage;
  std::u16string text_;
  std::size_t endedAt_ = kNever;  // where the last paragraph's end brought the text to
};

}  // namespace

std::optional<std::u16string> ReadRichText(std::string_view bytes) {
  if (!bytes.starts_with(kOpening)) return std::nullopt;
  return RichTextReader(bytes).Read();
}

}  // namespace ce::host
