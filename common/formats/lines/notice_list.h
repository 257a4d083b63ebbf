// Collects the notices of one card, appointment or task.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "common/formats/items/notice.h"
#include "common/formats/lines/vcard_property.h"

namespace formats {

// Keeps up to kMost notices; a hostile file cannot make more than it is worth reading.
class NoticeList {
 public:
  static constexpr std::size_t kMost = 200;

  // "NAME: text", or "NAME (label): text".
  void Add(const Property& property, std::string_view text);
  void Add(std::size_t line, std::string text);
  // Hands them over in the order of their lines, with a last one about those that were left out.
  std::vector<Notice> Release();

 private:
  std::vector<Notice> notices_;
  std::size_t leftOut_ = 0;
  std::size_t lastLine_ = 0;
};

}  // namespace formats
