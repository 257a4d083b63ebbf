#include "handheld/network/end_signals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <system_error>

#include "handheld/network/select.h"

namespace ce::host {
namespace {

int g_ending = -1;  // readable from the first signal on
void (*g_whenEnding)() = nullptr;
std::atomic<bool> g_ended{false};

void EndInOrder(int) {
  const int error = errno;
  for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, SIG_DFL);
  g_ended = true;
  g_whenEnding();
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(g_ending, &one, sizeof(one));
  errno = error;
}

}  // namespace

void EndSelectsOnSignals(void (*ending)()) {
  g_ending = ::eventfd(0, EFD_CLOEXEC);
  if (g_ending < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  g_whenEnding = ending;
  EndSelectsBy(g_ending);
  for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, EndInOrder);
}

bool EndedBySignal() {
  return g_ended;
}

}  // namespace ce::host
