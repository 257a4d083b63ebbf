#include "handheld/messages/mapi_buffer.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "common/text/unicode.h"
#include "handheld/base/fault.h"

namespace ce::host {
namespace {

constexpr std::size_t kFirstBlock = 2048;  // a message's row with an ordinary text
constexpr std::size_t kFurtherBlock = 64 * 1024;
constexpr std::size_t kAlignment = alignof(std::max_align_t);

std::atomic<LONG> g_liveBuffers{0};

}  // namespace

struct alignas(std::max_align_t) MapiBuffer::Block {
  Block* next;
  std::size_t used;
  std::size_t size;

  BYTE* bytes() { return reinterpret_cast<BYTE*>(this + 1); }
};

LONG LiveMapiBuffers() {
  return g_liveBuffers;
}

MapiBuffer::~MapiBuffer() {
  FreeBlocks(first_);
}

void MapiBuffer::FreeBlocks(Block* block) {
  while (block) std::free(std::exchange(block, block->next));
}

void* MapiBuffer::AllocateBytes(std::size_t size, std::size_t count) {
  if (count > (SIZE_MAX / 2) / size) throw std::bad_alloc();
  const std::size_t bytes =
      (std::max<std::size_t>(size * count, 1) + kAlignment - 1) / kAlignment * kAlignment;
  if (!last_ || last_->size - last_->used < bytes) {
    if (FaultFor("MAPIAllocateBuffer") != 0) throw std::bad_alloc();
    const std::size_t room = std::max(bytes, first_ ? kFurtherBlock : kFirstBlock);
    auto* block = static_cast<Block*>(std::malloc(sizeof(Block) + room));
    if (!block) throw std::bad_alloc();
    *block = {nullptr, 0, room};
    (last_ ? last_->next : first_) = block;
    last_ = block;
  }
  void* const allocated = last_->bytes() + last_->used;
  last_->used += bytes;
  std::memset(allocated, 0, bytes);
  return allocated;
}

WCHAR* MapiBuffer::Text(std::string_view stored) {
  auto* copy = Allocate<WCHAR>(text::Utf16Length(stored) + 1);
  text::DecodeWtf8(stored, copy);
  return copy;
}

SBinary MapiBuffer::Binary(const BYTE* bytes, std::size_t count) {
  auto* copy = Allocate<BYTE>(count);
  std::copy_n(bytes, count, copy);
  return {static_cast<DWORD>(count), copy};
}

void MapiBuffer::HandOut() {
  if (first_) ++g_liveBuffers;
  first_ = last_ = nullptr;
}

void FreeHandedOut(void* buffer) {
  if (!buffer) return;
  --g_liveBuffers;
  MapiBuffer::FreeBlocks(reinterpret_cast<MapiBuffer::Block*>(buffer) - 1);
}

}  // namespace ce::host

namespace ce {

DWORD MAPIFreeBuffer(void* buffer) {
  host::FreeHandedOut(buffer);
  return 0;
}

void FreeProws(SRowSet* rows) {
  host::FreeHandedOut(rows);
}

}  // namespace ce
