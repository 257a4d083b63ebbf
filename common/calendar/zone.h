// Time zones of the system's zone database, with their history, and as a handheld knows them.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "common/calendar/clock.h"

namespace calendar {

// Cheap to copy; may be used from several threads.
class Zone {
 public:
  // Nothing when the database has no zone of that name, or its file is damaged. "UTC" is always
  // known.
  static std::optional<Zone> Find(std::string_view name);
  // The host's own zone, else UTC.
  static Zone OfHost();

  const std::string& name() const;

  // As people's clocks show it, with the rules of that time.
  std::shared_ptr<const Clock> clock() const;
  sys_seconds ToUtc(local_seconds local) const;
  local_seconds ToLocal(sys_seconds utc) const;

  // As a handheld in that zone converts them: by the zone's present rules, whatever the year. What
  // travels as UTC is to be read and written with these.
  sys_seconds ToWireUtc(local_seconds local) const;
  local_seconds FromWireUtc(sys_seconds utc) const;

 private:
  struct Rules;
  explicit Zone(std::shared_ptr<const Rules> rules);
  std::shared_ptr<const Rules> rules_;
};

}  // namespace calendar
