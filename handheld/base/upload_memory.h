// The memory that all uploads share.
//
// A document is received into one half of it, and its tree made in the other. Each takes what it
// may need at once, before anything of it comes, so that nobody who has some waits for more: who
// finds too little left waits for its turn. Whose peer keeps the others waiting longer than they
// have patience is cut off.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace ce::host {

class UploadMemory {
 public:
  static constexpr std::size_t kDefaultBytes = std::size_t{512} << 20;

  enum class Use { kReceived, kTree };

 private:
  // What the thread waits for from outside, while it has shares.
  struct Holder {
    unsigned shares = 0;
    void (*cutOff)(void* peer) = nullptr;
    void* peer = nullptr;
  };
  struct Taken {
    Use use;
    std::size_t bytes;
    std::chrono::steady_clock::time_point since;
    std::shared_ptr<Holder> holder;
  };

 public:
  // What was taken, until it goes.
  class Share {
   public:
    Share() = default;
    Share(Share&& other) noexcept
        : memory_(std::exchange(other.memory_, nullptr)), taken_(other.taken_) {}
    Share& operator=(Share&& other) noexcept;
    ~Share() { GiveBack(); }

    std::size_t bytes() const { return memory_ ? taken_->bytes : 0; }
    // Gives back all beyond so much.
    void Keep(std::size_t bytes);
    void GiveBack();

   private:
    friend class UploadMemory;
    Share(UploadMemory* memory, std::list<Taken>::iterator taken)
        : memory_(memory), taken_(taken) {}

    UploadMemory* memory_ = nullptr;
    std::list<Taken>::iterator taken_{};
  };

  // While it lives, its thread waits for a peer, whom `cutOff(peer)` makes an end of on any thread.
  class PeerWait {
   public:
    PeerWait(UploadMemory& memory, void (*cutOff)(void* peer), void* peer);
    PeerWait(const PeerWait&) = delete;
    PeerWait& operator=(const PeerWait&) = delete;
    ~PeerWait();

   private:
    UploadMemory* memory_ = nullptr;
    std::shared_ptr<Holder> holder_;
  };

  // Without patience (0) nobody is cut off.
  void SetLimits(std::size_t bytes, std::chrono::milliseconds patience);

  // Of the thread that asks. Nothing for what does not even fit when nobody else has any; a tree
  // gets as much as there ever is, and has to do with it. May throw std::bad_alloc.
  std::optional<Share> Take(Use use, std::size_t bytes);

  std::size_t taken() const;    // by all
  std::size_t waiting() const;  // threads that wait for their turn

 private:
  struct Half {
    std::size_t taken = 0;
    std::deque<std::uint64_t> queue;  // of those who wait
  };

  static std::shared_ptr<Holder>& OwnHolder();
  Half& HalfOf(Use use) { return use == Use::kReceived ? received_ : trees_; }
  void WaitFor(Half& half, std::size_t bytes, std::unique_lock<std::mutex>& guard);
  void CutOffTheSlow();
  void Change(Taken& taken, std::size_t bytes);

  mutable std::mutex lock_;
  std::condition_variable changed_;
  std::size_t half_ = kDefaultBytes / 2;
  std::chrono::milliseconds patience_{30'000};
  Half received_;
  Half trees_;
  std::uint64_t lastTurn_ = 0;
  std::list<Taken> shares_;
};

// That of the process.
UploadMemory& SharedUploadMemory();

}  // namespace ce::host
