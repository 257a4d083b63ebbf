#include <cmath>
#include <limits>

#include "tests/handheld/outlook/calendar_support.h"

namespace ce::host::testing {
namespace {

class AppointmentItem : public CalendarTest {
 protected:
  static void ExpectTimes(const ComPtr<IAppointment>& item, DATE start, DATE end, LONG duration) {
    EXPECT_EQ(Value(item, &IAppointment::get_Start), start);
    EXPECT_EQ(Value(item, &IAppointment::get_End), end);
    EXPECT_EQ(Value(item, &IAppointment::get_Duration), duration);
  }
};

TEST_F(AppointmentItem, StartsAtTheNextFullHourOfTheHandheldsClock) {
  handheld_.SetZone("Europe/Berlin");
  handheld_.FreezeClock({2026, 3, 0, 2, 22, 59, 59, 999});
  const ComPtr<IAppointment> item = NewAppointment(app_);
  ExpectTimes(item, At(2026, 3, 3, 0), At(2026, 3, 3, 1), 60);
  handheld_.FreezeClock({2026, 3, 0, 2, 23, 0, 0, 0});
  ExpectTimes(NewAppointment(app_), At(2026, 3, 3, 1), At(2026, 3, 3, 2), 60);
}

TEST_F(AppointmentItem, StartsWithTheDefaultsOfTheHandheld) {
  const ComPtr<IAppointment> item = NewAppointment(app_);
  EXPECT_EQ(Value(item, &IAppointment::get_AllDayEvent), VARIANT_FALSE);
  EXPECT_EQ(Value(item, &IAppointment::get_BusyStatus), olBusy);
  EXPECT_EQ(Value(item, &IAppointment::get_Sensitivity), olNormal);
  EXPECT_EQ(Value(item, &IAppointment::get_ReminderSet), VARIANT_TRUE);
  EXPECT_EQ(Value(item, &IAppointment::get_ReminderMinutesBeforeStart), 15);
  EXPECT_EQ(Value(item, &IAppointment::get_IsRecurring), VARIANT_FALSE);
  EXPECT_EQ(Value(item, &IAppointment::get_Oid), 0);
  for (const auto get : {&IAppointment::get_Subject, &IAppointment::get_Location,
                         &IAppointment::get_Categories, &IAppointment::get_Body}) {
    EXPECT_EQ(Text(item, get), u"");
  }
  DWORD bytes = 1;
  const BYTE* block = reinterpret_cast<const BYTE*>(1);
  EXPECT_EQ(item->get_BodyInk(&bytes, &block), E_NOTIMPL);
  EXPECT_EQ(bytes, 0u);
  EXPECT_EQ(block, nullptr);
}

TEST_F(AppointmentItem, TakesTheReminderOfTheHandheldsSettings) {
  handheld_->Set(setting::kReminderSet, DWORD{0});
  handheld_->Set(setting::kReminderMinutes, DWORD{30});
  const ComPtr<IAppointment> item = NewAppointment(LoggedOn());
  EXPECT_EQ(Value(item, &IAppointment::get_ReminderSet), VARIANT_FALSE);
  EXPECT_EQ(Value(item, &IAppointment::get_ReminderMinutesBeforeStart), 30);
}

TEST_F(AppointmentItem, KeepsEveryProperty) {
  const ComPtr<IAppointment> item = NewAppointment(app_);
  EXPECT_EQ(PutText(item, &IAppointment::put_Subject, u"Review \U0001F600"), S_OK);
  EXPECT_EQ(PutText(item, &IAppointment::put_Location, u"Caf\u00E9"), S_OK);
  EXPECT_EQ(PutText(item, &IAppointment::put_Categories, u"Business, Personal"), S_OK);
  EXPECT_EQ(PutText(item, &IAppointment::put_Body, u"one\r\ntwo"), S_OK);
  EXPECT_EQ(item->put_AllDayEvent(1), S_OK);
  EXPECT_EQ(item->put_BusyStatus(-7), S_OK);
  EXPECT_EQ(item->put_Sensitivity(olPrivate), S_OK);
  EXPECT_EQ(item->put_ReminderSet(VARIANT_FALSE), S_OK);
  EXPECT_EQ(item->put_ReminderMinutesBeforeStart(-20), S_OK);
  EXPECT_EQ(item->put_Start(At(2026, 3, 2, 10, 15, 1)), S_OK);
  EXPECT_EQ(item->put_End(At(2026, 3, 4, 9, 59, 59)), S_OK);
  const BYTE ink[] = {1, 2, 0, 3};
  EXPECT_EQ(item->put_BodyInk(4, ink), S_OK);
  EXPECT_EQ(item->Save(), S_OK);

  const ComPtr<IAppointment> read = Reread(item);
  EXPECT_EQ(Text(read, &IAppointment::get_Subject), u"Review \U0001F600");
  EXPECT_EQ(Text(read, &IAppointment::get_Location), u"Caf\u00E9");
  EXPECT_EQ(Text(read, &IAppointment::get_Categories), u"Business, Personal");
  EXPECT_EQ(Text(read, &IAppointment::get_Body), u"one\r\ntwo");
  EXPECT_EQ(Value(read, &IAppointment::get_AllDayEvent), VARIANT_TRUE);
  EXPECT_EQ(Value(read, &IAppointment::get_BusyStatus), -7);
  EXPECT_EQ(Value(read, &IAppointment::get_Sensitivity), olPrivate);
  EXPECT_EQ(Value(read, &IAppointment::get_ReminderSet), VARIANT_FALSE);
  EXPECT_EQ(Value(read, &IAppointment::get_ReminderMinutesBeforeStart), -20);
  ExpectTimes(read, At(2026, 3, 2, 10, 15, 1), At(2026, 3, 4, 9, 59, 59), 2 * 1440 - 16);
  DWORD bytes = 0;
  const BYTE* block = nullptr;
  EXPECT_EQ(read->get_BodyInk(&bytes, &block), S_OK);
  EXPECT_EQ(std::vector<BYTE>(block, block + bytes), std::vector<BYTE>({1, 2, 0, 3}));
  EXPECT_EQ(read->put_BodyInk(0, nullptr), S_OK);
  EXPECT_EQ(read->put_BodyInk(1, nullptr), E_INVALIDARG);
  EXPECT_EQ(read->get_BodyInk(&bytes, &block), E_NOTIMPL);
}

TEST_F(AppointmentItem, SettingTheStartMovesTheEndAndKeepsTheDuration) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->put_Start(At(2026, 12, 31, 23, 30)), S_OK);
  ExpectTimes(item, At(2026, 12, 31, 23, 30), At(2027, 1, 1, 0, 30), 60);
}

TEST_F(AppointmentItem, SettingTheStartKeepsTheSecondsBetweenThem) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->put_End(At(2026, 3, 2, 10, 30, 30)), S_OK);
  ExpectTimes(item, At(2026, 3, 2, 10), At(2026, 3, 2, 10, 30, 30), 30);
  EXPECT_EQ(item->put_Start(At(2026, 3, 2, 12)), S_OK);
  ExpectTimes(item, At(2026, 3, 2, 12), At(2026, 3, 2, 12, 30, 30), 30);
}

TEST_F(AppointmentItem, AnEndBeforeTheStartMovesTheStart) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->put_End(At(2026, 3, 1, 0, 15)), S_OK);
  ExpectTimes(item, At(2026, 2, 28, 23, 15), At(2026, 3, 1, 0, 15), 60);
}

TEST_F(AppointmentItem, AnyOtherEndSetsTheDuration) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->put_End(At(2026, 3, 2, 10)), S_OK);
  ExpectTimes(item, At(2026, 3, 2, 10), At(2026, 3, 2, 10), 0);
  EXPECT_EQ(item->put_End(At(2026, 3, 3, 12, 5)), S_OK);
  ExpectTimes(item, At(2026, 3, 2, 10), At(2026, 3, 3, 12, 5), 1440 + 125);
}

TEST_F(AppointmentItem, TheDurationMovesTheEnd) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->put_Duration(1440), S_OK);
  ExpectTimes(item, At(2026, 3, 2, 10), At(2026, 3, 3, 10), 1440);
  EXPECT_EQ(item->put_Duration(-1), E_INVALIDARG);
  EXPECT_EQ(item->put_Duration(std::numeric_limits<LONG>::max()), E_INVALIDARG);
  ExpectTimes(item, At(2026, 3, 2, 10), At(2026, 3, 3, 10), 1440);
}

TEST_F(AppointmentItem, TimesDoNotDriftThroughManyMoves) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->put_End(At(2026, 3, 2, 10, 20)), S_OK);
  for (int i = 0; i < 3000; ++i) {
    ASSERT_EQ(item->put_Start(At(2026 + i % 900, 1 + i % 12, 1 + i % 28, i % 24, i % 60, i % 59)),
              S_OK);
  }
  EXPECT_EQ(item->put_Start(At(2026, 3, 2, 10)), S_OK);
  ExpectTimes(item, At(2026, 3, 2, 10), At(2026, 3, 2, 10, 20), 20);
}

TEST_F(AppointmentItem, ANoDateStartIsKeptAndMovesNothing) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->put_Start(kNoDate), S_OK);
  ExpectTimes(item, kNoDate, At(2026, 3, 2, 11), 60);
  EXPECT_EQ(item->put_End(At(2026, 3, 2, 9)), S_OK);
  ExpectTimes(item, kNoDate, At(2026, 3, 2, 9), 60);
  EXPECT_EQ(item->put_Duration(30), S_OK);
  ExpectTimes(item, kNoDate, At(2026, 3, 2, 9), 30);
  EXPECT_EQ(item->put_Start(At(2026, 3, 2, 10)), S_OK);
  ExpectTimes(item, At(2026, 3, 2, 10), At(2026, 3, 2, 10, 30), 30);
}

TEST_F(AppointmentItem, ANoDateEndIsKeptAndMovesNothing) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->put_End(kNoDate), S_OK);
  ExpectTimes(item, At(2026, 3, 2, 10), kNoDate, 60);
  EXPECT_EQ(item->put_Start(At(2026, 3, 3, 10)), S_OK);
  EXPECT_EQ(item->put_Duration(30), S_OK);
  ExpectTimes(item, At(2026, 3, 3, 10), kNoDate, 30);
  EXPECT_EQ(item->Save(), S_OK);
  ExpectTimes(Reread(item), At(2026, 3, 3, 10), kNoDate, 30);
  EXPECT_EQ(item->put_End(At(2026, 3, 1, 8)), S_OK);
  ExpectTimes(item, At(2026, 3, 1, 7, 30), At(2026, 3, 1, 8), 30);
}

TEST_F(AppointmentItem, AllDayChangesNoTimes) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->put_AllDayEvent(VARIANT_TRUE), S_OK);
  ExpectTimes(item, At(2026, 3, 2, 10), At(2026, 3, 2, 11), 60);
}

TEST_F(AppointmentItem, RefusesDatesOutOfRangeAndKeepsWhatItHad) {
  const ComPtr<IAppointment> item = Single();
  for (const DATE date : {1.9, 0.0, -1.25, 401769.0, 401768.999999, 1e300, std::nan("")}) {
    EXPECT_EQ(item->put_Start(date), E_INVALIDARG) << date;
    EXPECT_EQ(item->put_End(date), E_INVALIDARG) << date;
  }
  // The other end would leave the range.
  EXPECT_EQ(item->put_Start(At(2999, 12, 31, 23, 30)), E_INVALIDARG);
  EXPECT_EQ(item->put_End(At(1900, 1, 1, 0, 30)), E_INVALIDARG);
  ExpectTimes(item, At(2026, 3, 2, 10), At(2026, 3, 2, 11), 60);
  EXPECT_EQ(item->put_Start(Day(1900, 1, 1)), S_OK);
  EXPECT_EQ(item->put_End(At(2999, 12, 31, 23, 59, 59)), S_OK);
}

TEST_F(AppointmentItem, TakesTimesToTheNearestSecond) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->put_Start(At(2026, 3, 2, 10) + 0.4 / 86400), S_OK);
  ExpectTimes(item, At(2026, 3, 2, 10), At(2026, 3, 2, 11), 60);
}

TEST(ItemDates, AreTheNumbersThatTheAutomationCallsGive) {
  for (const int second : {0, 1, 59, 3599, 43201, 61234, 86399}) {
    for (const WORD year : {WORD{1900}, WORD{2026}, WORD{2999}}) {
      SYSTEMTIME time{};
      time.wYear = year;
      time.wMonth = 12;
      time.wDay = 31;
      time.wHour = static_cast<WORD>(second / 3600);
      time.wMinute = static_cast<WORD>(second / 60 % 60);
      time.wSecond = static_cast<WORD>(second % 60);
      DATE date = 0;
      ASSERT_NE(SystemTimeToVariantTime(&time, &date), 0);
      EXPECT_EQ(At(year, 12, 31, 0, 0, second), date);
      DATE kept = 0;
      EXPECT_TRUE(TakeTime(kept, date));
      EXPECT_EQ(kept, date);
    }
  }
}

TEST_F(AppointmentItem, RefusesUnknownSensitivities) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->put_Sensitivity(3), S_OK);
  EXPECT_EQ(item->put_Sensitivity(-1), E_INVALIDARG);
  EXPECT_EQ(item->put_Sensitivity(4), E_INVALIDARG);
  EXPECT_EQ(Value(item, &IAppointment::get_Sensitivity), 3);
}

TEST_F(AppointmentItem, RefusesTooLongTextsAndKeepsWhatItHad) {
  const struct {
    HRESULT (IAppointment::*get)(BSTR*);
    HRESULT (IAppointment::*put)(BSTR);
    std::size_t longest;
  } rows[] = {{&IAppointment::get_Subject, &IAppointment::put_Subject, 4095},
              {&IAppointment::get_Location, &IAppointment::put_Location, 1023},
              {&IAppointment::get_Categories, &IAppointment::put_Categories, 1023},
              {&IAppointment::get_Body, &IAppointment::put_Body, 30 * 1024}};
  const ComPtr<IAppointment> item = Single();
  for (const auto& row : rows) {
    const std::u16string longest(row.longest, u'x');
    EXPECT_EQ(PutText(item, row.put, longest), S_OK) << row.longest;
    EXPECT_EQ(PutText(item, row.put, longest + u'x'), kTextTooLong) << row.longest;
    EXPECT_EQ(Text(item, row.get), longest) << row.longest;
    EXPECT_EQ((item.get()->*row.put)(nullptr), S_OK);
    EXPECT_EQ(Text(item, row.get), u"");
  }
}

TEST_F(AppointmentItem, TakesTheLengthsThatTheHandheldWasSetTo) {
  handheld_->Set(setting::kMaxSubject, DWORD{5000});
  handheld_->Set(setting::kMaxCalendarText, DWORD{2000});
  const ComPtr<IAppointment> item = NewAppointment(LoggedOn());
  EXPECT_EQ(PutText(item, &IAppointment::put_Subject, std::u16string(5000, u'x')), S_OK);
  EXPECT_EQ(PutText(item, &IAppointment::put_Location, std::u16string(2000, u'x')), S_OK);
  EXPECT_EQ(PutText(item, &IAppointment::put_Location, std::u16string(2001, u'x')), kTextTooLong);
}

TEST_F(AppointmentItem, StoresChangesOnlyAtSave) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(CountOf(Items(LoggedOn(), olFolderCalendar)), 0);
  EXPECT_EQ(item->Save(), S_OK);
  EXPECT_EQ(PutText(item, &IAppointment::put_Subject, u"Other"), S_OK);
  EXPECT_EQ(Text(Reread(item), &IAppointment::get_Subject), u"Meeting");
  EXPECT_EQ(item->Save(), S_OK);
  EXPECT_EQ(Text(Reread(item), &IAppointment::get_Subject), u"Other");
  EXPECT_EQ(CountOf(Items(LoggedOn(), olFolderCalendar)), 1);
}

TEST_F(AppointmentItem, WritesNothingWhenAnUnchangedItemIsSaved) {
  const ComPtr<IAppointment> item = WeeklySeries();
  const auto plan = FaultPlan::FailCalls("sqlite3_step:write", ERROR_DISK_FULL);
  EXPECT_EQ(item->Save(), S_OK);
}

TEST_F(AppointmentItem, IsNotResurrectedBySave) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->Save(), S_OK);
  const ComPtr<IAppointment> other = Reread(item);
  EXPECT_EQ(other->Delete(), S_OK);
  EXPECT_EQ(item->Save(), E_INVALIDARG);
  EXPECT_EQ(PutText(item, &IAppointment::put_Subject, u"Other"), S_OK);
  EXPECT_EQ(item->Save(), E_INVALIDARG);
  EXPECT_EQ(CountOf(Items(LoggedOn(), olFolderCalendar)), 0);
  EXPECT_EQ(item->Delete(), S_OK);
}

TEST_F(AppointmentItem, SharesTheIdentifiersOfAllKinds) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->Save(), S_OK);
  const LONG contact = AddContact(app_, u"Ada");
  const ComPtr<ITask> task = NewTask(app_);
  EXPECT_EQ(task->Save(), S_OK);
  EXPECT_EQ(Value(item, &IAppointment::get_Oid), 1);
  EXPECT_EQ(contact, 2);
  EXPECT_EQ(Value(task, &ITask::get_Oid), 3);

  EXPECT_TRUE(AppointmentByOid(app_, 1));
  EXPECT_FALSE(AppointmentByOid(app_, 2));
  EXPECT_TRUE(ContactByOid(app_, 2));
  EXPECT_TRUE(TaskByOid(app_, 3));
  EXPECT_FALSE(TaskByOid(app_, 1));
  EXPECT_EQ(item->Delete(), S_OK);
  EXPECT_FALSE(AppointmentByOid(app_, 1));
}

TEST_F(AppointmentItem, RefusesNullOutParameters) {
  const ComPtr<IAppointment> item = Single();
  EXPECT_EQ(item->get_Start(nullptr), E_POINTER);
  EXPECT_EQ(item->get_Subject(nullptr), E_POINTER);
  EXPECT_EQ(item->get_AllDayEvent(nullptr), E_POINTER);
  EXPECT_EQ(item->get_Duration(nullptr), E_POINTER);
  EXPECT_EQ(item->get_BodyInk(nullptr, nullptr), E_POINTER);
  EXPECT_EQ(item->get_Oid(nullptr), E_POINTER);
  EXPECT_EQ(item->get_IsRecurring(nullptr), E_POINTER);
  EXPECT_EQ(item->GetRecurrencePattern(nullptr), E_POINTER);
}

TEST_F(AppointmentItem, CannotBeMadeWithoutAClock) {
  const ComPtr<IPOutlookItemCollection> items = Items(app_, olFolderCalendar);
  const auto plan = FaultPlan::FailCalls("GetLocalTime", ERROR_NOT_READY);
  IDispatch* item = reinterpret_cast<IDispatch*>(1);
  EXPECT_EQ(items->Add(&item), E_FAIL);
  EXPECT_EQ(item, nullptr);
}

TEST_F(AppointmentItem, StartsWithinTheDatesOfItemsWhateverTheClockShows) {
  handheld_.FreezeClock({1700, 1, 0, 1, 0, 0, 0, 0});
  ExpectTimes(NewAppointment(app_), At(1900, 1, 1, 1), At(1900, 1, 1, 2), 60);
  handheld_.FreezeClock({3500, 1, 0, 1, 0, 0, 0, 0});
  ExpectTimes(NewAppointment(app_), At(2999, 12, 31, 1), At(2999, 12, 31, 2), 60);
}

}  // namespace
}  // namespace ce::host::testing
