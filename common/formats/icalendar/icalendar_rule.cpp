#include "common/formats/icalendar/icalendar_rule.h"

#include <libical/ical.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "common/formats/icalendar/icalendar_values.h"
#include "common/formats/icalendar/rule_days.h"
#include "common/text/text.h"

namespace formats {
namespace {

using std::chrono::seconds;

constexpr std::size_t kLongestRule = 2000;
constexpr int kLargestInterval = 9999;
// How far a rule of hours or shorter is followed, in its own steps.
constexpr long long kMostShortSteps = 100'000;
constexpr long long kUnitsAStep = 30;

constexpr std::string_view kPartNames[] = {
    "FREQ",    "INTERVAL", "COUNT",      "UNTIL",     "BYSECOND", "BYMINUTE", "BYHOUR", "BYDAY",
    "BYMONTH", "BYWEEKNO", "BYMONTHDAY", "BYYEARDAY", "BYSETPOS", "WKST",     "RSCALE", "SKIP"};

struct FrequencyStep {
  std::string_view name;
  long long step;  // seconds that are looked ahead in one step
};
constexpr FrequencyStep kFrequencies[] = {
    {"SECONDLY", 1},    {"MINUTELY", 60},    {"HOURLY", 3600},        {"DAILY", 86'400},
    {"WEEKLY", 86'400}, {"MONTHLY", 86'400}, {"YEARLY", 10 * 86'400},
};

const FrequencyStep* FindFrequency(std::string_view name) {
  const auto* found = std::find_if(std::begin(kFrequencies), std::end(kFrequencies),
                                   [&](const FrequencyStep& f) { return f.name == name; });
  return found == std::end(kFrequencies) ? nullptr : found;
}

// libical ends in 2582. The calendar repeats every 400 years, so late series are followed earlier.
constexpr std::chrono::days kCycle(146'097);
constexpr local_days kLateStart{std::chrono::year(2200) / 1 / 1};

std::chrono::days ShiftOf(local_seconds start) {
  return start < kLateStart ? std::chrono::days(0) : ((start - kLateStart) / kCycle + 1) * kCycle;
}

// A rule as libical reads it: ICAL_NO_RECURRENCE as its frequency when it cannot.
struct LibicalRule : icalrecurrencetype {
  explicit LibicalRule(const std::string& text)
      : icalrecurrencetype(icalrecurrencetype_from_string(text.c_str())) {}
  ~LibicalRule() { icalmemory_free_buffer(rscale); }
  LibicalRule(const LibicalRule&) = delete;
  LibicalRule& operator=(const LibicalRule&) = delete;
};

struct FreeIterator {
  void operator()(icalrecur_iterator* iterator) const { icalrecur_iterator_free(iterator); }
};
using Iterator = std::unique_ptr<icalrecur_iterator, FreeIterator>;

icaltimetype ToIcal(local_seconds time) {
  const local_days day = DayOf(time);
  const std::chrono::year_month_day date{day};
  const std::chrono::hh_mm_ss clock{time - day};
  icaltimetype result = icaltime_null_time();
  result.year = static_cast<int>(date.year());
  result.month = static_cast<int>(static_cast<unsigned>(date.month()));
  result.day = static_cast<int>(static_cast<unsigned>(date.day()));
  result.hour = static_cast<int>(clock.hours().count());
  result.minute = static_cast<int>(clock.minutes().count());
  result.second = static_cast<int>(clock.seconds().count());
  return result;
}

local_seconds FromIcal(const icaltimetype& time) {
  const local_days day{std::chrono::year{time.year} / time.month / time.day};
  return day + std::chrono::hours(time.hour) + std::chrono::minutes(time.minute) +
         seconds(time.second);
}

// The times of a rule up to and with a last one.
class TimeWalk {
 public:
  TimeWalk(const RecurrenceRule& rule, local_seconds start, local_seconds last);

  // False for a rule whose parts exclude each other.
  bool isPossible() const { return days_ || times_; }
  // Nothing behind the last one, nor beyond the rule's COUNT.
  std::optional<local_seconds> Next();

 private:
  std::optional<local_seconds> NextOfDays();
  std::optional<local_seconds> NextOfTimes();

  const local_seconds last_;
  const seconds clock_;  // of each day
  const std::optional<int> most_;
  int count_ = 0;
  // Rules of days alone are walked here, by the book: libical passes over days of theirs, such as a
  // day that counts from the month's end, or Sundays of weeks that begin on a Monday.
  std::optional<RuleWalk> days_;
  const std::chrono::days shift_;
  Iterator times_;
};

TimeWalk::TimeWalk(const RecurrenceRule& rule, local_seconds start, local_seconds last)
    : last_(last), clock_(start - DayOf(start)), most_(rule.Count()), shift_(ShiftOf(start)) {
  if (const std::optional<DayRule> days = DayRule::Of(rule)) {
    days_.emplace(*days, DayOf(start));
    return;
  }
  RecurrenceRule endless = rule;
  endless.Drop("UNTIL");
  LibicalRule recurrence(endless.Text());
  // libical looks for the next time until it finds one, so it is told where to end.
  recurrence.until = ToIcal(last - shift_);
  times_.reset(icalrecur_iterator_new(recurrence, ToIcal(start - shift_)));
}

std::optional<local_seconds> TimeWalk::Next() {
  return days_ ? NextOfDays() : NextOfTimes();
}

std::optional<local_seconds> TimeWalk::NextOfDays() {
  if (most_ && count_ == *most_) return std::nullopt;
  ++count_;
  const std::optional<local_days> day = days_->NextUntil(DayOf(last_));
  return day && *day + clock_ <= last_ ? std::optional(*day + clock_) : std::nullopt;
}

std::optional<local_seconds> TimeWalk::NextOfTimes() {
  const icaltimetype next = icalrecur_iterator_next(times_.get());
  if (icaltime_is_null_time(next)) return std::nullopt;
  return FromIcal(next) + shift_;
}

bool IsKnownPart(std::string_view name) {
  return std::find(std::begin(kPartNames), std::end(kPartNames), name) != std::end(kPartNames);
}

}  // namespace

std::optional<RecurrenceRule> RecurrenceRule::Parse(std::string_view text) {
  if (text.size() > kLongestRule) return std::nullopt;
  RecurrenceRule rule;
  const std::string upper = text::ToUpperAscii(text);
  for (std::string_view part : SplitValue(upper, ';')) {
    part = text::TrimBlanks(part);
    if (part.empty()) continue;
    const std::size_t equals = part.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    const std::string_view name = text::TrimBlanks(part.substr(0, equals));
    if (name.starts_with("X-")) continue;
    if (!IsKnownPart(name) || rule.Part(name) != nullptr) return std::nullopt;
    std::string value(part.substr(equals + 1));
    std::erase_if(value, [](char c) { return c == ' ' || c == '\t'; });
    rule.parts_.emplace_back(name, std::move(value));
  }
  const std::string* frequency = rule.Part("FREQ");
  if (frequency == nullptr || FindFrequency(*frequency) == nullptr) return std::nullopt;
  std::stable_partition(rule.parts_.begin(), rule.parts_.end(),
                        [](const auto& part) { return part.first == "FREQ"; });
  if (const std::string* interval = rule.Part("INTERVAL")) {
    const std::optional<int> number = ParseNumber(*interval);
    if (!number || *number < 1 || *number > kLargestInterval) return std::nullopt;
  }
  if (rule.Part("COUNT") != nullptr && rule.Count().value_or(0) < 1) return std::nullopt;
  RecurrenceRule endless = rule;
  endless.Drop("UNTIL");  // libical takes no COUNT beside it
  if (LibicalRule(endless.Text()).freq == ICAL_NO_RECURRENCE) return std::nullopt;
  return rule;
}

std::string RecurrenceRule::Text() const {
  std::string text;
  for (const auto& [name, value] : parts_) {
    if (!text.empty()) text += ';';
    text += name;
    text += '=';
    text += value;
  }
  return text;
}

const std::string* RecurrenceRule::Part(std::string_view name) const {
  for (const auto& [key, value] : parts_) {
    if (key == name) return &value;
  }
  return nullptr;
}

void RecurrenceRule::Drop(std::string_view name) {
  std::erase_if(parts_, [&](const auto& part) { return part.first == name; });
}

bool RecurrenceRule::IsOfDays() const {
  const FrequencyStep* frequency = FindFrequency(*Part("FREQ"));
  return frequency->step >= 86'400;
}

std::optional<int> RecurrenceRule::Count() const {
  const std::string* count = Part("COUNT");
  return count == nullptr ? std::nullopt : ParseNumber(*count);
}

void RecurrenceRule::DropTimeOfDay(seconds timeOfDay) {
  const std::chrono::hh_mm_ss clock{timeOfDay};
  const std::pair<std::string_view, long long> implied[] = {{"BYHOUR", clock.hours().count()},
                                                            {"BYMINUTE", clock.minutes().count()},
                                                            {"BYSECOND", clock.seconds().count()}};
  for (const auto& [name, number] : implied) {
    const std::string* value = Part(name);
    if (value != nullptr && ParseNumber(*value) == static_cast<int>(number)) Drop(name);
  }
}

RuleTimes TimesOfRule(const RecurrenceRule& rule, local_seconds start,
                      std::optional<local_seconds> until, local_seconds from, local_seconds end,
                      std::size_t most, WorkBudget& budget) {
  const FrequencyStep& frequency = *FindFrequency(*rule.Part("FREQ"));
  RuleTimes result;
  if (!rule.IsOfDays()) {
    const std::string* interval = rule.Part("INTERVAL");
    const long long each = interval == nullptr ? 1 : ParseNumber(*interval).value_or(1);
    end = std::min(end, start + seconds(kMostShortSteps * frequency.step * each));
  }
  result.end = end;
  result.cut = budget.isUsedUp();
  if (result.cut) return result;

  TimeWalk walk(rule, start, until ? std::min(*until, end) : end);
  if (!walk.isPossible()) return result;
  int count = 0;
  local_seconds reached = end;
  for (; const std::optional<local_seconds> next = walk.Next(); ++count) {
    const local_seconds time = *next;
    if (time < from) {
      ++result.skipped;
    } else if (time >= end || result.times.size() == most) {
      result.cut = true;
      result.end = reached = std::min(end, time);
      break;
    } else if (result.times.empty() || time > result.times.back()) {
      result.times.push_back(time);
    }
  }
  if (!result.cut) {
    const bool ended = (until && *until <= end) || (rule.Count() && count >= *rule.Count());
    result.cut = !ended;
  }
  if (!result.cut && !result.times.empty()) reached = result.times.back();
  const long long steps =
      std::max<long long>(0, (reached - start).count()) / frequency.step + count + 10;
  budget.units -= steps * kUnitsAStep;
  return result;
}

}  // namespace formats
