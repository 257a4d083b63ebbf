#include "platform/host/outlook/item_texts.h"

namespace ce::host {

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
