#include "agent/pim_import/scan.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace corvane {

using namespace ce;

namespace {

bool IsDigit(WCHAR character) {
  return character >= u'0' && character <= u'9';
}

bool IsSign(WCHAR character) {
  return character == u'+' || character == u'-';
}

void SkipBlanks(std::u16string_view* text) {
  text->remove_prefix(std::min(text->find_first_not_of(kBlanks), text->size()));
}

// Far beyond 32 bits; digits behind this many change nothing that is asked for.
constexpr LONGLONG kEnoughDigits = LONGLONG{1} << 58;

// A sign and digits at the front of `text`, of which as much as is read is taken away.
bool TakeNumber(std::u16string_view* text, LONGLONG* number) {
  const bool negative = !text->empty() && text->front() == u'-';
  if (!text->empty() && IsSign(text->front())) text->remove_prefix(1);
  if (text->empty() || !IsDigit(text->front())) return false;
  LONGLONG magnitude = 0;
  for (; !text->empty() && IsDigit(text->front()); text->remove_prefix(1)) {
    if (magnitude < kEnoughDigits) magnitude = magnitude * 10 + (text->front() - u'0');
  }
  *number = negative ? -magnitude : magnitude;
  return true;
}

// The text up to its first zero, as the C library sees it.
std::u16string_view CText(std::u16string_view text) {
  return text.substr(0, text.find(u'\0'));
}

}  // namespace

int ScanNumbers(std::u16string_view text, std::span<const ScanField> fields,
                std::span<LONG> numbers) {
  text = CText(text);
  int read = 0;
  for (const ScanField& field : fields) {
    if (field.literal) {
      if (text.empty() || text.front() != field.literal) return read;
      text.remove_prefix(1);
    }
    SkipBlanks(&text);
    if (text.empty()) return read == 0 ? kScanEndOfText : read;
    std::u16string_view item = text.substr(0, static_cast<std::size_t>(field.width));
    const std::size_t length = item.size();
    LONGLONG number = 0;
    if (!TakeNumber(&item, &number)) return read;
    numbers[static_cast<std::size_t>(read)] = static_cast<LONG>(number);
    text.remove_prefix(length - item.size());
    ++read;
  }
  return read;
}

LONG TextToLong(std::u16string_view text) {
  using Limits = std::numeric_limits<LONG>;
  SkipBlanks(&text);
  LONGLONG number = 0;
  if (!TakeNumber(&text, &number)) return 0;
  return static_cast<LONG>(std::clamp<LONGLONG>(number, Limits::min(), Limits::max()));
}

}  // namespace corvane
