// Whose turn it is to write to the store.
#pragma once

#include <chrono>
#include <cstddef>

namespace ce::host {

// How long a write waits for others.
inline constexpr std::chrono::milliseconds kWritePatience{10'000};

// The connections of this process write one after the other, in the order in which they came: each
// waits for those before it and no longer. The database's own lock has no order.
class WriteTurn {
 public:
  WriteTurn() = default;
  WriteTurn(const WriteTurn&) = delete;
  WriteTurn& operator=(const WriteTurn&) = delete;
  ~WriteTurn() { End(); }

  // False when it has not come in that time. May throw std::bad_alloc.
  [[nodiscard]] bool Await(std::chrono::milliseconds patience = kWritePatience);
  // Nothing when it is not this one's turn.
  void End();

 private:
  bool mine_ = false;
};

// How many wait for their turn now.
std::size_t WaitingWriters();

}  // namespace ce::host
