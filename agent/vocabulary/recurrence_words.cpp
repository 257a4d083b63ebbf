#include "agent/vocabulary/recurrence_words.h"

#include <algorithm>
#include <iterator>

namespace corvane {
namespace {

using ce::IRecurrencePattern;

#define NUMBER_OF(Property)                                                               \
  .get = &IRecurrencePattern::get_##Property, .put = &IRecurrencePattern::put_##Property, \
  .isDayList = false

constexpr RecurrenceChild kDaysOfWeek{.element = kDaysOfWeekElement,
                                      .get = &IRecurrencePattern::get_DayOfWeekMask,
                                      .put = &IRecurrencePattern::put_DayOfWeekMask,
                                      .isDayList = true,
                                      .offset = 0};
constexpr RecurrenceChild kWeekOfMonth{
    .element = kWeekOfMonthElement, NUMBER_OF(Instance), .offset = 1};
constexpr RecurrenceChild kDayOfMonth{
    .element = kDayOfMonthElement, NUMBER_OF(DayOfMonth), .offset = 0};
constexpr RecurrenceChild kDay{.element = kDayElement, NUMBER_OF(DayOfMonth), .offset = 0};
constexpr RecurrenceChild kMonth{.element = kMonthElement, NUMBER_OF(MonthOfYear), .offset = 0};

#undef NUMBER_OF

constexpr RecurrenceChild kWeekly[] = {kDaysOfWeek};
constexpr RecurrenceChild kMonthly[] = {kDayOfMonth};
constexpr RecurrenceChild kMonthNth[] = {kWeekOfMonth, kDaysOfWeek};
constexpr RecurrenceChild kYearly[] = {kDay, kMonth};
constexpr RecurrenceChild kYearNth[] = {kWeekOfMonth, kMonth, kDaysOfWeek};

constexpr RecurrenceType kTypes[] = {
    {ce::olRecursDaily, u"DAILY", u"Daily", u"Daily", {}, true},
    {ce::olRecursWeekly, u"WEEKLY", u"Weekly", u"Weekly", kWeekly, true},
    {ce::olRecursMonthly, u"MONTHLY_BY_DATE", u"Monthly", u"Monthly By Date", kMonthly, true},
    {ce::olRecursMonthNth, u"MONTHLY_BY_DAY", u"MonthNth", u"Monthly By Day", kMonthNth, true},
    {ce::olRecursYearly, u"YEARLY_BY_DATE", u"Yearly", u"Yearly By Date", kYearly, false},
    {ce::olRecursYearNth, u"YEARLY_BY_DAY", u"YearNth", u"Yearly By Day", kYearNth, false},
};
static_assert(std::size(kTypes) == 6);

}  // namespace

std::span<const RecurrenceType> RecurrenceTypes() {
  return kTypes;
}

const RecurrenceType* FindRecurrenceType(ce::LONG type) {
  const auto* found = std::ranges::find(kTypes, type, &RecurrenceType::type);
  return found == std::end(kTypes) ? nullptr : found;
}

}  // namespace corvane
