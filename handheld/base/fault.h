// Fault points: every call of the virtual handheld can be made to fail on purpose.
//
// A call asks FaultFor (or FaultStatus, when it answers an HRESULT) with its own name before it
// does anything else. Without a plan in force that costs one load.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace ce::host {

// 0, or the error with which this call must fail: a Win32 or socket code, to be handed on as the
// call hands on its own errors.
[[nodiscard]] DWORD FaultFor(const char* call);

// As FaultFor for calls that answer an HRESULT: S_OK, or the failure. A plan's positive code comes
// back as 0x8007xxxx.
[[nodiscard]] HRESULT FaultStatus(const char* call);

// The faults that are in force while this object lives. One at a time in the process; counts calls
// of all threads.
class FaultPlan {
 public:
  // Fails nothing, counts only.
  static constexpr std::uint64_t kNever = 0;

  // Fails the n-th call (1-based) that any thread makes, and no other.
  static FaultPlan FailNth(std::uint64_t n, DWORD error);
  // Fails every call of this name.
  static FaultPlan FailCalls(std::string call, DWORD error);
  // Fails the n-th call of this name, and no other.
  static FaultPlan FailNthCall(std::string call, std::uint64_t n, DWORD error);
  static FaultPlan CountOnly() { return FailNth(kNever, 0); }

  FaultPlan(const FaultPlan&) = delete;
  FaultPlan& operator=(const FaultPlan&) = delete;
  ~FaultPlan();

  std::uint64_t calls() const;  // counted so far: of the name when one is given, else all
  bool fired() const;
  std::string firedCall() const;  // the name of the call that failed last, empty for none

 private:
  FaultPlan(std::string call, std::uint64_t n, DWORD error, bool every);
  friend DWORD FaultFor(const char* call);
  DWORD Decide(std::string_view call);

  const std::string call_;
  const std::uint64_t n_;
  const DWORD error_;
  const bool every_;
  mutable std::mutex lock_;
  std::uint64_t calls_ = 0;
  std::string fired_;
};

}  // namespace ce::host
