#include "common/formats/icalendar/zone_alignment.h"

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

namespace formats {
namespace {

using calendar::Pattern;
using calendar::PatternType;
using std::chrono::days;
using std::chrono::seconds;

constexpr days kLookedAt{7306};
constexpr long long kUnitsADay = 60;

struct ShownDay {
  local_days day;  // on the event's own clock
  Times times;     // on the handheld's
};

// How an occurrence lies to its day: days later, time of day, length.
using Place = std::tuple<days, seconds, seconds>;

Place PlaceOf(const ShownDay& shown) {
  const local_days day = DayOf(shown.times.start);
  return {day - shown.day, shown.times.start - day, shown.times.end - shown.times.start};
}

Times TimesOf(const Place& place, local_days day) {
  const auto& [shift, clock, length] = place;
  const local_seconds start = day + shift + clock;
  return {start, start + length};
}

std::vector<ShownDay> Walk(const Event& event, const Pattern& pattern, local_days firstDay,
                           const ZoneTable& zones, WorkBudget& budget) {
  const seconds clock = event.start->wall - DayOf(event.start->wall);
  std::vector<ShownDay> shown;
  const calendar::SeriesDays series(pattern, firstDay);
  const std::int64_t count = series.CountBefore(firstDay + kLookedAt + days(1));
  for (std::int64_t i = 0; i < count; ++i) {
    shown.push_back({series[i], TimesAt(event, series[i] + clock, zones)});
  }
  budget.units -= static_cast<long long>(shown.size()) * kUnitsADay;
  return shown;
}

// The one that most have, the earliest of them.
Place UsualPlace(const std::vector<ShownDay>& shown) {
  std::map<Place, std::size_t> counts;
  for (const ShownDay& each : shown) ++counts[PlaceOf(each)];
  Place usual = PlaceOf(shown.front());
  for (const ShownDay& each : shown) {
    const Place place = PlaceOf(each);
    if (counts[place] > counts[usual]) usual = place;
  }
  return usual;
}

int Rotated(int mask, days shift) {
  const int count = static_cast<int>((shift.count() % 7 + 7) % 7);
  return ((mask << count) | (mask >> (7 - count))) & 127;
}

// What the pattern would be when all its days were later; to be compared, for it need not be right.
Pattern Shifted(Pattern pattern, days shift) {
  if (pattern.until) *pattern.until += shift;
  pattern.daysOfWeek = Rotated(pattern.daysOfWeek, shift);
  if (pattern.dayOfMonth == 0) return pattern;
  const bool yearly = pattern.type == PatternType::kYearly;
  const unsigned month = yearly ? static_cast<unsigned>(pattern.monthOfYear) : 1;
  const local_days day{std::chrono::year(2001) / month / pattern.dayOfMonth};
  const std::chrono::year_month_day date{day + shift};
  pattern.dayOfMonth = static_cast<int>(static_cast<unsigned>(date.day()));
  if (yearly) pattern.monthOfYear = static_cast<int>(static_cast<unsigned>(date.month()));
  return pattern;
}

bool HasDays(const Pattern& pattern, const std::vector<ShownDay>& shown, days shift) {
  if (!calendar::IsValid(pattern)) return false;
  const local_days first = shown.front().day;
  const calendar::SeriesDays series(pattern, first + shift);
  const auto count = static_cast<std::int64_t>(shown.size());
  if (series.size() < count || series.CountBefore(first + kLookedAt) > count) return false;
  for (std::int64_t i = 0; i < count; ++i) {
    if (series[i] != shown[static_cast<std::size_t>(i)].day + shift) return false;
  }
  return true;
}

}  // namespace

std::optional<Alignment> Align(const Event& event, const Pattern& pattern, local_days firstDay,
                               local_days from, std::size_t most,
                               const std::function<bool(local_days)>& isChanged,
                               const ZoneTable& zones, WorkBudget& budget) {
  Alignment result;
  result.pattern = pattern;
  const seconds clock = event.start->wall - DayOf(event.start->wall);
  if (event.start->isFloating || event.start->clock == zones.own()) {
    result.first = TimesAt(event, firstDay + clock, zones);
    return result;
  }
  const std::vector<ShownDay> shown = Walk(event, pattern, firstDay, zones, budget);
  if (shown.empty()) return std::nullopt;
  const Place usual = UsualPlace(shown);
  result.shift = std::get<days>(usual);
  result.first = TimesOf(usual, firstDay);
  if (result.shift != days(0)) {
    result.pattern = Shifted(pattern, result.shift);
    if (!HasDays(result.pattern, shown, result.shift)) return std::nullopt;
  }
  for (const ShownDay& each : shown) {
    if (each.day < from || PlaceOf(each) == usual || isChanged(each.day)) continue;
    if (each.day - from > kFollowedDays || result.differing.size() >= most) {
      result.differsAfter = TimesOf(usual, each.day).start;
      break;
    }
    result.differing.emplace(each.day, each.times);
  }
  return result;
}

}  // namespace formats
