#include "desktop/commands/result.h"

#include <algorithm>

#include "common/text/text.h"

namespace desktop {

void PrintJson(const Json& json, const Console& console) {
  const auto print = [&](const Json& each) {
    console.out << each.dump(-1, ' ', console.outIsTerminal, Json::error_handler_t::replace)
                << '\n';
  };
  if (json.is_array())
    std::ranges::for_each(json, print);
  else
    print(json);
}

void TellResult(const Console& console, const Json& object, std::string_view words) {
  if (console.json)
    PrintJson(object, console);
  else if (console.verbosity != Verbosity::kErrors)
    console.out << text::Shown(words) << '\n';
  FlushOutput(console);
}

}  // namespace desktop
