// What the tests of appointments, tasks and their recurrence have in common.
#pragma once

#include <string>
#include <vector>

#include "handheld/store/ole_date.h"
#include "platform/pocket_outlook_calendar.h"
#include "tests/handheld/outlook/outlook_support.h"

namespace ce::host::testing {

// Local dates and times as items have them.
DATE Day(int year, unsigned month, unsigned day);
DATE At(int year, unsigned month, unsigned day, int hour, int minute = 0, int second = 0);

ComPtr<IAppointment> NewAppointment(const ComPtr<IPOutlookApp>& app);
ComPtr<ITask> NewTask(const ComPtr<IPOutlookApp>& app);
// Null when there is none of that kind.
ComPtr<IAppointment> AppointmentByOid(const ComPtr<IPOutlookApp>& app, LONG oid);
ComPtr<ITask> TaskByOid(const ComPtr<IPOutlookApp>& app, LONG oid);

// The value of a property; the getter must succeed.
template <typename Item, typename Interface, typename T>
T Value(const ComPtr<Item>& item, HRESULT (Interface::*get)(T*)) {
  T value{};
  EXPECT_EQ((item.get()->*get)(&value), S_OK);
  return value;
}
template <typename Item, typename Interface>
std::u16string Text(const ComPtr<Item>& item, HRESULT (Interface::*get)(BSTR*)) {
  Bstr text;
  EXPECT_EQ((item.get()->*get)(text.put()), S_OK);
  return std::u16string(text.view());
}
template <typename Item, typename Interface>
HRESULT PutText(const ComPtr<Item>& item, HRESULT (Interface::*put)(BSTR),
                std::u16string_view text) {
  const Bstr value(text);
  return (item.get()->*put)(value.get());
}
template <typename Item>
ComPtr<IRecurrencePattern> PatternOf(const ComPtr<Item>& item) {
  ComPtr<IRecurrencePattern> pattern;
  EXPECT_EQ(item->GetRecurrencePattern(pattern.put()), S_OK);
  return pattern;
}

// One exception as a test compares it: "-2026-03-09" deleted, "2026-03-09 Subject" changed.
std::vector<std::string> ExceptionsOf(const ComPtr<IRecurrencePattern>& pattern);
// As another log-on reads them.
std::vector<std::string> StoredExceptions(LONG oid);

// Null when the pattern has none there, which it must say by E_INVALIDARG.
ComPtr<IAppointment> OccurrenceAt(const ComPtr<IRecurrencePattern>& pattern, DATE date);

// Appointments of 2026-03-02 (a Monday), 10:00 to 11:00.
class CalendarTest : public HandheldTest {
 protected:
  void TearDown() override {
    app_.reset();
    HandheldTest::TearDown();
  }

  ComPtr<IAppointment> Single();        // not saved
  ComPtr<IAppointment> WeeklySeries();  // saved, without an end
  ComPtr<IAppointment> Reread(const ComPtr<IAppointment>& item);
  ComPtr<ITask> Reread(const ComPtr<ITask>& item);

  ComPtr<IPOutlookApp> app_ = LoggedOn();
};

}  // namespace ce::host::testing
