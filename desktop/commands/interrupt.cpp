#include "desktop/commands/interrupt.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace desktop {
namespace {

int g_interruptWriteEnd = -1;

void OnInterruption(int) {
  const int error = errno;
  [[maybe_unused]] const ssize_t written = write(g_interruptWriteEnd, "", 1);
  errno = error;
}

}  // namespace

int CatchInterruptions() {
  std::signal(SIGPIPE, SIG_IGN);
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return -1;
  g_interruptWriteEnd = ends[1];

  struct sigaction action {};
  action.sa_handler = OnInterruption;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  return ends[0];
}

}  // namespace desktop
