// "&...;" as backups have them.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace formats {

inline constexpr std::size_t kLongestReference = 16;

struct Reference {
  std::size_t length = 0;  // with "&" and ";"
  bool isNumber = false;
  unsigned long number = 0;  // 0x110000 for whatever is beyond Unicode
};

// The reference at the start of `text`: a number or one of XML's five names. Nothing when it is
// none, or is cut off.
std::optional<Reference> ReadReference(std::string_view text);

// Whether `text` may become a reference by what follows.
bool IsReferenceCutOff(std::string_view text);

inline bool IsHighSurrogate(unsigned long number) {
  return number >= 0xD800 && number <= 0xDBFF;
}
inline bool IsLowSurrogate(unsigned long number) {
  return number >= 0xDC00 && number <= 0xDFFF;
}

}  // namespace formats
