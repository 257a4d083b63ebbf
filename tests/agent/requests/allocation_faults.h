// Fails allocations: operator new throws std::bad_alloc, in the thread that says so.
#pragma once

#include <cstdint>

namespace corvane::testing {

// While one lives, this thread's n-th allocation from now fails, and no other; or, for n = 0, none.
class FailNthAllocation {
 public:
  explicit FailNthAllocation(std::uint64_t n);
  ~FailNthAllocation();
  FailNthAllocation(const FailNthAllocation&) = delete;
  FailNthAllocation& operator=(const FailNthAllocation&) = delete;
  std::uint64_t allocations() const;  // made so far
};

}  // namespace corvane::testing
