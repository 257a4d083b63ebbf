#include "handheld/clock/zone.h"

#include <chrono>
#include <string>

#include "common/calendar/present_rules.h"
#include "common/calendar/tzif.h"
#include "handheld/clock/handheld_clock.h"

namespace ce::host {
namespace {

constexpr LONGLONG kTicksPerMinute = 60 * kTicksPerSecond;

SYSTEMTIME RuleTime(const calendar::YearlyChange& change) {
  return {0,
          static_cast<WORD>(change.month),
          static_cast<WORD>(change.weekday),
          static_cast<WORD>(change.week),
          static_cast<WORD>(change.millisecond / 3'600'000),
          static_cast<WORD>(change.millisecond / 60'000 % 60),
          static_cast<WORD>(change.millisecond / 1000 % 60),
          static_cast<WORD>(change.millisecond % 1000)};
}

void CopyName(const std::string& name, WCHAR (&out)[32]) {
  for (std::size_t i = 0; i < name.size() && i < 31; ++i) {
    out[i] = static_cast<unsigned char>(name[i]);
  }
}

// The ticks of a rule's wall-clock time in a year.
LONGLONG RuleTicks(const SYSTEMTIME& rule, int inYear) {
  const std::chrono::year_month_day day{
      calendar::WeekdayOfMonth(inYear, rule.wMonth, rule.wDay, rule.wDayOfWeek)};
  const SYSTEMTIME time{static_cast<WORD>(inYear),
                        rule.wMonth,
                        0,
                        static_cast<WORD>(static_cast<unsigned>(day.day())),
                        rule.wHour,
                        rule.wMinute,
                        rule.wSecond,
                        rule.wMilliseconds};
  LONGLONG ticks = 0;
  TicksFromSystemTime(time, ticks);
  return ticks;
}

}  // namespace

std::optional<TIME_ZONE_INFORMATION> ZoneFromPosixRule(std::string_view rule) {
  const std::optional<calendar::PosixZone> posix = calendar::ParsePosixZone(rule);
  if (!posix) return std::nullopt;
  const calendar::PresentRules rules = calendar::PresentRulesOf(*posix);
  TIME_ZONE_INFORMATION zone{};
  zone.Bias = rules.bias;
  zone.DaylightBias = rules.daylightBias;
  CopyName(rules.standardName, zone.StandardName);
  CopyName(rules.daylightName, zone.DaylightName);
  zone.StandardDate = RuleTime(rules.toStandard);
  zone.DaylightDate = RuleTime(rules.toDaylight);
  return zone;
}

std::optional<TIME_ZONE_INFORMATION> ReadZone(std::string_view name) {
  const std::optional<std::string> file = calendar::ReadZoneFile(name);
  if (!file) return name == "UTC" ? ZoneFromPosixRule("UTC0") : std::nullopt;
  const std::optional<std::string_view> rule = calendar::FooterOf(*file);
  return rule ? ZoneFromPosixRule(*rule) : std::nullopt;
}

bool IsDaylightAt(const TIME_ZONE_INFORMATION& zone, LONGLONG utc) {
  if (zone.StandardDate.wMonth == 0 || zone.DaylightDate.wMonth == 0) return false;
  const LONGLONG standard = utc - (zone.Bias + zone.StandardBias) * kTicksPerMinute;
  const int inYear = SystemTimeFromTicks(standard < 0 ? 0 : standard).wYear;
  // Both in standard time: the end is given on the daylight clock.
  const LONGLONG start = RuleTicks(zone.DaylightDate, inYear);
  const LONGLONG end = RuleTicks(zone.StandardDate, inYear) +
                       (zone.DaylightBias - zone.StandardBias) * kTicksPerMinute;
  if (start < end) return standard >= start && standard < end;
  return standard < end || standard >= start;
}

LONGLONG LocalFromUtc(const TIME_ZONE_INFORMATION& zone, LONGLONG utc) {
  const LONG bias = zone.Bias + (IsDaylightAt(zone, utc) ? zone.DaylightBias : zone.StandardBias);
  const LONGLONG local = utc - bias * kTicksPerMinute;
  return local < 0 ? 0 : local;
}

}  // namespace ce::host
