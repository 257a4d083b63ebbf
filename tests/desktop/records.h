// What the tests of records share.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "common/calendar/zone.h"
#include "desktop/wire/xml_records.h"

namespace desktop::testing {

inline calendar::Zone ZoneNamed(std::string_view name) {
  return calendar::Zone::Find(name).value();
}

// The first record under a root.
inline XmlElement ElementOf(const std::string& record) {
  return ParseRecords("<root>" + record + "</root>").at(0).element;
}

inline std::chrono::local_days Day(int year, int month, int day) {
  return std::chrono::local_days{std::chrono::year{year} / month / day};
}

inline std::chrono::local_seconds At(std::chrono::local_days day, int hour, int minute = 0,
                                     int second = 0) {
  return day + std::chrono::hours{hour} + std::chrono::minutes{minute} +
         std::chrono::seconds{second};
}

}  // namespace desktop::testing
