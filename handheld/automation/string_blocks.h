// The memory of automation strings, which come and go by the dozen for every record.
#pragma once

#include <array>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace ce::host {

// A thread keeps a few of the small blocks that it frees for the strings that it makes next.
class StringBlocks {
 public:
  // Null when memory runs out.
  static void* Allocate(std::size_t bytes) {
    const std::size_t index = IndexOf(bytes);
    if (index == kSizes.size()) return std::malloc(bytes);
    FreeList& list = t_free[index];
    if (!list.first) return std::malloc(kSizes[index]);
    --list.count;
    return std::exchange(list.first, list.first->next);
  }
  // `bytes` are those that it was allocated with. May run on any thread.
  static void Free(void* block, std::size_t bytes) {
    const std::size_t index = IndexOf(bytes);
    if (index == kSizes.size() || t_free[index].count >= t_mostKept) return FreeOrBegin(block);
    FreeList& list = t_free[index];
    list.first = new (block) FreeBlock{list.first};
    ++list.count;
  }

 private:
  struct FreeBlock {
    FreeBlock* next;
  };
  struct FreeList {
    FreeBlock* first;
    unsigned count;
  };
  class Keeper;

  static constexpr std::array<std::size_t, 3> kSizes = {64, 128, 512};

  static std::size_t IndexOf(std::size_t bytes) {
    if (bytes <= kSizes[0]) return 0;
    if (bytes <= kSizes[1]) return 1;
    return bytes <= kSizes[2] ? 2 : 3;
  }
  static void FreeOrBegin(void* block);

  // Without destructors, so that strings may be freed before and behind every object of the thread.
  inline static constinit thread_local FreeList t_free[kSizes.size()] = {};
  inline static constinit thread_local unsigned t_mostKept = 0;  // of each size
};

}  // namespace ce::host
