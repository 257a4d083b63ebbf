#include "handheld/network/socket_address.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <cstring>

namespace ce::host {
namespace {

std::string WithPort(const char* address, WORD port) {
  return std::string(address) + ":" + std::to_string(ntohs(port));
}

}  // namespace

std::string AddressText(const ::sockaddr_in& address) {
  char text[INET_ADDRSTRLEN] = {};
  ::inet_ntop(PF_INET, &address.sin_addr, text, sizeof(text));
  return WithPort(text, address.sin_port);
}

std::string BoundAddressText(int fd) {
  ::sockaddr_storage address{};
  socklen_t length = sizeof(address);
  if (::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) return {};
  if (address.ss_family == PF_INET) {
    ::sockaddr_in ip4{};
    std::memcpy(&ip4, &address, sizeof(ip4));
    return AddressText(ip4);
  }
  if (address.ss_family != PF_INET6) return {};
  sockaddr_in6 ip6{};
  std::memcpy(&ip6, &address, sizeof(ip6));
  char text[INET6_ADDRSTRLEN] = {};
  ::inet_ntop(PF_INET6, &ip6.sin6_addr, text, sizeof(text));
  return WithPort(("[" + std::string(text) + "]").c_str(), ip6.sin6_port);
}

sockaddr_in DeviceAddress(const ::sockaddr_storage& address) {
  sockaddr_in device{};
  if (address.ss_family == PF_INET) {
    ::sockaddr_in ip4{};
    std::memcpy(&ip4, &address, sizeof(ip4));
    device.sin_port = ip4.sin_port;
    device.sin_addr.s_addr = ip4.sin_addr.s_addr;
  } else if (address.ss_family == PF_INET6) {
    sockaddr_in6 ip6{};
    std::memcpy(&ip6, &address, sizeof(ip6));
    if (!IN6_IS_ADDR_V4MAPPED(&ip6.sin6_addr)) return device;
    device.sin_port = ip6.sin6_port;
    std::memcpy(&device.sin_addr.s_addr, &ip6.sin6_addr.s6_addr[12], 4);
  } else {
    return device;
  }
  device.sin_family = static_cast<WORD>(AF_INET);
  return device;
}

}  // namespace ce::host
