#include "desktop/folder/raw_line.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "common/formats/lines/content_writer.h"
#include "common/formats/lines/vcard_lines.h"
#include "common/text/code_page.h"
#include "common/text/text.h"
#include "common/text/unicode.h"

namespace desktop {
namespace {

constexpr auto kNowhere = std::string_view::npos;

std::size_t FindOutsideQuotes(std::string_view text, char wanted, std::size_t from = 0) {
  bool quoted = false;
  for (std::size_t i = from; i < text.size(); ++i) {
    if (text[i] == '"') quoted = !quoted;
    if (text[i] == wanted && !quoted) return i;
  }
  return kNowhere;
}

std::string_view ParameterName(std::string_view parameter) {
  return text::TrimBlanks(parameter.substr(0, parameter.find('=')));
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string WithLineEnds(std::string_view folded, std::string_view lineEnd) {
  std::string text;
  std::size_t from = 0;
  for (std::size_t at = 0; (at = folded.find("\r\n", from)) != kNowhere; from = at + 2) {
    text += folded.substr(from, at - from);
    text += lineEnd;
  }
  return text += folded.substr(from);
}

// Line breaks are line breaks there, and a comma is one.
std::string ValueOf21(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char next = value[i] == '\\' && i + 1 < value.size() ? value[i + 1] : '\0';
    if (next == 'n' || next == 'N') {
      text += '\n';
      ++i;
    } else if (next == ',') {
      text += ',';
      ++i;
    } else if (next != '\0') {
      text += value.substr(i, 2);
      ++i;
    } else {
      text += value[i];
    }
  }
  return text;
}

std::string QuotedPrintable(std::string_view value, std::size_t used, std::string_view lineEnd) {
  constexpr std::size_t kWidth = 72;
  std::string text;
  std::size_t column = used;
  const auto put = [&](std::string_view piece) {
    if (column + piece.size() > kWidth) {
      text += "=";
      text += lineEnd;
      column = 0;
    }
    text += piece;
    column += piece.size();
  };
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      put("=0D=0A");
    } else if (byte < ' ' || byte > '~' || c == '=') {
      put(fmt::format("={:02X}", byte));
    } else if (c == ' ' && column + 1 > kWidth) {
      put("=20");  // one that begins a line may be taken for an indentation
    } else {
      put({&c, 1});
    }
  }
  // A blank at the end would be lost.
  if (text.ends_with(' ')) text.replace(text.size() - 1, 1, "=20");
  return text;
}

std::string HeadOf21(const RawLine& line) {
  std::string head = line.name;
  for (const std::string& parameter : line.parameters) {
    if (ParameterName(parameter) != "TYPE" || parameter.find('"') != kNowhere) {
      head += ";" + parameter;
      continue;
    }
    std::string_view types = std::string_view(parameter).substr(parameter.find('=') + 1);
    while (true) {
      const std::size_t comma = types.find(',');
      head += ";" + std::string(types.substr(0, comma));
      if (comma == kNowhere) break;
      types.remove_prefix(comma + 1);
    }
  }
  return head;
}

std::string BytesOf21(const RawLine& line, const LineStyle& style) {
  std::string head = line.group.empty() ? HeadOf21(line) : line.group + "." + HeadOf21(line);
  std::string value = ValueOf21(line.value);
  if (value.find('\n') == kNowhere && IsAscii(value)) return head + ":" + value + style.lineEnd;
  if (!IsAscii(value)) head += ";CHARSET=UTF-8";
  head += ";ENCODING=QUOTED-PRINTABLE:";
  value = QuotedPrintable(value, head.size(), style.lineEnd);
  return head + value + style.lineEnd;
}

}  // namespace

RawLine RawLine::Of(std::string_view line) {
  RawLine raw;
  std::size_t colon = FindOutsideQuotes(line, ':');
  if (colon == kNowhere) colon = line.find(':');
  std::string_view head = line.substr(0, colon);
  if (colon != kNowhere) raw.value = line.substr(colon + 1);
  std::size_t end = FindOutsideQuotes(head, ';');
  std::string_view name = head.substr(0, end);
  if (const std::size_t dot = name.rfind('.'); dot != kNowhere) {
    raw.group = name.substr(0, dot);
    name.remove_prefix(dot + 1);
  }
  raw.name = name;
  while (end != kNowhere) {
    const std::size_t next = FindOutsideQuotes(head, ';', end + 1);
    raw.parameters.emplace_back(head.substr(end + 1, next == kNowhere ? next : next - end - 1));
    end = next;
  }
  return raw;
}

bool RawLine::Is(std::string_view upper) const {
  return text::EqualsNoCase(text::TrimBlanks(name), upper);
}

bool RawLine::HasParameter(std::string_view upper) const {
  return std::any_of(parameters.begin(), parameters.end(), [&](const std::string& parameter) {
    return text::EqualsNoCase(ParameterName(parameter), upper);
  });
}

void RawLine::DropParameter(std::string_view upper) {
  std::erase_if(parameters, [&](const std::string& parameter) {
    return text::EqualsNoCase(ParameterName(parameter), upper);
  });
}

LineStyle StyleOf(std::string_view text) {
  LineStyle style;
  const std::size_t end = text.find_first_of("\r\n");
  if (end != kNowhere) style.lineEnd = text.substr(end, formats::LineEndLength(text.substr(end)));
  style.western = !text::IsValidUtf8(text);
  return style;
}

std::string BytesOf(const RawLine& line, const LineStyle& style) {
  if (style.dialect == formats::VCardDialect::k21) return BytesOf21(line, style);
  std::string text = line.group.empty() ? line.name : line.group + "." + line.name;
  for (const std::string& parameter : line.parameters) text += ";" + parameter;
  text += ":" + line.value;
  std::string folded;
  formats::AppendFolded(folded, text);
  folded = WithLineEnds(folded, style.lineEnd);
  if (!style.western || IsAscii(text)) return folded;
  const auto encoded = text::EncodeText(text::kWesternPage, text::FromUtf8Lossy(folded), '?');
  // What happens to be UTF-8 would be read as that.
  if (!encoded || encoded->substituted || text::IsValidUtf8(encoded->bytes)) return folded;
  return encoded->bytes;
}

}  // namespace desktop
