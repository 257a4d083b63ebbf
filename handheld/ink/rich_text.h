// Rich text (RTF), as far as it is text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ce::host {

inline constexpr std::size_t kMaxRichTextDepth = 256;  // groups within each other

// The text of a document. Paragraphs, lines, rows, sections and pages end with CR LF, but the mark
// at the very end adds no line; cells end with a tab. What is not text (tables of fonts and
// colours, headers, pictures, objects, destinations that may be ignored) is left out. 8-bit
// characters are of their font's code page, or the document's; of one that the host does not know,
// western. Nothing for what is no document, does not end, or is nested too deep.
std::optional<std::u16string> ReadRichText(std::string_view bytes);

// A document in ASCII: everything else as \u with the fallback '?'. A CR LF ends a paragraph, a
// lone CR or LF is a line break within it.
std::optional<std::string> WriteRichText(std::u16string_view text);

}  // namespace ce::host
