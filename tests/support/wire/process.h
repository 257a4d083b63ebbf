// A program that a test or benchmark starts.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace corvane::testing {

// A running program whose standard output can be read line by line.
class Process {
 public:
  Process(const std::string& program, const std::vector<std::string>& arguments);
  ~Process();  // kills it when it still runs
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  std::string ReadLine();  // without the line end; empty at the end of the output
  int Wait();              // the exit code, or -signal
  void Kill(int signal);
  pid_t pid() const { return pid_; }

 private:
  pid_t pid_ = -1;
  int output_ = -1;
  std::optional<int> status_;
};

}  // namespace corvane::testing
