#include <algorithm>
#include <bit>
#include <vector>

#include "common/calendar/pattern.h"
#include "common/calendar/rule_days.h"

namespace calendar {
namespace {

int DaysPerBlock(const Pattern& pattern) {
  if (pattern.type == PatternType::kDaily) return RuleDays::kDailyDays;
  if (pattern.type != PatternType::kWeekly) return 1;
  return std::popcount(static_cast<unsigned>(pattern.daysOfWeek));
}

// Every block of a pattern's rule has the same number of days, so that they are counted without
// being walked.
class Series {
 public:
  Series(const Pattern& pattern, local_days start)
      : rule_(EndlessRule(pattern), std::max(start, kFirstDay)),
        perBlock_(DaysPerBlock(pattern)),
        start_(std::max(start, kFirstDay)),
        end_(std::min(pattern.until.value_or(kLastDay), kLastDay)),
        occurrences_(pattern.occurrences) {}

  std::optional<local_days> FirstFrom(local_days day) const {
    day = std::max(day, start_);
    if (day > end_) return std::nullopt;
    for (std::int64_t block = rule_.BlockOf(day); rule_.FirstDayOf(block) <= end_; ++block) {
      const std::vector<local_days> days = rule_.DaysOf(block);
      const auto found = std::lower_bound(days.begin(), days.end(), day);
      if (found == days.end()) continue;
      const bool isDay = *found <= end_ && (!occurrences_ || CountTo(*found) <= *occurrences_);
      return isDay ? std::optional(*found) : std::nullopt;
    }
    return std::nullopt;
  }

  std::optional<local_days> Last() const {
    return occurrences_ ? LastOfOccurrences() : LastBy(end_);
  }

  // How many days the series has up to one of them, whatever its number of occurrences.
  std::int64_t CountTo(local_days day) const {
    const std::int64_t block = rule_.BlockOf(day);
    const std::vector<local_days> days = rule_.DaysOf(block);
    const auto place = std::upper_bound(days.begin(), days.end(), day) - days.begin();
    return block * perBlock_ + place - CountBeforeStart();
  }

 private:
  std::int64_t CountBeforeStart() const {
    const std::vector<local_days> days = rule_.DaysOf(0);
    return std::lower_bound(days.begin(), days.end(), start_) - days.begin();
  }

  std::optional<local_days> LastBy(local_days day) const {
    if (day < start_) return std::nullopt;
    for (std::int64_t block = rule_.BlockOf(day); block >= 0; --block) {
      const std::vector<local_days> days = rule_.DaysOf(block);
      const auto behind = std::upper_bound(days.begin(), days.end(), day);
      if (behind == days.begin()) continue;
      const local_days last = *std::prev(behind);
      return last >= start_ ? std::optional(last) : std::nullopt;
    }
    return std::nullopt;
  }

  std::optional<local_days> LastOfOccurrences() const {
    const std::int64_t index = *occurrences_ - 1 + CountBeforeStart();
    const std::int64_t block = index / perBlock_;
    if (start_ > end_ || block > rule_.BlockOf(end_)) return LastBy(end_);
    const auto place = static_cast<std::size_t>(index % perBlock_);
    return LastBy(std::min(rule_.DaysOf(block).at(place), end_));
  }

  RuleDays rule_;
  std::int64_t perBlock_;
  local_days start_;
  local_days end_;
  std::optional<int> occurrences_;
};

}  // namespace

struct DayWalk::State {
  RuleWalk walk;
  local_days end;
  std::optional<int> left;
};

DayWalk::DayWalk(const Pattern& pattern, local_days start)
    : state_(new State{{EndlessRule(pattern), std::max(start, kFirstDay)},
                       pattern.until.value_or(kLastDay),
                       pattern.occurrences}) {}
DayWalk::~DayWalk() = default;
DayWalk::DayWalk(DayWalk&&) noexcept = default;
DayWalk& DayWalk::operator=(DayWalk&&) noexcept = default;

std::optional<local_days> DayWalk::Next() {
  if (state_->left && *state_->left == 0) return std::nullopt;
  const std::optional<local_days> day = state_->walk.Next();
  if (!day || *day > state_->end) return std::nullopt;
  if (state_->left) --*state_->left;
  return day;
}

bool IsDayOf(const Pattern& pattern, local_days start, local_days day) {
  return NextDayOf(pattern, start, day) == day;
}

std::optional<local_days> NextDayOf(const Pattern& pattern, local_days start, local_days day) {
  return Series(pattern, start).FirstFrom(day);
}

std::optional<local_days> LastDayOf(const Pattern& pattern, local_days start) {
  if (!pattern.occurrences && !pattern.until) return std::nullopt;
  return Series(pattern, start).Last();
}

std::optional<int> CountDaysOf(const Pattern& pattern, local_days start) {
  if (!pattern.occurrences && !pattern.until) return std::nullopt;
  const Series series(pattern, start);
  const std::optional<local_days> last = series.Last();
  return last ? static_cast<int>(series.CountTo(*last)) : 0;
}

}  // namespace calendar
