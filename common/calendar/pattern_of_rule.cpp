#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <vector>

#include "common/calendar/rule.h"
#include "common/calendar/rule_days.h"
#include "common/calendar/rule_parts.h"

namespace calendar {
namespace {

using std::chrono::weekday;
using std::chrono::year_month_day;
using Days = std::vector<local_days>;

// Enough to see every leap day's effect on yearly days, and more than two weekly series need to
// show that they differ.
constexpr int kSample = 32;
// All kinds of years come within so many.
constexpr std::chrono::years kComparedYears{40};
// What is spread over more years agrees for good after so many days.
constexpr int kComparedDays = 800;

// The calendar repeats every 400 years.
constexpr std::chrono::days kTwoCycles{2 * 146'097};
constexpr local_days kLateStart{std::chrono::year{2700} / 1 / 1};

bool IsOfYear(PatternType type) {
  return type == PatternType::kYearly || type == PatternType::kYearNth;
}

bool IsNth(PatternType type) {
  return type == PatternType::kMonthNth || type == PatternType::kYearNth;
}

int DayOf(local_days day) {
  return static_cast<int>(unsigned{year_month_day{day}.day()});
}

int MonthOf(local_days day) {
  return static_cast<int>(unsigned{year_month_day{day}.month()});
}

int MaskOf(local_days day) {
  return 1 << weekday{day}.c_encoding();
}

// The number of the week, month and so on in which a type has the day.
int UnitOf(PatternType type, local_days day) {
  const int count = static_cast<int>(day.time_since_epoch().count());
  if (type == PatternType::kDaily) return count;
  if (type == PatternType::kWeekly) {
    return (count - static_cast<int>(weekday{day}.c_encoding()) + 7 * 100'000) / 7;
  }
  const int year = static_cast<int>(year_month_day{day}.year());
  return IsOfYear(type) ? year : year * 12 + MonthOf(day);
}

// A rule whose days repeat with the weeks.
bool IsOfWeeks(const RuleParts& parts) {
  return (parts.IsOf("DAILY") || parts.IsOf("WEEKLY")) && !parts.Has("BYMONTH") &&
         !parts.Has("BYMONTHDAY") && !parts.Has("BYYEARDAY") && !parts.Has("BYSETPOS");
}

std::string Text(icalrecurrencetype rule) {
  const std::unique_ptr<char, void (*)(void*)> text(icalrecurrencetype_as_string_r(&rule),
                                                    icalmemory_free_buffer);
  return text ? text.get() : "";
}

// Where only the kind of a year decides about its days.
bool IsOfEveryYear(const icalrecurrencetype& rule) {
  return rule.interval == 1 || (rule.freq == ICAL_MONTHLY_RECURRENCE && 12 % rule.interval == 0);
}

// Looks for the pattern of an endless rule, then for one that is good until the end.
class Search {
 public:
  // All must outlive it.
  Search(const RuleParts& parts, const icalrecurrencetype& rule, const RuleEnd& end,
         local_days start)
      : parts_(parts), rule_(rule), end_(end), start_(start) {
    RuleWalk walk(rule, start);
    while (sample_.size() < kSample) {
      const auto day = walk.Next();
      if (!day) break;
      sample_.push_back(*day);
    }
  }

  // A pattern that agrees for good is preferred: a short series may fit several.
  std::optional<Pattern> Find() const {
    if (sample_.empty() || (end_.until && sample_.front() > *end_.until)) return std::nullopt;
    std::optional<Pattern> found = FirstThatAgrees({});
    if (!found && (end_.occurrences || end_.until)) found = FirstThatAgrees(end_);
    return found;
  }

 private:
  std::optional<Pattern> FirstThatAgrees(const RuleEnd& end) const {
    std::array types = {PatternType::kDaily,    PatternType::kWeekly, PatternType::kMonthly,
                        PatternType::kMonthNth, PatternType::kYearly, PatternType::kYearNth};
    std::stable_sort(types.begin(), types.end(),
                     [this](PatternType a, PatternType b) { return Rank(a) < Rank(b); });
    for (const PatternType type : types) {
      for (const Pattern& pattern : CandidatesOf(type)) {
        if (IsValid(pattern) && Agrees(pattern, end)) return pattern;
      }
    }
    return std::nullopt;
  }

  // How unlike the rule's words a type is.
  int Rank(PatternType type) const {
    const bool byDay = parts_.Has("BYDAY");
    if (parts_.IsOf("DAILY") || parts_.IsOf("WEEKLY")) {
      if (type == PatternType::kDaily) return parts_.IsOf("DAILY") && !byDay ? 0 : 2;
      if (type == PatternType::kWeekly) return 1;
    }
    if (type == PatternType::kWeekly) return byDay ? 8 : 10;
    if (type == PatternType::kDaily) return 9;
    const bool ofYear = parts_.IsOf("YEARLY") || parts_.Has("BYMONTH");
    return 3 + (IsOfYear(type) != ofYear ? 2 : 0) + (IsNth(type) != byDay ? 1 : 0);
  }

  std::vector<Pattern> CandidatesOf(PatternType type) const {
    Pattern pattern = PatternFrom(type, sample_.front());
    if (pattern.dayOfMonth != 0) pattern.dayOfMonth = DayOfMonthOf(type);
    if (pattern.daysOfWeek != 0) pattern.daysOfWeek = Mask();
    std::vector<Pattern> patterns;
    for (const int interval : IntervalsOf(type)) {
      pattern.interval = interval;
      for (const int instance : InstancesOf(pattern)) {
        pattern.instance = instance;
        patterns.push_back(pattern);
      }
    }
    return patterns;
  }

  // The rule's words, and what the days say: a rule may pass over months.
  std::vector<int> IntervalsOf(PatternType type) const {
    if (IsOfYear(type)) return {1};
    const int first = UnitOf(type, sample_.front());
    const auto next = std::find_if(sample_.begin(), sample_.end(),
                                   [&](local_days day) { return UnitOf(type, day) != first; });
    const int step = next == sample_.end() ? 1 : UnitOf(type, *next) - first;
    const bool hasUnit = rule_.freq == (type == PatternType::kDaily    ? ICAL_DAILY_RECURRENCE
                                        : type == PatternType::kWeekly ? ICAL_WEEKLY_RECURRENCE
                                                                       : ICAL_MONTHLY_RECURRENCE);
    if (!hasUnit || rule_.interval == step) return {step};
    return {rule_.interval, step};
  }

  int DayOfMonthOf(PatternType type) const {
    int last = 0;
    for (const local_days day : sample_) last = std::max(last, DayOf(day));
    if (IsOfYear(type) || !parts_.Has("BYMONTHDAY")) return last;
    const auto* end = std::find(std::begin(rule_.by_month_day), std::end(rule_.by_month_day),
                                short{ICAL_RECURRENCE_ARRAY_MAX});
    if (std::find(std::begin(rule_.by_month_day), end, -1) != end) return 31;
    return *std::max_element(std::begin(rule_.by_month_day), end);
  }

  // The rule's weekdays, else those on which it falls.
  int Mask() const {
    int mask = 0;
    for (const short day : rule_.by_day) {
      if (day == ICAL_RECURRENCE_ARRAY_MAX) break;
      mask |= 1 << (icalrecurrencetype_day_day_of_week(day) - ICAL_SUNDAY_WEEKDAY);
    }
    if (mask != 0) return mask;
    for (const local_days day : sample_) mask |= MaskOf(day);
    return mask;
  }

  // Which of the mask's days in its month the first day is; it may be the last one as well.
  std::vector<int> InstancesOf(const Pattern& pattern) const {
    if (!IsNth(pattern.type)) return {0};
    const local_days first = sample_.front();
    const year_month_day date{first};
    const int lastOfMonth = DayOf(local_days{date.year() / date.month() / std::chrono::last});
    int before = 0;
    bool isLast = true;
    for (int day = 1; day <= lastOfMonth; ++day) {
      const int away = day - DayOf(first);
      if ((MaskOf(first + std::chrono::days{away}) & pattern.daysOfWeek) == 0) continue;
      if (away < 0) ++before;
      if (away > 0) isLast = false;
    }
    std::vector<int> instances;
    if (before < 4) instances.push_back(before + 1);
    if (isLast) instances.push_back(5);
    return instances;
  }

  bool Agrees(const Pattern& pattern, const RuleEnd& end) const {
    const icalrecurrencetype candidateRule = EndlessRule(pattern);
    if (Text(candidateRule) == Text(rule_)) return true;
    const bool areOfEveryYear = IsOfEveryYear(rule_) && IsOfEveryYear(candidateRule);
    RuleWalk walk(rule_, start_);
    DayWalk candidate(pattern, start_);
    const bool isOfWeeks = IsOfWeeks(parts_) && (pattern.type == PatternType::kDaily ||
                                                 pattern.type == PatternType::kWeekly);
    for (int count = 0;; ++count) {
      if (end.occurrences && count == *end.occurrences) return true;
      if (isOfWeeks && count == kSample) return true;
      const std::optional<local_days> day = walk.Next();
      const std::optional<local_days> expected = candidate.Next();
      const bool isOver = !day || (end.until && *day > *end.until);
      const bool isExpectedOver = !expected || (end.until && *expected > *end.until);
      if (isOver || isExpectedOver) return isOver && isExpectedOver;
      if (*day != *expected) return false;
      const bool isEnough = areOfEveryYear || count >= kComparedDays;
      if (isEnough && *day - start_ > kComparedYears) return true;
    }
  }

  const RuleParts& parts_;
  const icalrecurrencetype& rule_;
  const RuleEnd& end_;
  local_days start_;
  Days sample_;
};

}  // namespace

std::optional<Pattern> PatternOfRule(std::string_view rule, local_days start) {
  if (start < kFirstDay || start > kLastDay) return std::nullopt;
  const std::optional<RuleParts> parts = RuleParts::Read(rule);
  if (!parts) return std::nullopt;
  const std::optional<icalrecurrencetype> endless = parts->Endless(start);
  if (!endless) return std::nullopt;
  // A late start leaves few days to compare: an earlier one has the same series.
  const std::chrono::days back = start < kLateStart ? std::chrono::days{0} : kTwoCycles;
  RuleEnd end = parts->end();
  if (end.until) *end.until -= back;
  std::optional<Pattern> pattern = Search(*parts, *endless, end, start - back).Find();
  if (!pattern) return std::nullopt;
  pattern->occurrences = parts->end().occurrences;
  pattern->until = parts->end().until;
  return pattern;
}

}  // namespace calendar
