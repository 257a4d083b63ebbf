#include "common/phone/phone_numbers.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <optional>

#include "common/phone/numbering_plans.h"
#include "common/text/text.h"

namespace phone {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// A text in the parts that matter: "+49 (0)170 55-01 ext. 7" is "+", "491705501", "7".
struct ReadNumber {
  bool plus = false;
  std::string digits;
  std::string extension;
};

// What begins an extension, or what is dialled once somebody has answered.
constexpr std::string_view kExtensionMarks[] = {"EXTENSION", "EXT.", "EXT=", "EXT", "X",
                                                "#",         ",",    ";",    "P",   "W"};

// The length of the mark that the text begins with, with the signs that may stand around it.
std::size_t ExtensionMarkOf(std::string_view rest) {
  std::size_t length = 0;
  for (bool found = true; found;) {
    found = false;
    for (const std::string_view mark : kExtensionMarks) {
      if (!text::StartsWithNoCase(rest.substr(length), mark)) continue;
      length += mark.size();
      found = true;
      break;
    }
    if (found && length < rest.size() && rest[length] == ' ') ++length;
  }
  return length;
}

// Nothing for a text that is no number: a word, a service code such as "*100#".
std::optional<ReadNumber> ReadNumberIn(std::string_view text) {
  constexpr std::string_view kArranging = " \t\r\n-./()";
  constexpr std::string_view kNoBreakSpace = "\xC2\xA0";
  ReadNumber number;
  bool inExtension = false;
  for (std::size_t i = 0; i < text.size();) {
    const std::string_view rest = text.substr(i);
    if (IsDigit(text[i])) {
      (inExtension ? number.extension : number.digits) += text[i];
    } else if (text[i] == '+' && number.digits.empty() && !number.plus) {
      number.plus = true;
    } else if (rest.starts_with("(0)") && number.plus) {
      i += 2;  // dialled within the country alone
    } else if (rest.starts_with(kNoBreakSpace)) {
      ++i;
    } else if (kArranging.find(text[i]) == std::string_view::npos) {
      const std::size_t mark = number.digits.empty() || inExtension ? 0 : ExtensionMarkOf(rest);
      if (mark == 0) return std::nullopt;
      inExtension = true;
      i += mark - 1;
    }
    ++i;
  }
  if (number.digits.empty()) return std::nullopt;
  return number;
}

// The first of the words, separated by blanks, that fits; empty for none.
template <typename Fits>
std::string_view FirstWord(std::string_view words, const Fits& fits) {
  while (!words.empty()) {
    const std::string_view word = words.substr(0, words.find(' '));
    if (fits(word)) return word;
    words.remove_prefix(std::min(words.size(), word.size() + 1));
  }
  return {};
}

bool IsWhole(const NumberingPlan& plan, std::size_t length) {
  return length >= plan.wholeLeast && length <= plan.wholeMost;
}

// The digits behind a country code, without a trunk prefix that was left in by mistake. An 8 or a 1
// there may begin an area code.
std::string WithoutTrunk(std::string_view digits) {
  const NumberingPlan* plan = FindPlanByCode(digits);
  if (plan == nullptr) return std::string(digits);
  const std::string_view rest = digits.substr(plan->code.size());
  const std::string_view trunk = FirstWord(plan->trunk, [&](std::string_view word) {
    return word.starts_with('0') && rest.starts_with(word);
  });
  return std::string(plan->code) += rest.substr(trunk.size());
}

// What follows the international prefix; nothing for a number without one.
std::optional<std::string_view> InternationalIn(std::string_view digits,
                                                const NumberingPlan* plan) {
  const auto fits = [&](std::string_view word) { return digits.starts_with(word); };
  std::string_view prefix = FirstWord(plan == nullptr ? "" : plan->international, fits);
  if (prefix.empty() && digits.starts_with("00")) prefix = "00";
  // "810 1234567" may be a number of an area of that code.
  if (prefix.empty() || digits.size() < prefix.size() + 7) return std::nullopt;
  return digits.substr(prefix.size());
}

// With the area, without the trunk prefix; nothing for a local number.
std::optional<std::string_view> NationalIn(std::string_view digits, const NumberingPlan& plan) {
  constexpr std::size_t kLongestService = 3;  // such as 112
  if (plan.trunk.empty()) {
    return digits.size() > kLongestService ? std::optional(digits) : std::nullopt;
  }
  const std::string_view trunk = FirstWord(plan.trunk, [&](std::string_view word) {
    return digits.starts_with(word) && (word == "0" || IsWhole(plan, digits.size() - word.size()));
  });
  if (!trunk.empty()) return digits.substr(trunk.size());
  return IsWhole(plan, digits.size()) ? std::optional(digits) : std::nullopt;
}

std::string KeyOfDigits(const ReadNumber& number, const NumberingPlan* plan) {
  if (number.plus) return "+" + WithoutTrunk(number.digits);
  // A number with an area may begin as an international one does.
  const bool whole = plan != nullptr && plan->wholeMost > 0 && IsWhole(*plan, number.digits.size());
  if (!whole || number.digits.starts_with("00")) {
    if (const auto international = InternationalIn(number.digits, plan)) {
      return "+" + WithoutTrunk(*international);
    }
  }
  if (plan != nullptr) {
    if (const auto national = NationalIn(number.digits, *plan)) {
      return std::string("+").append(plan->code).append(*national);
    }
  }
  return number.digits;
}

}  // namespace

PhoneNumbers::PhoneNumbers(std::string_view country)
    : plan_(FindPlanOf(text::ToUpperAscii(country))) {}

std::string PhoneNumbers::CountryOfHost() {
  for (const char* const name : {"LC_ALL", "LC_TELEPHONE", "LANG"}) {
    const char* const locale = std::getenv(name);
    if (locale != nullptr && *locale != '\0') return CountryOfLocale(locale);
  }
  return {};
}

std::string PhoneNumbers::CountryOfLocale(std::string_view locale) {
  const std::size_t line = locale.find('_');
  if (line == std::string_view::npos) return {};
  const std::string code = text::ToUpperAscii(locale.substr(line + 1, 2));
  const std::string_view behind = locale.substr(std::min(locale.size(), line + 3));
  const bool ends = behind.empty() || behind.front() == '.' || behind.front() == '@';
  return ends && IsCountry(code) ? code : std::string();
}

bool PhoneNumbers::IsCountry(std::string_view code) {
  return FindPlanOf(text::ToUpperAscii(code)) != nullptr;
}

bool PhoneNumbers::Same(std::string_view a, std::string_view b) const {
  const std::string key = KeyOf(a);
  return !key.empty() && key == KeyOf(b);
}

std::string PhoneNumbers::KeyOf(std::string_view number) const {
  if (const std::optional<ReadNumber> read = ReadNumberIn(number)) {
    const std::string key = KeyOfDigits(*read, plan_);
    return read->extension.empty() ? key : key + "x" + read->extension;
  }
  // A word, or a code of the network: as it is, but for blanks and the case of letters.
  std::string key;
  for (const char c : text::ToUpperAscii(number)) {
    if (std::string_view(" \t\r\n").find(c) == std::string_view::npos) key += c;
  }
  return std::ranges::any_of(key, [](unsigned char c) { return c >= 0x80 || std::isalnum(c) != 0; })
             ? key
             : std::string();
}

}  // namespace phone
