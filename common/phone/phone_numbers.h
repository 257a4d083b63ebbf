// Which telephone numbers are the same one, however they are written.
#pragma once

#include <string>
#include <string_view>

namespace phone {

struct NumberingPlan;

// "+49 170 1234567", "0049 170/1234567" and "0170 123 45 67" are one number in Germany.
class PhoneNumbers {
 public:
  // The country by its ISO 3166 code of two letters, in which numbers without a country are
  // dialled. Without one, or with one that is not known, such a number is the same only as one that
  // has the same digits.
  explicit PhoneNumbers(std::string_view country);

  // That of this process's locale; empty for none.
  static std::string CountryOfHost();
  // The country of a locale such as "de_AT.UTF-8"; empty for none.
  static std::string CountryOfLocale(std::string_view locale);
  static bool IsCountry(std::string_view code);

  [[nodiscard]] bool Same(std::string_view a, std::string_view b) const;
  // Equal for numbers that are the same; empty for a text without a digit or a letter.
  [[nodiscard]] std::string KeyOf(std::string_view number) const;

 private:
  const NumberingPlan* plan_;  // null for none
};

}  // namespace phone
