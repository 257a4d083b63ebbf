#include "handheld/base/com_object.h"
#include "handheld/base/guarded.h"
#include "handheld/outlook/series_item.h"
#include "platform/com_ptr.h"

namespace ce::host {
namespace {

bool IsType(LONG type) {
  switch (type) {
    case olRecursDaily:
    case olRecursWeekly:
    case olRecursMonthly:
    case olRecursMonthNth:
    case olRecursYearly:
    case olRecursYearNth:
      return true;
    default:
      return false;
  }
}

// Properties that are members of calendar::Pattern.
#define CE_PATTERN_MEMBERS(X)  \
  X(Interval, interval)        \
  X(DayOfWeekMask, daysOfWeek) \
  X(DayOfMonth, dayOfMonth)    \
  X(Instance, instance)        \
  X(MonthOfYear, monthOfYear)

class RecurrencePattern final : public ComObject<IRecurrencePattern> {
 public:
  RecurrencePattern(IDispatch* item, SeriesItem& series, int number)
      : object_(item), item_(series), number_(number) {}

#define CE_PATTERN_MEMBER(Name, Member)                                                    \
  HRESULT get_##Name(LONG* value) override {                                               \
    return Get("IRecurrencePattern::get_" #Name, value,                                    \
               [](const Series& series) { return LONG{series.pattern.Member}; });          \
  }                                                                                        \
  HRESULT put_##Name(LONG value) override {                                                \
    return PutMember("IRecurrencePattern::put_" #Name, &calendar::Pattern::Member, value); \
  }
  CE_PATTERN_MEMBERS(CE_PATTERN_MEMBER)
#undef CE_PATTERN_MEMBER

  HRESULT get_RecurrenceType(LONG* value) override {
    return Get("IRecurrencePattern::get_RecurrenceType", value,
               [](const Series& series) { return static_cast<LONG>(series.pattern.type); });
  }
  HRESULT put_RecurrenceType(LONG value) override {
    return Put("IRecurrencePattern::put_RecurrenceType", [&](Series& series) {
      if (!IsType(value)) return false;
      const auto type = static_cast<calendar::PatternType>(value);
      if (type != series.pattern.type) {
        series.pattern = calendar::PatternFrom(type, item_.SeriesDay());
      }
      return true;
    });
  }

  HRESULT get_PatternStartDate(DATE* value) override {
    return Get(
        "IRecurrencePattern::get_PatternStartDate", value,
        [&](const Series&) { return OleDate(item_.SeriesDay()); }, kNoDate);
  }
  HRESULT put_PatternStartDate(DATE value) override {
    return Put("IRecurrencePattern::put_PatternStartDate", [&](Series&) {
      const auto day = DayOfDate(value);
      return day && item_.MoveSeries(*day);
    });
  }

  HRESULT get_PatternEndDate(DATE* value) override {
    return Get(
        "IRecurrencePattern::get_PatternEndDate", value,
        [](const Series& series) {
          return series.ends && series.until ? OleDate(*series.until) : kNoDate;
        },
        kNoDate);
  }
  HRESULT put_PatternEndDate(DATE value) override {
    return Put("IRecurrencePattern::put_PatternEndDate", [&](Series& series) {
      const auto day = DayOfDate(value);
      if (!day) return false;
      SetEnd(series, true, 0, day);
      return true;
    });
  }
  HRESULT get_Occurrences(LONG* value) override {
    return Get("IRecurrencePattern::get_Occurrences", value,
               [](const Series& series) { return series.ends ? series.occurrences : 0; });
  }
  HRESULT put_Occurrences(LONG value) override {
    return Put("IRecurrencePattern::put_Occurrences", [&](Series& series) {
      if (value < 1) return false;
      SetEnd(series, true, value, std::nullopt);
      return true;
    });
  }
  HRESULT get_NoEndDate(VARIANT_BOOL* value) override {
    return Get("IRecurrencePattern::get_NoEndDate", value,
               [](const Series& series) { return series.ends ? VARIANT_FALSE : VARIANT_TRUE; });
  }
  HRESULT put_NoEndDate(VARIANT_BOOL value) override {
    return Put("IRecurrencePattern::put_NoEndDate", [&](Series& series) {
      const bool ends = value == VARIANT_FALSE;
      if (ends != series.ends) SetEnd(series, ends, 0, std::nullopt);
      return true;
    });
  }

  HRESULT get_Exceptions(IExceptions** exceptions) override {
    if (!exceptions) return E_POINTER;
    *exceptions = nullptr;
    return Guarded("IRecurrencePattern::get_Exceptions",
                   [&] { return Find() ? item_.OpenExceptions(exceptions) : E_FAIL; });
  }
  HRESULT GetOccurrence(DATE date, IAppointment** occurrence) override {
    if (!occurrence) return E_POINTER;
    *occurrence = nullptr;
    return Guarded("IRecurrencePattern::GetOccurrence",
                   [&] { return Find() ? item_.OpenOccurrence(date, occurrence) : E_FAIL; });
  }

 private:
  ~RecurrencePattern() override = default;

  Series* Find() {
    return item_.FindSeries(number_);
  }

  static void SetEnd(Series& series, bool ends, LONG occurrences, std::optional<local_days> until) {
    series.ends = ends;
    series.occurrences = occurrences;
    series.until = until;
  }

  template <typename T, typename Read>
  HRESULT Get(const char* call, T* value, Read&& read, T none = {}) {
    if (!value) return E_POINTER;
    *value = none;
    return Guarded(call, [&] {
      const Series* series = Find();
      if (!series) return E_FAIL;
      *value = read(*series);
      return S_OK;
    });
  }

  // `write` answers whether the series takes the value.
  template <typename Write>
  HRESULT Put(const char* call, Write&& write) {
    return Guarded(call, [&] {
      Series* series = Find();
      if (!series) return E_FAIL;
      if (!write(*series)) return E_INVALIDARG;
      item_.NoteChange();
      return S_OK;
    });
  }

  HRESULT PutMember(const char* call, int calendar::Pattern::*member, LONG value) {
    return Put(call, [&](Series& series) {
      calendar::Pattern changed = series.pattern;
      changed.*member = value;
      if (!calendar::IsValid(changed)) return false;
      series.pattern = changed;
      return true;
    });
  }

  const ComPtr<IDispatch> object_;  // keeps the item
  SeriesItem& item_;
  const int number_;
};

}  // namespace

IRecurrencePattern* MakePattern(IDispatch* item, SeriesItem& series, int number) {
  return new RecurrencePattern(item, series, number);
}

}  // namespace ce::host
