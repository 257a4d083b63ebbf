#include "desktop/wire/connection.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "common/text/little_endian.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

constexpr std::size_t kPiece = 64 * 1024;
// Of what arrives while something is sent. An agent that does not stop at that must wait.
constexpr std::size_t kMostKept = 1024 * 1024;

std::string Seconds(std::chrono::milliseconds time) {
  return fmt::format("{:g} s", std::chrono::duration<double>(time).count());
}

struct AddressesDeleter {
  void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
};

std::unique_ptr<addrinfo, AddressesDeleter> Resolve(const Target& target) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(target.host.c_str(), target.port.c_str(), &hints, &found);
  if (error != 0) {
    throw Error(fmt::format("cannot find the host {}: {}", target.host,
                            error == EAI_SYSTEM ? std::strerror(errno) : gai_strerror(error)));
  }
  return std::unique_ptr<addrinfo, AddressesDeleter>(found);
}

}  // namespace

Connection::Connection(const ConnectionOptions& options) : options_(options) {
  const auto addresses = Resolve(options.target);
  int error = 0;
  for (const addrinfo* each = addresses.get(); each != nullptr; each = each->ai_next) {
    const int failure = TryAddress(*each);
    if (failure == 0) return;
    // A host that is there and refuses says more than an address family that this computer lacks.
    if (error != ECONNREFUSED) error = failure;
  }
  const std::string where = ToString(options.target);
  if (error == ECONNREFUSED) {
    throw Error(fmt::format("nobody listens at {}: is corvane running there?", where));
  }
  if (error == ETIMEDOUT) {
    throw Error(fmt::format("{} did not answer within {}", where, Seconds(options.timeout)));
  }
  throw Error(fmt::format("cannot connect to {}: {}", where, std::strerror(error)));
}

Connection::~Connection() {
  if (socket_ >= 0) close(socket_);
}

int Connection::TryAddress(const addrinfo& address) {
  socket_ = socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC,
                   address.ai_protocol);
  if (socket_ < 0) return errno;
  int error = connect(socket_, address.ai_addr, address.ai_addrlen) == 0 ? 0 : errno;
  try {
    if (error == EINPROGRESS) {
      error = ETIMEDOUT;
      if (Await(POLLOUT, options_.timeout) == Ready::kYes) {
        socklen_t size = sizeof error;
        getsockopt(socket_, SOL_SOCKET, SO_ERROR, &error, &size);
      }
    }
  } catch (...) {
    close(socket_);
    throw;
  }
  if (error != 0) {
    close(socket_);
    socket_ = -1;
    return error;
  }
  // A chunk's end must not wait for the answer to its beginning.
  const int on = 1;
  setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return 0;
}

Connection::Ready Connection::Await(short events, std::chrono::milliseconds bound) const {
  const auto end = std::chrono::steady_clock::now() + bound;
  for (;;) {
    pollfd watched[2] = {{socket_, events, 0}, {hold_ ? -1 : options_.interruptFd, POLLIN, 0}};
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    const auto wait = std::clamp<std::int64_t>(left.count(), 0, 1 << 30);
    const int count = poll(watched, 2, static_cast<int>(wait));
    if (count > 0 && watched[1].revents != 0) throw Interrupted();
    if (count > 0) return Ready::kYes;
    if (count == 0) return Ready::kTimedOut;
    if (errno != EINTR) throw Error(fmt::format("cannot wait: {}", std::strerror(errno)));
  }
}

void Connection::AwaitOrThrow(short events) const {
  if (Await(events, options_.timeout) == Ready::kYes) return;
  throw Error(fmt::format("{} has been silent for {} ({} bytes received until then)",
                          ToString(options_.target), Seconds(options_.timeout), received_));
}

void Connection::ThrowEnded() const {
  throw Error(fmt::format("{} ended the connection midway, after {} bytes",
                          ToString(options_.target), received_));
}

void Connection::ThrowIfInterrupted() const {
  pollfd watched = {options_.interruptFd, POLLIN, 0};
  if (poll(&watched, 1, 0) > 0) throw Interrupted();
}

void Connection::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      const bool listens = !inputEnded_ && arrived() < kMostKept;
      AwaitOrThrow(static_cast<short>(listens ? POLLOUT | POLLIN : POLLOUT));
      if (listens) TakeArrived();
    } else if (errno == EPIPE || errno == ECONNRESET) {
      ThrowEnded();
    } else if (errno != EINTR) {
      throw Error(
          fmt::format("cannot send to {}: {}", ToString(options_.target), std::strerror(errno)));
    }
  }
}

// One read, as large as the system has it.
Connection::Arrival Connection::TakeArrived() {
  if (taken_ == filled_) taken_ = filled_ = 0;
  if (input_.size() < filled_ + kPiece) input_.resize(filled_ + kPiece);
  const ssize_t got = recv(socket_, input_.data() + filled_, kPiece, 0);
  const int error = errno;
  if (got > 0) {
    filled_ += static_cast<std::size_t>(got);
    received_ += static_cast<std::uint64_t>(got);
    return Arrival::kSome;
  }
  if (got == 0 || error == ECONNRESET) {
    inputEnded_ = true;
    return Arrival::kEnd;
  }
  if (error == EAGAIN || error == EWOULDBLOCK || error == EINTR) return Arrival::kNone;
  throw Error(
      fmt::format("cannot receive from {}: {}", ToString(options_.target), std::strerror(error)));
}

std::string Connection::Receive(std::size_t count) {
  std::string bytes;
  for (;;) {
    const std::size_t some = std::min(count - bytes.size(), arrived());
    bytes.append(input_, taken_, some);
    taken_ += some;
    if (bytes.size() == count) return bytes;
    if (!hold_) ThrowIfInterrupted();
    const Arrival arrival = TakeArrived();
    if (arrival == Arrival::kEnd) ThrowEnded();
    if (arrival == Arrival::kNone) AwaitOrThrow(POLLIN);
  }
}

bool Connection::HasArrived(std::size_t count) {
  while (arrived() < count && !inputEnded_ && TakeArrived() == Arrival::kSome) {
  }
  return arrived() >= count;
}

std::uint32_t Connection::ReceiveWord() {
  return text::WordAt(Receive(4), 0);
}

bool Connection::FinishAndAwaitEnd(std::chrono::milliseconds bound) {
  shutdown(socket_, SHUT_WR);
  char byte = 0;
  while (Await(POLLIN, bound) == Ready::kYes) {
    const ssize_t got = recv(socket_, &byte, 1, 0);
    if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR)) return true;
  }
  return false;
}

void Pause(const ConnectionOptions& options, std::chrono::milliseconds time) {
  pollfd watched = {options.interruptFd, POLLIN, 0};
  if (poll(&watched, 1, static_cast<int>(time.count())) > 0) throw Interrupted();
}

}  // namespace desktop
