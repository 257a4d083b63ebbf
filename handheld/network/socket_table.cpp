#include "handheld/network/socket_table.h"

#include <sys/socket.h>

#include <utility>

namespace ce::host {
namespace {

// A value's lower half is the place with the lowest bit set, its upper half the generation.
constexpr unsigned kHalf = sizeof(SOCKET) * 4;
constexpr SOCKET kHalfMask = (SOCKET{1} << kHalf) - 1;

SOCKET HandleOf(std::size_t place, SOCKET generation) {
  return generation << kHalf | static_cast<SOCKET>(place) << 1 | 1;
}

std::size_t PlaceOf(SOCKET handle) {
  return static_cast<std::size_t>((handle & kHalfMask) >> 1);
}

// All ones stays out, for INVALID_SOCKET's sake, and 0 for that of small numbers.
SOCKET NextGeneration(SOCKET generation) {
  return generation + 1 >= kHalfMask ? 1 : generation + 1;
}

std::atomic<std::size_t> g_openSockets{0};

}  // namespace

Socket::Socket(UniqueFd descriptor, SocketState initial)
    : fd(std::move(descriptor)), state(initial) {
  ++g_openSockets;
}

Socket::~Socket() {
  --g_openSockets;
}

std::size_t OpenSocketCount() {
  return g_openSockets;
}

SOCKET SocketTable::Add(SocketPtr socket) {
  const std::lock_guard guard(lock_);
  if (free_.empty()) {
    // Room for every place, so that Remove never allocates.
    if (free_.capacity() <= places_.size()) free_.reserve(2 * places_.size() + 16);
    places_.emplace_back();
    free_.push_back(places_.size() - 1);
  }
  const std::size_t place = free_.back();
  free_.pop_back();
  places_[place].socket = std::move(socket);
  return HandleOf(place, places_[place].generation);
}

const SocketTable::Place* SocketTable::At(SOCKET handle) const {
  const std::size_t place = PlaceOf(handle);
  if (place >= places_.size() || !places_[place].socket) return nullptr;
  return handle == HandleOf(place, places_[place].generation) ? &places_[place] : nullptr;
}

SocketPtr SocketTable::Find(SOCKET handle) const {
  const std::lock_guard guard(lock_);
  const Place* place = At(handle);
  return place ? place->socket : nullptr;
}

void SocketTable::Replace(SOCKET handle, SocketPtr socket) {
  const std::lock_guard guard(lock_);
  if (At(handle)) std::swap(places_[PlaceOf(handle)].socket, socket);
}

SocketPtr SocketTable::Remove(SOCKET handle) {
  const std::lock_guard guard(lock_);
  if (!At(handle)) return nullptr;
  Place& place = places_[PlaceOf(handle)];
  place.generation = NextGeneration(place.generation);
  free_.push_back(PlaceOf(handle));
  return std::exchange(place.socket, nullptr);
}

SocketTable& Sockets() {
  // Outlives every thread that may still use a socket while the process ends.
  static SocketTable* const table = new SocketTable;
  return *table;
}

void CloseNow(SocketPtr socket) {
  const SocketPtr last = std::move(socket);
  // Another thread's call keeps the descriptor open until it returns; this makes it return.
  if (last.use_count() > 1) ::shutdown(last->fd.get(), SHUT_RDWR);
}

}  // namespace ce::host
