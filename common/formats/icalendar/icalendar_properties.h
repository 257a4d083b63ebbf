// What becomes of each property of an event and of a to-do: one row a name.
#pragma once

#include <string_view>

namespace formats {

// The words of X-MICROSOFT-CDO-BUSYSTATUS, by the numbers of a busy status.
inline constexpr std::string_view kBusyWords[] = {"FREE", "TENTATIVE", "BUSY", "OOF",
                                                  "WORKINGELSEWHERE"};

enum class ItemProperty {
  kIgnored,  // says nothing that a person would miss
  kNotKept,  // a handheld has no place for it
  kUid,
  kSummary,
  kLocation,
  kDescription,
  kCategories,
  kClass,
  kTransparency,
  kBusyStatus,
  kAllDay,
  kStatus,
  kPriority,
  kStart,
  kEnd,
  kDue,
  kDuration,
  kCompleted,
  kPercent,
  kRule,
  kExceptionRule,
  kDates,
  kExceptionDates,
  kRecurrenceId,
  kSequence,
  kStamp,
};

struct ItemRule {
  std::string_view name;
  ItemProperty event;
  ItemProperty task;
  std::string_view why = {};  // it is not kept
};

// The row of an upper-case name. One for an unknown name says that it is not kept, unless the name
// begins with "X-".
const ItemRule& FindItemRule(std::string_view name);

}  // namespace formats
