#include "common/formats/lines/stray_lines.h"

#include "common/text/code_page.h"
#include "common/text/text.h"
#include "common/text/unicode.h"

namespace formats {

void StrayLines::Add(const ContentLine& line) {
  if (count_++ > 0) return;
  first_ = line.line;
  text_ =
      text::Excerpt(text::IsValidUtf8(line.text) ? line.text : text::Windows1252ToUtf8(line.text));
}

void StrayLines::Release(NoticeList& notices) {
  if (count_ == 0) return;
  std::string notice = "not a property, left out: " + text_;
  if (count_ > 1) {
    notice += " and " + std::to_string(count_ - 1) + (count_ == 2 ? " line" : " lines") + " behind";
  }
  notices.Add(first_, std::move(notice));
  count_ = 0;
}

}  // namespace formats
