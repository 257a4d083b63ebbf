// The result of a command, for people and for programs.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "handheld/tool/report.h"

namespace tool {

using Json = nlohmann::ordered_json;

// On one line, which has no end. A terminal gets ASCII alone, which can do nothing to it.
inline std::string JsonText(const Json& object, const Report& report) {
  return object.dump(-1, ' ', report.outIsTerminal, Json::error_handler_t::replace);
}

inline void TellJson(const Report& report, const Json& object) {
  fmt::print(report.out, "{}\n", JsonText(object, report));
}

// What has been done: a line of JSON where that is wanted; else words, unless only errors are.
template <typename... Values>
void TellResult(const Report& report, const Json& object, fmt::format_string<Values...> words,
                Values&&... values) {
  if (report.json)
    TellJson(report, object);
  else if (report.verbosity != Verbosity::kErrors)
    Tell(report.out, words, std::forward<Values>(values)...);
}

}  // namespace tool
