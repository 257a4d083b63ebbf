// The memory that MAPI calls hand out: one buffer with all that it points to.
#pragma once

#include <cstddef>
#include <new>
#include <string_view>
#include <type_traits>

#include "platform/mapi.h"

namespace ce::host {

// Buffers that were handed out in this process and not freed.
LONG LiveMapiBuffers();

// Grows by blocks; what was allocated stays where it is. Allocations throw std::bad_alloc.
class MapiBuffer {
 public:
  MapiBuffer() = default;
  MapiBuffer(const MapiBuffer&) = delete;
  MapiBuffer& operator=(const MapiBuffer&) = delete;
  ~MapiBuffer();

  // Zeroed. The first allocation is what MAPIFreeBuffer gets.
  template <typename T>
  T* Allocate(std::size_t count = 1) {
    static_assert(std::is_trivially_destructible_v<T> && alignof(T) <= alignof(std::max_align_t));
    return static_cast<T*>(AllocateBytes(sizeof(T), count));
  }
  // Zero-terminated UTF-16 of stored text, which is WTF-8.
  WCHAR* Text(std::string_view stored);
  SBinary Binary(const BYTE* bytes, std::size_t count);

  // Gives the buffer up; MAPIFreeBuffer(Allocate's first answer) frees it.
  void HandOut();

 private:
  struct Block;
  friend void FreeHandedOut(void* buffer);

  void* AllocateBytes(std::size_t size, std::size_t count);
  static void FreeBlocks(Block* block);

  Block* first_ = nullptr;
  Block* last_ = nullptr;
};

void FreeHandedOut(void* buffer);

}  // namespace ce::host
