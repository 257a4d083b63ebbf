// Appointments, tasks and patterns that hold whatever a test says, also what a store would refuse,
// and list what is done to them. Every getter is a fault point of the name that the handheld's own
// has.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "handheld/base/com_object.h"
#include "platform/com_ptr.h"
#include "platform/pocket_outlook_calendar.h"
#include "tests/support/calendar_test.h"

namespace corvane::testing {

// What was done to the items, and what is to be answered. Getters of plain values are not listed.
struct CallList {
  std::map<std::string, ce::HRESULT> answers;  // by name, such as "put_Subject"; else S_OK
  std::vector<std::string> calls;              // "put_Subject text"
};

// The base of them all. Takes down nothing without a list.
template <typename Interface>
class Fake : public ce::host::ComObject<Interface> {
 public:
  CallList* list = nullptr;

 protected:
  ce::HRESULT Note(const std::string& call, const std::string& argument = {}) {
    if (!list) return ce::S_OK;
    list->calls.push_back(argument.empty() ? call : call + " " + argument);
    const auto answer = list->answers.find(call);
    return answer == list->answers.end() ? ce::S_OK : answer->second;
  }

  static std::string Shown(ce::LONG value) { return std::to_string(value); }
  static std::string Shown(ce::VARIANT_BOOL value) { return value ? "TRUE" : "FALSE"; }
  static std::string Shown(ce::DATE value) { return TextOfDate(value); }
  static std::string Shown(ce::BSTR value) {
    return value ? Narrow({value, ce::SysStringLen(value)}) : std::string();
  }
};

template <typename Object>
ce::ComPtr<Object> Make(CallList* list = nullptr) {
  ce::ComPtr<Object> made;
  made.attach(new Object);
  made->list = list;
  return made;
}

#define FAKE_FAULT(Interface, Call)                                                      \
  if (const ce::HRESULT fault = ce::host::FaultStatus(#Interface "::" #Call); fault < 0) \
  return fault

#define FAKE_READ_ONLY(Interface, Type, Name, Default) \
  Type Name = Default;                                 \
  ce::HRESULT get_##Name(Type* value) override {       \
    FAKE_FAULT(Interface, get_##Name);                 \
    *value = Name;                                     \
    return ce::S_OK;                                   \
  }
#define FAKE_PROPERTY(Interface, Type, Name, Default)    \
  FAKE_READ_ONLY(Interface, Type, Name, Default)         \
  ce::HRESULT put_##Name(Type value) override {          \
    return this->Note("put_" #Name, this->Shown(value)); \
  }
#define FAKE_TEXT(Interface, Name)                       \
  std::u16string Name;                                   \
  ce::HRESULT get_##Name(ce::BSTR* value) override {     \
    FAKE_FAULT(Interface, get_##Name);                   \
    *value = ce::Bstr(Name).detach();                    \
    return ce::S_OK;                                     \
  }                                                      \
  ce::HRESULT put_##Name(ce::BSTR value) override {      \
    return this->Note("put_" #Name, this->Shown(value)); \
  }
#define FAKE_ITEM(Interface)                                                    \
  FAKE_READ_ONLY(Interface, ce::LONG, Oid, 7)                                   \
  FAKE_READ_ONLY(Interface, ce::VARIANT_BOOL, IsRecurring, ce::VARIANT_FALSE)   \
  ce::ComPtr<ce::IRecurrencePattern> Pattern;                                   \
  ce::HRESULT GetRecurrencePattern(ce::IRecurrencePattern** pattern) override { \
    FAKE_FAULT(Interface, GetRecurrencePattern);                                \
    *pattern = ce::ComPtr<ce::IRecurrencePattern>(Pattern).detach();            \
    return this->Note("GetRecurrencePattern");                                  \
  }                                                                             \
  std::u16string Body;                                                          \
  ce::HRESULT get_Body(ce::BSTR* value) override {                              \
    FAKE_FAULT(Interface, get_Body);                                            \
    *value = ce::Bstr(Body).detach();                                           \
    return this->Note("get_Body");                                              \
  }                                                                             \
  ce::HRESULT put_Body(ce::BSTR value) override {                               \
    return this->Note("put_Body", this->Shown(value));                          \
  }                                                                             \
  std::string BodyInk;                                                          \
  ce::HRESULT get_BodyInk(ce::DWORD* bytes, const ce::BYTE** block) override {  \
    FAKE_FAULT(Interface, get_BodyInk);                                         \
    if (BodyInk.empty()) return ce::E_NOTIMPL;                                  \
    *bytes = static_cast<ce::DWORD>(BodyInk.size());                            \
    *block = reinterpret_cast<const ce::BYTE*>(BodyInk.data());                 \
    return ce::S_OK;                                                            \
  }                                                                             \
  ce::HRESULT put_BodyInk(ce::DWORD, const ce::BYTE*) override {                \
    return this->Note("put_BodyInk");                                           \
  }                                                                             \
  ce::HRESULT ClearRecurrencePattern() override {                               \
    return this->Note("ClearRecurrencePattern");                                \
  }                                                                             \
  ce::HRESULT Save() override {                                                 \
    return this->Note("Save");                                                  \
  }                                                                             \
  ce::HRESULT Delete() override {                                               \
    return this->Note("Delete");                                                \
  }

// A timed appointment without anything, until a test sets more.
class FakeAppointment final : public Fake<ce::IAppointment> {
 public:
  FAKE_ITEM(IAppointment)
  FAKE_PROPERTY(IAppointment, ce::VARIANT_BOOL, AllDayEvent, ce::VARIANT_FALSE)
  FAKE_PROPERTY(IAppointment, ce::LONG, BusyStatus, ce::olBusy)
  FAKE_TEXT(IAppointment, Categories)
  FAKE_PROPERTY(IAppointment, ce::LONG, Duration, 60)
  FAKE_PROPERTY(IAppointment, ce::DATE, End, ce::kNoDate)
  FAKE_TEXT(IAppointment, Location)
  FAKE_PROPERTY(IAppointment, ce::LONG, ReminderMinutesBeforeStart, 15)
  FAKE_PROPERTY(IAppointment, ce::VARIANT_BOOL, ReminderSet, ce::VARIANT_FALSE)
  FAKE_PROPERTY(IAppointment, ce::LONG, Sensitivity, ce::olNormal)
  FAKE_PROPERTY(IAppointment, ce::DATE, Start, ce::kNoDate)
  FAKE_TEXT(IAppointment, Subject)
};

class FakeTask final : public Fake<ce::ITask> {
 public:
  FAKE_ITEM(ITask)
  FAKE_TEXT(ITask, Categories)
  FAKE_PROPERTY(ITask, ce::DATE, StartDate, ce::kNoDate)
  FAKE_PROPERTY(ITask, ce::DATE, DueDate, ce::kNoDate)
  FAKE_PROPERTY(ITask, ce::DATE, DateCompleted, ce::kNoDate)
  FAKE_PROPERTY(ITask, ce::LONG, Importance, ce::olImportanceNormal)
  FAKE_PROPERTY(ITask, ce::VARIANT_BOOL, Complete, ce::VARIANT_FALSE)
  FAKE_PROPERTY(ITask, ce::LONG, Sensitivity, ce::olNormal)
  FAKE_TEXT(ITask, Subject)
  FAKE_PROPERTY(ITask, ce::DATE, ReminderTime, ce::kNoDate)
  FAKE_PROPERTY(ITask, ce::VARIANT_BOOL, ReminderSet, ce::VARIANT_FALSE)
};

class FakeException final : public Fake<ce::IException> {
 public:
  FAKE_READ_ONLY(IException, ce::DATE, OriginalDate, ce::kNoDate)
  FAKE_READ_ONLY(IException, ce::VARIANT_BOOL, Deleted, ce::VARIANT_FALSE)
  ce::ComPtr<ce::IAppointment> AppointmentItem;
  ce::HRESULT get_AppointmentItem(ce::IAppointment** item) override {
    FAKE_FAULT(IException, get_AppointmentItem);
    *item = ce::ComPtr<ce::IAppointment>(AppointmentItem).detach();
    return *item ? ce::S_OK : ce::S_FALSE;
  }
};

class FakeExceptions final : public Fake<ce::IExceptions> {
 public:
  std::vector<ce::ComPtr<FakeException>> items;
  ce::HRESULT Item(ce::INT index, ce::IException** exception) override {
    FAKE_FAULT(IExceptions, Item);
    *exception = nullptr;
    if (index < 1 || index > static_cast<ce::INT>(items.size())) return ce::E_INVALIDARG;
    *exception = ce::ComPtr<FakeException>(items[static_cast<std::size_t>(index - 1)]).detach();
    return ce::S_OK;
  }
  ce::HRESULT get_Count(ce::INT* count) override {
    FAKE_FAULT(IExceptions, get_Count);
    *count = static_cast<ce::INT>(items.size());
    return Note("get_Count");
  }
};

// Daily without an end, until a test sets more.
class FakePattern final : public Fake<ce::IRecurrencePattern> {
 public:
  FAKE_PROPERTY(IRecurrencePattern, ce::LONG, RecurrenceType, ce::olRecursDaily)
  FAKE_PROPERTY(IRecurrencePattern, ce::DATE, PatternStartDate, ce::kNoDate)
  FAKE_PROPERTY(IRecurrencePattern, ce::DATE, PatternEndDate, ce::kNoDate)
  FAKE_PROPERTY(IRecurrencePattern, ce::VARIANT_BOOL, NoEndDate, ce::VARIANT_TRUE)
  FAKE_PROPERTY(IRecurrencePattern, ce::LONG, Occurrences, 0)
  FAKE_PROPERTY(IRecurrencePattern, ce::LONG, Interval, 1)
  FAKE_PROPERTY(IRecurrencePattern, ce::LONG, DayOfWeekMask, 0)
  FAKE_PROPERTY(IRecurrencePattern, ce::LONG, DayOfMonth, 0)
  FAKE_PROPERTY(IRecurrencePattern, ce::LONG, Instance, 0)
  FAKE_PROPERTY(IRecurrencePattern, ce::LONG, MonthOfYear, 0)

  ce::ComPtr<FakeExceptions> Exceptions = Make<FakeExceptions>();
  ce::HRESULT get_Exceptions(ce::IExceptions** exceptions) override {
    FAKE_FAULT(IRecurrencePattern, get_Exceptions);
    *exceptions = ce::ComPtr<FakeExceptions>(Exceptions).detach();
    return Note("get_Exceptions");
  }
  // The occurrence of every date.
  ce::ComPtr<ce::IAppointment> Occurrence;
  ce::HRESULT GetOccurrence(ce::DATE date, ce::IAppointment** occurrence) override {
    const ce::HRESULT status = Note("GetOccurrence", Shown(date));
    *occurrence = nullptr;
    if (ce::Failed(status)) return status;
    *occurrence = ce::ComPtr<ce::IAppointment>(Occurrence).detach();
    return *occurrence ? status : ce::E_INVALIDARG;
  }

  // The changed occurrence, for a test to fill.
  FakeAppointment& AddChanged(ce::DATE originalDate) {
    const auto exception = Make<FakeException>();
    const auto item = Make<FakeAppointment>();
    exception->OriginalDate = originalDate;
    exception->AppointmentItem = ce::ComPtr<ce::IAppointment>(item.get());
    Exceptions->items.push_back(exception);
    return *item.get();
  }
  void AddDeleted(ce::DATE originalDate) {
    const auto exception = Make<FakeException>();
    exception->OriginalDate = originalDate;
    exception->Deleted = ce::VARIANT_TRUE;
    Exceptions->items.push_back(exception);
  }
};

#undef FAKE_FAULT
#undef FAKE_READ_ONLY
#undef FAKE_PROPERTY
#undef FAKE_TEXT
#undef FAKE_ITEM

// An appointment with its pattern, both on one list, on a handheld in UTC.
class FakeCalendarTest : public CalendarTest {
 protected:
  FakeCalendarTest() {
    UseZone("UTC");
    pattern_->Exceptions->list = &list_;
    item_->Pattern = ce::ComPtr<ce::IRecurrencePattern>(pattern_.get());
  }
  void TearDown() override {
    item_.reset();
    pattern_.reset();
    CalendarTest::TearDown();
  }
  FakeAppointment& item() { return *item_.get(); }
  FakePattern& pattern() { return *pattern_.get(); }
  // Every day has an occurrence.
  void HaveOccurrences() {
    pattern().Occurrence = ce::ComPtr<ce::IAppointment>(Make<FakeAppointment>(&list_).get());
  }

  CallList list_;
  ce::ComPtr<FakePattern> pattern_ = Make<FakePattern>(&list_);
  ce::ComPtr<FakeAppointment> item_ = Make<FakeAppointment>(&list_);
};

}  // namespace corvane::testing
