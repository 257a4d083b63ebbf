#include "tests/agent/time/time_support.h"

#include <stdlib.h>

#include <chrono>

namespace corvane::testing {

std::time_t SecondsSince1970(int year, int month, int day) {
  const std::chrono::sys_days date{std::chrono::year{year} / month / day};
  return std::chrono::duration_cast<std::chrono::seconds>(date.time_since_epoch()).count();
}

ce::SYSTEMTIME At(int year, int month, int day, int hour, int minute, int second, int millisecond) {
  const std::chrono::sys_days date{std::chrono::year{year} / month / day};
  const auto field = [](int value) { return static_cast<ce::WORD>(value); };
  return {field(year),
          field(month),
          static_cast<ce::WORD>(std::chrono::weekday{date}.c_encoding()),
          field(day),
          field(hour),
          field(minute),
          field(second),
          field(millisecond)};
}

ce::SYSTEMTIME FromTm(const std::tm& time) {
  return At(time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min,
            time.tm_sec);
}

LibcZone::LibcZone(const std::string& name) {
  ::setenv("TZ", name.c_str(), 1);
  ::tzset();
}

LibcZone::~LibcZone() {
  ::unsetenv("TZ");
  ::tzset();
}

ce::SYSTEMTIME LibcZone::Local(std::time_t utc) const {
  std::tm time{};
  ::localtime_r(&utc, &time);
  return FromTm(time);
}

ce::SYSTEMTIME LibcZone::Utc(std::time_t utc) {
  std::tm time{};
  ::gmtime_r(&utc, &time);
  return FromTm(time);
}

}  // namespace corvane::testing
