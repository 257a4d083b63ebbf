#include "common/text/transfer_encoding.h"

namespace text {
namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

int Base64Digit(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

}  // namespace

std::string DecodeQuotedPrintable(std::string_view value, bool protectSeparators) {
  std::string bytes;
  bytes.reserve(value.size());
  bool escaped = false;  // an odd number of backslashes stands before
  for (std::size_t i = 0; i < value.size(); ++i) {
    char c = value[i];
    const int high = c == '=' && i + 2 < value.size() ? HexDigit(value[i + 1]) : -1;
    const int low = high >= 0 ? HexDigit(value[i + 2]) : -1;
    if (low >= 0) {
      c = static_cast<char>(high * 16 + low);
      i += 2;
      if (c == ';' && protectSeparators && !escaped) bytes += '\\';
    } else if (c == '=' && i + 1 == value.size()) {
      break;  // a soft line break that nothing follows
    }
    bytes += c;
    escaped = c == '\\' && !escaped;
  }
  return bytes;
}

std::string DecodeBase64(std::string_view value) {
  std::string bytes;
  bytes.reserve(value.size() / 4 * 3);
  unsigned bits = 0;
  int count = 0;
  for (char c : value) {
    if (c == '=') break;
    const int digit = Base64Digit(c);
    if (digit < 0) continue;
    bits = ((bits << 6) | static_cast<unsigned>(digit)) & 0xFFFFFFu;
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes += static_cast<char>((bits >> count) & 0xFFu);
    }
  }
  return bytes;
}

}  // namespace text
