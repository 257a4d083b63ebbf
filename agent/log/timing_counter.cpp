#include "agent/log/timing_counter.h"

#include <algorithm>

#include "agent/log/section_guard.h"

namespace corvane {

TimingCounter::TimingCounter(int identifier) {
  statistics_.identifier = identifier;
  ce::InitializeCriticalSection(&lock_);
}

TimingCounter::~TimingCounter() {
  ce::DeleteCriticalSection(&lock_);
}

void TimingCounter::Add(ce::LONGLONG milliseconds) {
  const SectionGuard guard(&lock_);
  const bool first = statistics_.calls == 0;
  statistics_.minimum = first ? milliseconds : std::min(statistics_.minimum, milliseconds);
  statistics_.maximum = first ? milliseconds : std::max(statistics_.maximum, milliseconds);
  statistics_.total += milliseconds;
  ++statistics_.calls;
}

TimingCounter::Statistics TimingCounter::Read() const {
  const SectionGuard guard(&lock_);
  return statistics_;
}

}  // namespace corvane
