#include "common/formats/backup/sms_backup_references.h"

#include <algorithm>
#include <charconv>

namespace formats {
namespace {

constexpr std::string_view kNames[] = {"amp", "lt", "gt", "quot", "apos"};
constexpr unsigned long kBeyondUnicode = 0x110000;

bool IsReferenceCharacter(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '#';
}

// Of the "&" and what may belong to it.
std::size_t RunLength(std::string_view text) {
  std::size_t length = 1;
  while (length < text.size() && length < kLongestReference && IsReferenceCharacter(text[length])) {
    ++length;
  }
  return length;
}

std::optional<unsigned long> ReadNumber(std::string_view digits) {
  const bool hexadecimal = digits.starts_with('x') || digits.starts_with('X');
  if (hexadecimal) digits.remove_prefix(1);
  unsigned long number = 0;
  const char* const end = digits.data() + digits.size();
  const auto read = std::from_chars(digits.data(), end, number, hexadecimal ? 16 : 10);
  if (digits.empty() || read.ptr != end) return std::nullopt;
  return std::min(number, kBeyondUnicode);
}

}  // namespace

std::optional<Reference> ReadReference(std::string_view text) {
  if (!text.starts_with('&')) return std::nullopt;
  const std::size_t end = RunLength(text);
  if (end >= text.size() || text[end] != ';') return std::nullopt;
  const std::string_view inner = text.substr(1, end - 1);
  if (inner.starts_with('#')) {
    const std::optional<unsigned long> number = ReadNumber(inner.substr(1));
    if (!number) return std::nullopt;
    return Reference{end + 1, true, *number};
  }
  if (std::ranges::find(kNames, inner) == std::end(kNames)) return std::nullopt;
  return Reference{end + 1, false, 0};
}

bool IsReferenceCutOff(std::string_view text) {
  if (text.empty()) return true;
  return text.front() == '&' && text.size() < kLongestReference && RunLength(text) == text.size();
}

}  // namespace formats
