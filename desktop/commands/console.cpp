#include "desktop/commands/console.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <new>
#include <string>

#include "common/text/text.h"
#include "desktop/wire/error.h"

namespace desktop {
namespace {

int g_interruptWriteEnd = -1;

void OnInterruption(int) {
  const int error = errno;
  [[maybe_unused]] const ssize_t written = write(g_interruptWriteEnd, "", 1);
  errno = error;
}

}  // namespace

int RunGuarded(const Console& console, const std::function<int()>& command) {
  try {
    return command();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& problem) {
    TellProblem(console, problem.what());
  }
  return kFailed;
}

void TellProblem(const Console& console, std::string_view problem) {
  console.err << "corvane-desktop: " << text::Shown(problem) << '\n';
}

std::string ReadAnswer(const Console& console, int interruptFd) {
  if (console.inFd >= 0) {
    pollfd watched[2] = {{console.inFd, POLLIN, 0}, {interruptFd, POLLIN, 0}};
    while (poll(watched, 2, -1) < 0 && errno == EINTR) {
    }
    if (watched[1].revents != 0) throw Interrupted();
  }
  std::string answer;
  std::getline(console.in, answer);
  return answer;
}

void FlushOutput(const Console& console) {
  if (!console.out.flush()) throw Error("cannot write to the standard output");
}

int CatchInterruptions() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return -1;
  g_interruptWriteEnd = ends[1];

  struct sigaction action {};
  action.sa_handler = OnInterruption;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
  return ends[0];
}

}  // namespace desktop
