#include "common/formats/lines/notice_tally.h"

#include <algorithm>

#include "common/formats/lines/notice_list.h"

namespace formats {

void NoticeTally::Add(std::size_t line, std::string_view text) {
  lastLine_ = std::max(lastLine_, line);
  if (const auto known = entries_.find(text); known != entries_.end()) {
    ++known->second.count;
  } else if (entries_.size() < NoticeList::kMost) {
    entries_.emplace(text, Entry{line, 1});
  } else {
    ++leftOut_;
  }
}

std::vector<Notice> NoticeTally::Release() {
  std::vector<Notice> notices;
  for (const auto& [text, entry] : entries_) {
    notices.push_back({entry.line, text});
    if (entry.count > 1) notices.back().text += " (" + std::to_string(entry.count) + " times)";
  }
  std::stable_sort(notices.begin(), notices.end(),
                   [](const Notice& a, const Notice& b) { return a.line < b.line; });
  if (leftOut_ > 0) {
    notices.push_back({lastLine_, std::to_string(leftOut_) + " more notices were left out"});
  }
  entries_.clear();
  leftOut_ = 0;
  return notices;
}

}  // namespace formats
