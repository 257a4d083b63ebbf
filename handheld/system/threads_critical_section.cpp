#include <mutex>
#include <new>

#include "platform/threads.h"

namespace ce {
namespace {

std::recursive_mutex* MutexOf(const CRITICAL_SECTION* section) {
  return static_cast<std::recursive_mutex*>(section->implementation);
}

}  // namespace

// None of these is a fault point: the device's calls have no way to report a failure. A section
// that is not initialised, or could not be, locks nothing.

void InitializeCriticalSection(CRITICAL_SECTION* section) {
  section->implementation = new (std::nothrow) std::recursive_mutex;
}

void EnterCriticalSection(CRITICAL_SECTION* section) {
  if (section->implementation) MutexOf(section)->lock();
}

void LeaveCriticalSection(CRITICAL_SECTION* section) {
  if (section->implementation) MutexOf(section)->unlock();
}

void DeleteCriticalSection(CRITICAL_SECTION* section) {
  delete MutexOf(section);
  section->implementation = nullptr;
}

}  // namespace ce
