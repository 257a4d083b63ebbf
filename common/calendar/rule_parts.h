// The text of a recurrence rule, taken apart: its end, and what is left for libical.
#pragma once

#include <libical/ical.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "common/calendar/pattern.h"

namespace calendar {

// "SU,WE" of a pattern's mask.
std::string WeekdayNames(int mask);

struct RuleEnd {
  std::optional<int> occurrences;
  std::optional<local_days> until;
};

class RuleParts {
 public:
  // Nothing for a text that is no rule, for parts that no pattern has, and for numbers that are out
  // of all bounds. Blanks and semicolons at the end are passed over.
  static std::optional<RuleParts> Read(std::string_view rule);

  const RuleEnd& end() const { return end_; }
  bool Has(std::string_view part) const { return parts_.contains(part); }
  bool IsOf(std::string_view frequency) const { return parts_.find("FREQ")->second == frequency; }

  // The rule without its end, and with what it takes from a DTSTART written out; an n-th weekday of
  // a month is "2TU" in it, however it was said. Nothing when libical does not take it.
  std::optional<icalrecurrencetype> Endless(local_days start) const;

 private:
  bool Add(std::string_view part);
  bool TakeEnd();
  RuleParts Completed(local_days start) const;
  void NameNthDay();

  std::map<std::string, std::string, std::less<>> parts_;
  RuleEnd end_;
};

}  // namespace calendar
