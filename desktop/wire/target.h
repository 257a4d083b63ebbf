// Where an agent listens.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace desktop {

struct Target {
  std::string host = "127.0.0.1";  // a name or a numeric address, IPv6 without brackets
  std::string port = "2005";       // decimal, 1 to 65535
  friend bool operator==(const Target&, const Target&) = default;
};

// HOST, HOST:PORT, [IPV6], [IPV6]:PORT or a bare IPv6 address; nothing for any other text.
std::optional<Target> ParseTarget(std::string_view text);

// "127.0.0.1:2005", "[::1]:2005".
std::string ToString(const Target& target);

}  // namespace desktop
