#include "tests/support/recording_items.h"

#include <cstdio>

#include "common/text/unicode.h"

namespace corvane::testing {

using namespace ce;

namespace {

constexpr LONG kRecordedOid = 5;

std::string TextOf(LONG value) {
  return std::to_string(value);
}
std::string TextOf(VARIANT_BOOL value) {
  return value ? "TRUE" : "FALSE";
}
std::string TextOf(DATE value) {
  return TextOfDate(value);
}
std::string TextOf(BSTR value) {
  return text::ToUtf8Lossy(value ? std::u16string_view(value, SysStringLen(value)) : u"");
}

#define RECORDED(Type, Name)                        \
  HRESULT get_##Name(Type* value) override {        \
    *value = {};                                    \
    return S_OK;                                    \
  }                                                 \
  HRESULT put_##Name(Type value) override {         \
    return list_.Note("put_" #Name, TextOf(value)); \
  }

#define RECORDED_BODY                                  \
  HRESULT get_Body(BSTR* value) override {             \
    *value = SysAllocString(list_.body.c_str());       \
    return list_.Note("get_Body");                     \
  }                                                    \
  HRESULT put_Body(BSTR value) override {              \
    return list_.Note("put_Body", TextOf(value));      \
  }                                                    \
  HRESULT get_BodyInk(DWORD*, const BYTE**) override { \
    return E_NOTIMPL;                                  \
  }                                                    \
  HRESULT put_BodyInk(DWORD, const BYTE*) override {   \
    return list_.Note("put_BodyInk");                  \
  }

#define RECORDED_ITEM                                                           \
  HRESULT get_IsRecurring(VARIANT_BOOL* value) override {                       \
    *value = VARIANT_FALSE;                                                     \
    return S_OK;                                                                \
  }                                                                             \
  HRESULT GetRecurrencePattern(IRecurrencePattern** pattern) override {         \
    const HRESULT status = list_.Note("GetRecurrencePattern");                  \
    *pattern = Failed(status) ? nullptr : MakeRecordingPattern(list_).detach(); \
    return status;                                                              \
  }                                                                             \
  HRESULT ClearRecurrencePattern() override {                                   \
    return list_.Note("ClearRecurrencePattern");                                \
  }                                                                             \
  HRESULT get_Oid(LONG* oid) override {                                         \
    *oid = kRecordedOid;                                                        \
    return list_.Note("get_Oid");                                               \
  }                                                                             \
  HRESULT Save() override {                                                     \
    return list_.Note("Save");                                                  \
  }                                                                             \
  HRESULT Delete() override {                                                   \
    return list_.Note("Delete");                                                \
  }

class RecordingAppointment : public host::ComObject<IAppointment> {
 public:
  explicit RecordingAppointment(CallList& list) : list_(list) {}
  RECORDED(VARIANT_BOOL, AllDayEvent)
  RECORDED(LONG, BusyStatus)
  RECORDED(BSTR, Categories)
  RECORDED(LONG, Duration)
  RECORDED(DATE, End)
  RECORDED(BSTR, Location)
  RECORDED(LONG, ReminderMinutesBeforeStart)
  RECORDED(VARIANT_BOOL, ReminderSet)
  RECORDED(LONG, Sensitivity)
  RECORDED(DATE, Start)
  RECORDED(BSTR, Subject)
  RECORDED_BODY
  RECORDED_ITEM

 private:
  CallList& list_;
};

class RecordingTask : public host::ComObject<ITask> {
 public:
  explicit RecordingTask(CallList& list) : list_(list) {}
  RECORDED(BSTR, Categories)
  RECORDED(DATE, StartDate)
  RECORDED(DATE, DueDate)
  RECORDED(DATE, DateCompleted)
  RECORDED(LONG, Importance)
  RECORDED(VARIANT_BOOL, Complete)
  RECORDED(LONG, Sensitivity)
  RECORDED(BSTR, Subject)
  RECORDED(DATE, ReminderTime)
  RECORDED(VARIANT_BOOL, ReminderSet)
  RECORDED_BODY
  RECORDED_ITEM

 private:
  CallList& list_;
};

class RecordingExceptions : public host::ComObject<IExceptions> {
 public:
  explicit RecordingExceptions(CallList& list) : list_(list) {}
  HRESULT Item(INT, IException** exception) override {
    *exception = nullptr;
    return E_NOTIMPL;
  }
  HRESULT get_Count(INT* count) override {
    *count = list_.exceptions;
    return list_.Note("get_Count");
  }

 private:
  CallList& list_;
};

class RecordingPattern : public host::ComObject<IRecurrencePattern> {
 public:
  explicit RecordingPattern(CallList& list) : list_(list) {}
  RECORDED(LONG, RecurrenceType)
  RECORDED(DATE, PatternStartDate)
  RECORDED(DATE, StartTime)
  RECORDED(DATE, EndTime)
  RECORDED(DATE, PatternEndDate)
  RECORDED(VARIANT_BOOL, NoEndDate)
  RECORDED(LONG, Occurrences)
  RECORDED(LONG, Interval)
  RECORDED(LONG, DayOfWeekMask)
  RECORDED(LONG, DayOfMonth)
  RECORDED(LONG, Instance)
  RECORDED(LONG, Duration)
  RECORDED(LONG, MonthOfYear)
  HRESULT get_Exceptions(IExceptions** exceptions) override {
    const HRESULT status = list_.Note("get_Exceptions");
    *exceptions = Failed(status) ? nullptr : new RecordingExceptions(list_);
    return status;
  }
  HRESULT GetOccurrence(DATE date, IAppointment** occurrence) override {
    const HRESULT status = list_.Note("GetOccurrence", TextOf(date));
    const bool found = list_.hasOccurrences && !Failed(status);
    *occurrence = found ? MakeRecordingAppointment(list_).detach() : nullptr;
    return Failed(status) || found ? status : E_INVALIDARG;
  }

 private:
  CallList& list_;
};

#undef RECORDED
#undef RECORDED_BODY
#undef RECORDED_ITEM

class RecordingItems : public host::ComObject<IPOutlookItemCollection> {
 public:
  RecordingItems(CallList& list, IDispatch* item) : list_(list), item_(item) {}
  HRESULT Add(IDispatch** item) override {
    *item = ComPtr<IDispatch>(item_).detach();
    return list_.Note("Add");
  }
  HRESULT get_Count(INT*) override { return E_NOTIMPL; }
  HRESULT Item(INT, IDispatch**) override { return E_NOTIMPL; }
  HRESULT Remove(INT) override { return E_NOTIMPL; }

 private:
  CallList& list_;
  const ComPtr<IDispatch> item_;
};

class RecordingFolder : public host::ComObject<IFolder> {
 public:
  RecordingFolder(CallList& list, IDispatch* item) : list_(list), item_(item) {}
  HRESULT get_Items(IPOutlookItemCollection** items) override {
    *items = new RecordingItems(list_, item_.get());
    return list_.Note("get_Items");
  }

 private:
  CallList& list_;
  const ComPtr<IDispatch> item_;
};

class RecordingApp : public host::ComObject<IPOutlookApp> {
 public:
  RecordingApp(CallList& list, IDispatch* item) : list_(list), item_(item) {}
  HRESULT Logon(LONG) override { return S_OK; }
  HRESULT Logoff() override { return S_OK; }
  HRESULT GetDefaultFolder(INT folder, IFolder** result) override {
    *result = new RecordingFolder(list_, item_.get());
    return list_.Note("GetDefaultFolder", std::to_string(folder));
  }
  HRESULT CreateItem(INT, IDispatch**) override { return E_NOTIMPL; }
  HRESULT GetItemFromOid(LONG oid, IDispatch** item) override {
    *item = ComPtr<IDispatch>(item_).detach();
    return list_.Note("GetItemFromOid", std::to_string(oid));
  }

 private:
  CallList& list_;
  const ComPtr<IDispatch> item_;
};

template <typename Object, typename Interface>
ComPtr<Interface> Make(CallList& list) {
  ComPtr<Interface> object;
  object.attach(new Object(list));
  return object;
}

}  // namespace

std::string TextOfDate(DATE date) {
  SYSTEMTIME time{};
  if (date == kNoDate) return "none";
  if (!VariantTimeToSystemTime(date, &time)) return "no date";
  char text[64];
  std::snprintf(text, sizeof(text), "%04u-%02u-%02u %02u:%02u:%02u", unsigned{time.wYear},
                unsigned{time.wMonth}, unsigned{time.wDay}, unsigned{time.wHour},
                unsigned{time.wMinute}, unsigned{time.wSecond});
  return text;
}

HRESULT CallList::Note(const std::string& call, const std::string& argument) {
  calls.push_back(argument.empty() ? call : call + " " + argument);
  const auto answer = answers.find(call);
  return answer == answers.end() ? S_OK : answer->second;
}

ComPtr<IAppointment> MakeRecordingAppointment(CallList& list) {
  return Make<RecordingAppointment, IAppointment>(list);
}

ComPtr<ITask> MakeRecordingTask(CallList& list) {
  return Make<RecordingTask, ITask>(list);
}

ComPtr<IRecurrencePattern> MakeRecordingPattern(CallList& list) {
  return Make<RecordingPattern, IRecurrencePattern>(list);
}

ComPtr<IPOutlookApp> MakeRecordingApp(CallList& list, IDispatch* item) {
  ComPtr<IPOutlookApp> app;
  app.attach(new RecordingApp(list, item));
  return app;
}

}  // namespace corvane::testing
