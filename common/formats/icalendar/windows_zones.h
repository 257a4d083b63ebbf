// Windows' names of time zones.
#pragma once

#include <string_view>

namespace formats {

// "Europe/Berlin" for "W. Europe Standard Time"; empty for a name that is not known.
std::string_view ZoneOfWindowsName(std::string_view name);

}  // namespace formats
