// The result of a command, for people and for programs.
#pragma once

#include <nlohmann/json.hpp>
#include <string_view>

#include "desktop/commands/console.h"

namespace desktop {

using Json = nlohmann::ordered_json;

// An object on a line by itself; a list has a line for each of its elements. A terminal gets ASCII
// alone, which can do nothing to it.
void PrintJson(const Json& json, const Console& console);

// What has been done: as JSON where that is wanted, else the words on a line, unless only errors
// are. Throws Error when the output cannot be written.
void TellResult(const Console& console, const Json& object, std::string_view words);

}  // namespace desktop
