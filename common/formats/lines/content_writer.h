// Content lines of vCards and iCalendar files: escaping and folding.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace formats {

inline constexpr std::string_view kTextSpecials = "\\,;";
inline constexpr std::string_view kUriSpecials = "\\";

// The line, CRLF behind it, folded at 75 octets, never within a character. Control characters but
// for tabs are left out.
void AppendFolded(std::string& out, std::string_view line);

// One property's value. These formats have one line break, so which one each was goes into a
// parameter when it was not a line feed.
class ContentValue {
 public:
  explicit ContentValue(std::string_view specials = kTextSpecials) : specials_(specials) {}
  ContentValue& Add(std::string_view text);
  ContentValue& Separate(char separator) {
    text_ += separator;
    return *this;
  }
  const std::string& text() const { return text_; }
  std::string LineBreakParameter() const;

 private:
  std::string_view specials_;
  std::string text_;
  std::vector<std::string_view> breaks_;
};

// The values of the CATEGORIES properties that the names need. A name with blanks at an end has a
// property of its own, since blanks around the commas of a list are no part of the names.
std::vector<ContentValue> CategoryValues(const std::vector<std::string>& names);

}  // namespace formats
