#include "handheld/base/upload_memory.h"

#include <algorithm>
#include <utility>

namespace ce::host {

using SteadyClock = std::chrono::steady_clock;

UploadMemory::Share& UploadMemory::Share::operator=(Share&& other) noexcept {
  if (this == &other) return *this;
  GiveBack();
  memory_ = std::exchange(other.memory_, nullptr);
  taken_ = other.taken_;
  return *this;
}

void UploadMemory::Share::Keep(std::size_t bytes) {
  if (!memory_) return;
  const std::lock_guard guard(memory_->lock_);
  if (bytes < taken_->bytes) memory_->Change(*taken_, bytes);
}

void UploadMemory::Share::GiveBack() {
  UploadMemory* const memory = std::exchange(memory_, nullptr);
  if (!memory) return;
  const std::lock_guard guard(memory->lock_);
  memory->Change(*taken_, 0);
  --taken_->holder->shares;
  memory->shares_.erase(taken_);
}

UploadMemory::PeerWait::PeerWait(UploadMemory& memory, void (*cutOff)(void* peer), void* peer) {
  const std::shared_ptr<Holder>& holder = OwnHolder();
  if (!holder) return;
  const std::lock_guard guard(memory.lock_);
  if (holder->shares == 0) return;
  memory_ = &memory;
  holder_ = holder;
  holder_->cutOff = cutOff;
  holder_->peer = peer;
}

UploadMemory::PeerWait::~PeerWait() {
  if (!memory_) return;
  const std::lock_guard guard(memory_->lock_);
  holder_->cutOff = nullptr;
}

void UploadMemory::SetLimits(std::size_t bytes, std::chrono::milliseconds patience) {
  const std::lock_guard guard(lock_);
  half_ = bytes / 2;
  patience_ = patience;
  changed_.notify_all();
}

std::optional<UploadMemory::Share> UploadMemory::Take(Use use, std::size_t bytes) {
  std::shared_ptr<Holder>& holder = OwnHolder();
  if (!holder) holder = std::make_shared<Holder>();
  std::unique_lock guard(lock_);
  if (use == Use::kTree) bytes = std::min(bytes, half_);
  if (bytes > half_) return std::nullopt;
  // What can fail comes before anything is taken.
  std::list<Taken> added;
  added.push_back({use, 0, {}, holder});
  WaitFor(HalfOf(use), bytes, guard);
  added.back().since = SteadyClock::now();
  Change(added.back(), bytes);
  ++holder->shares;
  shares_.splice(shares_.end(), added);
  return Share(this, std::prev(shares_.end()));
}

void UploadMemory::WaitFor(Half& half, std::size_t bytes, std::unique_lock<std::mutex>& guard) {
  const auto fits = [&] { return half.taken == 0 || bytes <= half_ - std::min(half.taken, half_); };
  if (half.queue.empty() && fits()) return;
  const std::uint64_t turn = ++lastTurn_;
  half.queue.push_back(turn);
  const auto isNext = [&] { return half.queue.front() == turn && fits(); };
  while (!isNext()) {
    if (patience_ == patience_.zero()) {
      changed_.wait(guard);
    } else if (!changed_.wait_for(guard, patience_, isNext)) {
      CutOffTheSlow();
    }
  }
  half.queue.pop_front();
  changed_.notify_all();
}

void UploadMemory::CutOffTheSlow() {
  const SteadyClock::time_point now = SteadyClock::now();
  for (const Taken& taken : shares_) {
    const Holder& holder = *taken.holder;
    if (holder.cutOff && now - taken.since >= patience_) holder.cutOff(holder.peer);
  }
}

void UploadMemory::Change(Taken& taken, std::size_t bytes) {
  Half& half = HalfOf(taken.use);
  half.taken += bytes;
  half.taken -= taken.bytes;
  taken.bytes = bytes;
  changed_.notify_all();
}

std::size_t UploadMemory::taken() const {
  const std::lock_guard guard(lock_);
  return received_.taken + trees_.taken;
}

std::size_t UploadMemory::waiting() const {
  const std::lock_guard guard(lock_);
  return received_.queue.size() + trees_.queue.size();
}

std::shared_ptr<UploadMemory::Holder>& UploadMemory::OwnHolder() {
  thread_local std::shared_ptr<Holder> holder;
  return holder;
}

UploadMemory& SharedUploadMemory() {
  // Never destroyed: threads may end after static objects have.
  static UploadMemory* const memory = new UploadMemory;
  return *memory;
}

}  // namespace ce::host
