#include "common/terminal/pager.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdio_ext.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "common/terminal/screen.h"

namespace terminal {
namespace {

// What a shell ends with when it cannot run a command.
constexpr int kCannotRun = 126;
constexpr int kNotFound = 127;

bool IsProgram(const std::string& word) {
  if (word.find('/') != word.npos) return access(word.c_str(), X_OK) == 0;
  const char* const path = std::getenv("PATH");
  for (std::string_view left = path == nullptr ? "" : path; !left.empty();) {
    const std::size_t end = std::min(left.find(':'), left.size());
    if (access((std::string(left.substr(0, end)) + '/' + word).c_str(), X_OK) == 0) return true;
    left.remove_prefix(std::min(end + 1, left.size()));
  }
  return false;
}

// What the command begins with may be the shell's own: then only the shell can tell.
bool MayBeRun(const std::string& command) {
  constexpr std::string_view kOfShells = "|&;<>()$`\\\"'*?[]#~=%{}!\n";
  const std::size_t begin = command.find_first_not_of(" \t");
  if (begin == command.npos) return false;
  const std::string word = command.substr(begin, command.find_first_of(" \t", begin) - begin);
  return word.find_first_of(kOfShells) != word.npos || IsProgram(word);
}

// Empty for none.
std::string PagerCommand() {
  if (!IsAble()) return {};
  const char* const chosen = std::getenv("PAGER");
  std::string command = chosen == nullptr ? "less -FRX" : chosen;
  return MayBeRun(command) ? command : std::string();
}

// -1 when it cannot be started.
pid_t StartPager(std::string command, int input) {
  setenv("LESS", "FRX", 0);  // of a less that $PAGER names
  std::string shell = "sh";
  std::string option = "-c";
  char* const words[] = {shell.data(), option.data(), command.data(), nullptr};
  sigset_t usual;
  sigemptyset(&usual);
  sigaddset(&usual, SIGPIPE);
  sigaddset(&usual, SIGXFSZ);
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_t actions;
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_setsigdefault(&attributes, &usual);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  pid_t pid = -1;
  const int error = posix_spawn(&pid, "/bin/sh", &actions, &attributes, words, environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return error == 0 ? pid : -1;
}

class IgnoredSignal {
 public:
  explicit IgnoredSignal(int signal) : signal_(signal) {
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN;
    sigaction(signal, &ignored, &before_);
  }
  ~IgnoredSignal() { sigaction(signal_, &before_, nullptr); }
  IgnoredSignal(const IgnoredSignal&) = delete;
  IgnoredSignal& operator=(const IgnoredSignal&) = delete;

 private:
  const int signal_;
  struct sigaction before_ {};
};

// An output that goes elsewhere for as long as this lives.
class Diverted {
 public:
  Diverted(int descriptor, int to)
      : descriptor_(descriptor), before_(fcntl(descriptor, F_DUPFD_CLOEXEC, 3)) {
    if (before_ >= 0) dup2(to, descriptor);
  }
  ~Diverted() {
    if (before_ < 0) return;
    dup2(before_, descriptor_);
    close(before_);
  }
  Diverted(const Diverted&) = delete;
  Diverted& operator=(const Diverted&) = delete;

 private:
  const int descriptor_;
  const int before_;
};

// Takes what is still to be written, too. False when it has no reader any more.
bool IsRead(std::FILE* output) {
  std::fflush(output);
  if (std::ferror(output) == 0) return true;
  __fpurge(output);
  std::clearerr(output);
  return false;
}

// A running pager, and the outputs that go to it.
class Pager {
 public:
  // The program goes on as it was when this one does not run.
  explicit Pager(const std::string& command) {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    std::fflush(stdout);
    pid_ = StartPager(command, ends[0]);
    close(ends[0]);
    if (pid_ > 0) {
      if (isatty(STDERR_FILENO) == 1) err_.emplace(STDERR_FILENO, ends[1]);
      out_.emplace(STDOUT_FILENO, ends[1]);
      interruption_.emplace(SIGINT);  // a key of the pager's
      brokenPipe_.emplace(SIGPIPE);
    }
    close(ends[1]);
  }
  ~Pager() { End(); }
  Pager(const Pager&) = delete;
  Pager& operator=(const Pager&) = delete;

  // Before all that has been written was read.
  static bool WasLeft() {
    const bool outIsRead = IsRead(stdout);
    return !IsRead(stderr) || !outIsRead;
  }

  // Waits until the person has left it. False for a command that the shell could not run.
  bool End() {
    out_.reset();
    err_.reset();
    int status = 0;
    while (pid_ > 0 && waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return !WIFEXITED(status) ||
           (WEXITSTATUS(status) != kCannotRun && WEXITSTATUS(status) != kNotFound);
  }

 private:
  pid_t pid_ = -1;
  std::optional<Diverted> out_, err_;
  std::optional<IgnoredSignal> interruption_, brokenPipe_;
};

}  // namespace

int Paged(bool isWanted, const std::function<int()>& run) {
  const bool isTerminal = isatty(STDOUT_FILENO) == 1;
  const std::string command = isWanted && isTerminal ? PagerCommand() : std::string();
  if (command.empty()) return run();
  Pager pager(command);
  int result = 0;
  try {
    result = run();
    if (Pager::WasLeft()) result = 0;
  } catch (...) {
    if (!Pager::WasLeft()) throw;
  }
  if (!pager.End()) throw std::runtime_error("$PAGER cannot be run");
  return result;
}

}  // namespace terminal
