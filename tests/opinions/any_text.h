// Texts as people write them, and as they never should.
#pragma once

#include <string>

namespace corvane::testing {

// Inside a RapidCheck property: often none, else letters of all lengths in UTF-8, line breaks of
// every kind, and what means something to a content line. No control characters, which the writers
// leave out.
std::string AnyText();
// With each line break as LF: other libraries know one.
std::string PlainText(const std::string& text);

}  // namespace corvane::testing
