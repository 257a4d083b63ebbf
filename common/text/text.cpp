#include "common/text/text.h"

#include <algorithm>

namespace text {
namespace {

char UpperAscii(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string WithoutControls(std::string_view text) {
  std::string line(text);
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return line;
}

}  // namespace

bool EqualsNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return UpperAscii(x) == UpperAscii(y);
         });
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  return EqualsNoCase(text.substr(0, prefix.size()), prefix);
}

std::string ToUpperAscii(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), UpperAscii);
  return upper;
}

std::string_view TrimBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string Excerpt(std::string_view text) {
  constexpr std::size_t kLongest = 60;
  std::size_t length = std::min(text.size(), kLongest);
  while (length > 0 && length < text.size() && (text[length] & 0xC0) == 0x80) --length;
  std::string excerpt = WithoutControls(text.substr(0, length));
  if (length < text.size()) excerpt += "…";
  return excerpt;
}

std::string OnOneLine(std::string_view text) {
  return std::string(TrimBlanks(WithoutControls(text)));
}

std::string NormalizeLineBreaks(std::string text) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r') {
      text[length++] = '\n';
      if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
    } else {
      text[length++] = text[i];
    }
  }
  text.resize(length);
  return text;
}

}  // namespace text
