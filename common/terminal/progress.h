// A line on the terminal that says how far a command has come.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace terminal {

class Progress {
 public:
  // Draws nothing unless shown is true: a pipe gets no bars. The label is such as "Pulling".
  Progress(std::ostream& terminal, bool shown, std::string label,
           std::optional<std::uint64_t> total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Draws at most ten times a second, however often the line is cleared in between.
  void Update(std::uint64_t done,
              std::chrono::steady_clock::time_point now = std::chrono::steady_clock::now());
  // Clears the line, before something else is written to the terminal.
  void Hide();

 private:
  std::ostream& terminal_;
  bool shown_;
  bool drawn_ = false;
  std::string label_;
  std::optional<std::uint64_t> total_;
  std::optional<std::chrono::steady_clock::time_point> last_;
};

// "Pushing [#####     ] 12 of 24", or "Pulling 12" when the total is not known.
std::string ProgressLine(std::string_view label, std::uint64_t done,
                         std::optional<std::uint64_t> total);

}  // namespace terminal
