#include "desktop/wire/target.h"

#include <algorithm>
#include <charconv>

namespace desktop {
namespace {

bool IsPort(std::string_view text) {
  unsigned port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  return error == std::errc{} && end == text.data() + text.size() && port >= 1 && port <= 65535;
}

bool IsHost(std::string_view text) {
  return !text.empty() && std::none_of(text.begin(), text.end(), [](unsigned char c) {
    return c <= ' ' || c == '/' || c == '[' || c == ']' || c == 0x7F;
  });
}

}  // namespace

std::optional<Target> ParseTarget(std::string_view text) {
  Target target;
  std::string_view host = text;
  std::string_view rest;
  if (text.starts_with('[')) {
    const std::size_t close = text.find(']');
    if (close == std::string_view::npos) return std::nullopt;
    host = text.substr(1, close - 1);
    rest = text.substr(close + 1);
  } else if (std::count(text.begin(), text.end(), ':') == 1) {
    const std::size_t colon = text.find(':');
    host = text.substr(0, colon);
    rest = text.substr(colon);
  }
  if (!IsHost(host)) return std::nullopt;
  target.host = host;
  if (!rest.empty()) {
    if (rest[0] != ':' || !IsPort(rest.substr(1))) return std::nullopt;
    target.port = rest.substr(1);
  }
  return target;
}

std::string ToString(const Target& target) {
  const bool v6 = target.host.find(':') != std::string::npos;
  return (v6 ? "[" + target.host + "]" : target.host) + ":" + target.port;
}

}  // namespace desktop
