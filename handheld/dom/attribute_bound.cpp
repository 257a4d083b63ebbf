#include "handheld/dom/attribute_bound.h"

#include <algorithm>
#include <string_view>

namespace ce::host::dom {
namespace {

// The document's characters, as far as they are ASCII; positions and counts are in characters.
class Markup {
 public:
  Markup(std::span<const BYTE> document, ByteLayout layout)
      : bytes_(reinterpret_cast<const char*>(document.data()), document.size()), layout_(layout) {}

  std::size_t size() const { return bytes_.size() / layout_.width; }
  // Zero for a character beyond ASCII, and behind the end.
  char operator[](std::size_t at) const {
    if (at >= size()) return 0;
    if (layout_.width == 1) return bytes_[at];
    return bytes_[2 * at + 1 - layout_.low] == 0 ? bytes_[2 * at + layout_.low] : '\0';
  }
  bool Has(std::string_view text, std::size_t at) const {
    for (const char c : text) {
      if ((*this)[at++] != c) return false;
    }
    return true;
  }
  // The first `c` from `at` on; size() or more when there is none.
  std::size_t Find(char c, std::size_t at) const {
    if (layout_.width == 1) return std::min(bytes_.find(c, at), size());
    while (at < size() && (*this)[at] != c) ++at;
    return at;
  }
  // Behind the first `text` from `at` on.
  std::size_t Past(std::string_view text, std::size_t at) const {
    for (at = Find(text[0], at); at < size() && !Has(text, at);) at = Find(text[0], at + 1);
    return at + text.size();
  }

 private:
  const std::string_view bytes_;
  const ByteLayout layout_;
};

// Goes past a tag; false when it has too many attributes.
bool PassTag(const Markup& markup, std::size_t& at) {
  int count = 0;
  for (; at < markup.size() && markup[at] != '>'; ++at) {
    const char c = markup[at];
    if (c == '"' || c == '\'') at = markup.Find(c, at + 1);
    if (c == '=' && ++count > kMaxAttributes) return false;
  }
  return true;
}

}  // namespace

bool MarkupIsBounded(std::span<const BYTE> document, ByteLayout layout) {
  const Markup markup(document, layout);
  for (std::size_t at = 0; (at = markup.Find('<', at)) < markup.size();) {
    if (markup.Has("<!--", at)) {
      at = markup.Past("-->", at + 4);
    } else if (markup.Has("<![", at)) {
      at = markup.Past("]]>", at + 3);
    } else if (markup.Has("<?", at)) {
      at = markup.Past("?>", at + 2);
    } else if (markup.Has("<!", at) || !PassTag(markup, at)) {
      return false;  // a document type, or too many attributes
    }
  }
  return true;
}

}  // namespace ce::host::dom
