#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "common/calendar/wall_time.h"
#include "tests/desktop/merge/merge_support.h"

namespace desktop::testing {
namespace {

using calendar::Pattern;
using calendar::PatternType;
using formats::ChangedOccurrence;
using formats::Occurrence;
using std::chrono::days;
using std::chrono::hours;
using std::chrono::local_days;
using std::chrono::minutes;

// February 2008 begins on a Friday: the 4th is a Monday.
constexpr int kMonday = 2;
constexpr int kTuesday = 4;

local_days February(int day) {
  return local_days{std::chrono::year{2008} / 2 / 1} + days{day - 1};
}

Appointment Meeting(int day, int hour) {
  Appointment meeting;
  meeting.subject = "Standup";
  meeting.start = February(day) + hours{hour};
  meeting.end = *meeting.start + minutes{30};
  return meeting;
}

Appointment Weekly(int day, int hour, int daysOfWeek, int count = 8) {
  Appointment series = Meeting(day, hour);
  Pattern pattern;
  pattern.type = PatternType::kWeekly;
  pattern.daysOfWeek = daysOfWeek;
  pattern.occurrences = count;
  series.series = formats::Series{pattern, {}, {}};
  return series;
}

Appointment Mondays() {
  return Weekly(4, 9, kMonday);
}

Occurrence On(const Appointment& series, int day) {
  Occurrence occurrence = series;
  const auto shift = February(day) - formats::DayOf(*series.start);
  *occurrence.start += shift;
  *occurrence.end += shift;
  return occurrence;
}

Appointment Without(Appointment series, int day) {
  series.series->deleted.push_back(February(day));
  return series;
}

template <typename Edit>
Appointment Changing(Appointment series, int day, const Edit& edit) {
  Occurrence occurrence = On(series, day);
  edit(occurrence);
  series.series->changed.push_back({February(day), occurrence});
  return series;
}

Appointment Moved(const Appointment& series, int day, hours by) {
  return Changing(series, day, [&](Occurrence& occurrence) {
    *occurrence.start += by;
    *occurrence.end += by;
  });
}

Appointment Placed(const Appointment& series, int day, const char* location) {
  return Changing(series, day, [&](Occurrence& occurrence) { occurrence.location = location; });
}

Appointment Called(Appointment appointment, const char* subject) {
  appointment.subject = subject;
  return appointment;
}

Appointment InRoom(Appointment appointment, const char* location) {
  appointment.location = location;
  return appointment;
}

const Appointment& AsAppointment(const Item& item) {
  return std::get<Appointment>(item);
}

TEST(AppointmentMerge, FieldsOfBothSidesComeTogether) {
  Appointment handheld = Meeting(4, 9);
  handheld.reminderMinutes = 15;
  handheld.isPrivate = true;
  Appointment both = InRoom(handheld, "Room 2");
  ExpectAgreed(MergeOf(Meeting(4, 9), InRoom(Meeting(4, 9), "Room 2"), handheld), both);
}

TEST(AppointmentMerge, WhenIsOneField) {
  Appointment longer = Meeting(4, 9);
  *longer.end += hours{1};
  const Appointment later = Meeting(4, 10);
  const Merged merged = MergeOf(Meeting(4, 9), longer, later, Winner::kHandheld);
  ExpectContent(merged.desk, later, "the desk");
  ExpectContent(merged.handheld, later, "the handheld");
  EXPECT_EQ(merged.conflicts, (Conflicts{{"When", "2008-02-04 09:00 to 2008-02-04 10:30",
                                          "2008-02-04 10:00 to 2008-02-04 10:30"}}));
}

TEST(AppointmentMerge, AWholeDayTravelsWithItsTimes) {
  Appointment wholeDay = Meeting(4, 0);
  wholeDay.allDay = true;
  wholeDay.end = *wholeDay.start + days{2};
  ExpectAgreed(MergeOf(Meeting(4, 9), InRoom(Meeting(4, 9), "Hall"), wholeDay),
               InRoom(wholeDay, "Hall"));
}

TEST(AppointmentMerge, ConflictsReadAsPeopleDo) {
  Appointment desk = Weekly(4, 9, kMonday);
  desk.reminderMinutes = 15;
  desk.busyStatus = 0;
  Appointment handheld = Weekly(4, 9, kMonday | 8);
  handheld.reminderMinutes = 30;
  handheld.busyStatus = 3;
  EXPECT_EQ(MergeOf(Meeting(4, 9), desk, handheld).conflicts,
            (Conflicts{{"Recurrence", "weekly on Mon, 8 times", "weekly on Mon, Wed, 8 times"},
                       {"Busy status", "free", "out of office"},
                       {"Reminder", "15 minutes before", "30 minutes before"}}));
}

TEST(AppointmentMerge, TheEndOfASeriesMayBeSaidInEitherWay) {
  Appointment byDay = Mondays();
  byDay.series->pattern.occurrences.reset();
  byDay.series->pattern.until = February(4) + days{7 * 7 + 3};
  ExpectAgreed(MergeOf(Mondays(), byDay, InRoom(Mondays(), "Room 2")), InRoom(Mondays(), "Room 2"));
}

// Exceptions, by day.

struct SeriesCase {
  const char* name;
  Appointment base;
  Appointment desk;
  Appointment handheld;
  Appointment expected;
};

class SeriesMergeTest : public ::testing::TestWithParam<SeriesCase> {};

TEST_P(SeriesMergeTest, ComesTogether) {
  const SeriesCase& each = GetParam();
  ExpectAgreed(MergeOf(each.base, each.desk, each.handheld), each.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SeriesMergeTest,
    ::testing::Values(
        SeriesCase{"DeletedDaysOfBothSides", Mondays(), Without(Mondays(), 11),
                   Without(Mondays(), 18), Without(Without(Mondays(), 11), 18)},
        SeriesCase{"TheSameDayDeletedOnBoth", Mondays(), Without(Mondays(), 11),
                   Without(Mondays(), 11), Without(Mondays(), 11)},
        SeriesCase{"ADayDeletedHereAndOneChangedThere", Mondays(), Without(Mondays(), 11),
                   Moved(Mondays(), 18, hours{1}), Moved(Without(Mondays(), 11), 18, hours{1})},
        SeriesCase{"ADayRestored", Without(Mondays(), 11), Mondays(), Without(Mondays(), 11),
                   Mondays()},
        SeriesCase{"FieldsOfOneDayFromBothSides", Mondays(), Moved(Mondays(), 11, hours{1}),
                   Placed(Mondays(), 11, "Hall"),
                   Changing(Mondays(), 11,
                            [](Occurrence& occurrence) {
                              *occurrence.start += hours{1};
                              *occurrence.end += hours{1};
                              occurrence.location = "Hall";
                            })},
        SeriesCase{"AChangedDayFollowsTheSubjectOfTheSeries", Mondays(), Called(Mondays(), "Daily"),
                   Moved(Mondays(), 11, hours{1}), Moved(Called(Mondays(), "Daily"), 11, hours{1})},
        SeriesCase{"AChangedDayFollowsTheTimeOfTheSeries", Mondays(), Weekly(4, 10, kMonday),
                   Placed(Mondays(), 11, "Hall"), Placed(Weekly(4, 10, kMonday), 11, "Hall")},
        SeriesCase{"ALongerRuleAndAChangedDay", Mondays(), Weekly(4, 9, kMonday, 20),
                   Placed(Mondays(), 11, "Hall"), Placed(Weekly(4, 9, kMonday, 20), 11, "Hall")},
        SeriesCase{"AnotherRuleThatHasTheChangedDay", Mondays(), Weekly(4, 9, kMonday | kTuesday),
                   Without(Mondays(), 11), Without(Weekly(4, 9, kMonday | kTuesday), 11)},
        SeriesCase{"AnotherRuleTakesOldExceptionsAlong", Without(Mondays(), 11),
                   Weekly(5, 9, kTuesday), Without(InRoom(Mondays(), "Hall"), 11),
                   InRoom(Weekly(5, 9, kTuesday), "Hall")},
        SeriesCase{"ASeriesMadeHere", Meeting(4, 9), Without(Mondays(), 11),
                   InRoom(Meeting(4, 9), "Hall"), Without(InRoom(Mondays(), "Hall"), 11)},
        SeriesCase{"ASeriesEndedHere", Without(Mondays(), 11), Meeting(4, 9),
                   InRoom(Without(Mondays(), 11), "Hall"), InRoom(Meeting(4, 9), "Hall")}),
    [](const auto& info) { return info.param.name; });

TEST(AppointmentMerge, ADayDeletedHereAndChangedThereIsAConflict) {
  const Appointment desk = Without(Mondays(), 11);
  const Appointment handheld = Placed(Mondays(), 11, "Hall");
  for (const Winner winner : kWinners) {
    const Merged merged = MergeOf(Mondays(), desk, handheld, winner);
    const Appointment& expected = winner == Winner::kDesk ? desk : handheld;
    ExpectContent(merged.desk, expected, "the desk");
    ExpectContent(merged.handheld, expected, "the handheld");
    EXPECT_EQ(merged.conflicts, (Conflicts{{"2008-02-11", "deleted", "Location: Hall"}}));
  }
}

TEST(AppointmentMerge, AFieldOfADayThatBothChangedIsAConflict) {
  const Merged merged = MergeOf(Mondays(), Placed(Mondays(), 11, "Room 2"),
                                Placed(Mondays(), 11, "Hall"), Winner::kHandheld);
  ExpectContent(merged.desk, Placed(Mondays(), 11, "Hall"), "the desk");
  EXPECT_EQ(merged.conflicts, (Conflicts{{"2008-02-11 Location", "Room 2", "Hall"}}));
}

TEST(AppointmentMerge, ARuleThatLeavesNoRoomForAChangedDayIsAConflict) {
  const Appointment desk = Weekly(4, 9, kMonday, 1);
  const Appointment handheld = Placed(Mondays(), 11, "Hall");
  for (const Winner winner : kWinners) {
    const Merged merged = MergeOf(Mondays(), desk, handheld, winner);
    const Appointment& expected = winner == Winner::kDesk ? desk : handheld;
    ExpectContent(merged.desk, expected, "the desk");
    ExpectContent(merged.handheld, expected, "the handheld");
    EXPECT_EQ(merged.conflicts, (Conflicts{{"Recurrence", "weekly on Mon, 1 times",
                                            "weekly on Mon, 8 times; 2008-02-11 Location: Hall"}}));
  }
}

TEST(AppointmentMerge, AFirstDayAndARuleOfDifferentSidesAreNotMixed) {
  const Appointment desk = Weekly(5, 9, kTuesday);
  const Appointment handheld = Weekly(4, 9, kMonday | 32);
  for (const Winner winner : kWinners) {
    const Merged merged = MergeOf(Mondays(), desk, handheld, winner);
    const Appointment& expected = winner == Winner::kDesk ? desk : handheld;
    ExpectContent(merged.desk, expected, "the desk");
    ExpectContent(merged.handheld, expected, "the handheld");
    EXPECT_EQ(merged.conflicts.size(), 2U);
  }
}

TEST(AppointmentMerge, OtherExceptionsThatTheHandheldHoldsStayAsTheyAre) {
  const Item deskBase = Placed(Mondays(), 11, "Hall");
  const Item handheldBase = Mondays();
  const Item handheld = Without(Mondays(), 18);
  const Merged merged =
      Merge({&deskBase, deskBase, &handheldBase, handheld}, Winner::kDesk, phone::PhoneNumbers(""));
  ExpectContent(merged.desk, Without(Placed(Mondays(), 11, "Hall"), 18), "the desk");
  ExpectContent(merged.handheld, handheld, "the handheld");
}

TEST(AppointmentMerge, JoinedExceptionsComeTogether) {
  ExpectAgreed(MergeOfJoined(Without(Mondays(), 11), Without(Mondays(), 18)),
               Without(Without(Mondays(), 11), 18));
}

TEST(AppointmentMerge, ExceptionsStayInTheirOrder) {
  const Merged merged =
      MergeOf(Mondays(), Without(Mondays(), 25), Moved(Without(Mondays(), 18), 11, hours{2}));
  const formats::Series& series = *AsAppointment(merged.handheld).series;
  EXPECT_EQ(series.deleted, (std::vector<local_days>{February(18), February(25)}));
  ASSERT_EQ(series.changed.size(), 1U);
  EXPECT_EQ(series.changed[0].original, February(11));
}

}  // namespace
}  // namespace desktop::testing
