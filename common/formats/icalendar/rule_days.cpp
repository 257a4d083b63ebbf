#include "common/formats/icalendar/rule_days.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "common/calendar/pattern.h"
#include "common/formats/icalendar/icalendar_values.h"
#include "common/formats/lines/vcard_property.h"

namespace formats {
namespace {

using Frequency = DayRule::Frequency;
using std::chrono::days;
using std::chrono::year_month_day;

// More than the intervals between the days of any pattern.
constexpr int kMostEmptyDays = 1024;
constexpr int kMostEmptyPeriods = 64;

// "2", "-1", "+3".
std::optional<int> SignedNumber(std::string_view text, int most) {
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  const std::optional<int> number = ParseNumber(text);
  if (!number || *number < 1 || *number > most) return std::nullopt;
  return isNegative ? -*number : *number;
}

bool ReadNumbers(const std::string* list, int most, std::set<int>& numbers) {
  if (list == nullptr) return true;
  for (const std::string_view text : SplitValue(*list, ',')) {
    const std::optional<int> number = SignedNumber(text, most);
    if (!number) return false;
    numbers.insert(*number);
  }
  return true;
}

std::optional<unsigned> WeekdayOf(std::string_view name) {
  const auto* found = std::find(std::begin(kWeekdayNames), std::end(kWeekdayNames), name);
  if (found == std::end(kWeekdayNames)) return std::nullopt;
  return static_cast<unsigned>(found - std::begin(kWeekdayNames));
}

// "MO", or "-1FR" in a rule of months or years.
bool ReadWeekdays(const std::string* list, DayRule& rule) {
  if (list == nullptr) return true;
  const bool mayCount = rule.frequency >= Frequency::kMonthly;
  for (const std::string_view text : SplitValue(*list, ',')) {
    const std::size_t name = text.size() < 2 ? 0 : text.size() - 2;
    const std::optional<unsigned> day = WeekdayOf(text.substr(name));
    const std::optional<int> nth = name == 0 ? 0 : SignedNumber(text.substr(0, name), 53);
    if (!day || !nth || (*nth != 0 && !mayCount)) return false;
    rule.weekdays.emplace(*nth, *day);
  }
  return true;
}

template <typename Set>
bool IsIn(const Set& numbers, int fromFront, int fromBack) {
  return numbers.empty() || numbers.contains(fromFront) || numbers.contains(fromBack);
}

int Number(days count) {
  return static_cast<int>(count.count());
}

}  // namespace

std::optional<DayRule> DayRule::Of(const RecurrenceRule& rule) {
  constexpr std::string_view kOfDays[] = {"DAILY", "WEEKLY", "MONTHLY", "YEARLY"};
  const auto* frequency = std::find(std::begin(kOfDays), std::end(kOfDays), *rule.Part("FREQ"));
  if (frequency == std::end(kOfDays)) return std::nullopt;
  for (const char* name : {"BYWEEKNO", "BYHOUR", "BYMINUTE", "BYSECOND", "RSCALE", "SKIP"}) {
    if (rule.Part(name) != nullptr) return std::nullopt;
  }
  DayRule result;
  result.frequency = static_cast<Frequency>(frequency - std::begin(kOfDays));
  if (const std::string* interval = rule.Part("INTERVAL")) {
    result.interval = *ParseNumber(*interval);
  }
  if (const std::string* start = rule.Part("WKST")) {
    const std::optional<unsigned> day = WeekdayOf(*start);
    if (!day) return std::nullopt;
    result.weekStart = weekday{*day};
  }
  const bool isRead = ReadNumbers(rule.Part("BYMONTH"), 12, result.months) &&
                      ReadNumbers(rule.Part("BYMONTHDAY"), 31, result.monthDays) &&
                      ReadNumbers(rule.Part("BYYEARDAY"), 366, result.yearDays) &&
                      ReadNumbers(rule.Part("BYSETPOS"), 366, result.positions) &&
                      ReadWeekdays(rule.Part("BYDAY"), result);
  const bool hasSets = result.frequency >= Frequency::kMonthly;
  if (!isRead || (!result.positions.empty() && !hasSets)) return std::nullopt;
  return result;
}

RuleWalk::RuleWalk(DayRule rule, local_days start) : rule_(std::move(rule)), start_(start) {
  const year_month_day date{start};
  if (rule_.frequency == Frequency::kWeekly && rule_.weekdays.empty()) {
    rule_.weekdays.emplace(0, weekday{start}.c_encoding());
  }
  const bool leavesDayOpen =
      rule_.weekdays.empty() && rule_.monthDays.empty() && rule_.yearDays.empty();
  if (rule_.frequency < Frequency::kMonthly || !leavesDayOpen) return;
  rule_.monthDays.insert(static_cast<int>(unsigned{date.day()}));
  if (rule_.frequency == Frequency::kYearly && rule_.months.empty()) {
    rule_.months.insert(static_cast<int>(unsigned{date.month()}));
  }
}

std::optional<local_days> RuleWalk::Next() {
  const bool isDaily = rule_.frequency == Frequency::kDaily;
  return Next(calendar::kLastDay, isDaily ? kMostEmptyDays : kMostEmptyPeriods);
}

std::optional<local_days> RuleWalk::NextUntil(local_days last) {
  return Next(last, std::numeric_limits<std::int64_t>::max());
}

std::optional<local_days> RuleWalk::Next(local_days last, std::int64_t mostEmpty) {
  while (place_ == days_.size()) {
    if (mostEmpty-- == 0 || BeginOf(period_) > last) return std::nullopt;
    Fill();
  }
  const local_days day = days_[place_++];
  return day <= last ? std::optional(day) : std::nullopt;
}

// The days of the next period that are not before the start.
void RuleWalk::Fill() {
  std::vector<local_days> all;
  const local_days end = BeginOf(period_ + 1);
  for (local_days day = BeginOf(period_); day < end; day += days{1}) {
    if (Has(day)) all.push_back(day);
  }
  period_ += rule_.interval;
  days_.clear();
  place_ = 0;
  const int count = static_cast<int>(all.size());
  for (int i = 0; i < count; ++i) {
    const local_days day = all[static_cast<std::size_t>(i)];
    if (day >= start_ && IsIn(rule_.positions, i + 1, i - count)) days_.push_back(day);
  }
}

bool RuleWalk::Has(local_days day) const {
  const year_month_day date{day};
  const int month = static_cast<int>(unsigned{date.month()});
  if (!IsIn(rule_.months, month, month) || !HasWeekday(day)) return false;
  const local_days monthEnd{date.year() / date.month() / std::chrono::last};
  const local_days yearEnd{date.year() / 12 / 31};
  return IsIn(rule_.monthDays, static_cast<int>(unsigned{date.day()}),
              Number(day - monthEnd) - 1) &&
         IsIn(rule_.yearDays, Number(day - local_days{date.year() / 1 / 1}) + 1,
              Number(day - yearEnd) - 1);
}

// The n-th one is that of its month where months are spoken of, else that of its year.
bool RuleWalk::HasWeekday(local_days day) const {
  const unsigned name = weekday{day}.c_encoding();
  if (rule_.weekdays.empty() || rule_.weekdays.contains({0, name})) return true;
  const year_month_day date{day};
  const bool isOfMonth = rule_.frequency != Frequency::kYearly || !rule_.months.empty();
  const auto firstMonth = isOfMonth ? date.month() : std::chrono::January;
  const auto lastMonth = isOfMonth ? date.month() : std::chrono::December;
  const local_days begin{date.year() / firstMonth / 1};
  const local_days last{date.year() / lastMonth / std::chrono::last};
  return rule_.weekdays.contains({Number(day - begin) / 7 + 1, name}) ||
         rule_.weekdays.contains({-(Number(last - day) / 7 + 1), name});
}

local_days RuleWalk::BeginOf(std::int64_t period) const {
  const year_month_day date{start_};
  switch (rule_.frequency) {
    case Frequency::kDaily:
      return start_ + days{period};
    case Frequency::kWeekly:
      return start_ - (weekday{start_} - rule_.weekStart) + days{7 * period};
    case Frequency::kMonthly:
      return local_days{(date.year() / date.month() + std::chrono::months{period}) / 1};
    case Frequency::kYearly:
      break;
  }
  return local_days{(date.year() + std::chrono::years{period}) / 1 / 1};
}

}  // namespace formats
