// Element names that appointments and tasks have in common.
#pragma once

#include "platform/types.h"

namespace corvane {

inline constexpr const ce::WCHAR* kSubjectElement = u"SUBJECT";
inline constexpr const ce::WCHAR* kCategoriesElement = u"CATEGORIES";
inline constexpr const ce::WCHAR* kIsRecurringElement = u"IS_RECURRING";
inline constexpr const ce::WCHAR* kRecurrenceElement = u"RECURRENCE";
inline constexpr const ce::WCHAR* kHasReminderElement = u"HAS_REMINDER";
inline constexpr const ce::WCHAR* kReminderMinutesElement = u"ReminderMinutes";
inline constexpr const ce::WCHAR* kPrivateElement = u"Private";
inline constexpr const ce::WCHAR* kNotesElement = u"NOTES";
inline constexpr const ce::WCHAR* kBodyInkElement = u"BodyInk";

}  // namespace corvane
