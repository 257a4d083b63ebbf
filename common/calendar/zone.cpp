#include "common/calendar/zone.h"

#include <algorithm>
#include <utility>

#include "common/calendar/posix_zone.h"
#include "common/calendar/present_rules.h"
#include "common/calendar/tzif.h"
#include "common/calendar/wire_time.h"
#include "common/calendar/zone_file.h"

namespace calendar {
namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year;

constexpr int kCycleYears = 400;
// A zone whose file tells no change has the changes of its rule from here on.
constexpr int kFirstRuleYear = 1850;

int YearOf(sys_seconds time) {
  return static_cast<int>(std::chrono::year_month_day{std::chrono::floor<days>(time)}.year());
}

sys_seconds TimeOf(const PosixDate& date, int inYear, int west) {
  return sys_seconds{DayInYear(date, inYear).time_since_epoch()} + seconds{date.seconds + west};
}

// Of two changes at once, the later in this order counts: the one to daylight.
bool IsBefore(const OffsetChange& a, const OffsetChange& b) {
  return std::pair(a.at, a.offset) < std::pair(b.at, b.offset);
}

// The changes by a rule: those of the two years before the given one, and a whole cycle from it on.
Clock ClockOfRule(const PosixZone& rule, int firstYear) {
  Clock clock{seconds{-rule.standardWest}};
  if (!rule.daylightStart) return clock;
  clock.cycle = sys_days{year{firstYear} / 1 / 1};
  for (int each = firstYear - 2; each <= firstYear + kCycleYears; ++each) {
    clock.changes.push_back(
        {TimeOf(*rule.daylightStart, each, rule.standardWest), seconds{-rule.daylightWest}});
    clock.changes.push_back(
        {TimeOf(*rule.daylightEnd, each, rule.daylightWest), seconds{-rule.standardWest}});
  }
  std::sort(clock.changes.begin(), clock.changes.end(), IsBefore);
  return clock;
}

// What the file tells, and from its last change on what the rule says.
Clock Joined(Clock history, const PosixZone& rule) {
  if (history.changes.empty()) return ClockOfRule(rule, kFirstRuleYear);
  OffsetChange& last = history.changes.back();
  const sys_seconds end = last.at;
  const Clock rest = ClockOfRule(rule, YearOf(end) + 1);
  last.offset = rest.OffsetAt(end);
  history.cycle = rest.cycle;
  std::copy_if(rest.changes.begin(), rest.changes.end(), std::back_inserter(history.changes),
               [&](const OffsetChange& change) { return change.at > end; });
  return history;
}

}  // namespace

struct Zone::Rules {
  std::string name;
  Clock clock;
  PresentRules present;
};

Zone::Zone(std::shared_ptr<const Rules> rules) : rules_(std::move(rules)) {}

std::optional<Zone> Zone::Find(std::string_view name) {
  if (name == "UTC") return Zone(std::make_shared<Rules>(Rules{"UTC", {}, {}}));
  const std::optional<std::string> file = ReadZoneFile(name);
  const std::optional<std::string_view> footer = file ? FooterOf(*file) : std::nullopt;
  const std::optional<Clock> history = file ? HistoryOf(*file) : std::nullopt;
  if (!footer || !history) return std::nullopt;
  const std::optional<PosixZone> posix = ParsePosixZone(*footer);
  if (!posix) return std::nullopt;
  return Zone(std::make_shared<Rules>(
      Rules{std::string(name), Joined(*history, *posix), PresentRulesOf(*posix)}));
}

Zone Zone::OfHost() {
  return Find(HostZoneName()).value_or(*Find("UTC"));
}

const std::string& Zone::name() const {
  return rules_->name;
}

std::shared_ptr<const Clock> Zone::clock() const {
  return {rules_, &rules_->clock};
}

sys_seconds Zone::ToUtc(local_seconds local) const {
  return rules_->clock.ToUtc(local);
}

local_seconds Zone::ToLocal(sys_seconds utc) const {
  return rules_->clock.ToLocal(utc);
}

sys_seconds Zone::ToWireUtc(local_seconds local) const {
  return calendar::ToWireUtc(rules_->present, local);
}

local_seconds Zone::FromWireUtc(sys_seconds utc) const {
  return calendar::FromWireUtc(rules_->present, utc);
}

}  // namespace calendar
