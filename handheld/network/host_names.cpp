#include "handheld/network/host_names.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "handheld/base/fault.h"
#include "handheld/network/socket_errors.h"
#include "platform/status.h"

namespace ce {
namespace {

constexpr std::size_t kMaxName = 256;

using Addresses = std::vector<DWORD>;  // network byte order

DWORD Ip4Of(const ::sockaddr* address) {
  ::sockaddr_in ip4{};
  std::memcpy(&ip4, address, sizeof(ip4));
  return ip4.sin_addr.s_addr;
}

// Every address that this host can be reached at, those of the loopback interface last.
Addresses OwnAddresses() {
  ::ifaddrs* first = nullptr;
  if (::getifaddrs(&first) != 0) return {};
  const std::unique_ptr<::ifaddrs, decltype(&::freeifaddrs)> list(first, &::freeifaddrs);
  Addresses addresses;
  for (const unsigned loopback : {0u, unsigned{IFF_LOOPBACK}}) {
    for (const ::ifaddrs* own = first; own; own = own->ifa_next) {
      if (!own->ifa_addr || own->ifa_addr->sa_family != PF_INET) continue;
      if (!(own->ifa_flags & IFF_UP) || (own->ifa_flags & IFF_LOOPBACK) != loopback) continue;
      addresses.push_back(Ip4Of(own->ifa_addr));
    }
  }
  return addresses;
}

bool HostName(char (&name)[kMaxName]) {
  name[kMaxName - 1] = '\0';
  return ::gethostname(name, kMaxName - 1) == 0;
}

// A name's entry and all that it points to.
class HostEntry {
 public:
  const hostent* Set(const char* name, Addresses addresses) {
    name_ = name;
    addresses_ = std::move(addresses);
    list_.clear();
    for (DWORD& address : addresses_) list_.push_back(reinterpret_cast<char*>(&address));
    list_.push_back(nullptr);
    entry_ = {name_.c_str(), &noAlias_, static_cast<short>(AF_INET), sizeof(DWORD), list_.data()};
    return &entry_;
  }

 private:
  std::string name_;
  Addresses addresses_;
  std::vector<char*> list_;
  char* noAlias_ = nullptr;
  hostent entry_{};
};

// The host's own name stands for all of its addresses, whatever its name service says.
const hostent* EntryOf(const char* name) {
  thread_local HostEntry entry;
  char own[kMaxName];
  Addresses addresses =
      HostName(own) && std::strcmp(own, name) == 0 ? OwnAddresses() : host::AddressesOfHost(name);
  return addresses.empty() ? nullptr : entry.Set(name, std::move(addresses));
}

}  // namespace

std::vector<DWORD> host::AddressesOfHost(const char* name) {
  ::addrinfo hints{};
  hints.ai_family = PF_INET;
  hints.ai_socktype = static_cast<int>(SOCK_STREAM);
  ::addrinfo* first = nullptr;
  if (::getaddrinfo(name, nullptr, &hints, &first) != 0) return {};
  const std::unique_ptr<::addrinfo, decltype(&::freeaddrinfo)> list(first, &::freeaddrinfo);
  Addresses addresses;
  for (const ::addrinfo* found = first; found; found = found->ai_next) {
    addresses.push_back(Ip4Of(found->ai_addr));
  }
  return addresses;
}

INT gethostname(char* name, INT bytes) {
  if (const DWORD error = host::FaultFor("gethostname")) return host::FailSocketCall(error);
  char own[kMaxName];
  if (!HostName(own)) return host::FailSocketCall(host::SocketErrorFromErrno(errno));
  const std::size_t size = std::strlen(own) + 1;
  if (!name || bytes < 0 || static_cast<std::size_t>(bytes) < size) {
    return host::FailSocketCall(host::kWsaFault);
  }
  std::memcpy(name, own, size);
  return 0;
}

const hostent* gethostbyname(const char* name) {
  DWORD error = host::FaultFor("gethostbyname");
  const hostent* entry = nullptr;
  if (error == 0) {
    error = host::kWsaHostNotFound;
    try {
      if (name) entry = EntryOf(name);
    } catch (...) {
      error = host::kWsaNoBuffers;
    }
  }
  if (!entry) SetLastError(error);
  return entry;
}

}  // namespace ce
