#include "handheld/base/fault.h"

#include <atomic>
#include <utility>

namespace ce::host {
namespace {

std::atomic<FaultPlan*> g_plan{nullptr};

}  // namespace

FaultPlan FaultPlan::FailNth(std::uint64_t n, DWORD error) {
  return {{}, n, error, false};
}

FaultPlan FaultPlan::FailCalls(std::string call, DWORD error) {
  return {std::move(call), 0, error, true};
}

FaultPlan FaultPlan::FailNthCall(std::string call, std::uint64_t n, DWORD error) {
  return {std::move(call), n, error, false};
}

FaultPlan::FaultPlan(std::string call, std::uint64_t n, DWORD error, bool every)
    : call_(std::move(call)), n_(n), error_(error), every_(every) {
  g_plan = this;
}

FaultPlan::~FaultPlan() {
  g_plan = nullptr;
}

std::uint64_t FaultPlan::calls() const {
  const std::lock_guard guard(lock_);
  return calls_;
}

bool FaultPlan::fired() const {
  return !firedCall().empty();
}

std::string FaultPlan::firedCall() const {
  const std::lock_guard guard(lock_);
  return fired_;
}

DWORD FaultPlan::Decide(std::string_view call) {
  if (!call_.empty() && call != call_) return 0;
  const std::lock_guard guard(lock_);
  ++calls_;
  if (!every_ && calls_ != n_) return 0;
  fired_ = call;
  return error_;
}

DWORD FaultFor(const char* call) {
  FaultPlan* plan = g_plan.load(std::memory_order_acquire);
  return plan ? plan->Decide(call) : 0;
}

HRESULT FaultStatus(const char* call) {
  const DWORD error = FaultFor(call);
  if (error == 0 || error >= 0x80000000) return static_cast<HRESULT>(error);
  return static_cast<HRESULT>(0x80070000 | (error & 0xFFFF));
}

}  // namespace ce::host
