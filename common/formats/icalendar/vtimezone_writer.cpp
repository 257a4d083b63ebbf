#include "common/formats/icalendar/vtimezone_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "common/formats/icalendar/rule_days.h"
#include "common/formats/lines/content_writer.h"

namespace formats {
namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::year;

// The years in which a zone has its last rules alone.
constexpr int kRuleYears = 28;
constexpr int kLastYear = 2150;
constexpr int kFirstRuleYear = kLastYear - kRuleYears + 1;

struct WrittenChange {
  sys_seconds at;
  seconds before;
  seconds after;
  local_seconds onset() const { return local_seconds((at + before).time_since_epoch()); }
};

// A change that comes every year.
struct YearlyRule {
  seconds before;
  seconds after;
  unsigned month = 0;
  std::chrono::weekday weekday;
  unsigned firstDay = 0;  // the weekday is one of the seven days from this one on
  bool isLast = false;    // or the last one of the month
  seconds clock{0};

  local_seconds OnsetIn(int inYear) const {
    const std::chrono::year_month month_{year(inYear), std::chrono::month(month)};
    const local_days day =
        isLast
            ? local_days(month_ / weekday[std::chrono::last])
            : local_days(month_ / std::chrono::day(firstDay)) +
                  (weekday - std::chrono::weekday(local_days(month_ / std::chrono::day(firstDay))));
    return day + clock;
  }
};

int YearOf(local_seconds time) {
  return static_cast<int>(std::chrono::year_month_day(DayOf(time)).year());
}

unsigned MonthDay(local_days day) {
  return static_cast<unsigned>(std::chrono::year_month_day(day).day());
}

unsigned MonthNumber(local_days day) {
  return static_cast<unsigned>(std::chrono::year_month_day(day).month());
}

std::vector<WrittenChange> ChangesOf(const calendar::Clock& clock, sys_seconds from,
                                     sys_seconds to) {
  std::vector<WrittenChange> changes;
  seconds before = clock.OffsetAt(from);
  for (const calendar::OffsetChange& change : clock.changes) {
    const seconds after = clock.OffsetAt(change.at);
    if (change.at <= from || change.at > to || after == before) continue;
    changes.push_back({change.at, before, after});
    before = after;
  }
  return changes;
}

// The rule that gives one change in each of the years, nothing when none does.
std::optional<YearlyRule> RuleOf(const std::vector<WrittenChange>& changes) {
  if (changes.size() != kRuleYears) return std::nullopt;
  const local_seconds first = changes.front().onset();
  YearlyRule rule{changes.front().before,
                  changes.front().after,
                  MonthNumber(DayOf(first)),
                  std::chrono::weekday(DayOf(first)),
                  31,
                  true,
                  first - DayOf(first)};
  for (const WrittenChange& change : changes) {
    const local_days day = DayOf(change.onset());
    rule.firstDay = std::min(rule.firstDay, MonthDay(day));
    rule.isLast = rule.isLast && MonthNumber(day + days(7)) != MonthNumber(day);
  }
  for (const WrittenChange& change : changes) {
    if (change.onset() != rule.OnsetIn(YearOf(change.onset()))) return std::nullopt;
  }
  return rule;
}

std::vector<YearlyRule> RulesOf(const calendar::Zone& zone) {
  const auto begin = zone.ToUtc(local_days(year(kFirstRuleYear) / 1 / 1));
  const auto end = zone.ToUtc(local_days(year(kLastYear + 1) / 1 / 1));
  std::map<std::pair<seconds, seconds>, std::vector<WrittenChange>> kinds;
  for (const WrittenChange& change : ChangesOf(*zone.clock(), begin, end)) {
    kinds[{change.before, change.after}].push_back(change);
  }
  std::vector<YearlyRule> rules;
  for (const auto& [kind, changes] : kinds) {
    if (const std::optional<YearlyRule> rule = RuleOf(changes)) rules.push_back(*rule);
  }
  return rules;
}

// The first year from which on the zone changes as its rules say, and no otherwise.
int FirstYearOf(const std::vector<YearlyRule>& rules, const std::vector<WrittenChange>& changes) {
  using Onset = std::tuple<local_seconds, seconds, seconds>;
  std::map<int, std::vector<Onset>> byYear;
  for (const WrittenChange& change : changes) {
    byYear[YearOf(change.onset())].emplace_back(change.onset(), change.before, change.after);
  }
  const auto follows = [&](int inYear) {
    std::vector<Onset> expected;
    expected.reserve(rules.size());
    for (const YearlyRule& rule : rules) {
      expected.emplace_back(rule.OnsetIn(inYear), rule.before, rule.after);
    }
    std::sort(expected.begin(), expected.end());
    return byYear[inYear] == expected;
  };
  int first = kLastYear;
  while (first > 1900 && follows(first - 1)) --first;
  return first;
}

std::string OffsetText(seconds offset) {
  const long long total = offset.count() < 0 ? -offset.count() : offset.count();
  std::string text =
      fmt::format("{}{:02}{:02}", offset.count() < 0 ? '-' : '+', total / 3600, total / 60 % 60);
  if (total % 60 != 0) text += fmt::format("{:02}", total % 60);
  return text;
}

std::string DayText(const YearlyRule& rule) {
  const char* name = kWeekdayNames[rule.weekday.c_encoding()];
  if (rule.isLast) return fmt::format("BYDAY=-1{}", name);
  if (rule.firstDay % 7 == 1) return fmt::format("BYDAY={}{}", rule.firstDay / 7 + 1, name);
  std::string text = fmt::format("BYDAY={};BYMONTHDAY={}", name, rule.firstDay);
  for (unsigned day = rule.firstDay + 1; day < rule.firstDay + 7; ++day) {
    text += fmt::format(",{}", day);
  }
  return text;
}

class Writer {
 public:
  std::string Write(const calendar::Zone& zone, const UsedTimes& used);

 private:
  void Line(const std::string& line) { AppendFolded(out_, line); }
  void Observance(seconds before, seconds after, local_seconds onset,
                  const std::vector<std::string>& more);

  std::string out_;
};

void Writer::Observance(seconds before, seconds after, local_seconds onset,
                        const std::vector<std::string>& more) {
  const char* name = after > before ? "DAYLIGHT" : "STANDARD";
  Line(std::string("BEGIN:") + name);
  Line("DTSTART:" + BasicDateTime(onset));
  for (const std::string& line : more) Line(line);
  Line("TZOFFSETFROM:" + OffsetText(before));
  Line("TZOFFSETTO:" + OffsetText(after));
  Line(std::string("END:") + name);
}

std::string Writer::Write(const calendar::Zone& zone, const UsedTimes& used) {
  const int firstYear = YearOf(used.first) - 1;
  const int lastYear = used.goesOn ? kLastYear : std::min(YearOf(used.last) + 1, kLastYear);
  const sys_seconds begin = zone.ToUtc(local_days(year(firstYear) / 1 / 1));
  std::vector<YearlyRule> rules = RulesOf(zone);
  const auto changes =
      ChangesOf(*zone.clock(), begin, zone.ToUtc(local_days(year(kLastYear + 1) / 1 / 1)));
  const int ruleYear = std::max(FirstYearOf(rules, changes), firstYear);

  Line("BEGIN:VTIMEZONE");
  Line("TZID:" + ContentValue().Add(zone.name()).text());
  const seconds offset = zone.clock()->OffsetAt(begin);
  Observance(offset, offset, local_days(year(firstYear) / 1 / 1), {});
  std::map<std::pair<seconds, seconds>, std::vector<local_seconds>> single;
  for (const WrittenChange& change : changes) {
    const int inYear = YearOf(change.onset());
    if (inYear > lastYear || inYear >= ruleYear) break;
    single[{change.before, change.after}].push_back(change.onset());
  }
  for (const auto& [kind, onsets] : single) {
    std::vector<std::string> more;
    for (const local_seconds onset : onsets) more.push_back("RDATE:" + BasicDateTime(onset));
    Observance(kind.first, kind.second, onsets.front(), more);
  }
  if (lastYear >= ruleYear) {
    for (const YearlyRule& rule : rules) {
      Observance(rule.before, rule.after, rule.OnsetIn(ruleYear),
                 {fmt::format("RRULE:FREQ=YEARLY;BYMONTH={};{}", rule.month, DayText(rule))});
    }
  }
  Line("END:VTIMEZONE");
  return std::move(out_);
}

}  // namespace

std::string VTimezoneOf(const calendar::Zone& zone, const UsedTimes& used) {
  return Writer().Write(zone, used);
}

}  // namespace formats
