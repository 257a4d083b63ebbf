// Lines among properties that are none.
#pragma once

#include <cstddef>
#include <string>

#include "common/formats/lines/notice_list.h"
#include "common/formats/lines/vcard_lines.h"

namespace formats {

// Lines that follow each other are one thing that was left out, such as what became of a picture.
class StrayLines {
 public:
  void Add(const ContentLine& line);
  // Makes a notice of those that were added, if any were, and begins anew.
  void Release(NoticeList& notices);

 private:
  std::size_t first_ = 0;
  std::string text_;  // of the first one
  std::size_t count_ = 0;
};

}  // namespace formats
