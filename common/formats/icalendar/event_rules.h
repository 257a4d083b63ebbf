// When an event recurs, by its rules, on its own clock.
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <vector>

#include "common/calendar/pattern.h"
#include "common/formats/icalendar/icalendar_event.h"
#include "common/formats/icalendar/icalendar_rule.h"
#include "common/formats/icalendar/zone_table.h"

namespace formats {

struct RulePattern {
  calendar::Pattern pattern;
  local_seconds first = {};  // the first occurrence that can be kept
};

class EventRules {
 public:
  // Rules that are none, and those that give no time, make notices. The event has a start. All must
  // outlive the rules.
  EventRules(Event& event, WorkBudget& budget);

  bool IsRecurring() const { return !rules_.empty(); }
  // Nothing unless one rule alone gives all times, and a pattern has its days.
  std::optional<RulePattern> Pattern();
  // The times of all rules that no EXRULE takes away, at or after `from` and before `end`.
  RuleTimes Times(local_seconds from, local_seconds end, std::size_t most);
  // Whether an EXRULE takes a time away; to be asked after Times.
  bool TakesAway(local_seconds wall) const { return takenAway_.contains(wall); }
  // From where on a series that begins with `first` is followed occurrence by occurrence: from its
  // beginning, but when it was long over by the time that the event was written, from a year before
  // that.
  local_seconds WindowBegin(local_seconds first) const;

 private:
  struct Rule {
    RecurrenceRule rule;
    std::optional<local_seconds> until;
    local_seconds first;  // its first time that can be kept
    int skipped = 0;      // how many are before it
  };
  std::optional<Rule> Read(const RuleText& text);
  std::optional<local_seconds> UntilOf(const std::string& text) const;
  RuleTimes TimesOf(const Rule& rule, local_seconds from, local_seconds end, std::size_t most);

  Event& event_;
  WorkBudget& budget_;
  const local_seconds start_;
  std::vector<Rule> rules_, exceptionRules_;
  bool hasExceptionRules_ = false;
  std::set<local_seconds> takenAway_;
};

}  // namespace formats
