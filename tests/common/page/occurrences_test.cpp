#include "common/page/occurrences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "common/calendar/wall_time.h"

namespace page::testing {
namespace {

using formats::Appointment;
using formats::local_days;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

local_days OnDay(int year, unsigned month, unsigned day) {
  return local_days{std::chrono::year{year} / std::chrono::month{month} / std::chrono::day{day}};
}

Appointment Meeting(local_days day, int hour, int minutes, const std::string& subject) {
  Appointment appointment;
  appointment.subject = subject;
  appointment.start = day + std::chrono::hours(hour);
  appointment.end = *appointment.start + std::chrono::minutes(minutes);
  return appointment;
}

Appointment Daily(local_days day, int hour, int minutes, const std::string& subject) {
  Appointment appointment = Meeting(day, hour, minutes, subject);
  appointment.series.emplace();
  return appointment;
}

// "2026-11-22T09:00:00 Meeting".
std::vector<std::string> Lines(const std::vector<Appointment>& appointments,
                               const DayRange& range) {
  std::vector<std::string> lines;
  for (const PlacedOccurrence& each : OccurrencesIn(appointments, range))
    lines.push_back(formats::IsoDateTime(each.start) + " " + each.said->subject);
  return lines;
}

TEST(Occurrences, StandOnTheDaysOfTheirSeries) {
  Appointment meeting = Daily(OnDay(2026, 11, 1), 9, 45, "Meeting");
  meeting.series->pattern.interval = 2;
  EXPECT_THAT(Lines({meeting}, {OnDay(2026, 11, 4), OnDay(2026, 11, 7)}),
              ElementsAre("2026-11-05T09:00:00 Meeting", "2026-11-07T09:00:00 Meeting"));
  EXPECT_THAT(Lines({meeting}, {OnDay(2026, 10, 4), OnDay(2026, 10, 31)}), IsEmpty());
}

TEST(Occurrences, AreAsTheirExceptionsSay) {
  Appointment meeting = Daily(OnDay(2026, 11, 1), 9, 45, "Meeting");
  meeting.series->deleted = {OnDay(2026, 11, 2)};
  meeting.series->changed = {
      {OnDay(2026, 11, 3), Meeting(OnDay(2026, 11, 3), 15, 30, "Later")},
      {OnDay(2026, 11, 20), Meeting(OnDay(2026, 11, 4), 8, 30, "Brought forward")},
      {OnDay(2026, 11, 4), Meeting(OnDay(2026, 12, 4), 8, 30, "Put off")}};
  std::swap(meeting.series->changed[1], meeting.series->changed[2]);
  EXPECT_THAT(Lines({meeting}, {OnDay(2026, 11, 1), OnDay(2026, 11, 4)}),
              ElementsAre("2026-11-01T09:00:00 Meeting", "2026-11-03T15:00:00 Later",
                          "2026-11-04T08:00:00 Brought forward"));
  EXPECT_THAT(Lines({meeting}, {OnDay(2026, 11, 20), OnDay(2026, 11, 20)}), IsEmpty());
}

TEST(Occurrences, StandOnEveryDayThatTheyTake) {
  Appointment holiday;
  holiday.subject = "Holiday";
  holiday.allDay = true;
  holiday.start = OnDay(2026, 12, 21);
  holiday.end = OnDay(2027, 1, 4);
  const Appointment night = Meeting(OnDay(2026, 12, 31), 22, 4 * 60, "Party");
  const Appointment late = Meeting(OnDay(2026, 12, 31), 22, 2 * 60, "Dinner");
  const std::vector<Appointment> all = {late, night, holiday};
  EXPECT_THAT(Lines(all, {OnDay(2027, 1, 1), OnDay(2027, 1, 1)}),
              ElementsAre("2026-12-21T00:00:00 Holiday", "2026-12-31T22:00:00 Party"));
  EXPECT_THAT(Lines(all, {OnDay(2027, 1, 3), OnDay(2027, 1, 4)}),
              ElementsAre("2026-12-21T00:00:00 Holiday"));
  EXPECT_THAT(Lines(all, {OnDay(2027, 1, 4), OnDay(2027, 1, 4)}), IsEmpty());
}

TEST(Occurrences, OfASeriesReachFromADayBefore) {
  const Appointment night = Daily(OnDay(2026, 11, 1), 22, 26 * 60, "Shift");
  EXPECT_THAT(Lines({night}, {OnDay(2026, 11, 5), OnDay(2026, 11, 5)}),
              ElementsAre("2026-11-04T22:00:00 Shift", "2026-11-05T22:00:00 Shift"));
}

TEST(Occurrences, OfAPatternThatIsNoneStandWhereTheyBegin) {
  Appointment odd = Daily(OnDay(2026, 11, 1), 9, 30, "Odd");
  odd.series->pattern.interval = 0;
  EXPECT_THAT(Lines({odd, Appointment()}, {OnDay(2026, 11, 1), OnDay(2026, 11, 9)}),
              ElementsAre("2026-11-01T09:00:00 Odd"));
}

TEST(Occurrences, KnowTheirNeighbours) {
  Appointment meeting = Daily(OnDay(2026, 11, 1), 9, 45, "Meeting");
  meeting.series->pattern.interval = 10;
  meeting.series->deleted = {OnDay(2026, 11, 11)};
  const std::vector<Appointment> all = {meeting, Meeting(OnDay(1999, 1, 1), 8, 1, "Old")};
  const NearestDays nearest = NearestTo(all, {OnDay(2026, 11, 9), OnDay(2026, 11, 10)});
  EXPECT_EQ(nearest.before, OnDay(2026, 11, 1));
  EXPECT_EQ(nearest.behind, OnDay(2026, 11, 21));
  EXPECT_EQ(NearestTo(all, {OnDay(1990, 1, 1), OnDay(1998, 1, 1)}).before, std::nullopt);
  EXPECT_EQ(NearestTo({}, {OnDay(1990, 1, 1), OnDay(1998, 1, 1)}).behind, std::nullopt);
}

// Against a walk over every day.
RC_GTEST_PROP(OccurrencesProperty, AreThoseOfEveryDayOfTheRange, ()) {
  const local_days origin = OnDay(2026, 1, 1);
  const auto some = [&](int from, int to) { return *rc::gen::inRange(from, to); };
  Appointment shift =
      Daily(origin + std::chrono::days(some(0, 60)), some(0, 24), some(0, 6'000), "Shift");
  shift.series->pattern.interval = some(1, 9);
  const local_days begin = formats::DayOf(*shift.start);
  const DayRange range{origin + std::chrono::days(some(0, 90)),
                       origin + std::chrono::days(some(90, 120))};
  const auto length = *shift.end - *shift.start;
  std::vector<std::string> expected;
  for (local_days day = begin; day <= range.last; day += std::chrono::days(1)) {
    const formats::local_seconds start = day + (*shift.start - begin);
    const formats::local_seconds last =
        start + std::max(length - std::chrono::seconds(1), std::chrono::seconds(0));
    const bool isOne = (day - begin).count() % shift.series->pattern.interval == 0;
    if (isOne && formats::DayOf(last) >= range.first)
      expected.push_back(formats::IsoDateTime(start) + " Shift");
  }
  RC_ASSERT(Lines({shift}, range) == expected);
}

}  // namespace
}  // namespace page::testing
