#include "common/formats/lines/vcard_property.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "common/text/code_page.h"
#include "common/text/text.h"
#include "common/text/transfer_encoding.h"
#include "common/text/unicode.h"

namespace formats {
namespace {

constexpr auto kNone = std::string_view::npos;

bool IsNameCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_' || c == '.';
}

bool IsAsciiLetterOrDigit(char c) {
  return IsNameCharacter(c) && c != '-' && c != '_' && c != '.';
}

// Where the first of `separator` stands outside quotation marks.
std::size_t FindUnquoted(std::string_view text, char separator, std::size_t from = 0) {
  bool quoted = false;
  for (std::size_t i = from; i < text.size(); ++i) {
    if (text[i] == '"') quoted = !quoted;
    if (text[i] == separator && !quoted) return i;
  }
  return kNone;
}

// "^n" a line break, "^'" a quotation mark, "^^" a caret.
std::string DecodeCarets(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char next = text[i] == '^' && i + 1 < text.size() ? text[i + 1] : '\0';
    if (next == 'n' || next == '\'' || next == '^') {
      decoded += next == 'n' ? '\n' : next == '\'' ? '"' : '^';
      ++i;
    } else {
      decoded += text[i];
    }
  }
  return decoded;
}

// What no form of text can say; a line break is none of them.
bool IsLeftOut(char c) {
  return c != '\n' && c != '\r' && text::IsControl(c);
}

bool IsEncodingWord(std::string_view upper) {
  return upper == "QUOTED-PRINTABLE" || upper == "BASE64" || upper == "8BIT" || upper == "7BIT";
}

void AddParameterValue(Property& property, const std::string& name, std::string_view value) {
  std::string text =
      property.dialect == VCardDialect::k21 ? std::string(value) : DecodeCarets(value);
  std::erase_if(text, IsLeftOut);
  // A type is a word, and as such is written.
  if (name == "TYPE") {
    std::erase_if(text, text::IsControl);
    text = text::TrimBlanks(text);
  }
  property.parameters.emplace_back(name, std::move(text));
}

// One parameter's values: lists are split at commas, and some are lists within quotation marks.
void AddParameter(Property& property, std::string_view parameter) {
  parameter = text::TrimBlanks(parameter);
  if (parameter.empty()) return;
  const std::size_t equals = FindUnquoted(parameter, '=');
  std::string name = text::ToUpperAscii(text::TrimBlanks(parameter.substr(0, equals)));
  std::string_view rest = parameter;
  if (equals == kNone)
    name = IsEncodingWord(name) ? "ENCODING" : "TYPE";
  else
    rest.remove_prefix(equals + 1);
  const bool listInQuotes = name == "TYPE" || name == "SORT-AS";
  bool more = true;
  while (more) {
    const std::size_t comma = listInQuotes ? rest.find(',') : FindUnquoted(rest, ',');
    more = comma != kNone;
    std::string_view value = text::TrimBlanks(rest.substr(0, comma));
    if (more) rest.remove_prefix(comma + 1);
    if (value.starts_with('"')) value.remove_prefix(1);
    if (value.ends_with('"')) value.remove_suffix(1);
    AddParameterValue(property, name, value);
  }
}

void ParseHeader(std::string_view header, Property& property) {
  std::size_t end = FindUnquoted(header, ';');
  while (end != kNone) {
    const std::size_t next = FindUnquoted(header, ';', end + 1);
    AddParameter(property, header.substr(end + 1, next == kNone ? kNone : next - end - 1));
    end = next;
  }
}

std::string DecodeValue(std::string_view raw, Property& property) {
  std::string bytes;
  const TransferEncoding encoding = EncodingOf(property);
  if (encoding == TransferEncoding::kQuotedPrintable) {
    // A writer that encoded everything encoded the separators, too.
    bytes = text::DecodeQuotedPrintable(raw, raw.find(';') != kNone);
  } else if (encoding == TransferEncoding::kBase64) {
    bytes = text::DecodeBase64(raw);
  } else {
    bytes = raw;
  }
  const std::string* charset = property.Parameter("CHARSET");
  if (charset != nullptr) {
    if (std::optional<text::Conversion> text = text::ConvertToUtf8(bytes, *charset)) {
      if (text->damaged)
        property.problem = "bytes that are no " + text::Excerpt(*charset) + " were replaced";
      return std::move(text->text);
    }
    if (text::IsValidUtf8(bytes)) return bytes;
    property.problem =
        "unknown character set " + text::Excerpt(*charset) + ", read as Windows-1252";
    return text::Windows1252ToUtf8(bytes);
  }
  if (text::IsValidUtf8(bytes)) return bytes;
  property.problem = "not UTF-8, read as Windows-1252";
  return text::Windows1252ToUtf8(bytes);
}

}  // namespace

TransferEncoding EncodingOf(const Property& property) {
  const std::string* word = property.Parameter("ENCODING");
  const auto is = [&](std::string_view name) { return text::EqualsNoCase(*word, name); };
  if (word == nullptr) return TransferEncoding::kNone;
  if (is("QUOTED-PRINTABLE") || is("Q")) return TransferEncoding::kQuotedPrintable;
  return is("BASE64") || is("B") ? TransferEncoding::kBase64 : TransferEncoding::kNone;
}

const std::string* Property::Parameter(std::string_view parameter) const {
  for (const auto& [key, text] : parameters) {
    if (key == parameter) return &text;
  }
  return nullptr;
}

bool Property::HasType(std::string_view type) const {
  return std::any_of(parameters.begin(), parameters.end(), [&](const auto& parameter) {
    return parameter.first == "TYPE" && text::EqualsNoCase(parameter.second, type);
  });
}

int Property::Preference() const {
  int preference = 101;
  if (const std::string* text = Parameter("PREF")) {
    const auto parsed = std::from_chars(text->data(), text->data() + text->size(), preference);
    if (parsed.ec != std::errc() || preference < 1 || preference > 100) preference = 1;
  } else if (HasType("PREF")) {
    preference = 1;
  }
  return preference;
}

std::optional<Property> ParseProperty(const ContentLine& line) {
  const std::string_view text = line.text;
  std::size_t colon = FindUnquoted(text, ':');
  if (colon == kNone) colon = text.find(':');  // a quotation mark that nothing closes
  if (colon == kNone) return std::nullopt;
  std::string header(text.substr(0, colon));
  if (!text::IsValidUtf8(header)) header = text::Windows1252ToUtf8(header);

  Property property;
  property.line = line.line;
  property.dialect = line.dialect;
  std::string_view name = text::TrimBlanks(std::string_view(header).substr(0, header.find(';')));
  if (name.empty() || !std::all_of(name.begin(), name.end(), IsNameCharacter)) return std::nullopt;
  const std::size_t dot = name.rfind('.');
  if (dot != kNone) {
    property.group = text::ToUpperAscii(name.substr(0, dot));
    name.remove_prefix(dot + 1);
  }
  if (name.empty()) return std::nullopt;
  property.name = text::ToUpperAscii(name);
  ParseHeader(header, property);
  property.value = text::NormalizeLineBreaks(DecodeValue(text.substr(colon + 1), property));
  if (property.problem.empty() && EncodingOf(property) != TransferEncoding::kBase64 &&
      std::ranges::any_of(property.value, IsLeftOut)) {
    property.problem = "control characters are left out";
  }
  return property;
}

std::vector<std::string_view> SplitValue(std::string_view value, char separator) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] == '\\') {
      ++i;
    } else if (value[i] == separator) {
      parts.push_back(value.substr(start, i - start));
      start = i + 1;
    }
  }
  parts.push_back(value.substr(start));
  return parts;
}

Unescaper::Unescaper(const Property& property)
    : property_(property),
      quotedPrintable_(EncodingOf(property) == TransferEncoding::kQuotedPrintable) {
  for (const auto& [name, text] : property.parameters) {
    if (name == "X-LINE-BREAKS") breaks_.push_back(text);
  }
}

void Unescaper::AppendLineBreak(std::string& text) {
  std::string_view kind = "lf";
  if (!breaks_.empty()) kind = breaks_[std::min(nextBreak_++, breaks_.size() - 1)];
  text += text::EqualsNoCase(kind, "crlf") ? "\r\n" : text::EqualsNoCase(kind, "cr") ? "\r" : "\n";
}

std::string Unescaper::operator()(std::string_view part) {
  std::string text;
  text.reserve(part.size());
  for (std::size_t i = 0; i < part.size(); ++i) {
    if (part[i] == '\n') {
      AppendLineBreak(text);
      continue;
    }
    if (part[i] != '\\' || i + 1 == part.size()) {
      text += part[i];
      continue;
    }
    const char next = part[++i];
    if (next == 'n' || next == 'N') {
      // Quoted-printable has line breaks of its own, so there it is a backslash and a letter.
      if (quotedPrintable_ && property_.dialect == VCardDialect::k21) {
        text += '\\';
        text += next;
      } else {
        AppendLineBreak(text);
      }
      continue;
    }
    // A backslash before a letter escapes nothing: it is one that the writer forgot to escape.
    if (IsAsciiLetterOrDigit(next)) text += '\\';
    text += next;
  }
  std::erase_if(text, IsLeftOut);
  if (property_.dialect == VCardDialect::k21) return std::string(text::TrimBlanks(text));
  return text;
}

std::string TextOf(const Property& property) {
  Unescaper unescape(property);
  return unescape(property.value);
}

std::vector<std::string> ComponentsOf(const Property& property) {
  Unescaper unescape(property);
  std::vector<std::string> components;
  for (std::string_view part : SplitValue(property.value, ';')) {
    components.push_back(unescape(part));
  }
  return components;
}

std::string JoinListValues(const Property& property, Unescaper& unescape,
                           std::string_view component, std::string_view glue) {
  if (property.dialect == VCardDialect::k21) return unescape(component);
  std::string joined;
  bool first = true;
  for (std::string_view part : SplitValue(component, ',')) {
    std::string value = unescape(part);
    if (first) {
      joined = std::move(value);
    } else if (const std::string_view more = text::TrimBlanks(value); !more.empty()) {
      if (!joined.empty()) joined += glue;
      joined += more;
    }
    first = false;
  }
  return joined;
}

}  // namespace formats
