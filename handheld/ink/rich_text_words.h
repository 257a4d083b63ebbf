// The control words of rich text that matter to its text.
#pragma once

#include <optional>
#include <string_view>

#include "platform/types.h"

namespace ce::host {

enum class RichWord {
  kBreak,          // ends a line
  kParagraphEnd,   // ends a paragraph
  kCharacter,      // stands for `value`
  kUnicode,        // \u
  kFallbackCount,  // \uc
  kBinary,         // \bin
  kFont,           // \f
  kDefaultFont,    // \deff
  kPlain,          // \plain
  kCharset,        // \fcharset
  kFontCodePage,   // \cpg
  kCodePage,       // \ansicpg
  kNamedCodePage,  // \ansi, \mac and the like: code page `value`
  kFontTable,      // a destination
  kUnicodePair,    // a destination: \upr, whose \ud is the text
  kUnicodeHalf,    // a destination: \ud
  kSkipped,        // a destination without text
};

struct RichWordRow {
  std::string_view name;  // as after the backslash
  RichWord word;
  UINT value = 0;
};

// Null for a word that changes no text.
const RichWordRow* FindRichWord(std::string_view name);
// The character that a symbol ("~" for \~) stands for; 0 for none.
char16_t RichSymbol(char symbol);

// The code page of a font's character set; nothing for those that follow the document.
std::optional<UINT> CodePageOfCharset(INT charset);

}  // namespace ce::host
