// Finds what is on a handheld by words of it.
#pragma once

#include <string>

#include "handheld/tool/report.h"
#include "handheld/tool/session.h"

namespace tool {

// Whatever has every word of the text, in any of its fields and in any order, without regard to
// case and to marks of letters: contacts, appointments, tasks, messages, calls and notes, in this
// order. Numbers count with and without the signs that arrange them; messages and calls also have
// the name of whose number it is. A line each, or, as JSON, an object a line with its "kind".
// kFailed when nothing is found; a note that cannot be read is named, and makes that kPartlyDone.
Outcome Search(Session& session, const std::string& text, bool json, const Report& report);

}  // namespace tool
