// The names of hosts.
#pragma once

#include <vector>

#include "platform/types.h"

namespace ce::host {

// The IPv4 addresses of the host of this name, in network byte order; none when it is unknown.
std::vector<DWORD> AddressesOfHost(const char* name);

}  // namespace ce::host
