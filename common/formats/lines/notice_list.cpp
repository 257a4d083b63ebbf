#include "common/formats/lines/notice_list.h"

#include <algorithm>
#include <utility>

#include "common/text/text.h"

namespace formats {

void NoticeList::Add(const Property& property, std::string_view text) {
  std::string notice = text::Excerpt(property.name);
  if (!property.label.empty()) notice += " (" + text::Excerpt(property.label) + ")";
  notice += ": ";
  notice += text;
  Add(property.line, std::move(notice));
}

void NoticeList::Add(std::size_t line, std::string text) {
  lastLine_ = std::max(lastLine_, line);
  if (notices_.size() < kMost) {
    notices_.push_back({line, std::move(text)});
  } else {
    ++leftOut_;
  }
}

std::vector<Notice> NoticeList::Release() {
  std::stable_sort(notices_.begin(), notices_.end(),
                   [](const Notice& a, const Notice& b) { return a.line < b.line; });
  if (leftOut_ > 0) {
    notices_.push_back({lastLine_, std::to_string(leftOut_) + " more notices were left out"});
  }
  leftOut_ = 0;
  return std::exchange(notices_, {});
}

}  // namespace formats
