#include "common/terminal/screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>

namespace terminal {
namespace {

std::string_view Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

}  // namespace

std::size_t ColumnsOf(int descriptor) {
  if (isatty(descriptor) != 1) return kUsualColumns;
  const std::string_view wish = Variable("COLUMNS");
  unsigned short columns = 0;
  const auto [end, error] = std::from_chars(wish.data(), wish.data() + wish.size(), columns);
  if (error == std::errc() && end == wish.data() + wish.size() && columns > 0) return columns;
  winsize size{};
  if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return kUsualColumns;
}

bool IsAble() {
  const std::string_view kind = Variable("TERM");
  return !kind.empty() && kind != "dumb";
}

bool ShowsEmphasis(int descriptor) {
  return isatty(descriptor) == 1 && IsAble() && Variable("NO_COLOR").empty();
}

std::string Emphasised(std::string_view text) {
  return "\x1B[1m" + std::string(text) + "\x1B[0m";
}

}  // namespace terminal
