#include "handheld/dom/arena.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ce::host::dom {
namespace {

TEST(Arena, KeepsTextsOfEverySizeApart) {
  Arena arena;
  std::vector<std::u16string_view> kept;
  for (std::size_t size = 0; size < 3000; ++size) {
    kept.push_back(arena.Keep(std::u16string(size * 7 % 3001, static_cast<char16_t>(size))));
  }
  for (std::size_t size = 0; size < kept.size(); ++size) {
    EXPECT_EQ(kept[size], std::u16string(size * 7 % 3001, static_cast<char16_t>(size)));
  }
}

TEST(Arena, AlignsWhatItGives) {
  Arena arena;
  for (std::size_t bytes = 1; bytes < 40'000; bytes = bytes * 3 + 1) {
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(arena.Allocate(bytes)) % alignof(void*), 0u);
  }
}

TEST(Arena, BeginsAnewWhenItIsCleared) {
  Arena arena;
  for (int round = 0; round < 3; ++round) {
    const std::u16string large(100'000, u'x');
    const std::u16string_view small = arena.Keep(u"small");
    EXPECT_EQ(arena.Keep(large), large);
    EXPECT_EQ(small, u"small");
    arena.Clear();
  }
}

}  // namespace
}  // namespace ce::host::dom
