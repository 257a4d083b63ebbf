// A message or call of a backup as the file has it, and as the item that it stands for.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/formats/items/call.h"
#include "common/formats/items/message.h"
#include "common/formats/lines/notice_tally.h"

namespace formats {

// Names and values, in the order of the file. A value "null" stands for none.
struct BackupAttributes {
  std::vector<std::pair<std::string, std::string>> list;
  // Empty when there is none.
  std::string_view operator[](std::string_view name) const;
  void Add(std::string_view name, std::string_view value) { list.emplace_back(name, value); }
};

struct BackupElement {
  std::size_t line = 0;  // where it begins
  BackupAttributes attributes;
  std::vector<BackupAttributes> parts;      // <part> of an <mms>
  std::vector<BackupAttributes> addresses;  // <addr> of an <mms>
};

// What the writer notes of an item that the format itself has no place for, as JSON.
inline constexpr char kHandheldAttribute[] = "handheld";

// What cannot be kept, or is odd, goes to the tally.
TextMessage SmsFromElement(const BackupElement& element, NoticeTally& tally);
TextMessage MmsFromElement(const BackupElement& element, NoticeTally& tally);
Call CallFromElement(const BackupElement& element, NoticeTally& tally);

BackupElement ToElement(const TextMessage& message);
BackupElement ToElement(const Call& call);

}  // namespace formats
