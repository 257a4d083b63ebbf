#include "common/formats/icalendar/event_rules.h"

#include <algorithm>
#include <string>
#include <utility>

#include "common/formats/icalendar/pattern_rule.h"
#include "common/formats/icalendar/zone_alignment.h"
#include "common/text/text.h"

namespace formats {
namespace {

using std::chrono::days;
using std::chrono::seconds;

// The longest search for a rule's first time.
constexpr days kSearchedDays{60 * 366};
constexpr std::size_t kMostTakenAway = 100'000;
constexpr long long kUnitsAPattern = 5'000;
// Rules of earlier years are not followed to the first year of a handheld.
constexpr local_days kEarliestStart{std::chrono::year(1600) / 1 / 1};

}  // namespace

EventRules::EventRules(Event& event, WorkBudget& budget)
    : event_(event),
      budget_(budget),
      start_(event.start->wall),
      hasExceptionRules_(!event.exceptionRules.empty()) {
  for (const RuleText& text : event.rules) {
    if (std::optional<Rule> rule = Read(text)) rules_.push_back(std::move(*rule));
  }
  for (const RuleText& text : event.exceptionRules) {
    if (std::optional<Rule> rule = Read(text)) exceptionRules_.push_back(std::move(*rule));
  }
}

std::optional<EventRules::Rule> EventRules::Read(const RuleText& text) {
  const auto leaveOut = [&](const char* why) {
    event_.notices.Add(text.line,
                       "RRULE: " + std::string(why) + ", left out: " + text::Excerpt(text.text));
    return std::nullopt;
  };
  std::optional<RecurrenceRule> rule = RecurrenceRule::Parse(text.text);
  if (!rule || start_ < kEarliestStart) return leaveOut("not a rule that can be followed");
  Rule result{std::move(*rule), std::nullopt, {}, 0};
  if (const std::string* until = result.rule.Part("UNTIL")) {
    result.until = UntilOf(*until);
    if (!result.until) return leaveOut("its UNTIL is neither a day nor a time");
  }
  if (event_.start->isDate) {
    if (!result.rule.IsOfDays()) return leaveOut("a day does not come by the hour");
    for (const char* part : {"BYHOUR", "BYMINUTE", "BYSECOND"}) result.rule.Drop(part);
  } else {
    result.rule.DropTimeOfDay(start_ - DayOf(start_));
  }
  if (budget_.isUsedUp()) return leaveOut("the series of this file are too many to be followed");
  const local_seconds from = std::max<local_seconds>(start_, calendar::kFirstDay);
  const RuleTimes first =
      TimesOfRule(result.rule, start_, result.until, from, from + kSearchedDays, 1, budget_);
  if (first.times.empty()) return leaveOut("it gives no day");
  result.first = first.times.front();
  result.skipped = first.skipped;
  return result;
}

// A date counts to its end. All-day events' are taken as they stand.
std::optional<local_seconds> EventRules::UntilOf(const std::string& text) const {
  const std::optional<TimeValue> value = ParseTimeValue(Property(), text);
  if (!value) return std::nullopt;
  if (value->isDate) return value->time + days(1) - seconds(1);
  if (!value->isUtc || event_.start->isDate) return value->time;
  return event_.start->clock->ToLocal(sys_seconds(value->time.time_since_epoch()));
}

std::optional<RulePattern> EventRules::Pattern() {
  if (rules_.size() != 1 || hasExceptionRules_) return std::nullopt;
  const Rule& only = rules_.front();
  RuleEnd end{only.rule.Count()};
  if (end.occurrences && only.until) return std::nullopt;
  if (end.occurrences) *end.occurrences -= only.skipped;
  const local_days firstDay = DayOf(only.first);
  if (only.until && *only.until < calendar::kLastDay) {
    const local_days day = DayOf(*only.until);
    const bool reaches = *only.until - day >= start_ - DayOf(start_);
    end.until = reaches ? day : day - days(1);
  }
  budget_.units -= kUnitsAPattern;
  const std::optional<calendar::Pattern> pattern = PatternOfRule(only.rule, end, firstDay);
  if (!pattern || !calendar::IsValid(*pattern)) return std::nullopt;
  return RulePattern{*pattern, only.first};
}

RuleTimes EventRules::TimesOf(const Rule& rule, local_seconds from, local_seconds end,
                              std::size_t most) {
  return TimesOfRule(rule.rule, start_, rule.until, from, end, most, budget_);
}

RuleTimes EventRules::Times(local_seconds from, local_seconds end, std::size_t most) {
  for (const Rule& rule : exceptionRules_) {
    const RuleTimes taken = TimesOf(rule, from, end, kMostTakenAway);
    takenAway_.insert(taken.times.begin(), taken.times.end());
  }
  RuleTimes all;
  all.end = end;
  std::set<local_seconds> times;
  for (const Rule& rule : rules_) {
    const RuleTimes given = TimesOf(rule, from, end, most + takenAway_.size());
    all.cut = all.cut || given.cut;
    if (given.cut) all.end = std::min(all.end, given.end);
    times.insert(given.times.begin(), given.times.end());
  }
  for (const local_seconds time : times) {
    if (time >= all.end) break;
    if (TakesAway(time)) continue;
    if (all.times.size() == most) {
      all.cut = true;
      all.end = time;
      break;
    }
    all.times.push_back(time);
  }
  return all;
}

local_seconds EventRules::WindowBegin(local_seconds first) const {
  constexpr days kYear{366};
  if (!event_.stamp || *event_.stamp <= first + kFollowedDays) return first;
  return DayOf(*event_.stamp) - kYear + (first - DayOf(first));
}

}  // namespace formats
