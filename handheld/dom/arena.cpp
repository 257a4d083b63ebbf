#include "handheld/dom/arena.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

namespace ce::host::dom {
namespace {

// A document of a few records fits into the first two; the malloc header makes them whole pages.
constexpr std::size_t kFirstBlock = 16 * 1024;
constexpr std::size_t kLargestBlock = 64 * 1024;

}  // namespace

struct Arena::Block {
  Block* before;
  std::size_t bytes;

  std::byte* memory() { return reinterpret_cast<std::byte*>(this + 1); }
};

void* Arena::AllocateBlock(std::size_t bytes) {
  const std::size_t ordinary = std::clamp(2 * blockSize_, kFirstBlock, kLargestBlock);
  // A large piece has a block of its own; the one that is being filled stays in use.
  const bool isLarge = bytes > ordinary / 4;
  const std::size_t size = isLarge ? bytes : ordinary - sizeof(Block);
  auto* const block = static_cast<Block*>(std::malloc(sizeof(Block) + size));
  if (!block) throw std::bad_alloc();
  *block = {blocks_, size};
  blocks_ = block;
  if (isLarge) return block->memory();
  blockSize_ = ordinary;
  next_ = block->memory() + bytes;
  left_ = size - bytes;
  return block->memory();
}

void Arena::Clear() {
  while (blocks_) {
    Block* const block = std::exchange(blocks_, blocks_->before);
    ASAN_UNPOISON_MEMORY_REGION(block->memory(), block->bytes);
    std::free(block);
  }
  next_ = nullptr;
  left_ = 0;
  blockSize_ = 0;
}

}  // namespace ce::host::dom
