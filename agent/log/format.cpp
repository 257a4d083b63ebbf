#include "agent/log/format.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace corvane {
namespace {

template <typename Char>
class Sink {
 public:
  explicit Sink(std::span<Char> out) : out_(out) {}

  void Put(Char character) {
    if (used_ < out_.size()) out_[used_] = character;
    ++used_;
  }
  void Pad(std::size_t count, Char character) {
    // A width is bounded by what can fit, so that a huge one costs nothing.
    for (count = std::min(count, out_.size() + 1); count > 0; --count) Put(character);
  }
  int Result() const { return used_ > out_.size() ? kDoesNotFit : static_cast<int>(used_); }

 private:
  std::span<Char> out_;
  std::size_t used_ = 0;
};

struct Directive {
  bool leftAligned = false;
  bool zeroPadded = false;
  bool wide64 = false;
  std::size_t width = 0;
  char type = 0;  // 0: not a directive
};

template <typename Char>
class DirectiveParser {
 public:
  explicit DirectiveParser(std::basic_string_view<Char> text) : text_(text) {}

  Directive Parse() {
    Directive directive;
    for (; Peek() == '-' || Peek() == '0'; ++next_) {
      (Peek() == '-' ? directive.leftAligned : directive.zeroPadded) = true;
    }
    for (; Peek() >= '0' && Peek() <= '9'; ++next_) {
      directive.width = std::min<std::size_t>(directive.width * 10 + (Peek() - '0'), kMaxWidth);
    }
    while (Peek() == 'l' || Peek() == 'h') ++next_;
    if (Peek() == 'I' && Peek(1) == '6' && Peek(2) == '4') {
      directive.wide64 = true;
      next_ += 3;
    }
    if (std::string_view("diuxXcs%").find(Peek()) != std::string_view::npos) {
      directive.type = Peek();
      ++next_;
    }
    return directive;
  }
  std::size_t consumed() const { return next_; }

 private:
  static constexpr std::size_t kMaxWidth = 0xFFFF;

  // '\x7F' stands for the end and for whatever no directive contains.
  char Peek(std::size_t ahead = 0) const {
    if (next_ + ahead >= text_.size()) return '\x7F';
    const Char character = text_[next_ + ahead];
    return character > 0 && character < 0x7F ? static_cast<char>(character) : '\x7F';
  }

  std::basic_string_view<Char> text_;
  std::size_t next_ = 0;
};

struct Number {
  bool negative = false;
  std::array<char, 20> digits{};
  std::size_t count = 0;

  std::string_view text() const { return {digits.data() + digits.size() - count, count}; }
};

Number MakeNumber(std::uint64_t value, const Directive& directive) {
  const bool isHex = directive.type == 'x' || directive.type == 'X';
  const bool isSigned = !isHex && directive.type != 'u';
  if (!directive.wide64) {
    const auto low = static_cast<std::uint32_t>(value);
    value =
        isSigned ? static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(low)}) : low;
  }
  Number number;
  number.negative = isSigned && static_cast<std::int64_t>(value) < 0;
  if (number.negative) value = 0 - value;
  const char* figures = directive.type == 'x' ? "0123456789abcdef" : "0123456789ABCDEF";
  const unsigned base = isHex ? 16 : 10;
  do {
    number.digits[number.digits.size() - ++number.count] = figures[value % base];
    value /= base;
  } while (value != 0);
  return number;
}

template <typename Char>
void PutNumber(Sink<Char>& sink, std::uint64_t value, const Directive& directive) {
  const Number number = MakeNumber(value, directive);
  const std::size_t length = number.count + (number.negative ? 1 : 0);
  const std::size_t padding = directive.width > length ? directive.width - length : 0;
  const bool zeros = directive.zeroPadded && !directive.leftAligned;
  if (!directive.leftAligned && !zeros) sink.Pad(padding, ' ');
  if (number.negative) sink.Put('-');
  if (zeros) sink.Pad(padding, '0');
  for (const char digit : number.text()) sink.Put(static_cast<Char>(digit));
  if (directive.leftAligned) sink.Pad(padding, ' ');
}

char16_t Convert(char character, char16_t*) {
  return static_cast<unsigned char>(character);
}
char16_t Convert(char16_t character, char16_t*) {
  return character;
}
char Convert(char character, char*) {
  return character;
}
char Convert(char16_t character, char*) {
  return character <= 0x7F ? static_cast<char>(character) : '?';
}

template <typename Char, typename TextChar>
void PutText(Sink<Char>& sink, std::basic_string_view<TextChar> text, const Directive& directive) {
  text = text.substr(0, text.find(TextChar{0}));
  const std::size_t padding = directive.width > text.size() ? directive.width - text.size() : 0;
  if (!directive.leftAligned) sink.Pad(padding, ' ');
  for (const TextChar character : text) {
    sink.Put(Convert(character, static_cast<Char*>(nullptr)));
  }
  if (directive.leftAligned) sink.Pad(padding, ' ');
}

template <typename Char>
void PutArgument(Sink<Char>& sink, const FormatArgument& argument, const Directive& directive) {
  switch (argument.kind()) {
    case FormatArgument::Kind::kWide:
      return PutText(sink, argument.wide(), directive);
    case FormatArgument::Kind::kNarrow:
      return PutText(sink, argument.narrow(), directive);
    case FormatArgument::Kind::kNull:
      return PutText(sink, std::string_view("(null)"), directive);
    case FormatArgument::Kind::kInteger:
      if (directive.type != 'c') return PutNumber(sink, argument.integer(), directive);
      const auto character = static_cast<char16_t>(argument.integer());
      return PutText(sink, std::u16string_view(&character, 1), directive);
  }
}

template <typename Char>
int Format(std::span<Char> out, std::basic_string_view<Char> format,
           std::span<const FormatArgument> arguments) {
  Sink<Char> sink(out);
  std::size_t nextArgument = 0;
  for (std::size_t i = 0; i < format.size();) {
    if (format[i] != '%') {
      sink.Put(format[i++]);
      continue;
    }
    DirectiveParser<Char> parser(format.substr(i + 1));
    const Directive directive = parser.Parse();
    if (directive.type == 0 || directive.type == '%') {
      sink.Put('%');
      i += directive.type == 0 ? 1 : 1 + parser.consumed();
      continue;
    }
    i += 1 + parser.consumed();
    const FormatArgument none;
    PutArgument(sink, nextArgument < arguments.size() ? arguments[nextArgument] : none, directive);
    ++nextArgument;
  }
  return sink.Result();
}

}  // namespace

int FormatText(std::span<char16_t> out, std::u16string_view format,
               std::span<const FormatArgument> arguments) {
  return Format(out, format, arguments);
}

int FormatText(std::span<char> out, std::string_view format,
               std::span<const FormatArgument> arguments) {
  return Format(out, format, arguments);
}

}  // namespace corvane
