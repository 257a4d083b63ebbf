#include "agent/device/ink_stream.h"

#include <algorithm>
#include <cstring>

namespace corvane {

ce::DWORD ReadNote(ce::DWORD_PTR cookie, ce::BYTE* buffer, ce::LONG bytes, ce::LONG* moved) {
  auto& state = *reinterpret_cast<ReadState*>(cookie);
  const ce::DWORD count = std::min(static_cast<ce::DWORD>(bytes), state.size - state.position);
  if (count != 0) std::memcpy(buffer, state.start + state.position, count);
  state.position += count;
  *moved = static_cast<ce::LONG>(count);
  return 0;
}

ce::DWORD WriteNote(ce::DWORD_PTR cookie, ce::BYTE* buffer, ce::LONG bytes, ce::LONG* moved) {
  auto& state = *reinterpret_cast<WriteState*>(cookie);
  auto count = static_cast<ce::DWORD>(bytes);
  if (state.start) {
    count = std::min(count, state.capacity - state.position);
    std::memcpy(state.start + state.position, buffer, count);
  }
  state.position += count;
  *moved = static_cast<ce::LONG>(count);
  return 0;
}

}  // namespace corvane
