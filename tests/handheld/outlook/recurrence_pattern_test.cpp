#include "tests/handheld/outlook/calendar_support.h"

namespace ce::host::testing {
namespace {

using Pattern = IRecurrencePattern;

class RecurrencePattern : public CalendarTest {
 protected:
  // Of 2026-03-02, 10:00 to 11:00.
  void SetUp() override {
    item_ = Single();
    pattern_ = PatternOf(item_);
  }
  void TearDown() override {
    pattern_.reset();
    item_.reset();
    CalendarTest::TearDown();
  }
  ComPtr<Pattern> Stored() { return PatternOf(Reread(item_)); }

  ComPtr<IAppointment> item_;
  ComPtr<Pattern> pattern_;
};

TEST_F(RecurrencePattern, StartsWeeklyOnTheDayOfItsItemWithoutAnEnd) {
  EXPECT_EQ(Value(pattern_, &Pattern::get_RecurrenceType), olRecursWeekly);
  EXPECT_EQ(Value(pattern_, &Pattern::get_Interval), 1);
  EXPECT_EQ(Value(pattern_, &Pattern::get_DayOfWeekMask), 2);
  EXPECT_EQ(Value(pattern_, &Pattern::get_DayOfMonth), 0);
  EXPECT_EQ(Value(pattern_, &Pattern::get_Instance), 0);
  EXPECT_EQ(Value(pattern_, &Pattern::get_MonthOfYear), 0);
  EXPECT_EQ(Value(pattern_, &Pattern::get_NoEndDate), VARIANT_TRUE);
  EXPECT_EQ(Value(pattern_, &Pattern::get_Occurrences), 0);
  EXPECT_EQ(Value(pattern_, &Pattern::get_PatternEndDate), kNoDate);
  EXPECT_EQ(Value(pattern_, &Pattern::get_PatternStartDate), Day(2026, 3, 2));
}

TEST_F(RecurrencePattern, MakesItsItemRecurringAtTheSave) {
  EXPECT_EQ(Value(item_, &IAppointment::get_IsRecurring), VARIANT_FALSE);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(Value(item_, &IAppointment::get_IsRecurring), VARIANT_TRUE);
  EXPECT_EQ(Value(Reread(item_), &IAppointment::get_IsRecurring), VARIANT_TRUE);
}

TEST_F(RecurrencePattern, AskedForOfAStoredItemChangesNothingBeforeTheSave) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->Save(), S_OK);
  PatternOf(item);
  EXPECT_EQ(Value(item, &IAppointment::get_IsRecurring), VARIANT_FALSE);
  EXPECT_EQ(Value(Reread(item), &IAppointment::get_IsRecurring), VARIANT_FALSE);
  // No setter was called, and still it becomes recurring.
  EXPECT_EQ(item->Save(), S_OK);
  EXPECT_EQ(Value(Reread(item), &IAppointment::get_IsRecurring), VARIANT_TRUE);
}

TEST_F(RecurrencePattern, IsOneHoweverOftenItIsAskedFor) {
  EXPECT_EQ(pattern_->put_Interval(3), S_OK);
  const ComPtr<Pattern> other = PatternOf(item_);
  EXPECT_EQ(Value(other, &Pattern::get_Interval), 3);
  EXPECT_EQ(other->put_Interval(4), S_OK);
  EXPECT_EQ(Value(pattern_, &Pattern::get_Interval), 4);
}

TEST_F(RecurrencePattern, KeepsItsItemAlive) {
  item_.reset();
  EXPECT_EQ(pattern_->put_Interval(2), S_OK);
  EXPECT_EQ(Value(pattern_, &Pattern::get_PatternStartDate), Day(2026, 3, 2));
}

struct TypeCase {
  LONG type;
  LONG mask, dayOfMonth, instance, month;  // that 2026-03-29, a Sunday, implies
};
constexpr TypeCase kTypes[] = {
    {olRecursDaily, 0, 0, 0, 0},    {olRecursWeekly, 1, 0, 0, 0},  {olRecursMonthly, 0, 29, 0, 0},
    {olRecursMonthNth, 1, 0, 5, 0}, {olRecursYearly, 0, 29, 0, 3}, {olRecursYearNth, 1, 0, 5, 3},
};

TEST_F(RecurrencePattern, ATypeGivesItsPropertiesTheValuesThatTheStartImplies) {
  EXPECT_EQ(item_->put_Start(At(2026, 3, 29, 10)), S_OK);
  EXPECT_EQ(pattern_->put_RecurrenceType(olRecursDaily), S_OK);
  for (const TypeCase& row : kTypes) {
    if (row.type != olRecursDaily) {
      EXPECT_EQ(pattern_->put_RecurrenceType(olRecursMonthly), S_OK);
      EXPECT_EQ(pattern_->put_Interval(7), S_OK);
    }
    EXPECT_EQ(pattern_->put_RecurrenceType(olRecursDaily), S_OK);
    EXPECT_EQ(pattern_->put_RecurrenceType(row.type), S_OK);
    EXPECT_EQ(Value(pattern_, &Pattern::get_RecurrenceType), row.type);
    EXPECT_EQ(Value(pattern_, &Pattern::get_Interval), 1) << row.type;
    EXPECT_EQ(Value(pattern_, &Pattern::get_DayOfWeekMask), row.mask) << row.type;
    EXPECT_EQ(Value(pattern_, &Pattern::get_DayOfMonth), row.dayOfMonth) << row.type;
    EXPECT_EQ(Value(pattern_, &Pattern::get_Instance), row.instance) << row.type;
    EXPECT_EQ(Value(pattern_, &Pattern::get_MonthOfYear), row.month) << row.type;
  }
}

TEST_F(RecurrencePattern, TheSameTypeAgainKeepsItsProperties) {
  EXPECT_EQ(pattern_->put_DayOfWeekMask(42), S_OK);
  EXPECT_EQ(pattern_->put_RecurrenceType(olRecursWeekly), S_OK);
  EXPECT_EQ(Value(pattern_, &Pattern::get_DayOfWeekMask), 42);
}

TEST_F(RecurrencePattern, AnotherTypeKeepsTheEnd) {
  EXPECT_EQ(pattern_->put_Occurrences(4), S_OK);
  EXPECT_EQ(pattern_->put_RecurrenceType(olRecursDaily), S_OK);
  EXPECT_EQ(Value(pattern_, &Pattern::get_Occurrences), 4);
}

TEST_F(RecurrencePattern, RefusesUnknownTypes) {
  for (const LONG type : {-1, 4, 7, 100}) {
    EXPECT_EQ(pattern_->put_RecurrenceType(type), E_INVALIDARG) << type;
  }
  EXPECT_EQ(Value(pattern_, &Pattern::get_RecurrenceType), olRecursWeekly);
}

TEST_F(RecurrencePattern, RefusesWhatATypeDoesNotHave) {
  for (const TypeCase& row : kTypes) {
    EXPECT_EQ(pattern_->put_RecurrenceType(row.type), S_OK);
    const bool yearly = row.type == olRecursYearly || row.type == olRecursYearNth;
    const auto expected = [](bool has) { return has ? S_OK : E_INVALIDARG; };
    EXPECT_EQ(pattern_->put_Interval(2), expected(!yearly)) << row.type;
    EXPECT_EQ(pattern_->put_Interval(1), S_OK) << row.type;
    EXPECT_EQ(pattern_->put_DayOfWeekMask(3), expected(row.mask != 0)) << row.type;
    EXPECT_EQ(pattern_->put_DayOfMonth(3), expected(row.dayOfMonth != 0)) << row.type;
    EXPECT_EQ(pattern_->put_Instance(3), expected(row.instance != 0)) << row.type;
    EXPECT_EQ(pattern_->put_MonthOfYear(3), expected(row.month != 0)) << row.type;
  }
}

TEST_F(RecurrencePattern, RefusesValuesOutOfRangeAndKeepsWhatItHad) {
  EXPECT_EQ(pattern_->put_RecurrenceType(olRecursYearly), S_OK);
  for (const LONG value : {0, -1, 13}) EXPECT_EQ(pattern_->put_MonthOfYear(value), E_INVALIDARG);
  for (const LONG value : {0, -1, 32}) EXPECT_EQ(pattern_->put_DayOfMonth(value), E_INVALIDARG);
  EXPECT_EQ(Value(pattern_, &Pattern::get_MonthOfYear), 3);
  EXPECT_EQ(Value(pattern_, &Pattern::get_DayOfMonth), 2);
  EXPECT_EQ(pattern_->put_RecurrenceType(olRecursMonthNth), S_OK);
  for (const LONG value : {0, -1, 6}) EXPECT_EQ(pattern_->put_Instance(value), E_INVALIDARG);
  for (const LONG value : {0, -1, 128}) EXPECT_EQ(pattern_->put_DayOfWeekMask(value), E_INVALIDARG);
  for (const LONG value : {0, -1, 1000}) EXPECT_EQ(pattern_->put_Interval(value), E_INVALIDARG);
  EXPECT_EQ(pattern_->put_Interval(999), S_OK);
  for (const LONG value : {0, -1}) EXPECT_EQ(pattern_->put_Occurrences(value), E_INVALIDARG);
  for (const DATE date : {kNoDate, 0.0, 1.0, 401769.0}) {
    EXPECT_EQ(pattern_->put_PatternEndDate(date), E_INVALIDARG) << date;
    EXPECT_EQ(pattern_->put_PatternStartDate(date), E_INVALIDARG) << date;
  }
  EXPECT_EQ(Value(pattern_, &Pattern::get_NoEndDate), VARIANT_TRUE);
}

TEST_F(RecurrencePattern, KeepsEveryTypeThroughAStore) {
  for (const TypeCase& row : kTypes) {
    EXPECT_EQ(pattern_->put_RecurrenceType(row.type), S_OK);
    if (row.mask != 0) {
      EXPECT_EQ(pattern_->put_DayOfWeekMask(62), S_OK);
    }
    if (row.dayOfMonth != 0) {
      EXPECT_EQ(pattern_->put_DayOfMonth(31), S_OK);
    }
    if (row.instance != 0) {
      EXPECT_EQ(pattern_->put_Instance(5), S_OK);
    }
    if (row.month != 0) {
      EXPECT_EQ(pattern_->put_MonthOfYear(2), S_OK);
    }
    EXPECT_EQ(item_->Save(), S_OK) << row.type;
    const ComPtr<Pattern> read = Stored();
    for (const auto get :
         {&Pattern::get_RecurrenceType, &Pattern::get_Interval, &Pattern::get_DayOfWeekMask,
          &Pattern::get_DayOfMonth, &Pattern::get_Instance, &Pattern::get_MonthOfYear}) {
      EXPECT_EQ(Value(read, get), Value(pattern_, get)) << row.type;
    }
  }
}

TEST_F(RecurrencePattern, OccurrencesGiveTheEndDateAtTheSave) {
  EXPECT_EQ(pattern_->put_Occurrences(4), S_OK);
  EXPECT_EQ(Value(pattern_, &Pattern::get_NoEndDate), VARIANT_FALSE);
  EXPECT_EQ(Value(pattern_, &Pattern::get_PatternEndDate), kNoDate);
  EXPECT_EQ(item_->Save(), S_OK);
  for (const auto& pattern : {pattern_, Stored()}) {
    EXPECT_EQ(Value(pattern, &Pattern::get_NoEndDate), VARIANT_FALSE);
    EXPECT_EQ(Value(pattern, &Pattern::get_Occurrences), 4);
    EXPECT_EQ(Value(pattern, &Pattern::get_PatternEndDate), Day(2026, 3, 23));
  }
}

TEST_F(RecurrencePattern, TheEndDateGivesTheOccurrencesAndBecomesTheLastOnesDay) {
  EXPECT_EQ(pattern_->put_PatternEndDate(At(2026, 3, 29, 13)), S_OK);
  EXPECT_EQ(Value(pattern_, &Pattern::get_PatternEndDate), Day(2026, 3, 29));
  EXPECT_EQ(Value(pattern_, &Pattern::get_Occurrences), 0);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(Value(Stored(), &Pattern::get_Occurrences), 4);
  EXPECT_EQ(Value(Stored(), &Pattern::get_PatternEndDate), Day(2026, 3, 23));
}

TEST_F(RecurrencePattern, TheEndThatIsSetLastCounts) {
  EXPECT_EQ(pattern_->put_Occurrences(10), S_OK);
  EXPECT_EQ(pattern_->put_PatternEndDate(Day(2026, 3, 9)), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(Value(Stored(), &Pattern::get_Occurrences), 2);
  EXPECT_EQ(pattern_->put_Occurrences(3), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(Value(Stored(), &Pattern::get_PatternEndDate), Day(2026, 3, 16));
}

TEST_F(RecurrencePattern, KeepsItsOccurrencesWhenItsStartMoves) {
  EXPECT_EQ(pattern_->put_PatternEndDate(Day(2026, 3, 16)), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(item_->put_Start(At(2026, 3, 9, 10)), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(Value(Stored(), &Pattern::get_Occurrences), 3);
  EXPECT_EQ(Value(Stored(), &Pattern::get_PatternEndDate), Day(2026, 3, 23));
}

TEST_F(RecurrencePattern, NoEndDateForgetsTheEnd) {
  EXPECT_EQ(pattern_->put_Occurrences(4), S_OK);
  EXPECT_EQ(pattern_->put_NoEndDate(VARIANT_TRUE), S_OK);
  EXPECT_EQ(Value(pattern_, &Pattern::get_Occurrences), 0);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(Value(Stored(), &Pattern::get_NoEndDate), VARIANT_TRUE);
  EXPECT_EQ(Value(Stored(), &Pattern::get_PatternEndDate), kNoDate);
}

TEST_F(RecurrencePattern, AnEndThatWasNeverSetCannotBeSaved) {
  EXPECT_EQ(pattern_->put_NoEndDate(VARIANT_FALSE), S_OK);
  EXPECT_EQ(item_->Save(), E_INVALIDARG);
  EXPECT_EQ(Value(item_, &IAppointment::get_Oid), 0);
  EXPECT_EQ(pattern_->put_Occurrences(1), S_OK);
  EXPECT_EQ(pattern_->put_NoEndDate(VARIANT_FALSE), S_OK);  // changes nothing
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(Value(Stored(), &Pattern::get_Occurrences), 1);
}

TEST_F(RecurrencePattern, WithoutAnyOccurrenceCannotBeSaved) {
  EXPECT_EQ(pattern_->put_DayOfWeekMask(4), S_OK);
  EXPECT_EQ(pattern_->put_PatternEndDate(Day(2026, 3, 2)), S_OK);
  EXPECT_EQ(item_->Save(), E_INVALIDARG);
  EXPECT_EQ(pattern_->put_PatternEndDate(Day(2026, 3, 3)), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(pattern_->put_PatternEndDate(Day(2025, 1, 1)), S_OK);
  EXPECT_EQ(item_->Save(), E_INVALIDARG);
  EXPECT_EQ(Value(Stored(), &Pattern::get_PatternEndDate), Day(2026, 3, 3));
}

TEST_F(RecurrencePattern, EndsWithTheLastDayThereIs) {
  EXPECT_EQ(item_->put_Start(At(2999, 12, 30, 10)), S_OK);
  EXPECT_EQ(pattern_->put_RecurrenceType(olRecursDaily), S_OK);
  EXPECT_EQ(pattern_->put_Occurrences(0x7FFFFFFF), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(Value(pattern_, &Pattern::get_Occurrences), 2);
  EXPECT_EQ(Value(pattern_, &Pattern::get_PatternEndDate), Day(2999, 12, 31));
}

TEST_F(RecurrencePattern, MovesItsItem) {
  EXPECT_EQ(pattern_->put_PatternStartDate(At(2026, 5, 4, 23)), S_OK);
  EXPECT_EQ(Value(item_, &IAppointment::get_Start), At(2026, 5, 4, 10));
  EXPECT_EQ(Value(item_, &IAppointment::get_End), At(2026, 5, 4, 11));
}

TEST_F(RecurrencePattern, MovesWithItsItem) {
  EXPECT_EQ(item_->put_Start(At(2026, 5, 4, 8, 0, 1)), S_OK);
  EXPECT_EQ(Value(pattern_, &Pattern::get_PatternStartDate), Day(2026, 5, 4));
}

TEST_F(RecurrencePattern, BeginsTodayWhileItsItemHasNoStart) {
  handheld_.FreezeClock({2026, 3, 0, 5, 12, 0, 0, 0});
  const ComPtr<IAppointment> item = NewAppointment(app_);
  EXPECT_EQ(item->put_Start(kNoDate), S_OK);
  const ComPtr<Pattern> pattern = PatternOf(item);
  EXPECT_EQ(Value(pattern, &Pattern::get_PatternStartDate), Day(2026, 3, 5));
  EXPECT_EQ(pattern->put_PatternStartDate(Day(2026, 3, 6)), S_OK);
  EXPECT_EQ(pattern->put_RecurrenceType(olRecursDaily), S_OK);
  EXPECT_EQ(item->Save(), S_OK);
  EXPECT_EQ(Value(item, &IAppointment::get_Start), kNoDate);
  const ComPtr<Pattern> read = PatternOf(Reread(item));
  EXPECT_EQ(Value(read, &Pattern::get_PatternStartDate), Day(2026, 3, 6));
  EXPECT_FALSE(OccurrenceAt(read, Day(2026, 3, 5)));
  EXPECT_TRUE(OccurrenceAt(read, Day(2026, 3, 6)));
}

TEST_F(RecurrencePattern, GoesOnFromWhereItWasWhenItsItemLosesItsStart) {
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(item_->put_Start(kNoDate), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(Value(Stored(), &Pattern::get_PatternStartDate), Day(2026, 3, 2));
}

TEST_F(RecurrencePattern, ClearingMakesTheItemSingleAtTheSave) {
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(item_->ClearRecurrencePattern(), S_OK);
  EXPECT_EQ(Value(item_, &IAppointment::get_IsRecurring), VARIANT_TRUE);
  EXPECT_EQ(Value(Reread(item_), &IAppointment::get_IsRecurring), VARIANT_TRUE);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(Value(item_, &IAppointment::get_IsRecurring), VARIANT_FALSE);
  EXPECT_EQ(Value(Reread(item_), &IAppointment::get_IsRecurring), VARIANT_FALSE);
  EXPECT_EQ(item_->ClearRecurrencePattern(), S_OK);  // nothing to clear
}

TEST_F(RecurrencePattern, IsFreshAfterItWasCleared) {
  EXPECT_EQ(pattern_->put_RecurrenceType(olRecursDaily), S_OK);
  EXPECT_EQ(pattern_->put_Occurrences(5), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(item_->ClearRecurrencePattern(), S_OK);
  const ComPtr<Pattern> fresh = PatternOf(item_);
  EXPECT_EQ(Value(fresh, &Pattern::get_RecurrenceType), olRecursWeekly);
  EXPECT_EQ(Value(fresh, &Pattern::get_NoEndDate), VARIANT_TRUE);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(Value(Stored(), &Pattern::get_RecurrenceType), olRecursWeekly);
}

TEST_F(RecurrencePattern, FailsOnceItWasCleared) {
  EXPECT_EQ(item_->ClearRecurrencePattern(), S_OK);
  LONG number = 5;
  EXPECT_EQ(pattern_->get_Interval(&number), E_FAIL);
  EXPECT_EQ(number, 0);
  EXPECT_EQ(pattern_->put_Interval(2), E_FAIL);
  EXPECT_EQ(pattern_->put_PatternStartDate(Day(2026, 5, 4)), E_FAIL);
  IExceptions* exceptions = nullptr;
  EXPECT_EQ(pattern_->get_Exceptions(&exceptions), E_FAIL);
  IAppointment* occurrence = nullptr;
  EXPECT_EQ(pattern_->GetOccurrence(At(2026, 3, 2, 10), &occurrence), E_FAIL);
  PatternOf(item_);
  EXPECT_EQ(pattern_->put_Interval(2), E_FAIL);
  EXPECT_EQ(Value(item_, &IAppointment::get_Start), At(2026, 3, 2, 10));
}

TEST_F(RecurrencePattern, IsNotMadeWithoutAClock) {
  const ComPtr<IAppointment> item = Single();
  const auto plan = FaultPlan::FailCalls("GetLocalTime", ERROR_NOT_READY);
  IRecurrencePattern* pattern = reinterpret_cast<IRecurrencePattern*>(1);
  EXPECT_EQ(item->GetRecurrencePattern(&pattern), E_FAIL);
  EXPECT_EQ(pattern, nullptr);
}

TEST_F(RecurrencePattern, RefusesNullOutParameters) {
  EXPECT_EQ(pattern_->get_Interval(nullptr), E_POINTER);
  EXPECT_EQ(pattern_->get_RecurrenceType(nullptr), E_POINTER);
  EXPECT_EQ(pattern_->get_PatternEndDate(nullptr), E_POINTER);
  EXPECT_EQ(pattern_->get_Exceptions(nullptr), E_POINTER);
  EXPECT_EQ(pattern_->GetOccurrence(At(2026, 3, 2, 10), nullptr), E_POINTER);
}

}  // namespace
}  // namespace ce::host::testing
