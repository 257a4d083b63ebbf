#include "desktop/wire/xml_spans.h"

#include <cstddef>

namespace desktop {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

std::size_t After(std::string_view document, std::string_view what, std::size_t from) {
  const std::size_t found = document.find(what, from);
  return found == kNone ? document.size() : found + what.size();
}

// A ">" inside an attribute's value does not end the tag.
std::size_t AfterStartTag(std::string_view document, std::size_t from) {
  std::size_t at = document.find_first_of("\"'>", from);
  while (at != kNone && document[at] != '>') {
    at = document.find(document[at], at + 1);
    if (at != kNone) at = document.find_first_of("\"'>", at + 1);
  }
  return at == kNone ? document.size() : at + 1;
}

}  // namespace

std::vector<std::string_view> ChildSpans(std::string_view document) {
  std::vector<std::string_view> spans;
  std::size_t depth = 0;
  std::size_t begin = 0;
  std::size_t at = 0;
  while ((at = document.find('<', at)) != kNone) {
    const std::string_view rest = document.substr(at);
    if (rest.starts_with("<!--")) {
      at = After(document, "-->", at + 4);
    } else if (rest.starts_with("<![CDATA[")) {
      at = After(document, "]]>", at);
    } else if (rest.starts_with("<?")) {
      at = After(document, "?>", at);
    } else if (rest.starts_with("</")) {
      at = After(document, ">", at);
      if (--depth == 1) spans.push_back(document.substr(begin, at - begin));
    } else {
      const std::size_t end = AfterStartTag(document, at);
      const bool empty = document[end - 2] == '/';
      if (depth == 1) begin = at;
      if (depth == 1 && empty) spans.push_back(document.substr(begin, end - begin));
      if (!empty) ++depth;
      at = end;
    }
  }
  return spans;
}

}  // namespace desktop
