#include "handheld/system/threads.h"

#include <array>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "handheld/base/fault.h"
#include "handheld/base/handle_table.h"
#include "handheld/network/socket_watcher.h"
#include "platform/status.h"

namespace ce {
namespace {

// What a thread's handle stands for.
class ThreadObject : public host::HandleObject {};

// The threads under way. Never destroyed: a thread may end after static objects have.
struct RequestThreads {
  std::mutex lock;
  std::condition_variable none;
  int running = 0;
};

RequestThreads& Threads() {
  static RequestThreads* const threads = new RequestThreads;
  return *threads;
}

void CountIn() {
  const std::lock_guard guard(Threads().lock);
  ++Threads().running;
}

void CountOut() {
  const std::lock_guard guard(Threads().lock);
  --Threads().running;
  Threads().none.notify_all();
}

// Thread-local objects go in the reverse order of their making. This one is made before the routine
// runs, so the thread counts as over only when all that the routine made is gone as well.
struct CountOutAtExit {
  bool armed = false;
  ~CountOutAtExit() {
    if (armed) CountOut();
  }
};
thread_local CountOutAtExit t_countOut;
thread_local DWORD t_threadId = 0;

DWORD NewThreadId() {
  static std::atomic<DWORD> last{0};
  DWORD id = ++last;
  while (id == 0) id = ++last;
  return id;
}

struct Start {
  ThreadRoutine routine;
  void* parameter;
  SOCKET owned;  // 0 for none
  HANDLE handle;
  DWORD id;
};

void Run(const Start& start) noexcept {
  t_countOut.armed = true;
  t_threadId = start.id;
  try {
    start.routine(start.parameter);
  } catch (...) {  // ends the thread, never the process
  }
  host::AbandonSocket(start.owned);
  // Nobody waits for a thread by its handle, so one that is never closed must not stay behind.
  host::ObjectHandles().Close(start.handle);
}

// False when the system has no thread to give.
bool StartThread(Start& start) noexcept {
  CountIn();
  try {
    start.handle = host::AddHandle(std::make_shared<ThreadObject>());
    std::thread(Run, start).detach();
    return true;
  } catch (...) {
    host::ObjectHandles().Close(start.handle);
    CountOut();
    return false;
  }
}

HANDLE FailToStart(SOCKET owned, DWORD error) {
  host::AbandonSocket(owned);
  SetLastError(error);
  return 0;
}

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

BOOL FailWith(DWORD error) {
  SetLastError(error);
  return FALSE;
}

}  // namespace

HANDLE CreateThread(void*, DWORD, ThreadRoutine routine, void* parameter, DWORD, DWORD* threadId) {
  const auto value = reinterpret_cast<SOCKET>(parameter);
  const SOCKET owned = host::IsOpenSocket(value) ? value : 0;
  if (const DWORD error = host::FaultFor("CreateThread")) return FailToStart(owned, error);
  if (!routine) return FailToStart(owned, ERROR_INVALID_PARAMETER);
  Start start{routine, parameter, owned, 0, NewThreadId()};
  if (!StartThread(start)) return FailToStart(owned, ERROR_NOT_ENOUGH_MEMORY);
  if (threadId) *threadId = start.id;
  return start.handle;
}

DWORD GetCurrentThreadId() {
  if (t_threadId == 0) t_threadId = NewThreadId();
  return t_threadId;
}

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
  if (const DWORD error = host::FaultFor("TlsSetValue")) return FailWith(error);
  const DWORD generation = Generation(slot);
  if (generation == 0) return FailWith(ERROR_INVALID_PARAMETER);
  t_values[slot] = {value, generation};
  return TRUE;
}

BOOL TlsFree(DWORD slot) {
  if (const DWORD error = host::FaultFor("TlsFree")) return FailWith(error);
  const std::lock_guard guard(g_allocation);
  if (Generation(slot) == 0) return FailWith(ERROR_INVALID_PARAMETER);
  ++g_generations[slot];
  return TRUE;
}

namespace host {

void WaitForRequestThreads() {
  RequestThreads& threads = Threads();
  std::unique_lock guard(threads.lock);
  threads.none.wait(guard, [&] { return threads.running == 0; });
}

}  // namespace host
}  // namespace ce
