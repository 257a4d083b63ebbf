// Collects the notices of a file in which the same thing may be wrong many times.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/items/notice.h"

namespace formats {

// A notice of the same text is given once, with its first line and how often it came. Texts of
// their own are bounded as NoticeList bounds them.
class NoticeTally {
 public:
  void Add(std::size_t line, std::string_view text);
  // In the order of their lines: "text", or "text (3 times)".
  std::vector<Notice> Release();

 private:
  struct Entry {
    std::size_t line;
    std::size_t count;
  };
  std::map<std::string, Entry, std::less<>> entries_;
  std::size_t leftOut_ = 0;
  std::size_t lastLine_ = 0;
};

}  // namespace formats
