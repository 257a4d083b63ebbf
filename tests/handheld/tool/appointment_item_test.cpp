#include "handheld/tool/records.h"

#include <gmock/gmock.h>

#include "tests/handheld/tool/item_support.h"

namespace tool::testing {
namespace {

using calendar::Pattern;
using calendar::PatternType;
using formats::Appointment;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class AppointmentItem : public ItemTest {
 protected:
  AppointmentItem() : ItemTest({.zone = "Europe/Berlin"}) {}
};

Appointment Meeting() {
  Appointment meeting;
  meeting.subject = "Meeting";
  meeting.start = At(Day(2008, 2, 15), 9);
  meeting.end = At(Day(2008, 2, 15), 10, 30);
  return meeting;
}

// On Mondays and Wednesdays, from a Monday on.
Appointment Standup() {
  Appointment standup = Meeting();
  standup.subject = "Standup";
  standup.start = At(Day(2008, 2, 18), 9);
  standup.end = At(Day(2008, 2, 18), 9, 15);
  Pattern pattern;
  pattern.type = PatternType::kWeekly;
  pattern.daysOfWeek = 2 | 8;
  standup.series = {pattern, {}, {}};
  return standup;
}

Appointment Holiday(int days) {
  Appointment holiday;
  holiday.subject = "Holiday";
  holiday.allDay = true;
  holiday.start = Day(2008, 7, 1);
  holiday.end = Day(2008, 7, 1) + std::chrono::days{days};
  holiday.busyStatus = 3;
  return holiday;
}

TEST_F(AppointmentItem, KeepsEveryField) {
  Appointment meeting = Meeting();
  meeting.location = "Room \xC3\xA4";
  meeting.body = "one\ntwo";
  meeting.busyStatus = 1;
  meeting.categories = {"Work", "Travel"};
  meeting.isPrivate = true;
  meeting.reminderMinutes = 20;
  EXPECT_EQ(StoreAndRead(meeting), meeting);
  EXPECT_THAT(notKept_, IsEmpty());
}

TEST_F(AppointmentItem, HasNoReminderWhereTheRecordHasNone) {
  EXPECT_EQ(StoreAndRead(Meeting()).reminderMinutes, std::nullopt);
}

TEST_F(AppointmentItem, KeepsOneThatTakesNoTime) {
  Appointment call = Meeting();
  call.end = call.start;
  EXPECT_EQ(StoreAndRead(call), call);
  EXPECT_THAT(notKept_, IsEmpty());
}

TEST_F(AppointmentItem, KeepsSeconds) {
  Appointment call = Meeting();
  *call.start += std::chrono::seconds{7};
  *call.end += std::chrono::seconds{59};
  EXPECT_EQ(StoreAndRead(call), call);
}

TEST_F(AppointmentItem, StoresWholeDaysAsADuration) {
  const Appointment holiday = Holiday(3);
  EXPECT_EQ(StoreAndRead(holiday), holiday);
  const auto item = New<Appointment>();
  WriteItem(holiday, *item.get());
  ce::LONG duration = 0;
  EXPECT_EQ(item->get_Duration(&duration), ce::S_OK);
  EXPECT_EQ(duration, 3 * 1440);
}

TEST_F(AppointmentItem, KeepsAnAllDayOneOnTheLastDayThatThereIs) {
  Appointment last = Holiday(1);
  last.start = Day(2999, 12, 31);
  last.end = Day(3000, 1, 1);
  EXPECT_EQ(StoreAndRead(last), last);
}

TEST_F(AppointmentItem, NamesATimeThatAHandheldDoesNotKeep) {
  Appointment late = Meeting();
  late.start = At(Day(2999, 12, 31), 23);
  late.end = At(Day(3000, 1, 1), 1);
  const Appointment stored = StoreAndRead(late);
  EXPECT_EQ(stored.start, late.start);
  EXPECT_EQ(stored.end, std::nullopt);
  EXPECT_THAT(notKept_, ElementsAre("End: 3000-01-01T01:00:00 is no date that a handheld keeps"));
}

TEST_F(AppointmentItem, CutsATextThatIsTooLongAndNamesIt) {
  Appointment wordy = Meeting();
  wordy.subject = std::string(5000, 'x');
  EXPECT_EQ(StoreAndRead(wordy).subject.size(), 4095u);
  EXPECT_THAT(notKept_, ElementsAre(StartsWith("Subject: cut from 5000 to 4095 characters")));
}

TEST_F(AppointmentItem, MovesFarWithoutRegardToWhatItWas) {
  const auto item = New<Appointment>();
  Appointment long_ = Holiday(400);
  StoreIn(long_, *item.get());
  Appointment late = Meeting();
  late.start = At(Day(2999, 12, 31), 9);
  late.end = At(Day(2999, 12, 31), 10);
  StoreIn(late, *item.get());
  EXPECT_EQ(OnlyRecord<Appointment>(*session_), late);
}

TEST_F(AppointmentItem, ReadsOneWithoutTimesAsTheHandheldHasIt) {
  const auto item = New<Appointment>();
  item->put_Start(ce::kNoDate);
  item->put_End(ce::kNoDate);
  item->put_AllDayEvent(ce::VARIANT_TRUE);
  ASSERT_EQ(item->Save(), ce::S_OK);
  const Appointment odd = OnlyRecord<Appointment>(*session_);
  EXPECT_EQ(odd.start, std::nullopt);
  EXPECT_EQ(odd.end, std::nullopt);
  EXPECT_FALSE(odd.allDay) << "there is no day that it could fill";
}

TEST_F(AppointmentItem, ReadsAnOddAllDayOneAsWholeDays) {
  const auto item = New<Appointment>();
  item->put_Start(DateOf(At(Day(2008, 2, 15), 14)));
  item->put_Duration(90);
  item->put_AllDayEvent(ce::VARIANT_TRUE);
  ASSERT_EQ(item->Save(), ce::S_OK);
  const Appointment odd = OnlyRecord<Appointment>(*session_);
  EXPECT_EQ(odd.start, Day(2008, 2, 15));
  EXPECT_EQ(odd.end, Day(2008, 2, 16));
}

TEST_F(AppointmentItem, KeepsASeriesOfEachType) {
  const auto pattern = [](PatternType type, int interval, int days, int day, int nth, int month) {
    return Pattern{type, interval, days, day, nth, month, {}, {}};
  };
  for (const Pattern& each :
       {pattern(PatternType::kDaily, 3, 0, 0, 0, 0), pattern(PatternType::kWeekly, 2, 42, 0, 0, 0),
        pattern(PatternType::kMonthly, 1, 0, 31, 0, 0),
        pattern(PatternType::kMonthNth, 6, 4, 0, 5, 0),
        pattern(PatternType::kYearly, 1, 0, 29, 0, 2),
        pattern(PatternType::kYearNth, 1, 62, 0, 1, 12)}) {
    const auto item = New<Appointment>();
    Appointment standup = Standup();
    standup.series->pattern = each;
    StoreIn(standup, *item.get());
    EXPECT_EQ(OnlyRecord<Appointment>(*session_), standup) << static_cast<int>(each.type);
    item->Delete();
  }
}

TEST_F(AppointmentItem, KeepsTheEndOfASeriesAsItsLastDay) {
  Appointment standup = Standup();
  standup.series->pattern.occurrences = 4;
  EXPECT_EQ(StoreAndRead(standup).series->pattern.until, Day(2008, 2, 27));
  EXPECT_EQ(OnlyRecord<Appointment>(*session_).series->pattern.occurrences, std::nullopt);
}

TEST_F(AppointmentItem, KeepsDeletedAndChangedOccurrences) {
  Appointment standup = Standup();
  formats::Occurrence moved;
  moved.subject = "Standup, late";
  moved.location = "Kitchen";
  moved.body = "cake\nand tea";
  moved.start = At(Day(2008, 2, 21), 16);
  moved.end = At(Day(2008, 2, 21), 17);
  moved.busyStatus = 0;
  formats::Occurrence wholeDay = Holiday(2);
  standup.series->deleted = {Day(2008, 2, 18), Day(2008, 3, 3)};
  standup.series->changed = {{Day(2008, 2, 20), moved}, {Day(2008, 2, 25), wholeDay}};
  EXPECT_EQ(StoreAndRead(standup), standup);
  EXPECT_THAT(notKept_, IsEmpty());
}

TEST_F(AppointmentItem, NamesAnExceptionOnADayThatIsNoOccurrence) {
  Appointment standup = Standup();
  standup.series->deleted = {Day(2008, 2, 19)};
  EXPECT_THAT(StoreAndRead(standup).series->deleted, IsEmpty());
  EXPECT_THAT(notKept_, ElementsAre("2008-02-19: the series has no occurrence on that day"));
}

TEST_F(AppointmentItem, NamesWhatAChangedOccurrenceCannotKeepAlsoBeforeItIsStored) {
  Appointment standup = Standup();
  formats::Occurrence wordy = Meeting();
  wordy.location = std::string(2000, 'x');
  standup.series->changed = {{Day(2008, 2, 20), wordy}};
  const NotKept tried = TryExceptions(standup, *New<Appointment>().get());
  EXPECT_THAT(tried, ElementsAre(StartsWith("2008-02-20: Location: cut from 2000 to 1023")));
  StoreAndRead(standup);
  EXPECT_EQ(notKept_, tried);
}

TEST_F(AppointmentItem, NamesASeriesWithoutAnyDayAndKeepsTheAppointment) {
  Appointment never = Standup();
  never.series->pattern.until = Day(2008, 1, 1);
  EXPECT_EQ(StoreAndRead(never).series, std::nullopt);
  EXPECT_THAT(notKept_, ElementsAre("Recurrence: the series has no day that a handheld keeps"));
}

TEST_F(AppointmentItem, DropsTheExceptionsOfBefore) {
  const auto item = New<Appointment>();
  Appointment standup = Standup();
  standup.series->deleted = {Day(2008, 2, 18)};
  StoreIn(standup, *item.get());
  standup.series->deleted = {Day(2008, 2, 20)};
  StoreIn(standup, *item.get());
  EXPECT_EQ(OnlyRecord<Appointment>(*session_), standup);
}

TEST_F(AppointmentItem, BecomesSingleAgain) {
  const auto item = New<Appointment>();
  StoreIn(Standup(), *item.get());
  StoreIn(Meeting(), *item.get());
  EXPECT_EQ(OnlyRecord<Appointment>(*session_), Meeting());
}

class AppointmentItemOfVersion4 : public ItemTest {
 protected:
  AppointmentItemOfVersion4() : ItemTest({.osVersion = "4.21"}) {}
};

TEST_F(AppointmentItemOfVersion4, DoesNotCountTheLastDayOfARecurringAllDayOne) {
  Appointment holiday = Holiday(2);
  Pattern yearly;
  yearly.type = PatternType::kYearly;
  yearly.dayOfMonth = 1;
  yearly.monthOfYear = 7;
  holiday.series = {yearly, {}, {{Day(2009, 7, 1), Holiday(3)}}};
  const auto item = New<Appointment>();
  StoreIn(holiday, *item.get());
  ce::LONG duration = 0;
  EXPECT_EQ(item->get_Duration(&duration), ce::S_OK);
  EXPECT_EQ(duration, 1440);
  EXPECT_EQ(OnlyRecord<Appointment>(*session_), holiday);
}

TEST_F(AppointmentItemOfVersion4, CountsEveryDayOfASingleOne) {
  const auto item = New<Appointment>();
  StoreIn(Holiday(2), *item.get());
  ce::LONG duration = 0;
  EXPECT_EQ(item->get_Duration(&duration), ce::S_OK);
  EXPECT_EQ(duration, 2 * 1440);
  EXPECT_EQ(OnlyRecord<Appointment>(*session_), Holiday(2));
}

}  // namespace
}  // namespace tool::testing
