#include "common/formats/icalendar/zone_table.h"

#include <string_view>
#include <utility>

#include "common/formats/icalendar/vtimezone_rules.h"
#include "common/formats/icalendar/windows_zones.h"
#include "common/text/text.h"

namespace formats {
namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::string_view kUtc = "UTC";

}  // namespace

local_seconds WallOn(const Moment& moment, const std::shared_ptr<const Clock>& clock) {
  if (moment.isFloating || moment.clock == clock) return moment.wall;
  return clock->ToLocal(moment.clock->ToUtc(moment.wall));
}

ZoneTable::ZoneTable(const calendar::Zone& own, WorkBudget& budget)
    : zone_(own),
      budget_(budget),
      own_(own.clock()),
      utc_(own.name() == kUtc ? own_ : std::make_shared<const Clock>()) {}

void ZoneTable::Add(Component vtimezone) {
  std::string tzid;
  for (const Property& property : vtimezone.properties) {
    if (property.name == "TZID") tzid = text::TrimBlanks(TextOf(property));
  }
  if (tzid.empty() || tzid.size() > kLongestName) return;
  const std::size_t calendar = vtimezone.calendar;
  calendarOf_[tzid] = calendar;
  components_[{calendar, std::move(tzid)}] = std::move(vtimezone);
}

Moment ZoneTable::MomentOf(const TimeValue& value, std::size_t calendar, std::size_t line,
                           NoticeList& notices) {
  Moment moment;
  moment.wall = value.time;
  moment.isDate = value.isDate;
  moment.clock = own_;
  if (value.isUtc) {
    moment.clock = utc_;
  } else if (value.isDate || value.tzid.empty()) {
    moment.isFloating = true;
  } else {
    const auto [found, isNew] = found_.try_emplace({calendar, value.tzid});
    if (isNew) found->second = Find(value.tzid, calendar);
    if (found->second) {
      moment.clock = found->second;
    } else if (isNew) {
      notices.Add(line, "TZID: nothing is known of the zone \"" + text::Excerpt(value.tzid) +
                            "\", its times are taken as the handheld's");
    }
  }
  return moment;
}

std::shared_ptr<const Clock> ZoneTable::Find(const std::string& tzid, std::size_t calendar) {
  if (tzid.size() > kLongestName) return nullptr;
  if (auto clock = FromSystem(tzid)) return clock;
  if (auto clock = FromFile(tzid, calendar)) return clock;
  if (const std::string_view zone = ZoneOfWindowsName(tzid); !zone.empty()) {
    if (auto clock = FromSystem(zone)) return clock;
  }
  return FromPath(tzid);
}

std::shared_ptr<const Clock> ZoneTable::FromSystem(std::string_view name) const {
  if (name == zone_.name()) return own_;
  if (name == kUtc) return utc_;
  const std::optional<calendar::Zone> zone = calendar::Zone::Find(name);
  return zone ? zone->clock() : nullptr;
}

std::shared_ptr<const Clock> ZoneTable::FromFile(const std::string& tzid, std::size_t calendar) {
  auto component = components_.find({calendar, tzid});
  if (component == components_.end()) {
    const auto elsewhere = calendarOf_.find(tzid);
    if (elsewhere == calendarOf_.end()) return nullptr;
    component = components_.find({elsewhere->second, tzid});
  }
  if (const Property* name = component->second.Find("X-LIC-LOCATION")) {
    if (auto clock = FromSystem(text::TrimBlanks(name->value))) return clock;
  }
  std::optional<Clock> clock = ClockOf(component->second, budget_);
  return clock ? std::make_shared<const Clock>(std::move(*clock)) : nullptr;
}

// "/example.org/2001_5/America/Chicago": what is behind some slash is a zone's name.
std::shared_ptr<const Clock> ZoneTable::FromPath(std::string_view tzid) const {
  if (!tzid.starts_with('/')) return nullptr;
  while (true) {
    const std::size_t slash = tzid.find('/');
    if (slash == std::string_view::npos) return nullptr;
    tzid.remove_prefix(slash + 1);
    if (tzid.find('/') == std::string_view::npos) return nullptr;
    if (auto clock = FromSystem(tzid)) return clock;
  }
}

}  // namespace formats
