// One TCP connection to an agent, with a bound on how long it may be silent.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "desktop/wire/target.h"

struct addrinfo;

namespace desktop {

struct ConnectionOptions {
  Target target;
  std::chrono::milliseconds timeout{30000};  // for connecting, and for silence while it matters
  // What a download may bring before it is taken for one that never ends.
  std::uint64_t mostDownloaded = std::uint64_t{4} * 1024 * 1024 * 1024;
  // Readable once the person wants the program to stop; -1 for none. Not owned.
  int interruptFd = -1;
};

class Connection {
 public:
  // Resolves the name, tries its addresses in turn. Throws Error when none takes the connection.
  explicit Connection(const ConnectionOptions& options);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // All of the bytes, in one send as far as the system takes them so. What the peer sends meanwhile
  // is kept for Receive, so that neither waits for the other.
  // Throws Error when the peer has gone, or neither takes nor sends anything for the time-out.
  void Send(std::string_view bytes);

  // Exactly count bytes. Throws Error when the connection ends or falls silent before that, and
  // Interrupted even while bytes are coming. Memory grows as they arrive, whatever count says.
  std::string Receive(std::size_t count);
  std::uint32_t ReceiveWord();
  // Whether as many bytes have arrived. Does not wait.
  bool HasArrived(std::size_t count);

  // Says that nothing more will be sent, and waits for the peer to close: false when it has not
  // within the bound.
  bool FinishAndAwaitEnd(std::chrono::milliseconds bound);

  // While held, an interruption waits: an exchange that is under way is brought to its end.
  void HoldInterruption(bool hold) { hold_ = hold; }
  // Throws Interrupted when there is one.
  void ThrowIfInterrupted() const;

  [[nodiscard]] std::uint64_t bytesReceived() const { return received_; }

 private:
  enum class Ready { kYes, kTimedOut };
  enum class Arrival { kSome, kNone, kEnd };
  Ready Await(short events, std::chrono::milliseconds bound) const;
  void AwaitOrThrow(short events) const;
  int TryAddress(const addrinfo& address);
  Arrival TakeArrived();
  [[nodiscard]] std::size_t arrived() const { return filled_ - taken_; }
  [[noreturn]] void ThrowEnded() const;

  ConnectionOptions options_;
  int socket_ = -1;
  bool hold_ = false;
  std::uint64_t received_ = 0;
  std::string input_;
  std::size_t filled_ = 0;  // of that, with what has arrived
  std::size_t taken_ = 0;   // of that, by Receive
  bool inputEnded_ = false;
};

// Waits. Throws Interrupted.
void Pause(const ConnectionOptions& options, std::chrono::milliseconds time);

}  // namespace desktop
