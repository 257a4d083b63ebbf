// The addresses of sockets, between the device's form, the host's and text.
#pragma once

#include <netinet/in.h>

#include <string>

#include "platform/sockets.h"

namespace ce::host {

// "127.0.0.1:2005".
std::string AddressText(const ::sockaddr_in& address);
// The address that the socket is bound to; empty when it has none.
std::string BoundAddressText(int fd);

// The device's form of an IPv4 address, also of one that an IPv6 socket shows in its own form; all
// zero for others.
sockaddr_in DeviceAddress(const ::sockaddr_storage& address);

}  // namespace ce::host
