// A network's addresses, or a single one: who may connect.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct sockaddr_storage;

namespace ce::host {

// An IPv6 address, or an IPv4 one in the form that IPv6 has for it; in network order.
using AnyAddress = std::array<std::uint8_t, 16>;

// All zero for an address of another family.
AnyAddress AnyAddressOf(const ::sockaddr_storage& address);
// "192.168.1.7" or "fd00::7".
std::string TextOf(const AnyAddress& address);
// Of this computer alone.
bool IsLoopback(const AnyAddress& address);

class AddressRange {
 public:
  // Reads "ADDRESS" or "ADDRESS/BITS", IPv4 or IPv6. Nothing, with `error` worded for people, for
  // other text and for an address with bits beyond those that count.
  static std::optional<AddressRange> Parse(std::string_view text, std::string* error);

  bool Contains(const AnyAddress& address) const;

 private:
  AnyAddress first_{};
  unsigned bits_ = 128;
};

}  // namespace ce::host
