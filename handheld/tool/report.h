// What a command of corvane-device says and ends with.
#pragma once

#include <fmt/core.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

#include "common/terminal/screen.h"
#include "common/terminal/verbosity.h"
#include "common/text/text.h"

namespace tool {

// The program's exit code.
enum class Outcome { kDone = 0, kFailed = 1, kPartlyDone = 3 };

using terminal::Verbosity;

// Results go to `out`; errors and notices to `err`, as lines "corvane-device: …" or "FILE:LINE: …".
struct Report {
  std::FILE* out = stdout;
  std::FILE* err = stderr;
  Verbosity verbosity = Verbosity::kSummary;
  bool json = false;  // results as lines of JSON
  bool outIsTerminal = false;
  bool errIsTerminal = false;
  bool emphasises = false;                        // headings of `out`
  std::size_t columns = terminal::kUsualColumns;  // of `out`
};

// Says something to a person: what names and texts in it could do to a terminal is left out.
template <typename... Values>
void Tell(std::FILE* to, fmt::format_string<Values...> format, Values&&... values) {
  fmt::print(to, "{}", text::Shown(fmt::format(format, std::forward<Values>(values)...)));
}

// A value on the command line that makes no sense: the program's exit code is 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace tool
