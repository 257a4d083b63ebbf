// Between people's tasks (UTF-8) and Pocket Outlook's items (UTF-16).
#pragma once

#include "common/formats/items/task.h"
#include "handheld/tool/item_fields.h"
#include "platform/pocket_outlook_calendar.h"

namespace tool {

// Everything but the identity that another program gave it. Throws StatusError.
formats::Task ReadItem(ce::ITask& item);

// Sets every field and the pattern; does not save. What cannot be kept is a line of the result.
// Throws StatusError.
NotKept WriteItem(const formats::Task& task, ce::ITask& item);

}  // namespace tool
