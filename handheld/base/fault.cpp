#include "handheld/base/fault.h"

#include <algorithm>
#include <utility>

namespace ce::host {
namespace {

constexpr std::uint64_t kNoEnd = ~std::uint64_t{0};

}  // namespace

FaultPlan FaultPlan::FailNth(std::uint64_t n, DWORD error) {
  return FaultPlan({.first = n, .last = n, .error = error});
}

FaultPlan FaultPlan::FailFromNth(std::uint64_t n, DWORD error) {
  return FaultPlan({.first = n, .last = kNoEnd, .error = error});
}

FaultPlan FaultPlan::FailCalls(std::string call, DWORD error) {
  return FaultPlan({.call = std::move(call), .first = 1, .last = kNoEnd, .error = error});
}

FaultPlan FaultPlan::FailNthCall(std::string call, std::uint64_t n, DWORD error) {
  return FaultPlan({.call = std::move(call), .first = n, .last = n, .error = error});
}

FaultPlan FaultPlan::GiveFewer(std::string call, DWORD bytes) {
  return FaultPlan({.call = std::move(call), .mostBytes = bytes});
}

FaultPlan FaultPlan::CountOnly(std::string call) {
  return FaultPlan({.call = std::move(call), .keepsNames = true});
}

FaultPlan::FaultPlan(Rule rule) : rule_(std::move(rule)) {
  detail::g_faultPlan = this;
}

FaultPlan::~FaultPlan() {
  detail::g_faultPlan = nullptr;
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

std::vector<std::string> FaultPlan::names() const {
  const std::lock_guard guard(lock_);
  return names_;
}

DWORD FaultPlan::Decide(std::string_view call) {
  if (!rule_.call.empty() && call != rule_.call) return 0;
  const std::lock_guard guard(lock_);
  ++calls_;
  if (rule_.keepsNames) names_.emplace_back(call);
  if (calls_ < rule_.first || calls_ > rule_.last) return 0;
  fired_ = call;
  return rule_.error;
}

DWORD detail::PlannedFault(const char* call) {
  FaultPlan* plan = g_faultPlan.load(std::memory_order_acquire);
  return plan ? plan->Decide(call) : 0;
}

HRESULT detail::PlannedStatus(const char* call) {
  const DWORD error = PlannedFault(call);
  if (error == 0 || error >= 0x80000000) return static_cast<HRESULT>(error);
  return static_cast<HRESULT>(0x80070000 | (error & 0xFFFF));
}

DWORD FaultBytes(const char* call, DWORD bytes) {
  const FaultPlan* plan = detail::g_faultPlan.load(std::memory_order_acquire);
  return plan && plan->rule_.call == call ? std::min(bytes, plan->rule_.mostBytes) : bytes;
}

}  // namespace ce::host
