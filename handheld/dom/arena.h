// Memory that is given back all at once, in few pieces.
#pragma once

#include <sanitizer/asan_interface.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

namespace ce::host::dom {

class Arena {
 public:
  Arena() = default;
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;
  ~Arena() { Clear(); }

  // Aligned for any object. Throws std::bad_alloc.
  void* Allocate(std::size_t bytes) {
    bytes = (bytes + kAlignment - 1) / kAlignment * kAlignment;
    if (bytes > left_) return AllocateBlock(bytes);
    left_ -= bytes;
    return std::exchange(next_, next_ + bytes);
  }
  // A copy of the text.
  std::u16string_view Keep(std::u16string_view text) {
    if (text.empty()) return {};
    auto* const copy = static_cast<char16_t*>(Allocate(text.size() * sizeof(char16_t)));
    std::memcpy(copy, text.data(), text.size() * sizeof(char16_t));
    return {copy, text.size()};
  }
  // Gives everything back.
  void Clear();

  // As Allocate, for what may be given back before the rest: then it serves for the next of its
  // size, and until then a sanitizer reports who uses it.
  void* Take(std::size_t bytes);
  static void GiveBack(void* memory, std::size_t bytes);

 private:
  static constexpr std::size_t kAlignment = alignof(void*);

  // In front of what is given back by itself.
  struct Piece {
    Arena* arena;
    Piece* next;  // that is free, too
  };
  static constexpr std::size_t kSizes = 32;

  struct Block;

  void* AllocateBlock(std::size_t bytes);

  Block* blocks_ = nullptr;
  std::byte* next_ = nullptr;  // of the block that is being filled
  std::size_t left_ = 0;
  std::size_t blockSize_ = 0;
  std::array<Piece*, kSizes> free_{};  // by their bytes, in units of the alignment
};

}  // namespace ce::host::dom
