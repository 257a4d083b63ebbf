#include "desktop/records/recurrence_xml.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "desktop/records/wire_values.h"

namespace desktop {
namespace {

using calendar::Pattern;
using calendar::PatternType;

// A number of the pattern that an element carries, `shift` away from what the pattern has.
struct Part {
  std::string_view element;
  int Pattern::*member = nullptr;
  int shift = 0;
  bool isDays = false;  // of the week: a list, not a number
};

constexpr Part kNone = {};
constexpr Part kDays = {"DAYS_OF_WEEK", &Pattern::daysOfWeek, 0, true};
constexpr Part kDayOfMonth = {"DAY_OF_MONTH", &Pattern::dayOfMonth};
constexpr Part kDayOfYearly = {"DAY", &Pattern::dayOfMonth};
constexpr Part kWeekOfMonth = {"WEEK_OF_MONTH", &Pattern::instance, -1};
constexpr Part kMonth = {"MONTH", &Pattern::monthOfYear};

struct TypeRow {
  PatternType type;
  std::string_view name;
  bool hasInterval;
  std::array<Part, 3> parts;
};

constexpr std::array kTypes = {
    TypeRow{PatternType::kDaily, "DAILY", true, {kNone, kNone, kNone}},
    TypeRow{PatternType::kWeekly, "WEEKLY", true, {kDays, kNone, kNone}},
    TypeRow{PatternType::kMonthly, "MONTHLY_BY_DATE", true, {kDayOfMonth, kNone, kNone}},
    TypeRow{PatternType::kMonthNth, "MONTHLY_BY_DAY", true, {kWeekOfMonth, kDays, kNone}},
    TypeRow{PatternType::kYearly, "YEARLY_BY_DATE", false, {kDayOfYearly, kMonth, kNone}},
    TypeRow{PatternType::kYearNth, "YEARLY_BY_DAY", false, {kWeekOfMonth, kMonth, kDays}},
};

template <typename Test>
const TypeRow* FindType(const Test& test) {
  const auto* const row = std::find_if(kTypes.begin(), kTypes.end(), test);
  return row == kTypes.end() ? nullptr : row;
}

// Sunday is 0.
std::string DaysText(int mask) {
  std::string text;
  for (int day = 0; day < 7; ++day) {
    if ((mask >> day & 1) != 0) text += fmt::format("{}{}", text.empty() ? "" : ", ", day);
  }
  return text;
}

// As the agent reads it: it goes on after the next blank, or else the next comma, and counts a day
// as often as it is there.
int MaskFromText(std::string_view text) {
  int mask = 0;
  char separator = ' ';
  while (!text.empty() && mask <= 127) {
    const int day = NumberFromText(text);
    if (day >= 0 && day <= 6) mask += 1 << day;
    std::size_t end = text.find(separator);
    if (end == std::string_view::npos) end = text.find(separator = ',');
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return mask;
}

bool ReadPart(const XmlElement& recurrence, const Part& part, Pattern& pattern) {
  const std::string_view text = recurrence.ChildText(part.element);
  if (text.empty()) return false;
  // Far from the limits of an int, where the shift would go astray.
  const int value = std::clamp(NumberFromText(text), -1000, 1000);
  pattern.*part.member = part.isDays ? MaskFromText(text) : value - part.shift;
  return true;
}

bool ReadEnd(const XmlElement& recurrence, Pattern& pattern) {
  if (const std::optional<int> count = ChildNumber(recurrence, "Occurrences")) {
    if (*count >= 1) pattern.occurrences = *count;
    return true;
  }
  if (ChildNumber(recurrence, "END_DATE", 0) == 0) return true;
  pattern.until = ChildDate(recurrence, "END_DATE");
  return pattern.until.has_value();
}

}  // namespace

std::string PatternToXml(const Pattern& pattern) {
  const TypeRow& row = *FindType([&](const TypeRow& each) { return each.type == pattern.type; });
  std::string xml = Element("TYPE", row.name);
  for (const Part& part : row.parts) {
    if (part.member == nullptr) break;
    const int value = pattern.*part.member;
    xml += part.isDays ? Element(part.element, DaysText(value))
                       : NumberElement(part.element, value + part.shift);
  }
  if (row.hasInterval && pattern.interval != 1) xml += NumberElement("FREQUENCY", pattern.interval);
  if (pattern.occurrences) return xml + NumberElement("Occurrences", *pattern.occurrences);
  return xml + Element("END_DATE", pattern.until ? DateText(*pattern.until) : "0");
}

std::optional<Pattern> PatternFromXml(const XmlElement& recurrence) {
  const std::string_view type = recurrence.ChildText("TYPE");
  const TypeRow* const row = FindType([&](const TypeRow& each) { return each.name == type; });
  if (row == nullptr) return std::nullopt;
  Pattern pattern;
  pattern.type = row->type;
  for (const Part& part : row->parts) {
    if (part.member != nullptr && !ReadPart(recurrence, part, pattern)) return std::nullopt;
  }
  if (row->hasInterval) pattern.interval = ChildNumber(recurrence, "FREQUENCY", 1);
  if (!ReadEnd(recurrence, pattern) || !IsValid(pattern)) return std::nullopt;
  return pattern;
}

}  // namespace desktop
