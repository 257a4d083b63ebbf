#include "common/formats/icalendar/vtimezone_rules.h"

#include <algorithm>
#include <string_view>
#include <vector>

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

struct Change {
  sys_seconds at;
  seconds before;
  seconds after;
};

// "+0100", "-0330", "+001932".
std::optional<seconds> OffsetOf(const Component& observance, std::string_view name) {
  const Property* property = observance.Find(name);
  if (property == nullptr) return std::nullopt;
  std::string_view text = text::TrimBlanks(property->value);
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

void AddObservance(const Component& observance, std::vector<Change>& changes, WorkBudget& budget) {
  const std::optional<seconds> from = OffsetOf(observance, "TZOFFSETFROM");
  const std::optional<seconds> to = OffsetOf(observance, "TZOFFSETTO");
  const Property* startProperty = observance.Find("DTSTART");
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

}  // namespace

std::optional<calendar::Clock> ClockOf(const Component& vtimezone, WorkBudget& budget) {
  std::vector<Change> changes;
  for (const Component& observance : vtimezone.parts) AddObservance(observance, changes, budget);
  if (changes.empty() || budget.isUsedUp()) return std::nullopt;
  std::stable_sort(changes.begin(), changes.end(),
                   [](const Change& a, const Change& b) { return a.at < b.at; });
  const auto repeated = std::unique(changes.begin(), changes.end(),
                                    [](const Change& a, const Change& b) { return a.at == b.at; });
  changes.erase(repeated, changes.end());
  calendar::Clock clock{changes.front().before};
  for (const Change& change : changes) clock.changes.push_back({change.at, change.after});
  // A zone that goes back and forth in its first year did so before, too.
  clock.repeatsFirstYear = changes.size() > 1 && changes[1].at - changes[0].at < kYear &&
                           changes[1].after == changes[0].before;
  return clock;
}

}  // namespace formats
