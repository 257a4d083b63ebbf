#include "tests/support/wire/process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace corvane::testing {

Process::Process(const std::string& program, const std::vector<std::string>& arguments) {
  int pipe[2];
  if (pipe2(pipe, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  pid_ = fork();
  if (pid_ == 0) {
    dup2(pipe[1], STDOUT_FILENO);
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  close(pipe[1]);
  output_ = pipe[0];
}

Process::~Process() {
  if (!status_) {
    kill(pid_, SIGKILL);
    Wait();
  }
  close(output_);
}

std::string Process::ReadLine() {
  std::string line;
  char c;
  while (read(output_, &c, 1) == 1 && c != '\n') line += c;
  return line;
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
