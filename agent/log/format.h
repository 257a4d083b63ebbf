// printf-style formatting into a fixed buffer, safe in its arguments: a directive that has no
// argument, or one of another kind, prints something harmless and never reads foreign memory.
//
// Directives: %d %i %u %x %X %c %s %%, with the flags '-' and '0', a width, and the sizes l, h and
// I64. As on the device, an integer is taken as 32 bits unless I64 is given. A null text prints as
// "(null)"; a text ends at its first zero.
#pragma once

#include <concepts>
#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>

namespace corvane {

// One argument; refers to texts without owning them.
class FormatArgument {
 public:
  enum class Kind { kInteger, kWide, kNarrow, kNull };

  FormatArgument(std::nullptr_t = nullptr) {}
  template <std::integral T>
  FormatArgument(T value) : kind_(Kind::kInteger), integer_(Extend(value)) {}
  template <typename T>
  requires std::is_enum_v<T> FormatArgument(T value)
      : FormatArgument(static_cast<std::underlying_type_t<T>>(value)) {}
  FormatArgument(std::u16string_view text) : kind_(Kind::kWide), wide_(text) {}
  FormatArgument(const char16_t* text) {
    if (text) *this = FormatArgument(std::u16string_view(text));
  }
  FormatArgument(std::string_view text) : kind_(Kind::kNarrow), narrow_(text) {}
  FormatArgument(const char* text) {
    if (text) *this = FormatArgument(std::string_view(text));
  }
  // The address of an object, as a number.
  FormatArgument(const void* object) : FormatArgument(reinterpret_cast<std::uintptr_t>(object)) {}
  // An owner of a string, such as ce::Bstr.
  template <typename T>
  requires requires(const T& owner) {
    { owner.get() } -> std::convertible_to<const char16_t*>;
  }
  FormatArgument(const T& owner) : FormatArgument(static_cast<const char16_t*>(owner.get())) {}

  Kind kind() const { return kind_; }
  std::uint64_t integer() const { return integer_; }
  std::u16string_view wide() const { return wide_; }
  std::string_view narrow() const { return narrow_; }

 private:
  template <std::integral T>
  static constexpr std::uint64_t Extend(T value) {
    if constexpr (std::is_signed_v<T>) return static_cast<std::uint64_t>(std::int64_t{value});
    return static_cast<std::uint64_t>(value);
  }

  Kind kind_ = Kind::kNull;
  std::uint64_t integer_ = 0;
  std::u16string_view wide_;
  std::string_view narrow_;
};

inline constexpr int kDoesNotFit = -1;

// The number of characters written, without any terminator, or kDoesNotFit, which leaves `out`
// undefined. 8-bit text in a 16-bit format is widened byte by byte; a character above 0x7F of a
// 16-bit text in an 8-bit format becomes '?'.
[[nodiscard]] int FormatText(std::span<char16_t> out, std::u16string_view format,
                             std::span<const FormatArgument> arguments);
[[nodiscard]] int FormatText(std::span<char> out, std::string_view format,
                             std::span<const FormatArgument> arguments);

}  // namespace corvane
