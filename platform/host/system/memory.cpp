#include "platform/host/system/memory.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "platform/host/fault.h"
#include "platform/host/handheld.h"
#include "platform/last_error.h"

namespace ce {
namespace {

// Stands before each block; as large as the strictest alignment, so that the block keeps it.
struct alignas(std::max_align_t) Header {
  std::size_t bytes;
};

constexpr std::uint64_t kUnknown = ~std::uint64_t{0};
std::atomic<std::uint64_t> g_bound{kUnknown};

std::uint64_t BlockBound() {
  const std::uint64_t known = g_bound.load(std::memory_order_relaxed);
  if (known != kUnknown) return known;
  host::Handheld* handheld = host::Handheld::Current();
  if (!handheld) return host::kDefaultMaxBlock;
  const DWORD bound = handheld->Number(host::setting::kMaxBlock, host::kDefaultMaxBlock);
  g_bound.store(bound, std::memory_order_relaxed);
  return bound;
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
  if (block) std::free(HeaderOf(block));
  return nullptr;
}

namespace host {

void ForgetBlockBound() {
  g_bound.store(kUnknown, std::memory_order_relaxed);
}

}  // namespace host
}  // namespace ce
