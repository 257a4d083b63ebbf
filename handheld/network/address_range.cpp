#include "handheld/network/address_range.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <functional>

namespace ce::host {
namespace {

constexpr unsigned kAllBits = 128;
constexpr unsigned kIp4Bits = 32;
constexpr unsigned kIp4Start = 12;
constexpr AnyAddress kIp6Loopback = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

bool IsIp4(const AnyAddress& address) {
  return std::ranges::all_of(address.begin(), address.begin() + 10,
                             [](auto b) { return b == 0; }) &&
         address[10] == 0xFF && address[11] == 0xFF;
}

bool AreZero(const AnyAddress& address, unsigned firstBit, unsigned endBit) {
  for (unsigned i = firstBit; i < endBit; ++i) {
    if (address[i / 8] & 0x80u >> i % 8) return false;
  }
  return true;
}

AnyAddress OfIp4(const void* bytes) {
  AnyAddress address{};
  address[10] = address[11] = 0xFF;
  std::memcpy(&address[kIp4Start], bytes, kIp4Bits / 8);
  return address;
}

// How many bits the address has in its own form; 0 when it is none.
unsigned ReadAddress(const std::string& text, AnyAddress& address) {
  if (::inet_pton(AF_INET6, text.c_str(), address.data()) == 1) return kAllBits;
  ::in_addr ip4{};
  if (::inet_pton(AF_INET, text.c_str(), &ip4) != 1) return 0;
  address = OfIp4(&ip4);
  return kIp4Bits;
}

}  // namespace

AnyAddress AnyAddressOf(const ::sockaddr_storage& address) {
  AnyAddress any{};
  if (address.ss_family == AF_INET)
    return OfIp4(&reinterpret_cast<const ::sockaddr_in&>(address).sin_addr);
  if (address.ss_family == AF_INET6)
    std::memcpy(any.data(), &reinterpret_cast<const ::sockaddr_in6&>(address).sin6_addr,
                any.size());
  return any;
}

std::string TextOf(const AnyAddress& address) {
  char text[INET6_ADDRSTRLEN];
  const bool isIp4 = IsIp4(address);
  const void* const bytes = isIp4 ? &address[kIp4Start] : address.data();
  return ::inet_ntop(isIp4 ? AF_INET : AF_INET6, bytes, text, sizeof(text));
}

bool IsLoopback(const AnyAddress& address) {
  return address == kIp6Loopback || (IsIp4(address) && address[kIp4Start] == 127);
}

std::optional<AddressRange> AddressRange::Parse(std::string_view text, std::string* error) {
  const std::string whole(text);
  const std::size_t slash = whole.find('/');
  AddressRange range;
  const unsigned most = ReadAddress(whole.substr(0, slash), range.first_);
  if (most == 0) {
    *error = "\"" + whole + "\" is no address, nor a network such as 192.168.1.0/24";
    return std::nullopt;
  }
  unsigned bits = most;
  if (slash != whole.npos) {
    const char* const end = whole.data() + whole.size();
    const auto [stop, problem] = std::from_chars(whole.data() + slash + 1, end, bits);
    if (problem != std::errc{} || stop != end || bits > most) {
      *error = "\"" + whole + "\" has no number of bits from 0 to " + std::to_string(most);
      return std::nullopt;
    }
  }
  range.bits_ = kAllBits - most + bits;
  if (!AreZero(range.first_, range.bits_, kAllBits)) {
    *error = "\"" + whole + "\" is an address within a network of " + std::to_string(bits) +
             " bits: leave the bits away, or name the network's first address";
    return std::nullopt;
  }
  return range;
}

bool AddressRange::Contains(const AnyAddress& address) const {
  AnyAddress difference;
  std::ranges::transform(first_, address, difference.begin(), std::bit_xor<>());
  return AreZero(difference, 0, bits_);
}

}  // namespace ce::host
