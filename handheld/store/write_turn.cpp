#include "handheld/store/write_turn.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace ce::host {
namespace {

// Never destroyed: a thread may write after static objects have gone.
struct WriteQueue {
  std::mutex lock;
  std::condition_variable moved;
  std::deque<const WriteTurn*> turns;  // the first one writes
};

WriteQueue& TheWriteQueue() {
  static WriteQueue* const queue = new WriteQueue;
  return *queue;
}

}  // namespace

bool WriteTurn::Await(std::chrono::milliseconds patience) {
  WriteQueue& queue = TheWriteQueue();
  std::unique_lock guard(queue.lock);
  queue.turns.push_back(this);
  if (queue.moved.wait_for(guard, patience, [&] { return queue.turns.front() == this; })) {
    return mine_ = true;
  }
  std::erase(queue.turns, this);
  queue.moved.notify_all();
  return false;
}

void WriteTurn::End() {
  if (!mine_) return;
  mine_ = false;
  WriteQueue& queue = TheWriteQueue();
  const std::lock_guard guard(queue.lock);
  queue.turns.pop_front();
  queue.moved.notify_all();
}

std::size_t WaitingWriters() {
  WriteQueue& queue = TheWriteQueue();
  const std::lock_guard guard(queue.lock);
  return queue.turns.empty() ? 0 : queue.turns.size() - 1;
}

}  // namespace ce::host
