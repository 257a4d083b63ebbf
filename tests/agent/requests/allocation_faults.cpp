#include "tests/agent/requests/allocation_faults.h"

#include <cstdlib>
#include <new>

#include "tests/support/sanitizers.h"

namespace corvane::testing {
namespace {

// Not objects with a destructor: operator new is called before the first and after the last.
thread_local bool t_counts = false;
thread_local std::uint64_t t_allocations = 0;
thread_local std::uint64_t t_failing = 0;

[[maybe_unused]] bool FailsNow() {
  return t_counts && ++t_allocations == t_failing;
}

}  // namespace

FailNthAllocation::FailNthAllocation(std::uint64_t n) {
  t_failing = n;
  t_allocations = 0;
  t_counts = true;
}

FailNthAllocation::~FailNthAllocation() {
  t_counts = false;
}

std::uint64_t FailNthAllocation::allocations() const {
  return t_allocations;
}

}  // namespace corvane::testing

// The thread sanitizer has its own and lets nobody take their place.
#if !CORVANE_TESTS_THREAD_SANITIZER
// All forms but those for more than usual alignment: a sanitizer has its own of each that is not
// here, and wants what one form gave back by its counterpart.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return corvane::testing::FailsNow() ? nullptr : std::malloc(size != 0 ? size : 1);
}
void* operator new(std::size_t size) {
  void* const block = operator new(size, std::nothrow);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return operator new(size, std::nothrow);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}
#endif
