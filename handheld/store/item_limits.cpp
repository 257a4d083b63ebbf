#include "handheld/store/item_limits.h"

namespace ce::host {

ItemLimits ReadItemLimits(const Handheld& handheld) {
  ItemLimits limits;
  const auto read = [&handheld](const char16_t* name, std::size_t& value) {
    value = handheld.Number(name, static_cast<DWORD>(value));
  };
  read(setting::kMaxContactText, limits.text);
  read(setting::kMaxSubject, limits.subject);
  read(setting::kMaxCalendarText, limits.calendarText);
  read(setting::kMaxBody, limits.body);
  limits.yomiFields = handheld.Number(setting::kYomiFields, 1) != 0;
  limits.reminderSet = handheld.Number(setting::kReminderSet, 1) != 0;
  limits.reminderMinutes = static_cast<LONG>(
      handheld.Number(setting::kReminderMinutes, static_cast<DWORD>(limits.reminderMinutes)));
  return limits;
}

std::size_t LongestText(const ItemLimits& limits, TextKind kind) {
  switch (kind) {
    case TextKind::kPlain:
    case TextKind::kFileAs:
    case TextKind::kYomi:
      return limits.text;
    case TextKind::kBody:
      return limits.body / sizeof(WCHAR);
    case TextKind::kSubject:
      return limits.subject;
    case TextKind::kCalendar:
      return limits.calendarText;
  }
  return 0;
}

}  // namespace ce::host
