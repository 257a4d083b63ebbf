// What programs print with --json.
#pragma once

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

namespace corvane::testing {

// An array of the lines, each of which is to be JSON by itself.
inline nlohmann::json JsonLines(const std::string& text) {
  nlohmann::json lines = nlohmann::json::array();
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

}  // namespace corvane::testing
