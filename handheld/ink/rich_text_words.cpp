#include "handheld/ink/rich_text_words.h"

#include <algorithm>
#include <iterator>

namespace ce::host {
namespace {

using enum RichWord;

// In the order of their names.
constexpr RichWordRow kWords[] = {
    {"aftncn", kSkipped},
    {"aftnsep", kSkipped},
    {"aftnsepc", kSkipped},
    {"annotation", kSkipped},
    {"ansi", kNamedCodePage, 1252},
    {"ansicpg", kCodePage},
    {"atnauthor", kSkipped},
    {"atnid", kSkipped},
    {"bin", kBinary},
    {"bkmkend", kSkipped},
    {"bkmkstart", kSkipped},
    {"bullet", kCharacter, 0x2022},
    {"cell", kCharacter, u'\t'},
    {"colorschememapping", kSkipped},
    {"colortbl", kSkipped},
    {"column", kBreak},
    {"cpg", kFontCodePage},
    {"datastore", kSkipped},
    {"deff", kDefaultFont},
    {"do", kSkipped},
    {"emdash", kCharacter, 0x2014},
    {"emspace", kCharacter, 0x2003},
    {"endash", kCharacter, 0x2013},
    {"enspace", kCharacter, 0x2002},
    {"f", kFont},
    {"fcharset", kCharset},
    {"filetbl", kSkipped},
    {"fldinst", kSkipped},
    {"fonttbl", kFontTable},
    {"footer", kSkipped},
    {"footerf", kSkipped},
    {"footerl", kSkipped},
    {"footerr", kSkipped},
    {"footnote", kSkipped},
    {"ftncn", kSkipped},
    {"ftnsep", kSkipped},
    {"ftnsepc", kSkipped},
    {"header", kSkipped},
    {"headerf", kSkipped},
    {"headerl", kSkipped},
    {"headerr", kSkipped},
    {"info", kSkipped},
    {"latentstyles", kSkipped},
    {"lbr", kBreak},
    {"ldblquote", kCharacter, 0x201C},
    {"line", kBreak},
    {"listoverridetable", kSkipped},
    {"listtable", kSkipped},
    {"listtext", kSkipped},
    {"lquote", kCharacter, 0x2018},
    {"ltrmark", kCharacter, 0x200E},
    {"mac", kNamedCodePage, 10000},
    {"nestcell", kCharacter, u'\t'},
    {"nestrow", kParagraphEnd},
    {"nonesttables", kSkipped},
    {"nonshppict", kSkipped},
    {"object", kSkipped},
    {"page", kBreak},
    {"par", kParagraphEnd},
    {"pc", kNamedCodePage, 437},
    {"pca", kNamedCodePage, 850},
    {"pict", kSkipped},
    {"plain", kPlain},
    {"pntext", kSkipped},
    {"private", kSkipped},
    {"qmspace", kCharacter, 0x2005},
    {"rdblquote", kCharacter, 0x201D},
    {"revtbl", kSkipped},
    {"row", kParagraphEnd},
    {"rquote", kCharacter, 0x2019},
    {"rsidtbl", kSkipped},
    {"rtlmark", kCharacter, 0x200F},
    {"rxe", kSkipped},
    {"sect", kParagraphEnd},
    {"shppict", kSkipped},
    {"stylesheet", kSkipped},
    {"tab", kCharacter, u'\t'},
    {"tc", kSkipped},
    {"template", kSkipped},
    {"themedata", kSkipped},
    {"txe", kSkipped},
    {"u", kUnicode},
    {"uc", kFallbackCount},
    {"ud", kUnicodeHalf},
    {"upr", kUnicodePair},
    {"xe", kSkipped},
    {"xmlnstbl", kSkipped},
    {"zwbo", kCharacter, 0x200B},
    {"zwj", kCharacter, 0x200D},
    {"zwnbo", kCharacter, 0x2060},
    {"zwnj", kCharacter, 0x200C},
};
static_assert(std::ranges::is_sorted(kWords, {}, &RichWordRow::name));

struct CharsetRow {
  INT charset;
  UINT codePage;
};

constexpr CharsetRow kCharsets[] = {
    {0, 1252},    // western
    {2, 1252},    // symbols
    {77, 10000},  // Macintosh
    {128, 932},  {129, 949},  {130, 1361}, {134, 936},  {136, 950},  {161, 1253},
    {162, 1254}, {163, 1258}, {177, 1255}, {178, 1256}, {186, 1257}, {204, 1251},
    {222, 874},  {238, 1250}, {254, 437},  {255, 850},
};

}  // namespace

const RichWordRow* FindRichWord(std::string_view name) {
  const auto* const found = std::ranges::lower_bound(kWords, name, {}, &RichWordRow::name);
  return found == std::end(kWords) || found->name != name ? nullptr : found;
}

char16_t RichSymbol(char symbol) {
  switch (symbol) {
    case '\\':
    case '{':
    case '}':
      return static_cast<char16_t>(symbol);
    case '~':
      return 0x00A0;  // a blank that does not break
    case '_':
      return 0x2011;  // a hyphen that does not break
    case '-':
      return 0x00AD;  // a hyphen that shows at a line's end only
    case '\t':
      return u'\t';
    default:
      return 0;
  }
}

std::optional<UINT> CodePageOfCharset(INT charset) {
  const auto* const found = std::ranges::find(kCharsets, charset, &CharsetRow::charset);
  if (found == std::end(kCharsets)) return std::nullopt;
  return found->codePage;
}

}  // namespace ce::host
