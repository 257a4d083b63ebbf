#include "common/formats/icalendar/vtimezone_rules.h"

#include <algorithm>
#include <string_view>

#include "common/formats/icalendar/icalendar_values.h"
#include "common/text/text.h"

namespace formats {
namespace {

using std::chrono::seconds;
using std::chrono::year;

constexpr local_days kRulesEnd{year{2200} / 1 / 1};
// Rules that began long ago are followed from here on.
constexpr local_days kRulesBegin{year{1899} / 1 / 1};
constexpr std::size_t kMostChanges = 2000;  // of one rule
constexpr seconds kYear = std::chrono::years(1);

const Property* Find(const Component& component, std::string_view name) {
  for (const Property& property : component.properties) {
    if (property.name == name) return &property;
  }
  return nullptr;
}

// "+0100", "-0330", "+001932".
std::optional<seconds> OffsetOf(const Component& observance, std::string_view name) {
  const Property* property = Find(observance, name);
  if (property == nullptr) return std::nullopt;
  std::string_view text = TrimBlanks(property->value);
  const bool west = text.starts_with('-');
  if (west || text.starts_with('+')) text.remove_prefix(1);
  if (text.size() != 4 && text.size() != 6) return std::nullopt;
  const std::optional<int> digits = ParseNumber(text);
  if (!digits) return std::nullopt;
  const int number = text.size() == 4 ? *digits * 100 : *digits;
  const int total = number / 10'000 * 3600 + number / 100 % 100 * 60 + number % 100;
  if (total >= 86'400) return std::nullopt;
  return seconds(west ? -total : total);
}

// A yearly rule that names its month and day gives the same changes from any of its years on.
local_seconds LaterStart(const RecurrenceRule& rule, local_seconds start) {
  if (start >= kRulesBegin || rule.Count() || rule.Part("INTERVAL") != nullptr) return start;
  const bool namesDay = rule.Part("BYDAY") != nullptr || rule.Part("BYMONTHDAY") != nullptr;
  if (*rule.Part("FREQ") != "YEARLY" || rule.Part("BYMONTH") == nullptr || !namesDay) return start;
  return kRulesBegin + (start - DayOf(start));
}

std::vector<local_seconds> OnsetsOfRule(const Property& property, local_seconds start,
                                        seconds offsetFrom, WorkBudget& budget) {
  std::optional<RecurrenceRule> rule = RecurrenceRule::Parse(property.value);
  if (!rule || !rule->IsOfDays()) return {};
  if (const std::string* interval = rule->Part("INTERVAL"); interval && *interval == "1") {
    rule->Drop("INTERVAL");
  }
  std::optional<local_seconds> until;
  if (const std::string* text = rule->Part("UNTIL")) {
    const std::optional<TimeValue> value = ParseTimeValue(Property(), *text);
    if (!value) return {};
    until = value->time;
    if (value->isUtc) *until += offsetFrom;
    if (value->isDate) *until += std::chrono::days(1) - seconds(1);
  }
  const local_seconds begin = LaterStart(*rule, start);
  return TimesOfRule(*rule, begin, until, begin, kRulesEnd, kMostChanges, budget).times;
}

}  // namespace

void VTimezoneRules::AddObservance(const Component& observance, std::vector<Change>& changes,
                                   WorkBudget& budget) {
  const std::optional<seconds> from = OffsetOf(observance, "TZOFFSETFROM");
  const std::optional<seconds> to = OffsetOf(observance, "TZOFFSETTO");
  const Property* startProperty = Find(observance, "DTSTART");
  if (!to || startProperty == nullptr) return;
  const std::optional<TimeValue> start = ParseTimeValue(*startProperty, startProperty->value);
  if (!start) return;
  const seconds before = from.value_or(*to);
  const auto add = [&](local_seconds onset) {
    changes.push_back({sys_seconds((onset - before).time_since_epoch()), before, *to});
  };
  add(start->time);
  for (const Property& property : observance.properties) {
    if (property.name == "RRULE") {
      for (const local_seconds onset : OnsetsOfRule(property, start->time, before, budget)) {
        add(onset);
      }
    } else if (property.name == "RDATE") {
      for (const std::string_view part : SplitValue(property.value, ',')) {
        const std::optional<TimeValue> onset = ParseTimeValue(property, part);
        if (onset) add(onset->isUtc ? onset->time + before : onset->time);
      }
    }
  }
}

std::optional<VTimezoneRules> VTimezoneRules::Of(const Component& vtimezone, WorkBudget& budget) {
  VTimezoneRules rules;
  for (const Component& observance : vtimezone.parts) {
    AddObservance(observance, rules.changes_, budget);
  }
  if (rules.changes_.empty() || budget.isUsedUp()) return std::nullopt;
  std::stable_sort(rules.changes_.begin(), rules.changes_.end(),
                   [](const Change& a, const Change& b) { return a.at < b.at; });
  const auto repeated = std::unique(rules.changes_.begin(), rules.changes_.end(),
                                    [](const Change& a, const Change& b) { return a.at == b.at; });
  rules.changes_.erase(repeated, rules.changes_.end());
  return rules;
}

// A zone that goes back and forth in its first year did so before, too.
bool VTimezoneRules::RepeatsFirstYear() const {
  return changes_.size() > 1 && changes_[1].at - changes_[0].at < kYear &&
         changes_[1].after == changes_[0].before;
}

seconds VTimezoneRules::OffsetAt(sys_seconds utc) const {
  const sys_seconds first = changes_.front().at;
  if (utc < first && RepeatsFirstYear()) {
    utc += ((first - utc - seconds(1)) / kYear + 1) * kYear;
  }
  const auto next = std::upper_bound(changes_.begin(), changes_.end(), utc,
                                     [](sys_seconds at, const Change& c) { return at < c.at; });
  return next == changes_.begin() ? next->before : std::prev(next)->after;
}

local_seconds VTimezoneRules::ToLocal(sys_seconds utc) const {
  return local_seconds((utc + OffsetAt(utc)).time_since_epoch());
}

sys_seconds VTimezoneRules::ToUtc(local_seconds local) const {
  const auto minus = [&](seconds offset) {
    return sys_seconds((local - offset).time_since_epoch());
  };
  // The offsets that can be in force at a time that this clock shows are those a day around it.
  const seconds early = OffsetAt(minus(seconds(0)) - std::chrono::days(1));
  const seconds late = OffsetAt(minus(seconds(0)) + std::chrono::days(1));
  if (OffsetAt(minus(early)) == early) return minus(early);
  if (OffsetAt(minus(late)) == late) return minus(late);
  return minus(early);
}

}  // namespace formats
