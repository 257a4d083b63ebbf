#include "common/formats/icalendar/pattern_rule.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "common/formats/icalendar/rule_days.h"

namespace formats {
namespace {

using calendar::Pattern;
using calendar::PatternType;
using std::chrono::year_month_day;
using Frequency = DayRule::Frequency;

std::string Part(std::string_view name, int value) {
  return std::string(name) + std::to_string(value);
}

std::string Each(const char* name, int interval) {
  std::string rule = std::string("FREQ=") + name;
  if (interval != 1) rule += Part(";INTERVAL=", interval);
  return rule;
}

// The day, or the last one of a month that lacks it.
std::string DayOfMonth(int day) {
  if (day == 31) return ";BYMONTHDAY=-1";
  if (day <= 28) return Part(";BYMONTHDAY=", day);
  return std::string(";BYMONTHDAY=28,29") + (day == 30 ? ",30" : "") + ";BYSETPOS=-1";
}

std::string DayOfYear(int month, int day) {
  const year_month_day date{std::chrono::year{2001} / month / std::chrono::last};
  const int last = static_cast<int>(unsigned{date.day()});
  const bool isLeapDay = date.month() == std::chrono::February && day > last;
  return Part(";BYMONTH=", month) + Part(";BYMONTHDAY=", isLeapDay ? -1 : std::min(day, last));
}

// "SU,WE" of a pattern's mask.
std::string WeekdayNames(int mask) {
  std::string names;
  for (std::size_t i = 0; i < std::size(kWeekdayNames); ++i) {
    if ((mask >> i & 1) == 0) continue;
    if (!names.empty()) names += ',';
    names += kWeekdayNames[i];
  }
  return names;
}

std::string NthDay(int mask, int instance) {
  const int position = instance == 5 ? -1 : instance;
  const bool isOneDay = (mask & (mask - 1)) == 0;
  if (isOneDay) return ";BYDAY=" + std::to_string(position) + WeekdayNames(mask);
  return ";BYDAY=" + WeekdayNames(mask) + Part(";BYSETPOS=", position);
}

std::string EndlessRuleOf(const Pattern& pattern) {
  switch (pattern.type) {
    case PatternType::kDaily:
      return Each("DAILY", pattern.interval);
    case PatternType::kWeekly:
      return Each("WEEKLY", pattern.interval) + ";BYDAY=" + WeekdayNames(pattern.daysOfWeek) +
             ";WKST=SU";
    case PatternType::kMonthly:
      return Each("MONTHLY", pattern.interval) + DayOfMonth(pattern.dayOfMonth);
    case PatternType::kMonthNth:
      return Each("MONTHLY", pattern.interval) + NthDay(pattern.daysOfWeek, pattern.instance);
    case PatternType::kYearly:
      return Each("YEARLY", 1) + DayOfYear(pattern.monthOfYear, pattern.dayOfMonth);
    case PatternType::kYearNth:
      return Each("YEARLY", 1) + Part(";BYMONTH=", pattern.monthOfYear) +
             NthDay(pattern.daysOfWeek, pattern.instance);
  }
  return {};
}

// Enough to see every leap day's effect on yearly days, and more than two weekly series need to
// show that they differ.
constexpr int kSample = 32;
// All kinds of years come within so many.
constexpr std::chrono::years kComparedYears{40};
// What is spread over more years agrees for good after so many days.
constexpr int kComparedDays = 800;

// The calendar repeats every 400 years.
constexpr std::chrono::days kTwoCycles{2 * 146'097};
constexpr local_days kStartOfLastCycles{std::chrono::year{2700} / 1 / 1};

bool IsOfYear(PatternType type) {
  return type == PatternType::kYearly || type == PatternType::kYearNth;
}

bool IsNth(PatternType type) {
  return type == PatternType::kMonthNth || type == PatternType::kYearNth;
}

int DayOfMonth(local_days day) {
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

// Whose days repeat with the weeks.
bool IsOfWeeks(const DayRule& rule) {
  return rule.frequency < Frequency::kMonthly && rule.months.empty() && rule.monthDays.empty() &&
         rule.yearDays.empty();
}

bool IsOfWeeks(PatternType type) {
  return type == PatternType::kDaily || type == PatternType::kWeekly;
}

// Where only the kind of a year decides about its days.
bool IsOfEveryYear(bool isOfMonths, int interval) {
  return interval == 1 || (isOfMonths && 12 % interval == 0);
}

// Looks for the pattern of an endless rule, then for one that is good until the end.
class Search {
 public:
  // All must outlive it.
  Search(const DayRule& rule, const RuleEnd& end, local_days start)
      : rule_(rule), end_(end), start_(start) {
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
    const bool byDay = !rule_.weekdays.empty();
    if (rule_.frequency < Frequency::kMonthly) {
      const bool isDaily = rule_.frequency == Frequency::kDaily;
      if (type == PatternType::kDaily) return isDaily && !byDay ? 0 : 2;
      if (type == PatternType::kWeekly) return 1;
    }
    if (type == PatternType::kWeekly) return byDay ? 8 : 10;
    if (type == PatternType::kDaily) return 9;
    const bool ofYear = rule_.frequency == Frequency::kYearly || !rule_.months.empty();
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
    const bool hasUnit = rule_.frequency == (type == PatternType::kDaily    ? Frequency::kDaily
                                             : type == PatternType::kWeekly ? Frequency::kWeekly
                                                                            : Frequency::kMonthly);
    if (!hasUnit || rule_.interval == step) return {step};
    return {rule_.interval, step};
  }

  int DayOfMonthOf(PatternType type) const {
    int last = 0;
    for (const local_days day : sample_) last = std::max(last, DayOfMonth(day));
    if (IsOfYear(type) || rule_.monthDays.empty()) return last;
    return rule_.monthDays.contains(-1) ? 31 : *rule_.monthDays.rbegin();
  }

  // The rule's weekdays, else those on which it falls.
  int Mask() const {
    int mask = 0;
    for (const auto& [nth, day] : rule_.weekdays) mask |= 1 << day;
    if (mask != 0) return mask;
    for (const local_days day : sample_) mask |= MaskOf(day);
    return mask;
  }

  // Which of the mask's days in its month the first day is; it may be the last one as well.
  std::vector<int> InstancesOf(const Pattern& pattern) const {
    if (!IsNth(pattern.type)) return {0};
    const local_days first = sample_.front();
    const year_month_day date{first};
    const int lastOfMonth = DayOfMonth(local_days{date.year() / date.month() / std::chrono::last});
    int before = 0;
    bool isLast = true;
    for (int day = 1; day <= lastOfMonth; ++day) {
      const int away = day - DayOfMonth(first);
      if ((MaskOf(first + std::chrono::days{away}) & pattern.daysOfWeek) == 0) continue;
      if (away < 0) ++before;
      if (away > 0) isLast = false;
    }
    std::vector<int> instances;
    if (before < 4) instances.push_back(before + 1);
    // Where all last ones are fourth ones, too, the rule's words say which is meant.
    if (isLast) instances.insert(SaysLast() ? instances.begin() : instances.end(), 5);
    return instances;
  }

  bool SaysLast() const {
    return rule_.positions.contains(-1) ||
           std::any_of(rule_.weekdays.begin(), rule_.weekdays.end(),
                       [](const auto& weekday) { return weekday.first == -1; });
  }

  bool Agrees(const Pattern& pattern, const RuleEnd& end) const {
    const bool areOfEveryYear =
        IsOfEveryYear(rule_.frequency == Frequency::kMonthly, rule_.interval) &&
        IsOfEveryYear(!IsOfWeeks(pattern.type), pattern.interval);
    const bool areOfWeeks = IsOfWeeks(rule_) && IsOfWeeks(pattern.type);
    RuleWalk walk(rule_, start_);
    const calendar::SeriesDays candidate(pattern, start_);
    for (int count = 0;; ++count) {
      if (end.occurrences && count == *end.occurrences) return true;
      if (areOfWeeks && count == kSample) return true;
      const std::optional<local_days> day = walk.Next();
      const bool isOver = !day || (end.until && *day > *end.until);
      const bool isCandidateOver =
          count == candidate.size() || (end.until && candidate[count] > *end.until);
      if (isOver || isCandidateOver) return isOver && isCandidateOver;
      if (*day != candidate[count]) return false;
      const bool isEnough = areOfEveryYear || count >= kComparedDays;
      if (isEnough && *day - start_ > kComparedYears) return true;
    }
  }

  const DayRule& rule_;
  const RuleEnd& end_;
  local_days start_;
  std::vector<local_days> sample_;
};

}  // namespace

std::string RuleOf(const Pattern& pattern) {
  std::string rule = EndlessRuleOf(pattern);
  if (pattern.occurrences) rule += Part(";COUNT=", *pattern.occurrences);
  return rule;
}

std::optional<Pattern> PatternOfRule(const RecurrenceRule& rule, const RuleEnd& end,
                                     local_days start) {
  if (start < calendar::kFirstDay || start > calendar::kLastDay) return std::nullopt;
  const std::optional<DayRule> days = DayRule::Of(rule);
  if (!days) return std::nullopt;
  // A late start leaves few days to compare: an earlier one has the same series.
  const std::chrono::days back = start < kStartOfLastCycles ? std::chrono::days{0} : kTwoCycles;
  RuleEnd earlier = end;
  if (earlier.until) *earlier.until -= back;
  std::optional<Pattern> pattern = Search(*days, earlier, start - back).Find();
  if (!pattern || !calendar::NextDayOf(*pattern, start, start)) return std::nullopt;
  pattern->occurrences = end.occurrences;
  pattern->until = end.until;
  return pattern;
}

}  // namespace formats
