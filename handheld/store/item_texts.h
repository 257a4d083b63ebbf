// The text properties of items: their kinds, and the texts of one item.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "common/text/unicode.h"
#include "handheld/store/item_limits.h"

namespace ce::host {

struct TextRow {
  const char* name;  // of the property, and of the store's column
  TextKind kind;
};

// From a list of X(property, kind): `enum class Enum { kProperty... }` and its table of rows.
#define CE_TEXT_ENUMERATOR(Name, Kind) k##Name,
#define CE_TEXT_ROW(Name, Kind) {#Name, TextKind::Kind},
#define CE_TEXT_TABLE(Enum, Rows, List)         \
  enum class Enum { List(CE_TEXT_ENUMERATOR) }; \
  inline constexpr TextRow Rows[] = {List(CE_TEXT_ROW)};

// The texts of one item, in one block of memory: most of them are short, many empty. `Text`
// enumerates them from 0.
template <typename Text, std::size_t Count>
class ItemTexts {
 public:
  // WTF-8, valid until the next change.
  std::string_view operator[](Text text) const { return View(static_cast<std::size_t>(text)); }
  // Whether it was ever set, be it to an empty text.
  bool IsSet(std::size_t index) const { return set_[index]; }
  std::string_view View(std::size_t index) const {
    const Span& span = spans_[index];
    return {block_.data() + span.offset, span.bytes};
  }

  void Reserve(std::size_t bytes) { block_.reserve(bytes); }
  void Set(std::size_t index, std::u16string_view text) {
    const std::size_t offset = block_.size();
    text::AppendWtf8(block_, text);
    Replaced(index, offset);
  }
  void SetStored(std::size_t index, std::string_view stored) {
    const std::size_t offset = block_.size();
    block_.append(stored);
    Replaced(index, offset);
  }

 private:
  static constexpr std::size_t kSlack = 4096;  // bytes of replaced text that are not worth moving

  struct Span {
    std::uint32_t offset = 0;
    std::uint32_t bytes = 0;
  };

  void Replaced(std::size_t index, std::size_t offset) {
    set_[index] = true;
    used_ -= spans_[index].bytes;
    spans_[index] = {static_cast<std::uint32_t>(offset),
                     static_cast<std::uint32_t>(block_.size() - offset)};
    used_ += spans_[index].bytes;
    if (block_.size() > 2 * used_ + kSlack) Compact();
  }

  void Compact() {
    std::string block;
    block.reserve(used_);
    auto spans = spans_;
    for (Span& span : spans) {
      const auto offset = static_cast<std::uint32_t>(block.size());
      block.append(block_, span.offset, span.bytes);
      span.offset = offset;
    }
    block_ = std::move(block);
    spans_ = spans;
  }

  std::string block_;
  std::array<Span, Count> spans_{};
  std::bitset<Count> set_;
  std::size_t used_ = 0;  // bytes of the block that spans refer to
};

}  // namespace ce::host
