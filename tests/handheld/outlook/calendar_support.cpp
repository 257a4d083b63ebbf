#include "tests/handheld/outlook/calendar_support.h"

#include <cstdio>

namespace ce::host::testing {
namespace {

std::string DayText(DATE date) {
  const auto day = DayOfDate(date);
  if (!day) return "no date";
  const std::chrono::year_month_day civil{*day};
  char text[40];
  std::snprintf(text, sizeof(text), "%04d-%02u-%02u", static_cast<int>(civil.year()),
                static_cast<unsigned>(civil.month()), static_cast<unsigned>(civil.day()));
  return text;
}

template <typename Item>
ComPtr<Item> ByOid(const ComPtr<IPOutlookApp>& app, LONG oid) {
  ComPtr<IDispatch> item;
  const HRESULT status = app->GetItemFromOid(oid, item.put());
  EXPECT_EQ(Succeeded(status), static_cast<bool>(item));
  return item.query<Item>();
}

}  // namespace

DATE Day(int year, unsigned month, unsigned day) {
  return OleDate(year, month, day);
}

DATE At(int year, unsigned month, unsigned day, int hour, int minute, int second) {
  using namespace std::chrono;
  const local_days date{std::chrono::year{year} / std::chrono::month{month} /
                        std::chrono::day{day}};
  return OleDate(date + hours{hour} + minutes{minute} + seconds{second});
}

ComPtr<IAppointment> NewAppointment(const ComPtr<IPOutlookApp>& app) {
  return NewItem<IAppointment>(app, olFolderCalendar);
}

ComPtr<ITask> NewTask(const ComPtr<IPOutlookApp>& app) {
  return NewItem<ITask>(app, olFolderTasks);
}

ComPtr<IAppointment> AppointmentByOid(const ComPtr<IPOutlookApp>& app, LONG oid) {
  return ByOid<IAppointment>(app, oid);
}

ComPtr<ITask> TaskByOid(const ComPtr<IPOutlookApp>& app, LONG oid) {
  return ByOid<ITask>(app, oid);
}

std::vector<std::string> ExceptionsOf(const ComPtr<IRecurrencePattern>& pattern) {
  ComPtr<IExceptions> exceptions;
  EXPECT_EQ(pattern->get_Exceptions(exceptions.put()), S_OK);
  std::vector<std::string> texts;
  if (!exceptions) return texts;
  const INT count = Value(exceptions, &IExceptions::get_Count);
  for (INT i = 1; i <= count; ++i) {
    ComPtr<IException> exception;
    EXPECT_EQ(exceptions->Item(i, exception.put()), S_OK);
    std::string text = DayText(Value(exception, &IException::get_OriginalDate));
    ComPtr<IAppointment> item;
    if (Value(exception, &IException::get_Deleted) != VARIANT_FALSE) {
      text = "-" + text;
      EXPECT_EQ(exception->get_AppointmentItem(item.put()), S_FALSE);
      EXPECT_FALSE(item);
    } else {
      EXPECT_EQ(exception->get_AppointmentItem(item.put()), S_OK);
      const std::u16string subject = Text(item, &IAppointment::get_Subject);
      text += " " + std::string(subject.begin(), subject.end());
    }
    texts.push_back(text);
  }
  return texts;
}

std::vector<std::string> StoredExceptions(LONG oid) {
  const ComPtr<IAppointment> item = AppointmentByOid(LoggedOn(), oid);
  if (!item) return {"no such appointment"};
  return ExceptionsOf(PatternOf(item));
}

ComPtr<IAppointment> OccurrenceAt(const ComPtr<IRecurrencePattern>& pattern, DATE date) {
  IAppointment* found = reinterpret_cast<IAppointment*>(1);
  const HRESULT status = pattern->GetOccurrence(date, &found);
  EXPECT_EQ(status, found ? S_OK : E_INVALIDARG);
  ComPtr<IAppointment> occurrence;
  occurrence.attach(found);
  return occurrence;
}

ComPtr<IAppointment> CalendarTest::Single() {
  const ComPtr<IAppointment> item = NewAppointment(app_);
  EXPECT_EQ(PutText(item, &IAppointment::put_Subject, u"Meeting"), S_OK);
  EXPECT_EQ(item->put_Start(At(2026, 3, 2, 10)), S_OK);
  EXPECT_EQ(item->put_Duration(60), S_OK);
  return item;
}

ComPtr<IAppointment> CalendarTest::WeeklySeries() {
  const ComPtr<IAppointment> item = Single();
  PatternOf(item);
  EXPECT_EQ(item->Save(), S_OK);
  return item;
}

ComPtr<IAppointment> CalendarTest::Reread(const ComPtr<IAppointment>& item) {
  return AppointmentByOid(LoggedOn(), Value(item, &IAppointment::get_Oid));
}

ComPtr<ITask> CalendarTest::Reread(const ComPtr<ITask>& item) {
  return TaskByOid(LoggedOn(), Value(item, &ITask::get_Oid));
}

}  // namespace ce::host::testing
