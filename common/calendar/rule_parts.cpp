#include "common/calendar/rule_parts.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace calendar {
namespace {

using std::chrono::year_month_day;

constexpr std::size_t kMaxRule = 4096;
constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kNumbers = "0123456789+-,";

struct KnownPart {
  std::string_view name;
  std::string_view characters;  // of its value
};

// BYWEEKNO, BYHOUR and shorter are missing: no pattern has them.
constexpr std::array kKnownParts = {
    KnownPart{"FREQ", "ADEHIKLMNORTWY"}, KnownPart{"INTERVAL", kDigits},
    KnownPart{"BYMONTH", "0123456789,"}, KnownPart{"BYMONTHDAY", kNumbers},
    KnownPart{"BYYEARDAY", kNumbers},    KnownPart{"BYDAY", "0123456789+-,AEFHMORSTUW"},
    KnownPart{"BYSETPOS", kNumbers},     KnownPart{"WKST", "AEFHMORSTUW"},
    KnownPart{"COUNT", kDigits},         KnownPart{"UNTIL", "0123456789TZ"},
};

std::string_view WithoutTail(std::string_view rule) {
  const std::size_t last = rule.find_last_not_of(" \t\r\n;");
  return rule.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

std::string ToUpper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

std::optional<int> Number(std::string_view digits) {
  int number = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number);
  if (error != std::errc{} || stop != end || number < 1) return std::nullopt;
  return number;
}

bool IsTime(std::string_view text) {
  if (text.ends_with('Z')) text.remove_suffix(1);
  if (text.size() != 7 || text[0] != 'T') return false;
  return text.find_first_not_of(kDigits, 1) == std::string_view::npos && text.substr(1, 2) < "24" &&
         text.substr(3, 2) < "60" && text.substr(5, 2) <= "60";
}

// "20240131" or "20240131T235959Z".
std::optional<local_days> DateOf(std::string_view text) {
  if (text.size() < 8 || text.find_first_not_of(kDigits) < 8) return std::nullopt;
  if (text.size() > 8 && !IsTime(text.substr(8))) return std::nullopt;
  const auto part = [text](std::size_t at, std::size_t size) {
    return Number(text.substr(at, size)).value_or(0);
  };
  const year_month_day date = std::chrono::year{part(0, 4)} / part(4, 2) / part(6, 2);
  if (!date.ok()) return std::nullopt;
  return std::min(local_days{date}, kLastDay);
}

// What can stand before a weekday of a month: "2" or "-1".
bool IsNth(std::string_view position) {
  if (position.starts_with('+') || position.starts_with('-')) position.remove_prefix(1);
  return position.size() == 1 && position[0] >= '1' && position[0] <= '5';
}

template <std::size_t size, typename Test>
bool HasAny(const short (&list)[size], Test test) {
  const short* end = std::find(list, list + size, short{ICAL_RECURRENCE_ARRAY_MAX});
  return std::any_of(list, end, test);
}

}  // namespace

std::string WeekdayNames(int mask) {
  constexpr std::array kNames = {"SU", "MO", "TU", "WE", "TH", "FR", "SA"};
  std::string names;
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if ((mask >> i & 1) == 0) continue;
    if (!names.empty()) names += ',';
    names += kNames[i];
  }
  return names;
}

std::optional<RuleParts> RuleParts::Read(std::string_view rule) {
  rule = WithoutTail(rule);
  if (rule.size() > kMaxRule) return std::nullopt;
  RuleParts parts;
  while (true) {
    const std::size_t end = rule.find(';');
    if (!parts.Add(rule.substr(0, end))) return std::nullopt;
    if (end == std::string_view::npos) break;
    rule.remove_prefix(end + 1);
  }
  if (!parts.Has("FREQ") || !parts.TakeEnd()) return std::nullopt;
  const bool hasSets = parts.IsOf("MONTHLY") || parts.IsOf("YEARLY");
  if (parts.Has("BYSETPOS") && !hasSets) return std::nullopt;
  return parts;
}

bool RuleParts::Add(std::string_view part) {
  const std::size_t equals = part.find('=');
  if (equals == std::string_view::npos) return false;
  const std::string name = ToUpper(part.substr(0, equals));
  const std::string value = ToUpper(part.substr(equals + 1));
  const auto* known = std::find_if(kKnownParts.begin(), kKnownParts.end(),
                                   [&](const KnownPart& each) { return each.name == name; });
  if (known == kKnownParts.end() || value.empty()) return false;
  if (value.find_first_not_of(known->characters) != std::string::npos) return false;
  return parts_.emplace(name, value).second;
}

bool RuleParts::TakeEnd() {
  if (const auto count = parts_.find("COUNT"); count != parts_.end()) {
    end_.occurrences = Number(count->second);
    if (!end_.occurrences || Has("UNTIL")) return false;
    parts_.erase(count);
  }
  if (const auto until = parts_.find("UNTIL"); until != parts_.end()) {
    end_.until = DateOf(until->second);
    if (!end_.until) return false;
    parts_.erase(until);
  }
  return true;
}

std::optional<icalrecurrencetype> RuleParts::Endless(local_days start) const {
  const RuleParts completed = Completed(start);
  std::string text = "FREQ=" + completed.parts_.at("FREQ");
  for (const auto& [name, value] : completed.parts_) {
    if (name != "FREQ") text.append(";").append(name).append("=").append(value);
  }
  const icalrecurrencetype rule = icalrecurrencetype_from_string(text.c_str());
  icalerror_clear_errno();
  if (rule.freq < ICAL_DAILY_RECURRENCE || rule.freq > ICAL_YEARLY_RECURRENCE) return std::nullopt;
  if (HasAny(rule.by_month, [](short month) { return month > 12; })) return std::nullopt;
  const bool hasNthDays =
      HasAny(rule.by_day, [](short day) { return icalrecurrencetype_day_position(day) != 0; });
  const bool mayHaveNthDays =
      rule.freq == ICAL_MONTHLY_RECURRENCE ||
      (rule.freq == ICAL_YEARLY_RECURRENCE && (Has("BYMONTH") || !Has("BYMONTHDAY")));
  if (hasNthDays && !mayHaveNthDays) return std::nullopt;
  return rule;
}

RuleParts RuleParts::Completed(local_days start) const {
  RuleParts all = *this;
  const auto add = [&all](const char* name, const std::string& value) {
    all.parts_.emplace(name, value);
  };
  const year_month_day date{start};
  if (!IsOf("WEEKLY")) all.parts_.erase("WKST");
  if (IsOf("WEEKLY")) add("BYDAY", WeekdayNames(1 << std::chrono::weekday{start}.c_encoding()));
  if (!IsOf("MONTHLY") && !IsOf("YEARLY")) return all;

  if (IsOf("YEARLY") && Has("BYMONTHDAY")) add("BYMONTH", "1,2,3,4,5,6,7,8,9,10,11,12");
  if (!Has("BYDAY") && !Has("BYMONTHDAY") && !Has("BYYEARDAY")) {
    add("BYMONTHDAY", std::to_string(unsigned{date.day()}));
    if (IsOf("YEARLY")) add("BYMONTH", std::to_string(unsigned{date.month()}));
  }
  const bool hasOneMonth = Has("BYMONTH") && parts_.at("BYMONTH").find(',') == std::string::npos;
  if (hasOneMonth && (!Has("INTERVAL") || parts_.at("INTERVAL") == "1")) {
    all.parts_["FREQ"] = "YEARLY";
  }
  if (IsOf("MONTHLY") || hasOneMonth) all.NameNthDay();
  return all;
}

void RuleParts::NameNthDay() {
  const auto day = parts_.find("BYDAY");
  const auto position = parts_.find("BYSETPOS");
  if (day == parts_.end() || position == parts_.end() || day->second.size() != 2) return;
  if (Has("BYMONTHDAY") || Has("BYYEARDAY") || !IsNth(position->second)) return;
  day->second.insert(0, position->second);
  parts_.erase(position);
}

}  // namespace calendar
