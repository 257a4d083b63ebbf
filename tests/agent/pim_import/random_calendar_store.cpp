#include "tests/agent/pim_import/random_calendar.h"
#include "tests/support/calendar_upload_runs.h"

namespace corvane::testing {

using namespace ce;

namespace {

using std::chrono::days;
using std::chrono::local_days;

template <typename Item>
void Set(Item& item, HRESULT (Item::*put)(BSTR), const std::u16string& text) {
  SetText(item, put, text);
}

void SetTimes(IAppointment& item, const RandomTimes& times) {
  ASSERT_EQ(item.put_AllDayEvent(times.allDay ? VARIANT_TRUE : VARIANT_FALSE), S_OK);
  ASSERT_EQ(item.put_Start(times.start.date()), S_OK);
  ASSERT_EQ(item.put_End(times.start.After(times.length).date()), S_OK);
}

local_days LocalDay(int day) {
  return local_days{std::chrono::year{1899} / 12 / 30} + days{day};
}

// The day of an occurrence; nothing beyond the days there are.
std::optional<int> OccurrenceDay(const calendar::Pattern& pattern, int start, int number) {
  const calendar::SeriesDays series(pattern, LocalDay(start));
  if (number >= series.size()) return std::nullopt;
  return static_cast<int>((series[std::max(number, 0)] - LocalDay(0)).count());
}

// False when no pattern of the type begins that late.
template <typename Item>
bool SetPattern(Item& item, const RandomPattern& random, int start) {
  const ComPtr<IRecurrencePattern> pattern = PatternOf(item);
  const calendar::Pattern& p = random.pattern;
  const auto last = OccurrenceDay(p, start, random.occurrences - 1);
  if (!last) return false;
  EXPECT_EQ(pattern->put_RecurrenceType(static_cast<LONG>(p.type)), S_OK);
  const auto put = [&](HRESULT (IRecurrencePattern::*property)(LONG), int value) {
    if (value != 0) {
      EXPECT_EQ((pattern.get()->*property)(value), S_OK);
    }
  };
  put(&IRecurrencePattern::put_Instance, p.instance);
  put(&IRecurrencePattern::put_DayOfWeekMask, p.daysOfWeek);
  put(&IRecurrencePattern::put_DayOfMonth, p.dayOfMonth);
  put(&IRecurrencePattern::put_MonthOfYear, p.monthOfYear);
  put(&IRecurrencePattern::put_Interval, p.interval);
  put(&IRecurrencePattern::put_Occurrences, random.ending == 1 ? random.occurrences : 0);
  if (random.ending == 2) {
    EXPECT_EQ(pattern->put_PatternEndDate(*last + random.daysBehindLast), S_OK);
  }
  return true;
}

void AddException(IAppointment& item, const RandomPattern& series, const Moment& start,
                  const RandomException& random) {
  const auto day = OccurrenceDay(series.pattern, start.day, random.occurrence);
  if (!day) return;
  ComPtr<IAppointment> occurrence;
  const DATE date = Moment{*day, start.second}.date();
  // Beyond the series' end, or deleted by an exception before this one.
  if (PatternOf(item)->GetOccurrence(date, occurrence.put()) == E_INVALIDARG) return;
  ASSERT_TRUE(occurrence);
  if (random.deleted) {
    ASSERT_EQ(occurrence->Delete(), S_OK);
    return;
  }
  SetTimes(*occurrence.get(), random.times);
  Set(*occurrence.get(), &IAppointment::put_Subject, random.subject);
  Set(*occurrence.get(), &IAppointment::put_Location, random.location);
  Set(*occurrence.get(), &IAppointment::put_Body, random.body);
  ASSERT_EQ(occurrence->put_BusyStatus(random.busy), S_OK);
  ASSERT_EQ(occurrence->Save(), S_OK);
}

}  // namespace

void StoreRandom(AppointmentStore& store, const RandomAppointment& random) {
  const ComPtr<IAppointment> item = store.New();
  SetTimes(*item.get(), random.times);
  Set(*item.get(), &IAppointment::put_Subject, random.subject);
  Set(*item.get(), &IAppointment::put_Location, random.location);
  Set(*item.get(), &IAppointment::put_Categories, random.categories);
  Set(*item.get(), &IAppointment::put_Body, random.body);
  ASSERT_EQ(item->put_BusyStatus(random.busy), S_OK);
  ASSERT_EQ(item->put_Sensitivity(random.sensitivity), S_OK);
  ASSERT_EQ(item->put_ReminderSet(random.reminder ? VARIANT_TRUE : VARIANT_FALSE), S_OK);
  ASSERT_EQ(item->put_ReminderMinutesBeforeStart(random.reminder.value_or(15)), S_OK);
  if (random.series && !SetPattern(*item.get(), *random.series, random.times.start.day)) return;
  ASSERT_EQ(item->Save(), S_OK);
  if (!random.series) return;
  for (const RandomException& exception : random.series->exceptions) {
    AddException(*item.get(), *random.series, random.times.start, exception);
  }
}

void StoreRandom(TaskStore& store, const RandomTask& random) {
  const ComPtr<ITask> item = store.New();
  Set(*item.get(), &ITask::put_Subject, random.subject);
  Set(*item.get(), &ITask::put_Categories, random.categories);
  Set(*item.get(), &ITask::put_Body, random.body);
  ASSERT_EQ(item->put_DueDate(random.due ? *random.due : kNoDate), S_OK);
  ASSERT_EQ(item->put_StartDate(random.start ? *random.start : kNoDate), S_OK);
  ASSERT_EQ(item->put_ReminderSet(random.reminder ? VARIANT_TRUE : VARIANT_FALSE), S_OK);
  if (random.reminder && random.due) {
    ASSERT_EQ(item->put_ReminderTime(
                  Moment{*random.due, 0}.After(-60 * std::int64_t{*random.reminder}).date()),
              S_OK);
  }
  ASSERT_EQ(item->put_Sensitivity(random.sensitivity), S_OK);
  ASSERT_EQ(item->put_Importance(random.importance), S_OK);
  ASSERT_EQ(item->put_Complete(random.complete ? VARIANT_TRUE : VARIANT_FALSE), S_OK);
  if (random.series) {
    const DATE start =
        ValueOf(*PatternOf(*item.get()).get(), &IRecurrencePattern::get_PatternStartDate);
    if (!SetPattern(*item.get(), *random.series, static_cast<int>(start))) return;
  }
  ASSERT_EQ(item->Save(), S_OK);
}
}  // namespace corvane::testing
