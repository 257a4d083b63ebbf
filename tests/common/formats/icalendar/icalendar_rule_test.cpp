#include "common/formats/icalendar/icalendar_rule.h"

#include <gtest/gtest.h>

#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

RuleTimes Times(const char* text, local_seconds start, local_seconds from, local_seconds end,
                std::size_t most, std::optional<local_seconds> until = std::nullopt) {
  const std::optional<RecurrenceRule> rule = RecurrenceRule::Parse(text);
  EXPECT_TRUE(rule.has_value()) << text;
  WorkBudget budget;
  return TimesOfRule(*rule, start, until, from, end, most, budget);
}

Strings Show(const RuleTimes& times) {
  Strings shown;
  for (const local_seconds time : times.times) shown.push_back(IsoDateTime(time));
  if (times.cut) shown.push_back("cut at " + IsoDateTime(times.end));
  return shown;
}

TEST(RecurrenceRule, IsReadIntoItsParts) {
  const auto rule = RecurrenceRule::Parse(" byday=mo, tu;X-END=1; freq=weekly;count=3;");
  ASSERT_TRUE(rule.has_value());
  EXPECT_EQ(rule->Text(), "FREQ=WEEKLY;BYDAY=MO,TU;COUNT=3");
  EXPECT_EQ(rule->Count(), 3);
  EXPECT_EQ(*rule->Part("BYDAY"), "MO,TU");
  EXPECT_EQ(rule->Part("BYMONTH"), nullptr);
  EXPECT_TRUE(rule->IsOfDays());
  EXPECT_FALSE(RecurrenceRule::Parse("FREQ=HOURLY")->IsOfDays());
}

TEST(RecurrenceRule, DropsTheTimeOfDayThatItsStartHas) {
  auto rule = *RecurrenceRule::Parse("FREQ=DAILY;BYHOUR=9;BYMINUTE=0,30;BYSECOND=0");
  rule.DropTimeOfDay(std::chrono::hours(9));
  EXPECT_EQ(rule.Text(), "FREQ=DAILY;BYMINUTE=0,30");
}

TEST(TimesOfRule, GivesTheTimesOfAWindow) {
  EXPECT_EQ(
      Show(Times("FREQ=DAILY", At(2008, 2, 15, 9), At(2008, 2, 17, 0), At(2008, 2, 19, 0), 9)),
      (Strings{"2008-02-17T09:00:00", "2008-02-18T09:00:00", "cut at 2008-02-19T00:00:00"}));
  EXPECT_EQ(
      Times("FREQ=DAILY", At(2008, 2, 15, 9), At(2008, 2, 17, 0), At(2008, 2, 19, 0), 9).skipped,
      2);
  EXPECT_EQ(Show(Times("FREQ=DAILY", At(2008, 2, 15, 9), At(2008, 2, 15, 0), At(2009, 1, 1, 0), 2)),
            (Strings{"2008-02-15T09:00:00", "2008-02-16T09:00:00", "cut at 2008-02-17T09:00:00"}));
}

// The first three times of an endless rule.
std::string FirstDays(const char* text, local_days start) {
  std::string days;
  for (const local_seconds time : Times(text, start, start, At(2060, 1, 1, 0), 3).times) {
    days += (days.empty() ? "" : " ") + IsoDate(DayOf(time));
  }
  return days;
}

TEST(TimesOfRule, CountsDaysFromTheEndOfAMonth) {
  EXPECT_EQ(FirstDays("FREQ=DAILY;BYMONTHDAY=-1", Day(2026, 1, 2)),
            "2026-01-31 2026-02-28 2026-03-31");
}

TEST(TimesOfRule, TakesEveryMonthForAYearsRuleThatNamesNone) {
  EXPECT_EQ(FirstDays("FREQ=YEARLY;BYMONTHDAY=15", Day(2026, 2, 8)),
            "2026-02-15 2026-03-15 2026-04-15");
  EXPECT_EQ(FirstDays("FREQ=YEARLY;BYDAY=TH;BYMONTHDAY=15,29", Day(2026, 4, 1)),
            "2026-10-15 2026-10-29 2027-04-15");
  EXPECT_EQ(FirstDays("FREQ=YEARLY;BYMONTHDAY=15;BYSETPOS=-2", Day(2026, 2, 15)),
            "2026-11-15 2027-11-15 2028-11-15");
}

TEST(TimesOfRule, CountsWeeksFromThatOfTheStart) {
  EXPECT_EQ(FirstDays("FREQ=WEEKLY;INTERVAL=6;BYDAY=SU", Day(2026, 9, 30)),
            "2026-10-04 2026-11-15 2026-12-27");
  EXPECT_EQ(FirstDays("FREQ=WEEKLY;INTERVAL=2;BYDAY=TU;BYMONTH=10;WKST=TH", Day(2026, 9, 30)),
            "2026-10-13 2026-10-27 2027-10-12");
}

TEST(TimesOfRule, FindsDaysThatAreYearsApart) {
  EXPECT_EQ(FirstDays("FREQ=DAILY;BYDAY=SU;BYMONTHDAY=29;BYMONTH=12", Day(1997, 3, 31)),
            "2002-12-29 2013-12-29 2019-12-29");
}

TEST(TimesOfRule, EndsWithTheRule) {
  const local_seconds start = At(2008, 2, 15, 9);
  EXPECT_EQ(Show(Times("FREQ=DAILY;COUNT=2", start, start, At(2018, 1, 1, 0), 9)),
            (Strings{"2008-02-15T09:00:00", "2008-02-16T09:00:00"}));
  EXPECT_EQ(Show(Times("FREQ=DAILY", start, start, At(2018, 1, 1, 0), 9, At(2008, 2, 16, 9))),
            (Strings{"2008-02-15T09:00:00", "2008-02-16T09:00:00"}));
  EXPECT_EQ(Show(Times("FREQ=DAILY;COUNT=9;UNTIL=20080216T090000", start, start, At(2018, 1, 1, 0),
                       9, At(2008, 2, 16, 9))),
            (Strings{"2008-02-15T09:00:00", "2008-02-16T09:00:00"}));
}

TEST(TimesOfRule, FollowsHoursForAHundredThousandSteps) {
  const local_seconds start = At(2008, 2, 15, 9);
  const RuleTimes times =
      Times("FREQ=MINUTELY;INTERVAL=2;BYMONTH=1", start, start, At(2018, 1, 1, 0), 400);
  EXPECT_TRUE(times.times.empty());
  EXPECT_TRUE(times.cut);
  EXPECT_EQ(IsoDateTime(times.end), "2008-07-03T06:20:00");
}

TEST(TimesOfRule, ReachesTheLastYears) {
  EXPECT_EQ(Show(Times("FREQ=YEARLY;BYDAY=-1SU;BYMONTH=3", At(2990, 1, 1, 9), At(2990, 1, 1, 0),
                       At(2993, 1, 1, 0), 9)),
            (Strings{"2990-03-28T09:00:00", "2991-03-27T09:00:00", "2992-03-25T09:00:00",
                     "cut at 2993-01-01T00:00:00"}));
}

TEST(TimesOfRule, GivesNothingOnceTheBudgetIsUsedUp) {
  WorkBudget budget{0, 1};
  const RuleTimes times = TimesOfRule(*RecurrenceRule::Parse("FREQ=DAILY"), At(2008, 1, 1, 0), {},
                                      At(2008, 1, 1, 0), At(2009, 1, 1, 0), 9, budget);
  EXPECT_TRUE(times.times.empty());
  EXPECT_TRUE(times.cut);
}

}  // namespace
}  // namespace formats::testing
