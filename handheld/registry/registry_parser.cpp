#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "common/text/unicode.h"
#include "handheld/registry/registry_text.h"
#include "platform/registry.h"

namespace ce::host {
namespace {

constexpr std::u16string_view kHeading = u"Windows Registry Editor Version 5.00";
constexpr std::u16string_view kBlanks = u" \t";

std::u16string_view Trim(std::u16string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::u16string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool TakePrefix(std::u16string_view& text, std::u16string_view prefix) {
  if (!text::Fold(text.substr(0, prefix.size())).starts_with(text::Fold(prefix))) return false;
  text.remove_prefix(prefix.size());
  return true;
}

std::optional<DWORD> ParseHex(std::u16string_view digits, std::size_t most) {
  if (digits.empty() || digits.size() > most) return std::nullopt;
  const std::string narrow(digits.begin(), digits.end());
  for (const char16_t unit : digits) {
    if (unit > 0x7F) return std::nullopt;
  }
  DWORD number = 0;
  const char* end = narrow.data() + narrow.size();
  const auto parsed = std::from_chars(narrow.data(), end, number, 16);
  if (parsed.ec != std::errc{} || parsed.ptr != end) return std::nullopt;
  return number;
}

std::u16string Decode(std::string_view text) {
  if (text.size() > kMaxRegistryText) throw RegistryTextError(1, "the file is too large");
  if (text.starts_with("\xFF\xFE")) {
    text.remove_prefix(2);
    if (text.size() % 2 != 0) throw RegistryTextError(1, "the UTF-16 text ends within a character");
    return text::FromUtf16Le(text);
  }
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  std::optional<std::u16string> units = text::FromUtf8(text);
  if (!units) throw RegistryTextError(1, "the text is not UTF-8");
  return *std::move(units);
}

class Parser {
 public:
  explicit Parser(std::u16string_view text) : rest_(text) {}

  RegistryTree Parse() {
    if (!NextLine() || line_ != kHeading) {
      Fail("the first line is not \"" + text::ToUtf8Lossy(kHeading) + "\"");
    }
    while (NextLine()) {
      if (line_.empty() || line_.front() == u';') continue;
      if (line_.front() == u'[') {
        ParseKey();
      } else {
        ParseValue();
      }
    }
    return std::move(tree_);
  }

 private:
  [[noreturn]] void Fail(const std::string& problem) const {
    throw RegistryTextError(std::max<std::size_t>(number_, 1), problem);
  }

  bool NextLine() {
    if (rest_.empty()) return false;
    const std::size_t end = rest_.find(u'\n');
    line_ = rest_.substr(0, end);
    rest_.remove_prefix(end == std::u16string_view::npos ? rest_.size() : end + 1);
    if (line_.ends_with(u'\r')) line_.remove_suffix(1);
    line_ = Trim(line_);
    ++number_;
    return true;
  }

  void ParseKey() {
    if (line_.back() != u']') Fail("the key's name lacks its closing bracket");
    std::u16string_view path = line_.substr(1, line_.size() - 2);
    const bool deletes = path.starts_with(u'-');
    if (deletes) path.remove_prefix(1);
    if (!RegistryTree::ValidPath(path)) Fail("this is no key's name");
    key_ = deletes ? std::u16string_view{} : path;
    if (deletes) {
      tree_.DeleteKey(path);
    } else {
      tree_.AddKey(path);
    }
  }

  void ParseValue() {
    if (key_.empty()) Fail("a value stands outside of any key");
    const std::u16string name = ParseName();
    line_ = Trim(line_);
    if (!line_.starts_with(u'=')) Fail("the value's name is not followed by \"=\"");
    line_ = Trim(line_.substr(1));
    if (line_ == u"-") {
      tree_.DeleteValue(key_, name);
    } else {
      tree_.Set(key_, name, ParseData());
    }
  }

  std::u16string ParseName() {
    if (line_.starts_with(u'@')) {
      line_.remove_prefix(1);
      return {};
    }
    if (!line_.starts_with(u'"')) Fail("this is neither a key nor a value");
    std::u16string name = ParseQuoted();
    if (!RegistryTree::ValidName(name)) Fail("this is no value's name");
    return name;
  }

  RegistryValue ParseData() {
    if (line_.starts_with(u'"')) {
      const std::u16string text = ParseQuoted();
      ExpectEnd();
      RegistryValue value = RegistryValue::Text(text);
      if (value.data.size() > RegistryTree::kMaxData) Fail("the value is too long");
      return value;
    }
    if (TakePrefix(line_, u"dword:")) {
      const std::optional<DWORD> number = ParseHex(Trim(line_), 8);
      if (!number) Fail("\"dword:\" is not followed by up to 8 hexadecimal digits");
      return RegistryValue::Number(*number);
    }
    if (TakePrefix(line_, u"hex:")) return {REG_BINARY, ParseBytes()};
    if (TakePrefix(line_, u"hex(")) {
      const std::size_t close = line_.find(u')');
      const std::optional<DWORD> type = ParseHex(line_.substr(0, close), 8);
      if (!type || close == std::u16string_view::npos || !line_.substr(close).starts_with(u"):")) {
        Fail("\"hex(\" is not followed by a type and \"):\"");
      }
      line_.remove_prefix(close + 2);
      return {*type, ParseBytes()};
    }
    Fail("the value's kind is not known");
  }

  // The text between the quotes at the front of the line; leaves what follows it.
  std::u16string ParseQuoted() {
    std::u16string text;
    for (std::size_t i = 1; i < line_.size(); ++i) {
      if (line_[i] == u'"') {
        line_.remove_prefix(i + 1);
        return text;
      }
      if (line_[i] == 0) Fail("the text holds a zero character");
      if (line_[i] == u'\\' && ++i == line_.size()) break;
      text.push_back(line_[i]);
    }
    Fail("the text lacks its closing quote");
  }

  void ExpectEnd() const {
    const std::u16string_view left = Trim(line_);
    if (!left.empty() && left.front() != u';') Fail("something stands after the value");
  }

  // Bytes between commas; a backslash at the end of a line continues it in the next one.
  std::vector<BYTE> ParseBytes() {
    std::vector<BYTE> bytes;
    while (true) {
      line_ = Trim(line_);
      const bool continued = line_.ends_with(u'\\');
      if (continued) line_ = Trim(line_.substr(0, line_.size() - 1));
      if (continued && !line_.empty() && !line_.ends_with(u',')) {
        Fail("the continued line does not end with a comma");
      }
      AppendBytes(bytes);
      if (!continued) return bytes;
      if (!NextLine()) Fail("the last line is continued");
    }
  }

  void AppendBytes(std::vector<BYTE>& bytes) {
    while (!line_.empty()) {
      const std::size_t comma = line_.find(u',');
      const std::optional<DWORD> byte = ParseHex(Trim(line_.substr(0, comma)), 2);
      if (!byte) Fail("this is no list of hexadecimal bytes");
      if (bytes.size() == RegistryTree::kMaxData) Fail("the value is too long");
      bytes.push_back(static_cast<BYTE>(*byte));
      line_.remove_prefix(comma == std::u16string_view::npos ? line_.size() : comma + 1);
      line_ = Trim(line_);
    }
  }

  std::u16string_view rest_;
  std::u16string_view line_;
  std::size_t number_ = 0;
  std::u16string_view key_;  // within the text; empty while no key is open
  RegistryTree tree_;
};

}  // namespace

RegistryTextError::RegistryTextError(std::size_t line, const std::string& problem)
    : std::runtime_error("line " + std::to_string(line) + ": " + problem), line_(line) {}

RegistryTree ParseRegistry(std::string_view text) {
  const std::u16string units = Decode(text);
  return Parser(units).Parse();
}

}  // namespace ce::host
