// The recurrence vocabulary: one row a type of pattern.
#pragma once

#include <span>

#include "agent/vocabulary/calendar_words.h"
#include "platform/pocket_outlook_calendar.h"

namespace corvane {

inline constexpr const ce::WCHAR* kTypeElement = u"TYPE";
inline constexpr const ce::WCHAR* kDaysOfWeekElement = u"DAYS_OF_WEEK";
inline constexpr const ce::WCHAR* kDayOfMonthElement = u"DAY_OF_MONTH";  // of a monthly pattern
inline constexpr const ce::WCHAR* kDayElement = u"DAY";                  // of a yearly one
inline constexpr const ce::WCHAR* kWeekOfMonthElement = u"WEEK_OF_MONTH";
inline constexpr const ce::WCHAR* kMonthElement = u"MONTH";
inline constexpr const ce::WCHAR* kFrequencyElement = u"FREQUENCY";
inline constexpr const ce::WCHAR* kEndDateElement = u"END_DATE";
inline constexpr const ce::WCHAR* kOccurrencesElement = u"Occurrences";
inline constexpr const ce::WCHAR* kChangedExceptionElement = u"ChangedException";
inline constexpr const ce::WCHAR* kDeletedExceptionElement = u"DeletedException";
inline constexpr const ce::WCHAR* kOriginalDateElement = u"OriginalDate";

inline constexpr int kDaysInWeek = 7;

using PatternGetter = ce::HRESULT (ce::IRecurrencePattern::*)(ce::LONG*);
using PatternSetter = ce::HRESULT (ce::IRecurrencePattern::*)(ce::LONG);

// A child that only some types have, and its property.
struct RecurrenceChild {
  const ce::WCHAR* element;
  PatternGetter get;
  PatternSetter put;
  // Day numbers from 0 (Sunday) in a list, one for every bit of the property; otherwise a number.
  bool isDayList;
  // What the property is above the number on the wire.
  ce::LONG offset;
};

struct RecurrenceType {
  ce::LONG type;          // RecurrenceType of the pattern
  const ce::WCHAR* text;  // of "TYPE"
  const ce::WCHAR* exportTrace;
  const ce::WCHAR* importTrace;
  // In the order in which they are written and set. The interval comes behind them.
  std::span<const RecurrenceChild> children;
  bool hasInterval;  // "FREQUENCY"
};

// In the order in which a text is compared with them.
std::span<const RecurrenceType> RecurrenceTypes();

// Null for a type without a row.
const RecurrenceType* FindRecurrenceType(ce::LONG type);

}  // namespace corvane
