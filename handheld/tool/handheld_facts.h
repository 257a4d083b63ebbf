// What a handheld says of itself that commands go by.
#pragma once

#include <string>

#include "common/calendar/wall_time.h"
#include "common/calendar/zone.h"
#include "handheld/directory/handheld.h"

namespace tool {

// The time on its clock, in its zone; the handheld is the process's current one.
formats::local_seconds LocalNow(const calendar::Zone& zone);

// The country of its language, such as "AT" of "de-AT", for phone::PhoneNumbers; empty for none.
std::string CountryOf(ce::host::Handheld& handheld);

}  // namespace tool
