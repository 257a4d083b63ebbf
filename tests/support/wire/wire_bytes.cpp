#include "tests/support/wire/wire_bytes.h"

#include <cstdlib>

#include "common/text/unicode.h"

namespace corvane::testing {

std::string Utf16(std::string_view text) {
  return text::ToUtf16Le(std::u16string(text.begin(), text.end()));
}

std::string Invoke::Body() const {
  const std::string name = function + (terminated ? std::string(1, '\0') : std::string());
  const auto length = [](const std::optional<std::uint32_t>& given, const std::string& text) {
    return Word(given.value_or(static_cast<std::uint32_t>(text.size())));
  };
  return Word(kind) + reserved + length(dllNameLength, dll) + Utf16(dll) + unused +
         length(functionNameLength, name) + Utf16(name) + length(inputCount, input) + input +
         Word(streamFlag);
}

std::string Record(std::string_view body) {
  return Word(static_cast<std::uint32_t>(body.size())) + std::string(body);
}

std::size_t CountElements(std::string_view document, std::string_view name) {
  std::size_t count = 0;
  const std::string open = "<" + std::string(name);
  for (std::size_t at = document.find(open); at != std::string_view::npos;
       at = document.find(open, at + 1)) {
    const char next = document.at(at + open.size());
    if (next == ' ' || next == '>' || next == '/') ++count;
  }
  return count;
}

std::vector<std::uint32_t> OidsOf(std::string_view document) {
  std::vector<std::uint32_t> oids;
  constexpr std::string_view kOid = " Oid=\"";
  for (std::size_t at = document.find(kOid); at != std::string_view::npos;
       at = document.find(kOid, at + 1)) {
    const std::string text(document.substr(at + kOid.size(), 12));
    oids.push_back(static_cast<std::uint32_t>(std::strtoll(text.c_str(), nullptr, 10)));
  }
  return oids;
}

std::string Chunk(std::string_view document) {
  return Word(static_cast<std::uint32_t>(document.size())) + std::string(document);
}

}  // namespace corvane::testing
