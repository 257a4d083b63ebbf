// What a command talks to, what its process ends with, and how a person ends it.
#pragma once

#include <functional>
#include <istream>
#include <ostream>
#include <string>
#include <string_view>

#include "common/terminal/verbosity.h"

namespace desktop {

enum ExitCode : int { kDone = 0, kFailed = 1, kUsage = 2, kPartlyDone = 3 };

using terminal::Verbosity;

struct Console {
  std::ostream& out;
  std::ostream& err;
  std::istream& in;
  bool errIsTerminal = false;
  bool inIsTerminal = false;
  int inFd = -1;  // behind in, to wait at together with an interruption; -1 for none
  bool outIsTerminal = false;
  Verbosity verbosity = Verbosity::kSummary;
  bool json = false;  // results as lines of JSON

  [[nodiscard]] bool showsProgress() const {
    return errIsTerminal && verbosity != Verbosity::kErrors;
  }
};

// Runs a command, and turns what it throws into a message and kFailed; but for std::bad_alloc,
// which is for main to tell.
int RunGuarded(const Console& console, const std::function<int()>& command);

// A line "corvane-desktop: ..." on the error output.
void TellProblem(const Console& console, std::string_view problem);

// The next line of the input, empty at its end. Throws Interrupted when interruptFd, a
// ConnectionOptions', becomes readable before it comes.
std::string ReadAnswer(const Console& console, int interruptFd);

// Throws Error when the output did not take all that was written.
void FlushOutput(const Console& console);

// From now on, the first SIGINT, SIGTERM or SIGHUP makes the descriptor readable, for
// ConnectionOptions::interruptFd; a second one ends the process. A write to a pipe that nobody
// reads, or to a file that may not grow, fails instead of ending the process. Call it once, from
// main.
int CatchInterruptions();

}  // namespace desktop
