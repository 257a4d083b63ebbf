// One property of a vCard or an iCalendar file, taken apart: group, name, parameters and the value
// as UTF-8 text.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/formats/lines/vcard_lines.h"

namespace formats {

struct Property {
  std::size_t line = 0;
  VCardDialect dialect = VCardDialect::k30;
  std::string group;  // upper case, empty for none
  std::string name;   // upper case
  std::string label;  // what its group's X-ABLabel calls it, when that is no known kind
  // Names in upper case, one entry a value; 2.1's bare words stand under TYPE or ENCODING.
  std::vector<std::pair<std::string, std::string>> parameters;
  // UTF-8 with every line break LF; transfer encoding and character set are undone, escapes not.
  std::string value;
  std::string problem;  // what was odd about the value's bytes, empty for nothing

  // The first value of a parameter, null without it.
  const std::string* Parameter(std::string_view parameter) const;
  // Whether TYPE holds this upper-case word, in whatever case.
  bool HasType(std::string_view type) const;
  // 1 to 100, 1 the most preferred; 101 without a preference.
  int Preference() const;
};

// Takes a content line apart. Null for a line that is no property.
std::optional<Property> ParseProperty(const ContentLine& line);

enum class TransferEncoding { kNone, kQuotedPrintable, kBase64 };
TransferEncoding EncodingOf(const Property& property);

// A value's parts between separators that no backslash escapes; the parts stay escaped. Always at
// least one.
std::vector<std::string_view> SplitValue(std::string_view value, char separator);

// Undoes a property's escapes, leaves out control characters but tabs, and gives each line break
// the form that the writer noted in the parameter X-LINE-BREAKS: "lf", "crlf" or "cr" for one break
// after the other, the last one standing for all that follow. To be called for a value's parts in
// their order.
class Unescaper {
 public:
  explicit Unescaper(const Property& property);
  std::string operator()(std::string_view part);

 private:
  void AppendLineBreak(std::string& text);

  const Property& property_;
  std::vector<std::string_view> breaks_;
  std::size_t nextBreak_ = 0;
  bool quotedPrintable_ = false;
};

// The whole value, and its components between semicolons, unescaped. 2.1, which was often typed by
// machines of few means, also loses blanks around each.
std::string TextOf(const Property& property);
std::vector<std::string> ComponentsOf(const Property& property);
// One escaped component that may be a list (not in 2.1): its values joined with `glue`.
std::string JoinListValues(const Property& property, Unescaper& unescape,
                           std::string_view component, std::string_view glue);

}  // namespace formats
