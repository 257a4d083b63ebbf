#include "common/formats/items/normal_form.h"

#include <gtest/gtest.h>

#include "tests/common/formats/icalendar/calendar_support.h"

namespace formats::testing {
namespace {

using calendar::Pattern;
using calendar::PatternType;

template <typename Item>
Item AsSent(const Item& item) {
  return Normalized(item, SeriesEnd::kCount);
}
template <typename Item>
Item AsKept(const Item& item) {
  return Normalized(item, SeriesEnd::kDay);
}

// Mondays at nine, from Monday 6 May 2024.
Appointment Mondays() {
  Appointment appointment;
  appointment.subject = "Choir";
  appointment.start = At(2024, 5, 6, 9);
  appointment.end = At(2024, 5, 6, 10);
  appointment.series = Series{{.type = PatternType::kWeekly, .daysOfWeek = 2}, {}, {}};
  return appointment;
}

TEST(NormalizedForSending, IsAsItWasWithoutASeriesOrAStart) {
  Appointment single = Mondays();
  single.series.reset();
  EXPECT_EQ(AsSent(single), single);
  Appointment odd = Mondays();
  odd.start.reset();
  EXPECT_EQ(AsSent(odd), odd);
}

TEST(NormalizedForSending, BeginsWithTheFirstDayOfItsSeries) {
  Appointment early = Mondays();
  early.start = At(2024, 5, 1, 9);
  early.end = At(2024, 5, 1, 10);
  EXPECT_EQ(AsSent(early), Mondays());
}

TEST(NormalizedForSending, CountsTheOccurrencesUntilALastDay) {
  Appointment until = Mondays();
  until.series->pattern.until = Day(2024, 5, 26);
  Appointment counted = Mondays();
  counted.series->pattern.occurrences = 3;
  EXPECT_EQ(AsSent(until), counted);
}

TEST(NormalizedForSending, EndsWithTheLastDayThatThereIs) {
  Appointment endless = Mondays();
  endless.start = At(2999, 12, 20, 9);
  endless.end = At(2999, 12, 20, 10);
  endless.series->pattern = {.type = PatternType::kDaily, .occurrences = 1000};
  EXPECT_EQ(AsSent(endless).series->pattern.occurrences, 12);
}

TEST(NormalizedForSending, HasNoExceptionsOfOtherDays) {
  Appointment odd = Mondays();
  odd.series->deleted = {Day(2024, 4, 29), Day(2024, 5, 7), Day(2024, 5, 13)};
  odd.series->changed = {{Day(2024, 5, 8), odd}};
  Appointment plain = Mondays();
  plain.series->deleted = {Day(2024, 5, 13)};
  EXPECT_EQ(AsSent(odd), plain);
}

TEST(NormalizedForSending, HasNoChangeThatChangesNothing) {
  Appointment odd = Mondays();
  Occurrence same = odd;
  same.start = At(2024, 5, 20, 9);
  same.end = At(2024, 5, 20, 10);
  Occurrence longer = same;
  longer.end = At(2024, 5, 20, 11);
  odd.series->changed = {{Day(2024, 5, 20), same}, {Day(2024, 5, 27), same}};
  Appointment plain = Mondays();
  plain.series->changed = {{Day(2024, 5, 27), same}};
  EXPECT_EQ(AsSent(odd), plain);
  odd.series->changed = {{Day(2024, 5, 20), longer}};
  EXPECT_EQ(AsSent(odd), odd);
}

TEST(NormalizedForSending, EndsWhereItStartsWithoutAnEnd) {
  Appointment odd = Mondays();
  odd.series.reset();
  odd.end.reset();
  EXPECT_EQ(AsSent(odd).end, odd.start);
}

TEST(NormalizedForSending, BeginsATaskWithTheFirstDayOfItsSeries) {
  Task task;
  task.start = Day(2024, 5, 1);
  task.due = Day(2024, 5, 3);
  task.reminder = At(2024, 5, 1, 8);
  task.pattern = {.type = PatternType::kWeekly, .daysOfWeek = 2};
  const Task normal = AsSent(task);
  EXPECT_EQ(normal.start, Day(2024, 5, 6));
  EXPECT_EQ(normal.due, Day(2024, 5, 8));
  EXPECT_EQ(normal.reminder, task.reminder);
  EXPECT_EQ(normal.pattern, task.pattern);
}

TEST(NormalizedForSending, CountsATaskFromItsStartOrElseItsDueDate) {
  const Pattern daily = {.type = PatternType::kDaily};
  Task task;
  task.pattern = daily;
  task.pattern->until = Day(2024, 5, 10);
  EXPECT_EQ(AsSent(task), task) << "no day to count from";
  task.due = Day(2024, 5, 6);
  EXPECT_EQ(AsSent(task).pattern->occurrences, 5);
  task.start = Day(2024, 5, 1);
  EXPECT_EQ(AsSent(task).pattern->occurrences, 10);
  EXPECT_EQ(AsSent(task).pattern->until, std::nullopt);
}

constexpr local_days kMonday{std::chrono::year{2008} / 2 / 18};
constexpr std::chrono::hours kNine{9};

// On Wednesdays.
Appointment Weekly(local_days start) {
  Appointment appointment;
  appointment.start = start + kNine;
  appointment.end = start + kNine + std::chrono::hours{1};
  calendar::Pattern pattern;
  pattern.type = PatternType::kWeekly;
  pattern.daysOfWeek = 8;
  appointment.series = {pattern, {}, {}};
  return appointment;
}

TEST(NormalizedForKeeping, LeavesASingleAppointmentAsItIs) {
  Appointment single = Weekly(kMonday);
  single.series.reset();
  EXPECT_EQ(AsKept(single), single);
}

TEST(NormalizedForKeeping, BeginsASeriesWithItsFirstDay) {
  const local_days wednesday = kMonday + std::chrono::days{2};
  EXPECT_EQ(AsKept(Weekly(kMonday)), Weekly(wednesday));
  EXPECT_EQ(AsKept(Weekly(wednesday)), Weekly(wednesday));
}

TEST(NormalizedForKeeping, SaysEveryEndAsTheLastDay) {
  Appointment counted = Weekly(kMonday);
  counted.series->pattern.occurrences = 3;
  Appointment dated = Weekly(kMonday);
  dated.series->pattern.until = local_days{std::chrono::year{2008} / 3 / 10};  // a Monday
  EXPECT_EQ(AsKept(counted), AsKept(dated));
  EXPECT_EQ(AsKept(counted).series->pattern.until, local_days{std::chrono::year{2008} / 3 / 5});
}

TEST(NormalizedForKeeping, HasNoSeriesWithoutADay) {
  Appointment never = Weekly(kMonday);
  never.series->pattern.until = kMonday;
  EXPECT_EQ(AsKept(never).series, std::nullopt);
  Appointment nowhere = Weekly(kMonday);
  nowhere.start.reset();
  EXPECT_EQ(AsKept(nowhere).series, std::nullopt);
}

TEST(NormalizedForKeeping, CountsATaskFromItsStartElseFromWhenItIsDue) {
  Task task;
  task.pattern = calendar::PatternFrom(PatternType::kDaily, kMonday);
  task.pattern->occurrences = 2;
  EXPECT_EQ(AsKept(task).pattern, std::nullopt) << "it begins whenever it is stored";
  task.due = kMonday;
  EXPECT_EQ(AsKept(task).pattern->until, kMonday + std::chrono::days{1});
  task.start = kMonday - std::chrono::days{7};
  EXPECT_EQ(AsKept(task).pattern->until, kMonday - std::chrono::days{6});
}

TEST(NormalizedForKeeping, BeginsATaskWithItsFirstDay) {
  Task task;
  task.start = kMonday;
  task.due = kMonday + std::chrono::days{1};
  task.pattern = Weekly(kMonday).series->pattern;
  const Task kept = AsKept(task);
  EXPECT_EQ(kept.start, kMonday + std::chrono::days{2});
  EXPECT_EQ(kept.due, kMonday + std::chrono::days{3});
}

TEST(NormalizedForKeeping, EndsWhatHasNoEndWhenItStarts) {
  Appointment open = Weekly(kMonday);
  open.end.reset();
  Occurrence nowhere;
  Occurrence endless;
  endless.start = kMonday + kNine;
  open.series->changed = {{kMonday + std::chrono::days{2}, nowhere},
                          {kMonday + std::chrono::days{9}, endless}};
  const Appointment kept = AsKept(open);
  EXPECT_EQ(kept.end, kept.start);
  ASSERT_EQ(kept.series->changed.size(), 1u);
  EXPECT_EQ(kept.series->changed[0].occurrence.end, endless.start);
}

}  // namespace
}  // namespace formats::testing
