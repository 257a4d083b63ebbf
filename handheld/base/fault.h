// Fault points: every call of the virtual handheld can be made to fail on purpose.
//
// A call asks FaultFor (or FaultStatus, when it answers an HRESULT) with its own name before it
// does anything else. Without a plan in force that costs one load.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace ce::host {

class FaultPlan;

namespace detail {
inline std::atomic<FaultPlan*> g_faultPlan{nullptr};
DWORD PlannedFault(const char* call);
HRESULT PlannedStatus(const char* call);
inline bool FaultsArePlanned() {
  return g_faultPlan.load(std::memory_order_acquire) != nullptr;
}
}  // namespace detail

// 0, or the error with which this call must fail: a Win32 or socket code, to be handed on as the
// call hands on its own errors.
[[nodiscard]] inline DWORD FaultFor(const char* call) {
  return detail::FaultsArePlanned() ? detail::PlannedFault(call) : 0;
}

// As FaultFor for calls that answer an HRESULT: S_OK, or the failure. A plan's positive code comes
// back as 0x8007xxxx.
[[nodiscard]] inline HRESULT FaultStatus(const char* call) {
  return detail::FaultsArePlanned() ? detail::PlannedStatus(call) : HRESULT{0};
}

// How many of `bytes` this call may move: fewer than asked when a plan says so.
[[nodiscard]] DWORD FaultBytes(const char* call, DWORD bytes);

// The faults that are in force while this object lives. One at a time in the process; counts calls
// of all threads.
class FaultPlan {
 public:
  // Fails nothing, counts only.
  static constexpr std::uint64_t kNever = 0;

  // Fails the n-th call (1-based) that any thread makes, and no other.
  static FaultPlan FailNth(std::uint64_t n, DWORD error);
  // Fails the n-th call and all behind it.
  static FaultPlan FailFromNth(std::uint64_t n, DWORD error);
  // Fails every call of this name.
  static FaultPlan FailCalls(std::string call, DWORD error);
  // Fails the n-th call of this name, and no other.
  static FaultPlan FailNthCall(std::string call, std::uint64_t n, DWORD error);
  // Fails no call. Every call of this name moves this many bytes at most, and succeeds.
  static FaultPlan GiveFewer(std::string call, DWORD bytes);
  // Fails nothing: counts the calls, of this name when one is given, and keeps their names.
  static FaultPlan CountOnly(std::string call = {});

  FaultPlan(const FaultPlan&) = delete;
  FaultPlan& operator=(const FaultPlan&) = delete;
  ~FaultPlan();

  std::uint64_t calls() const;  // counted so far: of the name when one is given, else all
  bool fired() const;
  std::string firedCall() const;           // the name of the call that failed last, empty for none
  std::vector<std::string> names() const;  // of all calls, in order; CountOnly alone keeps them

 private:
  struct Rule {
    std::string call = {};  // empty for any
    // The first and the last call that fail.
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    DWORD error = 0;
    DWORD mostBytes = ~DWORD{0};
    bool keepsNames = false;
  };

  explicit FaultPlan(Rule rule);
  friend DWORD detail::PlannedFault(const char* call);
  friend DWORD FaultBytes(const char* call, DWORD bytes);
  DWORD Decide(std::string_view call);

  const Rule rule_;
  mutable std::mutex lock_;
  std::uint64_t calls_ = 0;
  std::string fired_;
  std::vector<std::string> names_;
};

}  // namespace ce::host
