// Threads, interlocked counting and thread-local slots.
#pragma once

#include <atomic>

#include "platform/types.h"

namespace ce {

using ThreadRoutine = DWORD (*)(void* parameter);

// 0 and the last error when the thread cannot be started. A thread that is started with an open
// SOCKET as its parameter becomes that socket's owner: what it leaves open when it returns, or what
// no thread could be started for, is closed once the peer has closed its end.
// `security`, `stackSize` and `flags` are not used; `threadId` may be null.
HANDLE CreateThread(void* security, DWORD stackSize, ThreadRoutine routine, void* parameter,
                    DWORD flags, DWORD* threadId);
// Identifies the thread within the process; never 0.
DWORD GetCurrentThreadId();

inline LONG InterlockedIncrement(std::atomic<LONG>* value) {
  return ++*value;
}
inline LONG InterlockedDecrement(std::atomic<LONG>* value) {
  return --*value;
}

inline constexpr DWORD TLS_OUT_OF_INDEXES = 0xFFFFFFFF;
// A slot holds one pointer-sized value per thread, null at first.
DWORD TlsAlloc();
void* TlsGetValue(DWORD slot);
BOOL TlsSetValue(DWORD slot, void* value);
BOOL TlsFree(DWORD slot);

}  // namespace ce
