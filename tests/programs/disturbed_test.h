// A command of a program, run with calls to the system that go wrong: files, connections, memory,
// an end at any write.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tests/programs/tool_test.h"

namespace corvane::testing {

class DisturbedTest : public ToolTest {
 protected:
  DisturbedTest();

  // The state before the command, anew.
  virtual void Prepare() = 0;
  // The command, to its end.
  virtual Ended RunCommand(const ProcessOptions& options) const = 0;
  // Keeps what the command has done when nothing went wrong.
  virtual void KeepWhole() = 0;
  // What was disturbed has said so, or done its work, and the next run finishes it.
  virtual void ExpectToldAndFinished(const Ended& ended, const Fault& fault) = 0;

  // Lets each of the faults happen at some of the command's calls, or at all of them in the long
  // form, and prints at how many.
  void Disturb(const std::string& command, std::vector<Fault> faults);

  // The directory in which the command works.
  const std::string work_;
  int doneCode_ = 0;  // that of the command when nothing goes wrong

 private:
  Ended RunWith(const Fault& fault, std::uint64_t n) const;
};

// Names each content that differs, and where.
void ExpectSame(const std::map<std::string, std::string>& is,
                const std::map<std::string, std::string>& expected);

// Whether it has ended without a word: killed, or within a library that does not look whether it
// got its memory.
bool EndedAtOnce(const Ended& ended, const Fault& fault);

}  // namespace corvane::testing
