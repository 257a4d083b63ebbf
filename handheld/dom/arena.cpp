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

void* Arena::Take(std::size_t bytes) {
  const std::size_t size = (bytes + kAlignment - 1) / kAlignment;
  if (size < kSizes && free_[size]) {
    Piece* const piece = std::exchange(free_[size], free_[size]->next);
    ASAN_UNPOISON_MEMORY_REGION(piece + 1, bytes);
    return piece + 1;
  }
  return new (Allocate(sizeof(Piece) + bytes)) Piece{this, nullptr} + 1;
}

void Arena::GiveBack(void* memory, std::size_t bytes) {
  ASAN_POISON_MEMORY_REGION(memory, bytes);
  const std::size_t size = (bytes + kAlignment - 1) / kAlignment;
  if (size >= kSizes) return;
  Piece* const piece = static_cast<Piece*>(memory) - 1;
  piece->next = std::exchange(piece->arena->free_[size], piece);
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
  free_ = {};
}

}  // namespace ce::host::dom
