#include "handheld/tool/recurrence.h"

#include "handheld/tool/item_fields.h"

namespace tool {
namespace {

using calendar::Pattern;
using calendar::PatternType;
using ce::IRecurrencePattern;

// A number of the pattern, and the types that have it.
struct NumberRow {
  const char* name;
  int Pattern::*member;
  Getter<IRecurrencePattern, ce::LONG> get;
  Setter<IRecurrencePattern, ce::LONG> put;
  unsigned types;  // 1 << PatternType
};

constexpr unsigned Bit(PatternType type) {
  return 1u << static_cast<unsigned>(type);
}

constexpr NumberRow kNumbers[] = {
    {"Interval", &Pattern::interval, &IRecurrencePattern::get_Interval,
     &IRecurrencePattern::put_Interval,
     Bit(PatternType::kDaily) | Bit(PatternType::kWeekly) | Bit(PatternType::kMonthly) |
         Bit(PatternType::kMonthNth)},
    {"DayOfWeekMask", &Pattern::daysOfWeek, &IRecurrencePattern::get_DayOfWeekMask,
     &IRecurrencePattern::put_DayOfWeekMask,
     Bit(PatternType::kWeekly) | Bit(PatternType::kMonthNth) | Bit(PatternType::kYearNth)},
    {"DayOfMonth", &Pattern::dayOfMonth, &IRecurrencePattern::get_DayOfMonth,
     &IRecurrencePattern::put_DayOfMonth, Bit(PatternType::kMonthly) | Bit(PatternType::kYearly)},
    {"Instance", &Pattern::instance, &IRecurrencePattern::get_Instance,
     &IRecurrencePattern::put_Instance, Bit(PatternType::kMonthNth) | Bit(PatternType::kYearNth)},
    {"MonthOfYear", &Pattern::monthOfYear, &IRecurrencePattern::get_MonthOfYear,
     &IRecurrencePattern::put_MonthOfYear, Bit(PatternType::kYearly) | Bit(PatternType::kYearNth)},
};

}  // namespace

Pattern ReadPattern(IRecurrencePattern& from) {
  Pattern pattern;
  pattern.type = static_cast<PatternType>(
      Read(from, &IRecurrencePattern::get_RecurrenceType, "RecurrenceType"));
  for (const NumberRow& row : kNumbers)
    if (row.types & Bit(pattern.type)) pattern.*row.member = Read(from, row.get, row.name);
  if (!ReadFlag(from, &IRecurrencePattern::get_NoEndDate, "NoEndDate"))
    pattern.until = DayOf(Read(from, &IRecurrencePattern::get_PatternEndDate, "PatternEndDate"));
  return pattern;
}

bool HasDays(const Pattern& pattern, calendar::local_days start) {
  return calendar::IsValid(pattern) && calendar::NextDayOf(pattern, start, start).has_value();
}

void WritePattern(const Pattern& from, IRecurrencePattern& pattern) {
  // First, since it gives the others the values that the start implies.
  Check(pattern.put_RecurrenceType(static_cast<ce::LONG>(from.type)), "RecurrenceType");
  for (const NumberRow& row : kNumbers)
    if (row.types & Bit(from.type)) Check((pattern.*row.put)(from.*row.member), row.name);
  if (from.occurrences)
    Check(pattern.put_Occurrences(*from.occurrences), "Occurrences");
  else if (from.until)
    Check(pattern.put_PatternEndDate(DateOf(*from.until)), "PatternEndDate");
  else
    PutFlag(pattern, &IRecurrencePattern::put_NoEndDate, true, "NoEndDate");
}

}  // namespace tool
