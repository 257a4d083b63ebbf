// A program that a test or benchmark starts.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvane::testing {

struct ProcessOptions {
  // Set in place of, or beside, the variables of the test itself.
  std::vector<std::pair<std::string, std::string>> environment = {};
  // A listening socket to hand over as a service manager does; stays the caller's. -1 for none.
  int listener = -1;
  // Whether ReadErrors() gives the standard error, instead of the test's own showing it.
  bool captureErrors = false;
  // A descriptor that becomes its standard input; stays the caller's. -1 for an empty one.
  int input = -1;
  // How many descriptors the program may have; 0 for as many as the test.
  unsigned descriptorLimit = 0;
  // The columns of a terminal that the standard output is, and the standard error when it is not
  // captured; 0 for a pipe. Lines end as they were written. Nobody types on it.
  unsigned short terminalColumns = 0;
};

// A running program whose standard output can be read line by line.
class Process {
 public:
  Process(const std::string& program, const std::vector<std::string>& arguments,
          const ProcessOptions& options = {});
  ~Process();  // kills it when it still runs
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  std::string ReadLine();   // without the line end; empty at the end of the output
  std::string ReadToEnd();  // all the output that has not been read
  // The standard error until now; whole once the program has ended.
  std::string ReadErrors() const;
  int Wait();  // the exit code, or -signal
  void Kill(int signal);
  pid_t pid() const { return pid_; }

 private:
  pid_t pid_ = -1;
  int output_ = -1;
  int errors_ = -1;
  std::optional<int> status_;
};

}  // namespace corvane::testing
