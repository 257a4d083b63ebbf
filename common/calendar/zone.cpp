#include "common/calendar/zone.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "common/calendar/posix_zone.h"
#include "common/calendar/present_rules.h"
#include "common/calendar/tzif.h"
#include "common/calendar/wire_time.h"
#include "common/calendar/zone_file.h"

namespace calendar {
namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::year_month_day;
using Changes = std::vector<OffsetChange>;

// Clocks were never moved by more.
constexpr days kMostOfChange{2};

sys_seconds TimeOf(const PosixDate& date, int year, int west) {
  return sys_seconds{DayInYear(date, year).time_since_epoch()} + seconds{date.seconds + west};
}

// Of two changes at once, the later in this order counts: the one to daylight.
bool IsBefore(const OffsetChange& a, const OffsetChange& b) {
  return std::pair(a.at, a.offset) < std::pair(b.at, b.offset);
}

}  // namespace

struct Zone::Rules {
  std::string name;
  ZoneHistory history;
  PosixZone posix;  // after the history
  PresentRules present;

  // The changes of the years around a time by the rule that follows the history.
  Changes ChangesOfRule(sys_seconds around) const {
    Changes changes;
    if (!posix.daylightStart) return changes;
    const int year = static_cast<int>(year_month_day{std::chrono::floor<days>(around)}.year());
    for (int each = year - 1; each <= year + 1; ++each) {
      changes.push_back(
          {TimeOf(*posix.daylightStart, each, posix.standardWest), seconds{-posix.daylightWest}});
      changes.push_back(
          {TimeOf(*posix.daylightEnd, each, posix.daylightWest), seconds{-posix.standardWest}});
    }
    std::sort(changes.begin(), changes.end(), IsBefore);
    return changes;
  }

  bool IsHistory(sys_seconds utc) const {
    return !history.changes.empty() && utc < history.changes.back().at;
  }

  static seconds OffsetIn(const Changes& changes, sys_seconds utc, seconds first) {
    const auto later = std::upper_bound(
        changes.begin(), changes.end(), utc,
        [](sys_seconds time, const OffsetChange& change) { return time < change.at; });
    return later == changes.begin() ? first : std::prev(later)->offset;
  }

  seconds OffsetAt(sys_seconds utc) const {
    if (IsHistory(utc)) return OffsetIn(history.changes, utc, history.firstOffset);
    return OffsetIn(ChangesOfRule(utc), utc, seconds{-posix.standardWest});
  }

  // The offset at the first time, and its changes up to the second.
  Changes ChangesBetween(sys_seconds first, sys_seconds last) const {
    Changes between = {{first, OffsetAt(first)}};
    const auto add = [&](const OffsetChange& change) {
      if (change.at > first && change.at <= last) between.push_back(change);
    };
    for (const OffsetChange& change : history.changes) add(change);
    for (const OffsetChange& change : ChangesOfRule(last)) {
      if (!IsHistory(change.at)) add(change);
    }
    return between;
  }
};

Zone::Zone(std::shared_ptr<const Rules> rules) : rules_(std::move(rules)) {}

std::optional<Zone> Zone::Find(std::string_view name) {
  if (name == "UTC") return Zone(std::make_shared<Rules>(Rules{"UTC", {}, {}, {}}));
  const std::optional<std::string> file = ReadZoneFile(name);
  const std::optional<std::string_view> footer = file ? FooterOf(*file) : std::nullopt;
  const std::optional<ZoneHistory> history = file ? HistoryOf(*file) : std::nullopt;
  if (!footer || !history) return std::nullopt;
  const std::optional<PosixZone> posix = ParsePosixZone(*footer);
  const std::optional<PresentRules> present = PresentRulesOf(*footer);
  if (!posix || !present) return std::nullopt;
  return Zone(std::make_shared<Rules>(Rules{std::string(name), *history, *posix, *present}));
}

Zone Zone::OfHost() {
  return Find(HostZoneName()).value_or(*Find("UTC"));
}

const std::string& Zone::name() const {
  return rules_->name;
}

sys_seconds Zone::ToUtc(local_seconds local) const {
  const sys_seconds clock{local.time_since_epoch()};
  const Changes spans = rules_->ChangesBetween(clock - kMostOfChange, clock + kMostOfChange);
  for (auto span = spans.begin(); span + 1 != spans.end(); ++span) {
    if (clock - span->offset < (span + 1)->at) return clock - span->offset;
    // What lies before the next span's first local time fell into the gap between the two.
    if (clock - (span + 1)->offset < (span + 1)->at) return clock - span->offset;
  }
  return clock - spans.back().offset;
}

local_seconds Zone::ToLocal(sys_seconds utc) const {
  return local_seconds{utc.time_since_epoch()} + rules_->OffsetAt(utc);
}

sys_seconds Zone::ToWireUtc(local_seconds local) const {
  return calendar::ToWireUtc(rules_->present, local);
}

local_seconds Zone::FromWireUtc(sys_seconds utc) const {
  return calendar::FromWireUtc(rules_->present, utc);
}

}  // namespace calendar
