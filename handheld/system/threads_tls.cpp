#include <array>
#include <mutex>

#include "handheld/base/fault.h"
#include "platform/status.h"
#include "platform/threads.h"

namespace ce {
namespace {

constexpr DWORD kSlots = 64;

// Odd while the slot is allocated. A value that a thread has stored under an earlier generation
// does not count, so a slot that is allocated again is null in every thread.
std::array<std::atomic<DWORD>, kSlots> g_generations{};
std::mutex g_allocation;

struct Value {
  void* value;
  DWORD generation;
};
// Without a destructor, so that the destructors of other thread-local objects may still use slots.
thread_local std::array<Value, kSlots> t_values{};

// The slot's generation; 0 when it is not allocated.
DWORD Generation(DWORD slot) {
  if (slot >= kSlots) return 0;
  const DWORD generation = g_generations[slot].load(std::memory_order_acquire);
  return generation & 1 ? generation : 0;
}

BOOL Fail(DWORD error) {
  SetLastError(error);
  return FALSE;
}

}  // namespace

DWORD TlsAlloc() {
  DWORD error = host::FaultFor("TlsAlloc");
  if (error == 0) {
    const std::lock_guard guard(g_allocation);
    for (DWORD slot = 0; slot < kSlots; ++slot) {
      if (Generation(slot) != 0) continue;
      ++g_generations[slot];
      return slot;
    }
    error = ERROR_NOT_ENOUGH_MEMORY;
  }
  SetLastError(error);
  return TLS_OUT_OF_INDEXES;
}

void* TlsGetValue(DWORD slot) {
  DWORD error = host::FaultFor("TlsGetValue");
  const DWORD generation = Generation(slot);
  if (error == 0 && generation == 0) error = ERROR_INVALID_PARAMETER;
  if (error != 0) {
    SetLastError(error);
    return nullptr;
  }
  const Value& value = t_values[slot];
  return value.generation == generation ? value.value : nullptr;
}

BOOL TlsSetValue(DWORD slot, void* value) {
  if (const DWORD error = host::FaultFor("TlsSetValue")) return Fail(error);
  const DWORD generation = Generation(slot);
  if (generation == 0) return Fail(ERROR_INVALID_PARAMETER);
  t_values[slot] = {value, generation};
  return TRUE;
}

BOOL TlsFree(DWORD slot) {
  if (const DWORD error = host::FaultFor("TlsFree")) return Fail(error);
  const std::lock_guard guard(g_allocation);
  if (Generation(slot) == 0) return Fail(ERROR_INVALID_PARAMETER);
  ++g_generations[slot];
  return TRUE;
}

}  // namespace ce
