#include "tests/opinions/any_text.h"

#include <rapidcheck.h>

#include <vector>

#include "common/text/text.h"

namespace corvane::testing {

std::string AnyText() {
  if (*rc::gen::inRange(0, 3) == 0) return {};
  const auto piece = rc::gen::weightedOneOf<std::string>(
      {{6, rc::gen::element<std::string>("a", "n", "Z", "0", "é", "山田", "\U0001F600", " ")},
       {5, rc::gen::element<std::string>("\\", ";", ",", ":", "\"", "=", "^", "\r\n", "\n", "\r",
                                         "\t", "=0D", "^n", "\\,", "\\;")},
       {1, rc::gen::element<std::string>("END:VCARD", "\r\nEND:VEVENT\r\n", "\uFEFF", "\u2028",
                                         std::string(90, 'w'),
                                         "山山山山山山山山山山山山山山山山山山山山"
                                         "山山山山山山山山")}});
  std::string text;
  for (const std::string& each : *rc::gen::container<std::vector<std::string>>(piece)) text += each;
  return text;
}

std::string PlainText(const std::string& text) {
  return text::NormalizeLineBreaks(text);
}

}  // namespace corvane::testing
