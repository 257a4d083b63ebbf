#include "common/calendar/wall_time.h"

#include <fmt/format.h>

#include "common/calendar/pattern.h"

namespace formats {
namespace {

struct Fields {
  int year = 0;
  unsigned month = 0;
  unsigned day = 0;
  long long hour = 0;
  long long minute = 0;
  long long second = 0;
};

Fields FieldsOf(local_seconds time) {
  const local_days day = DayOf(time);
  const std::chrono::year_month_day date{day};
  const std::chrono::hh_mm_ss clock{time - day};
  return {static_cast<int>(date.year()),     static_cast<unsigned>(date.month()),
          static_cast<unsigned>(date.day()), clock.hours().count(),
          clock.minutes().count(),           clock.seconds().count()};
}

}  // namespace

bool IsKeepableDay(local_days day) {
  return day >= calendar::kFirstDay && day <= calendar::kLastDay;
}

std::string IsoDate(local_days day) {
  const Fields f = FieldsOf(day);
  return fmt::format("{:04}-{:02}-{:02}", f.year, f.month, f.day);
}

std::string IsoDateTime(local_seconds time) {
  const Fields f = FieldsOf(time);
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", f.year, f.month, f.day, f.hour,
                     f.minute, f.second);
}

std::string BasicDate(local_days day) {
  const Fields f = FieldsOf(day);
  return fmt::format("{:04}{:02}{:02}", f.year, f.month, f.day);
}

std::string BasicDateTime(local_seconds time) {
  const Fields f = FieldsOf(time);
  return fmt::format("{:04}{:02}{:02}T{:02}{:02}{:02}", f.year, f.month, f.day, f.hour, f.minute,
                     f.second);
}

std::string BasicUtc(sys_seconds time) {
  return BasicDateTime(local_seconds(time.time_since_epoch())) + "Z";
}

}  // namespace formats
