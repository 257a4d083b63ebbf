#include "desktop/wire/utf16.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

#include "common/text/text.h"
#include "desktop/wire/error.h"
#include "desktop/wire/words.h"

namespace desktop {
namespace {

constexpr std::size_t kLongestPath = 259;
constexpr std::uint32_t kReplacement = 0xFFFD;

bool IsHigh(std::uint32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLow(std::uint32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

void PutUtf8(std::string& to, std::uint32_t c) {
  if (c < 0x80) {
    to += static_cast<char>(c);
    return;
  }
  const int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
  constexpr unsigned kLead[] = {0, 0xC0, 0xE0, 0xF0};
  to += static_cast<char>(kLead[more] | c >> 6 * more);
  for (int left = more; left-- > 0;) to += static_cast<char>(0x80 | (c >> 6 * left & 0x3F));
}

// The text must be valid.
std::uint32_t TakeCharacter(std::string_view& utf8) {
  const auto lead = static_cast<unsigned char>(utf8[0]);
  const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  std::uint32_t c = length == 1 ? lead : lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    c = c << 6 | (static_cast<unsigned char>(utf8[i]) & 0x3FU);
  }
  utf8.remove_prefix(length);
  return c;
}

}  // namespace

std::string ToUtf16Le(std::string_view utf8) {
  const std::string valid = formats::RepairUtf8(utf8);
  std::string bytes;
  for (std::string_view left = valid; !left.empty();) {
    const std::uint32_t c = TakeCharacter(left);
    if (c < 0x10000) {
      PutHalfWord(bytes, c);
    } else {
      PutHalfWord(bytes, 0xD800 + ((c - 0x10000) >> 10));
      PutHalfWord(bytes, 0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  }
  return bytes;
}

std::string FromUtf16Le(std::string_view bytes) {
  std::string text;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    const std::uint32_t unit = HalfWordAt(bytes, at);
    if (!IsHigh(unit) && !IsLow(unit)) {
      PutUtf8(text, unit);
      continue;
    }
    const std::uint32_t next = at + 3 < bytes.size() ? HalfWordAt(bytes, at + 2) : 0;
    if (IsHigh(unit) && IsLow(next)) {
      PutUtf8(text, 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
      at += 2;
    } else {
      PutUtf8(text, kReplacement);
    }
  }
  return text;
}

std::string DevicePathBytes(std::string_view path) {
  if (path.empty() || !formats::IsValidUtf8(path)) {
    throw Error(fmt::format("\"{}\" is no path of a handheld", formats::Excerpt(path)));
  }
  std::string own(path);
  std::replace(own.begin(), own.end(), '/', '\\');
  std::string bytes = ToUtf16Le(own);
  if (bytes.size() / 2 > kLongestPath) {
    throw Error(fmt::format("a handheld's path has at most {} characters, this one {}: {}",
                            kLongestPath, bytes.size() / 2, formats::Excerpt(path)));
  }
  return bytes;
}

}  // namespace desktop
