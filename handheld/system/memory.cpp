#include "handheld/system/memory.h"

#include <malloc.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "handheld/base/fault.h"
#include "handheld/directory/handheld.h"
#include "platform/memory.h"
#include "platform/status.h"

namespace ce {
namespace {

std::atomic<std::int64_t> g_blocks{0};

// Stands before each block; as large as the strictest alignment, so that the block keeps it.
struct alignas(std::max_align_t) Header {
  std::size_t bytes;
};

DWORD BlockBound() {
  const host::Handheld* handheld = host::Handheld::Current();
  return handheld ? handheld->MaxBlock() : host::Handheld::kDefaultMaxBlock;
}

void* Fail(DWORD error) {
  SetLastError(error);
  return nullptr;
}

bool WithinBound(std::size_t bytes) {
  return bytes <= BlockBound() && bytes <= SIZE_MAX - sizeof(Header);
}

void* BlockOf(Header* header, std::size_t bytes) {
  header->bytes = bytes;
  SetLastError(ERROR_SUCCESS);
  return header + 1;
}

Header* HeaderOf(void* block) {
  return static_cast<Header*>(block) - 1;
}

}  // namespace

void* LocalAlloc(UINT flags, std::size_t bytes) {
  if (const DWORD error = host::FaultFor("LocalAlloc")) return Fail(error);
  if (!WithinBound(bytes)) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  const std::size_t size = sizeof(Header) + bytes;
  void* memory = flags & LMEM_ZEROINIT ? std::calloc(1, size) : std::malloc(size);
  if (!memory) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  g_blocks.fetch_add(1, std::memory_order_relaxed);
  return BlockOf(static_cast<Header*>(memory), bytes);
}

void* LocalReAlloc(void* block, std::size_t bytes, UINT flags) {
  if (const DWORD error = host::FaultFor("LocalReAlloc")) return Fail(error);
  if (!block) return Fail(ERROR_INVALID_HANDLE);
  if (!WithinBound(bytes)) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  const std::size_t before = HeaderOf(block)->bytes;
  void* memory = std::realloc(HeaderOf(block), sizeof(Header) + bytes);
  if (!memory) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  void* grown = BlockOf(static_cast<Header*>(memory), bytes);
  if (flags & LMEM_ZEROINIT && bytes > before) {
    std::memset(static_cast<BYTE*>(grown) + before, 0, bytes - before);
  }
  return grown;
}

// Not a fault point: nothing that frees can do without.
void* LocalFree(void* block) {
  if (!block) return nullptr;
  g_blocks.fetch_sub(1, std::memory_order_relaxed);
  std::free(HeaderOf(block));
  return nullptr;
}

void host::KeepFreedMemory() {
  constexpr int kKept = 1 << 20;  // bytes
  mallopt(M_TRIM_THRESHOLD, kKept);
  mallopt(M_MMAP_THRESHOLD, kKept);
}

std::int64_t host::LiveLocalBlocks() {
  return g_blocks.load(std::memory_order_relaxed);
}

}  // namespace ce
