#include "handheld/store/store_check.h"
#include "tests/handheld/outlook/calendar_support.h"

namespace ce::host::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Occurrences : public CalendarTest {
 protected:
  // Mondays from 2026-03-02 on, 10:00 to 11:00, without an end.
  void SetUp() override {
    item_ = WeeklySeries();
    pattern_ = PatternOf(item_);
    oid_ = Value(item_, &IAppointment::get_Oid);
  }
  void TearDown() override {
    EXPECT_EQ(CheckStore(*handheld_), std::vector<std::string>{});
    pattern_.reset();
    item_.reset();
    CalendarTest::TearDown();
  }
  ComPtr<IAppointment> Monday(unsigned day) { return OccurrenceAt(pattern_, At(2026, 3, day, 10)); }
  void Change(unsigned day, std::u16string_view subject) {
    const ComPtr<IAppointment> occurrence = Monday(day);
    ASSERT_TRUE(occurrence) << day;
    EXPECT_EQ(PutText(occurrence, &IAppointment::put_Subject, subject), S_OK);
    EXPECT_EQ(occurrence->Save(), S_OK);
  }
  void Drop(unsigned day) {
    const ComPtr<IAppointment> occurrence = Monday(day);
    ASSERT_TRUE(occurrence) << day;
    EXPECT_EQ(occurrence->Delete(), S_OK);
  }

  ComPtr<IAppointment> item_;
  ComPtr<IRecurrencePattern> pattern_;
  LONG oid_ = 0;
};

TEST_F(Occurrences, AreAppointmentsOfTheirDayWithTheSeriesFields) {
  const BYTE ink[] = {7};
  EXPECT_EQ(PutText(item_, &IAppointment::put_Location, u"Room 1"), S_OK);
  EXPECT_EQ(PutText(item_, &IAppointment::put_Body, u"Agenda"), S_OK);
  EXPECT_EQ(item_->put_BusyStatus(olFree), S_OK);
  EXPECT_EQ(item_->put_BodyInk(1, ink), S_OK);
  EXPECT_EQ(item_->put_End(At(2026, 3, 3, 1, 0, 30)), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);

  const ComPtr<IAppointment> occurrence = Monday(16);
  ASSERT_TRUE(occurrence);
  EXPECT_EQ(Text(occurrence, &IAppointment::get_Subject), u"Meeting");
  EXPECT_EQ(Text(occurrence, &IAppointment::get_Location), u"Room 1");
  EXPECT_EQ(Text(occurrence, &IAppointment::get_Body), u"Agenda");
  EXPECT_EQ(Value(occurrence, &IAppointment::get_BusyStatus), olFree);
  EXPECT_EQ(Value(occurrence, &IAppointment::get_Start), At(2026, 3, 16, 10));
  EXPECT_EQ(Value(occurrence, &IAppointment::get_End), At(2026, 3, 17, 1, 0, 30));
  DWORD bytes = 0;
  const BYTE* block = nullptr;
  EXPECT_EQ(occurrence->get_BodyInk(&bytes, &block), S_OK);
  EXPECT_EQ(bytes, 1u);
}

TEST_F(Occurrences, HaveNeitherOidNorRecurrence) {
  const ComPtr<IAppointment> occurrence = Monday(2);
  ASSERT_TRUE(occurrence);
  EXPECT_EQ(Value(occurrence, &IAppointment::get_Oid), 0);
  EXPECT_EQ(Value(occurrence, &IAppointment::get_IsRecurring), VARIANT_FALSE);
  IRecurrencePattern* pattern = reinterpret_cast<IRecurrencePattern*>(1);
  EXPECT_EQ(occurrence->GetRecurrencePattern(&pattern), E_NOTIMPL);
  EXPECT_EQ(pattern, nullptr);
  EXPECT_EQ(occurrence->ClearRecurrencePattern(), E_NOTIMPL);
}

TEST_F(Occurrences, AreFoundByDayAndTimeToTheSecond) {
  EXPECT_TRUE(OccurrenceAt(pattern_, At(2026, 3, 9, 10) + 0.3 / 86400));
  EXPECT_FALSE(OccurrenceAt(pattern_, At(2026, 3, 9, 10, 0, 1)));
  EXPECT_FALSE(OccurrenceAt(pattern_, Day(2026, 3, 9)));
  EXPECT_FALSE(OccurrenceAt(pattern_, At(2026, 3, 10, 10)));
  EXPECT_FALSE(OccurrenceAt(pattern_, At(2026, 2, 23, 10)));
  for (const DATE date : {kNoDate, 0.0, -1.0, 1e9}) EXPECT_FALSE(OccurrenceAt(pattern_, date));
}

TEST_F(Occurrences, AreFoundInEveryCentury) {
  EXPECT_TRUE(OccurrenceAt(pattern_, At(2040, 3, 5, 10)));
  EXPECT_TRUE(OccurrenceAt(pattern_, At(2999, 12, 30, 10)));
  EXPECT_FALSE(OccurrenceAt(pattern_, At(2999, 12, 31, 10)));
}

TEST_F(Occurrences, EndWithTheSeries) {
  EXPECT_EQ(pattern_->put_Occurrences(2), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_TRUE(Monday(9));
  EXPECT_FALSE(Monday(16));
}

TEST_F(Occurrences, BelongToTheItemAsItWasSavedLast) {
  EXPECT_EQ(item_->put_Start(At(2026, 3, 3, 12)), S_OK);
  EXPECT_EQ(pattern_->put_RecurrenceType(olRecursDaily), S_OK);
  EXPECT_TRUE(Monday(9));
  EXPECT_FALSE(OccurrenceAt(pattern_, At(2026, 3, 10, 12)));
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_TRUE(OccurrenceAt(pattern_, At(2026, 3, 10, 12)));
}

TEST_F(Occurrences, OfAnItemThatWasNeverSavedDoNotExist) {
  const ComPtr<IRecurrencePattern> pattern = PatternOf(Single());
  EXPECT_FALSE(OccurrenceAt(pattern, At(2026, 3, 2, 10)));
  EXPECT_THAT(ExceptionsOf(pattern), IsEmpty());
}

TEST_F(Occurrences, BecomeExceptionsInTheOrderOfTheirDays) {
  Change(23, u"Fourth");
  Drop(9);
  Change(2, u"First");
  EXPECT_THAT(StoredExceptions(oid_),
              ElementsAre("2026-03-02 First", "-2026-03-09", "2026-03-23 Fourth"));
  EXPECT_THAT(ExceptionsOf(pattern_),
              ElementsAre("2026-03-02 First", "-2026-03-09", "2026-03-23 Fourth"));
  EXPECT_EQ(Text(Reread(item_), &IAppointment::get_Subject), u"Meeting");
}

TEST_F(Occurrences, KeepEveryFieldOfTheirOwn) {
  const ComPtr<IAppointment> occurrence = Monday(9);
  ASSERT_TRUE(occurrence);
  const BYTE ink[] = {1, 2, 3};
  EXPECT_EQ(PutText(occurrence, &IAppointment::put_Subject, u"Special"), S_OK);
  EXPECT_EQ(PutText(occurrence, &IAppointment::put_Location, u"Hall"), S_OK);
  EXPECT_EQ(PutText(occurrence, &IAppointment::put_Body, u"Other"), S_OK);
  EXPECT_EQ(occurrence->put_AllDayEvent(VARIANT_TRUE), S_OK);
  EXPECT_EQ(occurrence->put_BusyStatus(olOutOfOffice), S_OK);
  EXPECT_EQ(occurrence->put_Start(At(2026, 3, 11, 15)), S_OK);
  EXPECT_EQ(occurrence->put_End(At(2026, 3, 11, 16, 30)), S_OK);
  EXPECT_EQ(occurrence->put_BodyInk(3, ink), S_OK);
  EXPECT_EQ(occurrence->Save(), S_OK);

  ComPtr<IExceptions> exceptions;
  const ComPtr<IAppointment> series = Reread(item_);
  ASSERT_EQ(PatternOf(series)->get_Exceptions(exceptions.put()), S_OK);
  ComPtr<IException> exception;
  ASSERT_EQ(exceptions->Item(1, exception.put()), S_OK);
  EXPECT_EQ(Value(exception, &IException::get_OriginalDate), At(2026, 3, 9, 10));
  EXPECT_EQ(Value(exception, &IException::get_Deleted), VARIANT_FALSE);
  ComPtr<IAppointment> read;
  ASSERT_EQ(exception->get_AppointmentItem(read.put()), S_OK);
  EXPECT_EQ(Text(read, &IAppointment::get_Subject), u"Special");
  EXPECT_EQ(Text(read, &IAppointment::get_Location), u"Hall");
  EXPECT_EQ(Text(read, &IAppointment::get_Body), u"Other");
  EXPECT_EQ(Value(read, &IAppointment::get_AllDayEvent), VARIANT_TRUE);
  EXPECT_EQ(Value(read, &IAppointment::get_BusyStatus), olOutOfOffice);
  EXPECT_EQ(Value(read, &IAppointment::get_Start), At(2026, 3, 11, 15));
  EXPECT_EQ(Value(read, &IAppointment::get_End), At(2026, 3, 11, 16, 30));
  EXPECT_EQ(Value(read, &IAppointment::get_Duration), 90);
  EXPECT_EQ(Value(read, &IAppointment::get_Oid), 0);
  DWORD bytes = 0;
  const BYTE* block = nullptr;
  EXPECT_EQ(read->get_BodyInk(&bytes, &block), S_OK);
  EXPECT_EQ(std::vector<BYTE>(block, block + bytes), std::vector<BYTE>({1, 2, 3}));
}

TEST_F(Occurrences, ChangedOnesAreFoundByTheirOriginalTimeAndCanBeChangedAgain) {
  Change(9, u"Once");
  const ComPtr<IAppointment> again = Monday(9);
  ASSERT_TRUE(again);
  EXPECT_EQ(Text(again, &IAppointment::get_Subject), u"Once");
  EXPECT_EQ(again->put_Start(At(2026, 3, 10, 8)), S_OK);
  EXPECT_EQ(again->Save(), S_OK);
  EXPECT_FALSE(OccurrenceAt(pattern_, At(2026, 3, 10, 8)));
  ASSERT_TRUE(Monday(9));
  EXPECT_EQ(Value(Monday(9), &IAppointment::get_Start), At(2026, 3, 10, 8));
  Drop(9);
  EXPECT_THAT(StoredExceptions(oid_), ElementsAre("-2026-03-09"));
}

TEST_F(Occurrences, DeletedOnesAreGone) {
  const ComPtr<IAppointment> held = Monday(9);
  ASSERT_TRUE(held);
  Drop(9);
  EXPECT_FALSE(Monday(9));
  EXPECT_EQ(held->Save(), E_INVALIDARG);
  EXPECT_EQ(held->Delete(), S_OK);
  EXPECT_THAT(StoredExceptions(oid_), ElementsAre("-2026-03-09"));
}

TEST_F(Occurrences, AnExceptionsItemCanBeSavedAndDeleted) {
  Change(9, u"Once");
  ComPtr<IExceptions> exceptions;
  ASSERT_EQ(pattern_->get_Exceptions(exceptions.put()), S_OK);
  ComPtr<IException> exception;
  ASSERT_EQ(exceptions->Item(1, exception.put()), S_OK);
  ComPtr<IAppointment> item;
  ASSERT_EQ(exception->get_AppointmentItem(item.put()), S_OK);
  EXPECT_EQ(PutText(item, &IAppointment::put_Subject, u"Twice"), S_OK);
  EXPECT_EQ(item->Save(), S_OK);
  EXPECT_THAT(StoredExceptions(oid_), ElementsAre("2026-03-09 Twice"));
  EXPECT_EQ(item->Delete(), S_OK);
  EXPECT_THAT(StoredExceptions(oid_), ElementsAre("-2026-03-09"));
}

TEST_F(Occurrences, CannotBeWrittenOnceTheSeriesHasGone) {
  const ComPtr<IAppointment> occurrence = Monday(9);
  ASSERT_TRUE(occurrence);
  EXPECT_EQ(item_->Delete(), S_OK);
  EXPECT_EQ(occurrence->Save(), E_INVALIDARG);
  EXPECT_EQ(occurrence->Delete(), E_INVALIDARG);
  EXPECT_EQ(QuerySql(*handheld_, "SELECT count(*) FROM exceptions"), "0");
  EXPECT_FALSE(Monday(16));
}

TEST_F(Occurrences, CannotBeWrittenOnceTheSeriesHasNoSuchDay) {
  const ComPtr<IAppointment> occurrence = Monday(9);
  ASSERT_TRUE(occurrence);
  EXPECT_EQ(pattern_->put_DayOfWeekMask(4), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(occurrence->Save(), E_INVALIDARG);
  EXPECT_EQ(occurrence->Delete(), E_INVALIDARG);
  EXPECT_EQ(item_->ClearRecurrencePattern(), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(occurrence->Save(), E_INVALIDARG);
  EXPECT_EQ(QuerySql(*handheld_, "SELECT count(*) FROM exceptions"), "0");
}

TEST_F(Occurrences, ExceptionsGoWithTheirSeries) {
  Change(9, u"Once");
  Drop(16);
  EXPECT_EQ(QuerySql(*handheld_, "SELECT count(*) FROM exceptions"), "2");
  EXPECT_EQ(item_->Delete(), S_OK);
  EXPECT_EQ(QuerySql(*handheld_, "SELECT count(*) FROM exceptions"), "0");
}

TEST_F(Occurrences, ExceptionsGoWithAFolderThatIsEmptied) {
  Drop(9);
  Single()->Save();
  const ComPtr<IPOutlookItemCollection> items = Items(app_, olFolderCalendar);
  ASSERT_EQ(CountOf(items), 2);
  EXPECT_EQ(items->Remove(2), S_OK);
  EXPECT_EQ(items->Remove(1), S_OK);
  EXPECT_EQ(QuerySql(*handheld_, "SELECT count(*) FROM exceptions"), "0");
}

TEST_F(Occurrences, ClearingThePatternDropsTheExceptionsAtTheSave) {
  Change(9, u"Once");
  EXPECT_EQ(item_->ClearRecurrencePattern(), S_OK);
  EXPECT_THAT(StoredExceptions(oid_), ElementsAre("2026-03-09 Once"));
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_EQ(QuerySql(*handheld_, "SELECT count(*) FROM exceptions"), "0");
}

TEST_F(Occurrences, ClearingThePatternDropsTheExceptionsAlsoWhenANewOneFollowsAtOnce) {
  Change(9, u"Once");
  EXPECT_EQ(item_->ClearRecurrencePattern(), S_OK);
  PatternOf(item_);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_THAT(StoredExceptions(oid_), IsEmpty());
}

TEST_F(Occurrences, ASaveKeepsTheExceptionsOfDaysThatStay) {
  Change(9, u"Once");
  Drop(16);
  EXPECT_EQ(pattern_->put_Interval(2), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_THAT(StoredExceptions(oid_), ElementsAre("-2026-03-16"));
  EXPECT_EQ(PutText(item_, &IAppointment::put_Subject, u"Other"), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_THAT(StoredExceptions(oid_), ElementsAre("-2026-03-16"));
}

TEST_F(Occurrences, ASaveDropsTheExceptionsBeforeALaterStart) {
  Change(2, u"First");
  Change(30, u"Last");
  EXPECT_EQ(item_->put_Start(At(2026, 3, 9, 10)), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_THAT(StoredExceptions(oid_), ElementsAre("2026-03-30 Last"));
  EXPECT_EQ(pattern_->put_Occurrences(3), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  EXPECT_THAT(StoredExceptions(oid_), IsEmpty());
}

TEST_F(Occurrences, OriginalDatesFollowTheTimeOfDay) {
  Change(9, u"Once");
  EXPECT_EQ(item_->put_Start(At(2026, 3, 2, 14, 30)), S_OK);
  EXPECT_EQ(item_->Save(), S_OK);
  ComPtr<IExceptions> exceptions;
  ASSERT_EQ(pattern_->get_Exceptions(exceptions.put()), S_OK);
  ComPtr<IException> exception;
  ASSERT_EQ(exceptions->Item(1, exception.put()), S_OK);
  EXPECT_EQ(Value(exception, &IException::get_OriginalDate), At(2026, 3, 9, 14, 30));
  const ComPtr<IAppointment> occurrence = OccurrenceAt(pattern_, At(2026, 3, 9, 14, 30));
  ASSERT_TRUE(occurrence);
  EXPECT_EQ(Text(occurrence, &IAppointment::get_Subject), u"Once");
}

TEST_F(Occurrences, ReplacingASeriesStartsWithoutExceptions) {
  Change(9, u"Once");
  // As a desktop's change is applied.
  const ComPtr<IAppointment> item = AppointmentByOid(app_, oid_);
  ComPtr<IRecurrencePattern> pattern = PatternOf(item);
  EXPECT_EQ(item->put_Start(At(2026, 3, 3, 9)), S_OK);
  EXPECT_EQ(item->put_End(At(2026, 3, 3, 10)), S_OK);
  EXPECT_EQ(ExceptionsOf(pattern).size(), 1u);
  EXPECT_EQ(item->ClearRecurrencePattern(), S_OK);
  EXPECT_EQ(item->Save(), S_OK);
  pattern = PatternOf(item);
  EXPECT_EQ(pattern->put_RecurrenceType(olRecursWeekly), S_OK);
  EXPECT_EQ(pattern->put_DayOfWeekMask(12), S_OK);
  EXPECT_EQ(pattern->put_Interval(1), S_OK);
  EXPECT_EQ(pattern->put_NoEndDate(VARIANT_FALSE), S_OK);
  EXPECT_EQ(pattern->put_Occurrences(4), S_OK);
  EXPECT_EQ(item->Save(), S_OK);
  pattern = PatternOf(item);
  const ComPtr<IAppointment> occurrence = OccurrenceAt(pattern, At(2026, 3, 4, 9));
  ASSERT_TRUE(occurrence);
  EXPECT_EQ(occurrence->Delete(), S_OK);
  EXPECT_FALSE(OccurrenceAt(pattern, At(2026, 3, 5, 9)));
  EXPECT_THAT(StoredExceptions(oid_), ElementsAre("-2026-03-04"));
  EXPECT_EQ(Value(PatternOf(Reread(item)), &IRecurrencePattern::get_PatternEndDate),
            Day(2026, 3, 11));
}

TEST_F(Occurrences, ExceptionsAreOneBasedAndASnapshot) {
  Change(9, u"Once");
  ComPtr<IExceptions> exceptions;
  ASSERT_EQ(pattern_->get_Exceptions(exceptions.put()), S_OK);
  Drop(16);
  EXPECT_EQ(Value(exceptions, &IExceptions::get_Count), 1);
  for (const INT index : {0, -1, 2}) {
    IException* exception = reinterpret_cast<IException*>(1);
    EXPECT_EQ(exceptions->Item(index, &exception), E_INVALIDARG) << index;
    EXPECT_EQ(exception, nullptr);
  }
  EXPECT_EQ(exceptions->Item(1, nullptr), E_POINTER);
  EXPECT_EQ(exceptions->get_Count(nullptr), E_POINTER);
  ComPtr<IException> exception;
  ASSERT_EQ(exceptions->Item(1, exception.put()), S_OK);
  exceptions.reset();  // an exception lives on its own
  EXPECT_EQ(exception->get_AppointmentItem(nullptr), E_POINTER);
  EXPECT_EQ(exception->get_Deleted(nullptr), E_POINTER);
  EXPECT_EQ(Value(exception, &IException::get_Deleted), VARIANT_FALSE);
}

TEST_F(Occurrences, ExceptionsAreReadInOneStatement) {
  for (unsigned day = 2; day <= 30; day += 7) Change(day, u"Changed");
  const ComPtr<IAppointment> item = Reread(item_);
  const ComPtr<IRecurrencePattern> pattern = PatternOf(item);
  const auto plan = FaultPlan::FailNthCall("sqlite3_step:read", FaultPlan::kNever, 0);
  EXPECT_EQ(ExceptionsOf(pattern).size(), 5u);
  EXPECT_EQ(plan.calls(), 6u);  // a row each, and the end
}

TEST_F(Occurrences, AreWrittenInOneDurableStep) {
  const ComPtr<IAppointment> occurrence = Monday(9);
  ASSERT_TRUE(occurrence);
  {
    const auto plan = FaultPlan::FailCalls("sqlite3_step:commit", ERROR_DISK_FULL);
    EXPECT_TRUE(Failed(occurrence->Save()));
    EXPECT_TRUE(Failed(occurrence->Delete()));
  }
  EXPECT_THAT(StoredExceptions(oid_), IsEmpty());
  const auto plan = FaultPlan::FailNthCall("sqlite3_step:commit", FaultPlan::kNever, 0);
  EXPECT_EQ(occurrence->Save(), S_OK);
  EXPECT_EQ(plan.calls(), 1u);
}

TEST_F(Occurrences, CannotBeReachedAfterLogoff) {
  const ComPtr<IAppointment> occurrence = Monday(9);
  ASSERT_TRUE(occurrence);
  EXPECT_EQ(app_->Logoff(), S_OK);
  EXPECT_EQ(occurrence->Save(), E_FAIL);
  EXPECT_EQ(occurrence->Delete(), E_FAIL);
  IExceptions* exceptions = nullptr;
  EXPECT_EQ(pattern_->get_Exceptions(&exceptions), E_FAIL);
  IAppointment* other = nullptr;
  EXPECT_EQ(pattern_->GetOccurrence(At(2026, 3, 9, 10), &other), E_FAIL);
}

}  // namespace
}  // namespace ce::host::testing
