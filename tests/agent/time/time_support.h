// What the tests of the time conversions share.
#pragma once

#include <ctime>
#include <ostream>
#include <string>
#include <tuple>

#include "agent/time/zone.h"
#include "platform/clock.h"
#include "tests/support/test_handheld.h"

namespace ce {

inline bool operator==(const SYSTEMTIME& a, const SYSTEMTIME& b) {
  const auto fields = [](const SYSTEMTIME& t) {
    return std::tuple(t.wYear, t.wMonth, t.wDayOfWeek, t.wDay, t.wHour, t.wMinute, t.wSecond,
                      t.wMilliseconds);
  };
  return fields(a) == fields(b);
}

inline void PrintTo(const SYSTEMTIME& time, std::ostream* out) {
  *out << time.wYear << '-' << time.wMonth << '-' << time.wDay << ' ' << time.wHour << ':'
       << time.wMinute << ':' << time.wSecond << '.' << time.wMilliseconds << " weekday "
       << time.wDayOfWeek;
}

}  // namespace ce

namespace corvane::testing {

// A time with its weekday, as the platform hands it out.
ce::SYSTEMTIME At(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                  int millisecond = 0);
ce::SYSTEMTIME FromTm(const std::tm& time);
// Midnight UTC in seconds since 1970.
std::time_t SecondsSince1970(int year, int month, int day);

// The C library's idea of a zone, while it lives.
class LibcZone {
 public:
  explicit LibcZone(const std::string& name);
  LibcZone(const LibcZone&) = delete;
  LibcZone& operator=(const LibcZone&) = delete;
  ~LibcZone();

  ce::SYSTEMTIME Local(std::time_t utc) const;
  static ce::SYSTEMTIME Utc(std::time_t utc);
};

// A handheld whose zone is read afresh and whose daylight switch is on before and after each test.
class ZoneTest : public HandheldTest {
 protected:
  void SetUp() override { Restore(); }
  void TearDown() override {
    Restore();
    HandheldTest::TearDown();
  }
  void UseZone(const std::string& name) {
    handheld_.SetZone(name);
    ResetTimeZoneCache();
  }

 private:
  static void Restore() {
    g_bUseDST = 1;
    ResetTimeZoneCache();
  }
};

}  // namespace corvane::testing
