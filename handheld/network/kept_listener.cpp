#include <mutex>
#include <utility>

#include "handheld/network/listen_options.h"
#include "handheld/network/listener.h"

namespace ce::host {
namespace {

std::mutex g_lock;

SocketPtr& Kept() {
  static SocketPtr* const kept = new SocketPtr;
  return *kept;
}

}  // namespace

bool KeepListener(const SocketPtr& socket) {
  if (socket->state != SocketState::kListening || !socket->agentPort) return false;
  if (!CurrentListenOptions().keepListening) return false;
  const std::lock_guard guard(g_lock);
  Kept() = socket;
  return true;
}

SocketPtr TakeKeptListener() {
  const std::lock_guard guard(g_lock);
  return std::exchange(Kept(), nullptr);
}

void CloseKeptListener() {
  if (SocketPtr kept = TakeKeptListener()) CloseNow(std::move(kept));
}

}  // namespace ce::host
