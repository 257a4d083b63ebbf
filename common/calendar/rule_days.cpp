#include "common/calendar/rule_days.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>

#include "common/calendar/rule.h"

namespace calendar {
namespace {

using std::chrono::days;
using std::chrono::month;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr int kCycleYears = 400;
constexpr days kCycle{146'097};
// What is brought to the 400 years from here on is far from libical's end.
constexpr int kFirstKnownYear = 2000;

struct FreeIterator {
  void operator()(icalrecur_iterator* iterator) const { icalrecur_iterator_free(iterator); }
};
using Iterator = std::unique_ptr<icalrecur_iterator, FreeIterator>;

// What libical stands on sets itself up with the first iterator. Other threads wait for that here,
// so that the order is ours to see.
void SetUpOnce() {
  [[maybe_unused]] static const bool isSetUp = [] {
    const Iterator first(
        icalrecur_iterator_new(icalrecurrencetype_from_string("FREQ=MONTHLY;BYMONTHDAY=-1"),
                               icaltime_from_string("20000101")));
    return first && icalrecur_iterator_next(first.get()).day == 31;
  }();
}

std::int64_t MonthNumber(local_days day) {
  const year_month_day date{day};
  return static_cast<int>(date.year()) * 12 + static_cast<int>(unsigned{date.month()}) - 1;
}

local_days FirstOfMonth(std::int64_t number) {
  return local_days{year{static_cast<int>(number / 12)} /
                    month{static_cast<unsigned>(number % 12) + 1} / 1};
}

icaltimetype ToTime(local_days day) {
  const year_month_day date{day};
  icaltimetype time{};
  time.is_date = 1;
  time.year = static_cast<int>(date.year());
  time.month = static_cast<int>(unsigned{date.month()});
  time.day = static_cast<int>(unsigned{date.day()});
  return time;
}

local_days ToDay(const icaltimetype& time) {
  return local_days{year{time.year} / time.month / time.day};
}

local_days Anchor(const icalrecurrencetype& rule, local_days start) {
  switch (rule.freq) {
    case ICAL_WEEKLY_RECURRENCE: {
      const std::chrono::weekday first{
          static_cast<unsigned>(rule.week_start - ICAL_SUNDAY_WEEKDAY)};
      return start - (std::chrono::weekday{start} - first);
    }
    case ICAL_MONTHLY_RECURRENCE:
      return FirstOfMonth(MonthNumber(start));
    case ICAL_YEARLY_RECURRENCE:
      return local_days{year_month_day{start}.year() / 1 / 1};
    default:
      return start;
  }
}

std::int64_t Interval(const icalrecurrencetype& rule) {
  const bool isShort = rule.freq == ICAL_DAILY_RECURRENCE && rule.interval <= kMaxInterval;
  return std::int64_t{rule.interval} * (isShort ? RuleDays::kDailyDays : 1);
}

// By how much a day is to be moved to lie in the years that libical knows.
days ShiftOf(local_days day) {
  const int years = static_cast<int>(year_month_day{day}.year()) - kFirstKnownYear;
  const int cycles = (years < 0 ? years - (kCycleYears - 1) : years) / kCycleYears;
  return -cycles * kCycle;
}

// More than the months or days between the days of any yearly pattern.
constexpr int kMaxEmptyBlocks = 64;

}  // namespace

icalrecurrencetype EndlessRule(Pattern pattern) {
  pattern.occurrences.reset();
  pattern.until.reset();
  return icalrecurrencetype_from_string(RuleOf(pattern).c_str());
}

RuleDays::RuleDays(const icalrecurrencetype& rule, local_days start)
    : rule_(rule), interval_(Interval(rule)), anchor_(Anchor(rule, start)) {}

std::int64_t RuleDays::BlockOf(local_days day) const {
  switch (rule_.freq) {
    case ICAL_WEEKLY_RECURRENCE:
      return (day - anchor_).count() / (7 * interval_);
    case ICAL_MONTHLY_RECURRENCE:
      return (MonthNumber(day) - MonthNumber(anchor_)) / interval_;
    case ICAL_YEARLY_RECURRENCE:
      return (MonthNumber(day) - MonthNumber(anchor_)) / (12 * interval_);
    default:
      return (day - anchor_).count() / interval_;
  }
}

local_days RuleDays::FirstDayOf(std::int64_t block) const {
  const std::int64_t units = block * interval_;
  switch (rule_.freq) {
    case ICAL_WEEKLY_RECURRENCE:
      return anchor_ + days{7 * units};
    case ICAL_MONTHLY_RECURRENCE:
      return FirstOfMonth(MonthNumber(anchor_) + units);
    case ICAL_YEARLY_RECURRENCE:
      return FirstOfMonth(MonthNumber(anchor_) + 12 * units);
    default:
      return anchor_ + days{units};
  }
}

std::vector<local_days> RuleDays::DaysOf(std::int64_t block) const {
  SetUpOnce();
  const local_days first = FirstDayOf(block);
  const days shift = ShiftOf(first);
  icalrecurrencetype rule = rule_;
  switch (rule.freq) {
    case ICAL_WEEKLY_RECURRENCE:
      // libical takes a single weekday before the week's first one for one of the week before,
      // unless the week begins on Sunday. It wants the days in the week's order.
      rule.interval = 1;
      rule.week_start = ICAL_SUNDAY_WEEKDAY;
      std::sort(rule.by_day,
                std::find(rule.by_day, std::end(rule.by_day), short{ICAL_RECURRENCE_ARRAY_MAX}));
      rule.until = ToTime(first + shift + days{6});
      break;
    case ICAL_MONTHLY_RECURRENCE:
    case ICAL_YEARLY_RECURRENCE:
      // The next one is out of sight.
      rule.interval = std::numeric_limits<short>::max();
      break;
    default:
      rule.until = ToTime(first + shift + days{interval_ - 1});
  }
  std::vector<local_days> found;
  const Iterator iterator(icalrecur_iterator_new(rule, ToTime(first + shift)));
  if (!iterator) return found;
  for (icaltimetype time = icalrecur_iterator_next(iterator.get()); !icaltime_is_null_time(time);
       time = icalrecur_iterator_next(iterator.get())) {
    found.push_back(ToDay(time) - shift);
  }
  return found;
}

std::optional<local_days> RuleWalk::Next() {
  local_days day;
  do {
    if (place_ == days_.size() && !Fill()) return std::nullopt;
    day = days_[place_++];
  } while (day < start_);
  if (day > kLastDay) return std::nullopt;
  return day;
}

bool RuleWalk::Fill() {
  for (int i = 0; i < kMaxEmptyBlocks && rule_.FirstDayOf(block_) <= kLastDay; ++i) {
    days_ = rule_.DaysOf(block_++);
    place_ = 0;
    if (!days_.empty()) return true;
  }
  return false;
}

}  // namespace calendar
