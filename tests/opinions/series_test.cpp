// The days of a series, three times over: by our reckoning, by the definition of its pattern
// applied day by day, and by python-dateutil from the lines that the writer of iCalendar makes of
// it.
//
// Nothing is left out because the three would differ: what a rule says otherwise than a pattern,
// such as the 31st of a month of 30 days, the writer says in the rule's own words. Times are those
// that every day of the zones has once, and in a zone not beyond the years that its file lists,
// behind which python-dateutil knows no summer time.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "common/calendar/wall_time.h"
#include "common/formats/icalendar/icalendar.h"
#include "common/formats/icalendar/pattern_rule.h"
#include "tests/common/calendar/calendar_support.h"
#include "tests/opinions/opinion.h"

namespace corvane::testing {
namespace {

using calendar::Pattern;
using calendar::testing::AnyDay;
using calendar::testing::CountedDays;
using calendar::testing::Day;
using calendar::testing::ToldDays;
using formats::Appointment;
using formats::local_days;
using std::chrono::days;
using Strings = std::vector<std::string>;

constexpr std::size_t kMost = 60;

Strings TimesByDateutil(const Strings& lines) {
  static Opinion dateutil("series.py");
  const Strings times = dateutil.Ask({{"lines", lines}, {"most", kMost}});
  Strings kept;
  // A handheld's days end with the year 2999.
  std::copy_if(times.begin(), times.end(), std::back_inserter(kept),
               [](const std::string& time) { return time < "3000"; });
  return kept;
}

// The days at which rules go wrong: those that not every month, or not every year, has.
local_days AnyStart(int firstYear, int lastYear) {
  if (*rc::gen::arbitrary<bool>()) return *AnyDay(firstYear, lastYear);
  const int year = *rc::gen::inRange(firstYear, lastYear + 1);
  const int month = *rc::gen::element(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12);
  const std::chrono::year_month_day last{std::chrono::year(year) / month / std::chrono::last};
  return local_days{last} - days(*rc::gen::inRange(0, 3));
}

Pattern AnyPattern(local_days start) {
  Pattern pattern = *calendar::testing::AnyEndlessPattern();
  // The one that the start implies is the most common.
  if (*rc::gen::inRange(0, 3) == 0) {
    const int interval = pattern.interval;
    pattern = calendar::PatternFrom(pattern.type, start);
    pattern.interval = interval;
  }
  switch (*rc::gen::inRange(0, 3)) {
    case 0:
      pattern.occurrences = *rc::gen::inRange(1, 100);
      break;
    case 1:
      pattern.until =
          start + days(*rc::gen::oneOf(rc::gen::inRange(0, 60), rc::gen::inRange(0, 20'000)));
      break;
    default:
      break;
  }
  return pattern;
}

// The lines of the first event that tell when it is, unfolded.
Strings LinesOfTimes(std::string_view calendar) {
  std::string text(calendar.substr(calendar.find("BEGIN:VEVENT")));
  for (std::size_t fold; (fold = text.find("\r\n ")) != std::string::npos;) text.erase(fold, 3);
  Strings lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find("\r\n", begin);
    const std::string line = text.substr(begin, end - begin);
    for (const char* name : {"DTSTART", "RRULE", "EXDATE"}) {
      if (line.starts_with(name)) lines.push_back(line);
    }
    begin = end + 2;
  }
  return lines;
}

struct Case {
  std::string zone;
  Appointment appointment;
};

Case AnyCase() {
  Case any;
  any.appointment.uid = "u";
  any.zone = *rc::gen::element<std::string>("", "UTC", "Europe/Berlin", "America/New_York",
                                            "Australia/Sydney", "Asia/Kolkata");
  any.appointment.allDay = any.zone.empty();
  const bool farAway = any.zone.empty() || any.zone == "UTC";
  const local_days start = farAway ? AnyStart(1900, 2990) : AnyStart(1975, 2034);
  Pattern pattern = AnyPattern(start);
  if (!farAway && pattern.until) pattern.until = std::min(*pattern.until, Day(2036, 12, 31));
  any.appointment.series.emplace(formats::Series{pattern, {}, {}});
  any.appointment.start = start;
  if (!any.appointment.allDay) {
    *any.appointment.start += std::chrono::minutes(*rc::gen::inRange(4 * 60, 23 * 60));
  }
  any.appointment.end = *any.appointment.start + days(1);
  for (const local_days day : ToldDays(pattern, start, kMost)) {
    if (*rc::gen::inRange(0, 10) == 0) any.appointment.series->deleted.push_back(day);
  }
  return any;
}

RC_GTEST_PROP(Series, HasTheDaysOfItsRuleByDateutilAndOfItsDefinition, ()) {
  const auto [zone, appointment] = AnyCase();
  const formats::Series& series = *appointment.series;
  const local_days start = formats::DayOf(*appointment.start);
  RC_LOG() << series.pattern << " from " << formats::IsoDateTime(*appointment.start) << "\n";
  const std::vector<local_days> told = ToldDays(series.pattern, start, kMost);
  const local_days last = told.size() < kMost ? calendar::kLastDay : told.back();
  RC_ASSERT(told == CountedDays(series.pattern, start, last, kMost));

  const formats::CalendarText text = formats::WriteICalendar(
      {&appointment, 1}, {}, *calendar::Zone::Find(zone.empty() ? "UTC" : zone));
  RC_LOG() << text.bytes;
  if (told.empty()) {
    RC_ASSERT(text.losses == Strings{"(no subject): its series has no day, left out"});
    return;
  }
  RC_ASSERT(text.losses.empty());
  Strings expected;
  for (const local_days day : told) {
    if (std::binary_search(series.deleted.begin(), series.deleted.end(), day)) continue;
    expected.push_back(formats::IsoDateTime(day + (*appointment.start - start)));
  }
  Strings found = TimesByDateutil(LinesOfTimes(text.bytes));
  // Those that were deleted come out of both, and let later ones in.
  if (told.size() == kMost) found.resize(std::min(found.size(), expected.size()));
  RC_ASSERT(found == expected);
}

// A rule of days as other programs write them, parts in any combination that makes some sense.
std::string AnyRule() {
  const auto some = [](const Strings& values, int most) {
    std::string list;
    for (int i = *rc::gen::inRange(1, most + 1); i > 0; --i) {
      list += (list.empty() ? "" : ",") + *rc::gen::elementOf(values);
    }
    return list;
  };
  const auto maybe = [](int in) { return *rc::gen::inRange(0, in) == 0; };
  const std::string frequency =
      *rc::gen::element<std::string>("DAILY", "WEEKLY", "MONTHLY", "YEARLY");
  const bool ofMonths = frequency == "MONTHLY" || frequency == "YEARLY";
  std::string rule = "FREQ=" + frequency;
  if (maybe(2)) rule += ";INTERVAL=" + std::to_string(*rc::gen::inRange(1, 14));
  const bool nth = ofMonths && maybe(2);
  if (maybe(2)) {
    rule += ";BYDAY=" + (nth ? some({"1MO", "-1FR", "2TU", "5WE", "-2SU", "4TH"}, 2)
                             : some({"SU", "MO", "TU", "WE", "TH", "FR", "SA"}, 5));
  }
  if (frequency != "WEEKLY" && maybe(2)) {
    rule += ";BYMONTHDAY=" + some({"1", "15", "28", "29", "30", "31", "-1", "-2", "-31"}, 3);
  }
  if (maybe(4)) rule += ";BYMONTH=" + some({"1", "2", "4", "6", "10", "12"}, 3);
  if (frequency == "YEARLY" && maybe(6)) rule += ";BYYEARDAY=" + some({"1", "60", "366", "-1"}, 2);
  const bool hasSet = rule.find(";BY") != std::string::npos;
  if (ofMonths && hasSet && maybe(3)) rule += ";BYSETPOS=" + some({"1", "-1", "2", "-2"}, 2);
  if (maybe(3)) rule += ";WKST=" + *rc::gen::element<std::string>("SU", "MO", "TH");
  return rule;
}

RC_GTEST_PROP(Series, OfAnotherProgramsRuleHasItsDaysByDateutil, ()) {
  const local_days start = AnyStart(1900, 2900);
  const std::string text = AnyRule();
  // Days are looked at one by one, so their rules end sooner.
  const int most = text.find("=DAILY") != text.npos ? 1'000 : 4'000;
  const local_days until = start + days(*rc::gen::inRange(0, most));
  RC_LOG() << text << " from " << formats::IsoDate(start) << " until " << formats::IsoDate(until);
  const Strings found = TimesByDateutil({"DTSTART;VALUE=DATE:" + formats::BasicDate(start),
                                         "RRULE:" + text + ";UNTIL=" + formats::BasicDate(until)});
  const auto rule = formats::RecurrenceRule::Parse(text);
  RC_ASSERT(rule.has_value());
  const auto asTimes = [](const auto& of) {
    Strings times;
    for (const auto& each : of) times.push_back(formats::IsoDateTime(each));
    return times;
  };

  formats::WorkBudget budget;
  const formats::RuleTimes told =
      TimesOfRule(*rule, start, until, start, until + days(1), kMost, budget);
  RC_ASSERT(asTimes(told.times) == found);

  const auto pattern = formats::PatternOfRule(*rule, {.until = until}, start);
  RC_CLASSIFY(pattern.has_value(), "a pattern");
  if (!pattern) return;
  RC_LOG() << " as " << *pattern;
  RC_ASSERT(asTimes(ToldDays(*pattern, start, kMost)) == found);
}

}  // namespace
}  // namespace corvane::testing
