#include "tests/support/wire/process.h"

#include <fcntl.h>
#include <pty.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace corvane::testing {

namespace {

constexpr int kHandedOver = 3;  // where a service manager's first socket is

void HandOver(int listener) {
  if (listener != kHandedOver) {
    dup2(listener, kHandedOver);
  } else {
    fcntl(listener, F_SETFD, 0);
  }
  setenv("LISTEN_FDS", "1", 1);
  setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
}

struct Ends {
  int reading = -1;
  int writing = -1;
};

Ends NewPipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  return {ends[0], ends[1]};
}

Ends NewTerminal(unsigned short columns) {
  Ends ends;
  const winsize size{24, columns, 0, 0};
  if (openpty(&ends.reading, &ends.writing, nullptr, nullptr, &size) != 0)
    throw std::runtime_error("no terminal");
  termios asWritten{};
  tcgetattr(ends.writing, &asWritten);
  cfmakeraw(&asWritten);
  tcsetattr(ends.writing, TCSANOW, &asWritten);
  fcntl(ends.reading, F_SETFD, FD_CLOEXEC);
  fcntl(ends.writing, F_SETFD, FD_CLOEXEC);
  return ends;
}

[[noreturn]] void Become(char** argv, const ProcessOptions& options, int output, int errors) {
  dup2(options.input >= 0 ? options.input : open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  if (errors >= 0) {
    dup2(errors, STDERR_FILENO);
  } else if (options.terminalColumns != 0) {
    dup2(output, STDERR_FILENO);
  }
  for (const auto& [name, value] : options.environment) setenv(name.c_str(), value.c_str(), 1);
  if (options.listener >= 0) HandOver(options.listener);
  const rlimit limit{options.descriptorLimit, options.descriptorLimit};
  if (options.descriptorLimit != 0 && setrlimit(RLIMIT_NOFILE, &limit) != 0) _exit(127);
  execv(argv[0], argv);
  _exit(127);
}

}  // namespace

Process::Process(const std::string& program, const std::vector<std::string>& arguments,
                 const ProcessOptions& options) {
  const Ends ends = options.terminalColumns == 0 ? NewPipe() : NewTerminal(options.terminalColumns);
  // A file, so that nobody has to read it for the program to go on.
  if (options.captureErrors) errors_ = memfd_create("errors", MFD_CLOEXEC);
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  pid_ = fork();
  if (pid_ == 0) Become(argv.data(), options, ends.writing, errors_);
  close(ends.writing);
  output_ = ends.reading;
}

Process::~Process() {
  if (!status_) {
    kill(pid_, SIGKILL);
    Wait();
  }
  close(output_);
  if (errors_ >= 0) close(errors_);
}

std::string Process::ReadLine() {
  std::string line;
  char c;
  while (read(output_, &c, 1) == 1 && c != '\n') line += c;
  return line;
}

std::string Process::ReadToEnd() {
  std::string text;
  char buffer[4096];
  for (ssize_t got; (got = read(output_, buffer, sizeof(buffer))) > 0;)
    text.append(buffer, static_cast<std::size_t>(got));
  return text;
}

std::string Process::ReadErrors() const {
  std::string text;
  char buffer[4096];
  for (ssize_t got;
       (got = pread(errors_, buffer, sizeof(buffer), static_cast<off_t>(text.size()))) > 0;)
    text.append(buffer, static_cast<std::size_t>(got));
  return text;
}

int Process::Wait() {
  if (!status_) {
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  return *status_;
}

void Process::Kill(int signal) {
  kill(pid_, signal);
}

}  // namespace corvane::testing
