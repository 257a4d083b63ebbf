// What a command talks to, and what its process ends with.
#pragma once

#include <functional>
#include <istream>
#include <ostream>

namespace desktop {

enum ExitCode : int { kDone = 0, kFailed = 1, kUsage = 2, kPartlyDone = 3 };

struct Console {
  std::ostream& out;
  std::ostream& err;
  std::istream& in;
  bool errIsTerminal = false;
  bool inIsTerminal = false;
  int inFd = -1;  // behind in, to wait at together with an interruption; -1 for none
};

// Runs a command, and turns what it throws into a message and kFailed.
int RunGuarded(const Console& console, const std::function<int()>& command);

// Throws Error when the output did not take all that was written.
void FlushOutput(const Console& console);

}  // namespace desktop
