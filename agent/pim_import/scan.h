// The C library's readings of decimal numbers, on UTF-16 text.
#pragma once

#include <span>
#include <string_view>

#include "platform/types.h"

namespace corvane {

// One "%0Nd" of a scan pattern, preceded by a literal unless that is 0.
struct ScanField {
  ce::WCHAR literal;
  int width;
};

inline constexpr int kScanEndOfText = -1;

inline constexpr std::u16string_view kBlanks = u" \t\n\v\f\r";

// Reads numbers as swscanf does: blanks before a number are skipped and count towards nothing, a
// sign counts towards the width, a literal must match at once. Answers how many numbers were read;
// kScanEndOfText when the text ends before the first. `numbers` holds one place a field.
int ScanNumbers(std::u16string_view text, std::span<const ScanField> fields,
                std::span<ce::LONG> numbers);

// As wcstol with base 10: blanks, a sign, digits, the rest ignored; 0 without digits; a number
// beyond 32 bits gives the nearest one.
ce::LONG TextToLong(std::u16string_view text);

}  // namespace corvane
