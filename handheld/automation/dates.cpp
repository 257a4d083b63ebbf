#include <chrono>
#include <cmath>

#include "handheld/base/fault.h"
#include "platform/automation.h"
#include "platform/status.h"

namespace ce {
namespace {

namespace chrono = std::chrono;

constexpr chrono::sys_days kDayZero = chrono::year{1899} / 12 / 30;
constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;
constexpr LONG kSecondsADay = 86400;

constexpr double DayNumber(chrono::sys_days day) {
  return static_cast<double>((day - kDayZero).count());
}
constexpr double kFirstDay = DayNumber(chrono::year{kFirstYear} / 1 / 1);
constexpr double kLastDay = DayNumber(chrono::year{kLastYear} / 12 / 31);

INT Fail(DWORD error) {
  SetLastError(error);
  return 0;
}

constexpr int FullYear(int year) {
  if (year < 30) return 2000 + year;
  return year < 100 ? 1900 + year : year;
}

}  // namespace

INT VariantTimeToSystemTime(DATE date, SYSTEMTIME* time) {
  if (const DWORD error = host::FaultFor("VariantTimeToSystemTime")) return Fail(error);
  const double whole = std::trunc(date);
  // Written so that a value that is no number fails, too.
  if (!time || !(whole >= kFirstDay && whole <= kLastDay)) return Fail(ERROR_INVALID_PARAMETER);

  LONG seconds = static_cast<LONG>(std::lround(std::abs(date - whole) * kSecondsADay));
  chrono::sys_days day = kDayZero + chrono::days{static_cast<LONG>(whole)};
  if (seconds == kSecondsADay) {
    seconds = 0;
    day += chrono::days{1};
  }
  const chrono::year_month_day civil{day};
  if (static_cast<int>(civil.year()) > kLastYear) return Fail(ERROR_INVALID_PARAMETER);

  *time = SYSTEMTIME{static_cast<WORD>(static_cast<int>(civil.year())),
                     static_cast<WORD>(static_cast<unsigned>(civil.month())),
                     static_cast<WORD>(chrono::weekday{day}.c_encoding()),
                     static_cast<WORD>(static_cast<unsigned>(civil.day())),
                     static_cast<WORD>(seconds / 3600),
                     static_cast<WORD>(seconds / 60 % 60),
                     static_cast<WORD>(seconds % 60),
                     0};
  return 1;
}

INT SystemTimeToVariantTime(const SYSTEMTIME* time, DATE* date) {
  if (const DWORD error = host::FaultFor("SystemTimeToVariantTime")) return Fail(error);
  if (!time || !date) return Fail(ERROR_INVALID_PARAMETER);
  const chrono::year_month_day civil{chrono::year{FullYear(time->wYear)},
                                     chrono::month{time->wMonth}, chrono::day{time->wDay}};
  if (time->wYear > kLastYear || time->wMonth > 12 || time->wDay > 31 || !civil.ok() ||
      time->wHour > 23 || time->wMinute > 59 || time->wSecond > 59) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const double whole = DayNumber(chrono::sys_days{civil});
  const LONG seconds = (time->wHour * 60 + time->wMinute) * 60 + time->wSecond;
  const double fraction = static_cast<double>(seconds) / kSecondsADay;
  *date = whole < 0 ? whole - fraction : whole + fraction;
  return 1;
}

}  // namespace ce
