#include "desktop/records/wire_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>

#include "common/calendar/wall_time.h"
#include "common/formats/lines/category_list.h"
#include "common/text/xml_text.h"

namespace desktop {
namespace {

using namespace std::chrono;

// Digits alone, -1 for anything else.
int DigitsAt(std::string_view text, std::size_t at, std::size_t width) {
  if (text.size() < at + width) return -1;
  int value = 0;
  for (const char c : text.substr(at, width)) {
    if (c < '0' || c > '9') return -1;
    value = 10 * value + (c - '0');
  }
  return value;
}

}  // namespace

std::string Element(std::string_view name, std::string_view innerXml) {
  std::string element;
  element.reserve(2 * name.size() + innerXml.size() + 5);
  element.append("<").append(name).append(">").append(innerXml);
  return element.append("</").append(name).append(">");
}

std::string ElementUnlessEmpty(std::string_view name, std::string_view innerXml) {
  return innerXml.empty() ? std::string() : Element(name, innerXml);
}

std::string TextElement(std::string_view name, std::string_view text) {
  return ElementUnlessEmpty(name, text::XmlText(text));
}

std::string TrueElement(std::string_view name, bool value) {
  return value ? Element(name, "TRUE") : std::string();
}

std::string NumberElement(std::string_view name, long long value) {
  return Element(name, fmt::format("{}", value));
}

std::string DateText(local_days day) {
  return formats::BasicDate(day) + "T000000";
}

std::string DateTimeText(sys_seconds time) {
  return formats::BasicDateTime(local_seconds{time.time_since_epoch()});
}

std::optional<local_days> DateFromText(std::string_view text) {
  const int y = DigitsAt(text, 0, 4);
  const int m = DigitsAt(text, 4, 2);
  const int d = DigitsAt(text, 6, 2);
  if (y < 0 || m < 0 || d < 0) return std::nullopt;
  const year_month_day day{year{y}, month{static_cast<unsigned>(m)},
                           std::chrono::day{static_cast<unsigned>(d)}};
  if (!day.ok()) return std::nullopt;
  return local_days{day};
}

std::optional<sys_seconds> DateTimeFromText(std::string_view text) {
  const std::optional<local_days> day = DateFromText(text);
  if (!day || text.size() < 9 || text[8] != 'T') return std::nullopt;
  const int h = DigitsAt(text, 9, 2);
  const int m = DigitsAt(text, 11, 2);
  const int s = DigitsAt(text, 13, 2);
  if (h < 0 || h > 23 || m < 0 || m > 59 || s < 0 || s > 59) return std::nullopt;
  return sys_days{day->time_since_epoch()} + hours{h} + minutes{m} + seconds{s};
}

int NumberFromText(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc::result_out_of_range) return value;
  return text.starts_with('-') ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
}

std::optional<local_days> ChildDate(const XmlElement& record, std::string_view name) {
  return DateFromText(record.ChildText(name));
}

std::optional<int> ChildNumber(const XmlElement& record, std::string_view name) {
  const std::string_view text = record.ChildText(name);
  if (text.empty()) return std::nullopt;
  return NumberFromText(text);
}

int ChildNumber(const XmlElement& record, std::string_view name, int otherwise) {
  return ChildNumber(record, name).value_or(otherwise);
}

bool ChildIsTrue(const XmlElement& record, std::string_view name) {
  return record.ChildText(name) == "TRUE";
}

// A category whose name the agent cannot read would fail the whole record, and it reads no text
// from blanks alone.
std::string CategoriesToXml(const std::vector<std::string>& categories) {
  std::string xml;
  for (const std::string& category : categories) {
    if (category.find_first_not_of(" \t\r\n") == std::string::npos) continue;
    xml += ElementUnlessEmpty("CATEGORY", TextElement("Name", category));
  }
  return xml;
}

std::vector<std::string> CategoriesFromXml(const XmlElement* element) {
  std::vector<std::string> names;
  if (element == nullptr) return names;
  for (const XmlElement& category : element->children) {
    const std::string_view name = category.ChildText("Name");
    if (!name.empty()) names.emplace_back(name);
  }
  formats::RemoveRepeated(names);
  return names;
}

}  // namespace desktop
