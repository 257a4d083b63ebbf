#include "handheld/ink/rich_text_tokens.h"

#include <algorithm>
#include <limits>

namespace ce::host {
namespace {

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// -1 for what is no digit.
int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

RichToken RichTokens::Next() {
  while (!rest_.empty()) {
    const char c = rest_.front();
    rest_.remove_prefix(1);
    switch (c) {
      case '\r':
      case '\n':
      case '\0':
        continue;
      case '{':
        return {.kind = RichToken::Kind::kOpen};
      case '}':
        return {.kind = RichToken::Kind::kClose};
      case '\\':
        return AfterBackslash();
      default:
        return {.kind = RichToken::Kind::kByte, .byte = c};
    }
  }
  return {};
}

RichToken RichTokens::AfterBackslash() {
  if (rest_.empty()) return {};
  const char c = rest_.front();
  if (IsLetter(c)) return ReadWord();
  rest_.remove_prefix(1);
  if (c == '\'') return ReadHexByte();
  return {.kind = RichToken::Kind::kSymbol, .byte = c};
}

RichToken RichTokens::ReadWord() {
  const auto* const end = std::find_if_not(rest_.begin(), rest_.end(), IsLetter);
  RichToken token{.kind = RichToken::Kind::kWord,
                  .word = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()))};
  rest_.remove_prefix(token.word.size());
  ReadNumber(token);
  // One blank ends the word and is no text.
  if (!rest_.empty() && rest_.front() == ' ') rest_.remove_prefix(1);
  return token;
}

void RichTokens::ReadNumber(RichToken& token) {
  constexpr LONGLONG kLargest = std::numeric_limits<INT>::max();
  const bool isNegative = rest_.size() >= 2 && rest_[0] == '-' && IsDigit(rest_[1]);
  if (isNegative) rest_.remove_prefix(1);
  LONGLONG number = 0;
  for (; !rest_.empty() && IsDigit(rest_.front()); rest_.remove_prefix(1)) {
    number = std::min(number * 10 + (rest_.front() - '0'), kLargest);
    token.hasNumber = true;
  }
  token.number = static_cast<INT>(isNegative ? -number : number);
}

// Without its two digits it is a symbol that means nothing.
RichToken RichTokens::ReadHexByte() {
  const int high = rest_.size() >= 2 ? HexDigit(rest_[0]) : -1;
  const int low = rest_.size() >= 2 ? HexDigit(rest_[1]) : -1;
  if (high < 0 || low < 0) return {.kind = RichToken::Kind::kSymbol, .byte = '\''};
  rest_.remove_prefix(2);
  return {.kind = RichToken::Kind::kHexByte, .byte = static_cast<char>(high << 4 | low)};
}

bool RichTokens::SkipRaw(std::size_t bytes) {
  if (bytes > rest_.size()) return false;
  rest_.remove_prefix(bytes);
  return true;
}

}  // namespace ce::host
