// How often something was done and how long it took, for the statistics at the end of the log.
#pragma once

#include "platform/threads.h"
#include "platform/types.h"

namespace corvane {

// Thread-safe. Times are milliseconds.
class TimingCounter {
 public:
  struct Statistics {
    int identifier = 0;
    ce::LONGLONG calls = 0;
    ce::LONGLONG minimum = 0;
    ce::LONGLONG maximum = 0;
    ce::LONGLONG total = 0;

    ce::LONGLONG Average() const { return calls > 0 ? total / calls : 0; }
  };

  explicit TimingCounter(int identifier);
  TimingCounter(const TimingCounter&) = delete;
  TimingCounter& operator=(const TimingCounter&) = delete;
  ~TimingCounter();

  void Add(ce::LONGLONG milliseconds);
  Statistics Read() const;

 private:
  Statistics statistics_;
  mutable ce::CRITICAL_SECTION lock_;
};

}  // namespace corvane
