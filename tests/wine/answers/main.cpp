#include <charconv>
#include <cstdio>

#include "tests/wine/answers/answers.h"

namespace answers {
namespace {

std::string Hexadecimal(std::string_view mark, unsigned value, int digits) {
  std::string text(mark);
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
    text += "0123456789abcdef"[value >> shift & 15];
  }
  return text;
}

bool StandsAsItIs(unsigned unit) {
  return unit >= 0x20 && unit < 0x7F && unit != '\\';
}

template <typename T>
std::string Written(T number) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

}  // namespace

void Say(std::string_view question, std::string_view answer) {
  std::printf("%.*s\t%.*s\n", static_cast<int>(question.size()), question.data(),
              static_cast<int>(answer.size()), answer.data());
}

std::string Number(double number) {
  return Written(number);
}

std::string Number(std::int64_t number) {
  return Written(number);
}

SYSTEMTIME MakeTime(const std::array<std::int64_t, 7>& parts) {
  const auto word = [&](std::size_t part) { return static_cast<WORD>(parts[part]); };
  return {word(0), word(1), 0, word(2), word(3), word(4), word(5), word(6)};
}

std::string Time(const SYSTEMTIME& time) {
  char text[64];
  std::snprintf(text, sizeof text, "%d-%02d-%02d %02d:%02d:%02d.%03d, %d", time.wYear, time.wMonth,
                time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds,
                time.wDayOfWeek);
  return text;
}

std::string Printable(const Wide& text) {
  std::string out;
  for (const WCHAR unit : text) {
    out +=
        StandsAsItIs(unit) ? std::string(1, static_cast<char>(unit)) : Hexadecimal("\\u", unit, 4);
  }
  return out;
}

std::string Printable(std::string_view bytes) {
  std::string out;
  for (const char c : bytes) {
    const unsigned value = static_cast<unsigned char>(c);
    out += StandsAsItIs(value) ? std::string(1, c) : Hexadecimal("\\x", value, 2);
  }
  return out;
}

Wide FromUtf8(std::string_view text) {
  Wide wide(text.size(), WCHAR{});
  if (text.empty()) return wide;
  const INT units = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<INT>(text.size()),
                                        wide.data(), static_cast<INT>(wide.size()));
  wide.resize(static_cast<std::size_t>(units));
  return wide;
}

}  // namespace answers

int main() {
  answers::AskDates();
  answers::AskScans();
  answers::AskPictures();
  answers::AskDocuments();
}
