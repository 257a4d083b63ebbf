// Questions to the platform, each answered on a line of its own. The same source asks Windows and
// the tree; what they are asked is the same on every run.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>

#include "tests/wine/answers/machine.h"

namespace answers {

// Writes "question<TAB>answer".
void Say(std::string_view question, std::string_view answer);

void AskDates();
void AskScans();
void AskPictures();
void AskDocuments();

// Written so that reading it gives the same number.
std::string Number(double number);
std::string Number(std::int64_t number);
// Year, month, day, hour, minute, second, millisecond; what is not given is 0.
SYSTEMTIME MakeTime(const std::array<std::int64_t, 7>& parts);
// "year-month-day hour:minute:second.millisecond, weekday".
std::string Time(const SYSTEMTIME& time);
// Printable ASCII as it stands but for the backslash, all else as "\u000a".
std::string Printable(const Wide& text);
// The same, byte by byte, as "\x0a".
std::string Printable(std::string_view bytes);
Wide FromUtf8(std::string_view text);

// The same numbers on every machine, as long as each is asked for in a statement or a list in
// braces: the order of a call's arguments is the compiler's.
class Chance {
 public:
  explicit Chance(std::uint64_t seed) : engine_(seed) {}

  // From `first` to `last`.
  std::int64_t Between(std::int64_t first, std::int64_t last) {
    return first +
           static_cast<std::int64_t>(engine_() % static_cast<std::uint64_t>(last - first + 1));
  }
  template <typename T, std::size_t kCount>
  const T& OneOf(const T (&all)[kCount]) {
    return all[Between(0, kCount - 1)];
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace answers
