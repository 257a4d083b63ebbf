#include "handheld/network/listen_options.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <charconv>
#include <mutex>
#include <optional>
#include <utility>

#include "handheld/network/host_names.h"

namespace ce::host {
namespace {

std::mutex g_lock;

ListenOptions& Options() {
  static ListenOptions* const options = new ListenOptions;
  return *options;
}

// Nothing when the text neither is an IPv4 address nor names a host that has one.
std::optional<std::string> AddressOf(const std::string& text) {
  in_addr address{};
  if (::inet_pton(PF_INET, text.c_str(), &address) == 1) return text;
  // The host would take a number, or fewer than four of them, for an address.
  const auto isLetter = [](char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; };
  if (std::ranges::none_of(text, isLetter)) return std::nullopt;
  const std::vector<DWORD> addresses = AddressesOfHost(text.c_str());
  if (addresses.empty()) return std::nullopt;
  address.s_addr = addresses.front();
  char name[INET_ADDRSTRLEN];
  return ::inet_ntop(PF_INET, &address, name, sizeof(name));
}

bool IsIp6(const std::string& text) {
  in6_addr address{};
  return text.starts_with('[') || ::inet_pton(PF_INET6, text.c_str(), &address) == 1;
}

bool ReadPort(std::string_view text, std::uint16_t* port) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, *port);
  return error == std::errc{} && stop == end;
}

}  // namespace

void SetListenOptions(ListenOptions options) {
  const std::lock_guard guard(g_lock);
  Options() = std::move(options);
}

ListenOptions CurrentListenOptions() {
  const std::lock_guard guard(g_lock);
  return Options();
}

bool MayConnect(const AnyAddress& address) {
  const std::lock_guard guard(g_lock);
  const std::vector<AddressRange>& allowed = Options().allowed;
  const auto contains = [&](const AddressRange& range) { return range.Contains(address); };
  if (allowed.empty() || std::ranges::any_of(allowed, contains)) return true;
  static AnyAddress refusedLast{};
  if (std::exchange(refusedLast, address) != address && Options().onRefusal)
    Options().onRefusal(TextOf(address));
  return false;
}

bool ParseListenAddress(std::string_view text, std::string* address, std::uint16_t* port,
                        std::string* error) {
  if (const std::string whole(text); IsIp6(whole)) {
    *error = "\"" + whole + "\" is an IPv6 address; the agent listens on IPv4 only";
    return false;
  }
  const std::size_t colon = text.rfind(':');
  const std::string host(text.substr(0, colon));
  std::optional<std::string> readAddress = *address;
  if (!host.empty() || colon == text.npos) readAddress = AddressOf(host);
  if (!readAddress) {
    *error = "\"" + host + "\" is not an IPv4 address, nor the name of a host that has one";
    return false;
  }
  std::uint16_t readPort = *port;
  if (colon != text.npos && !ReadPort(text.substr(colon + 1), &readPort)) {
    *error = "\"" + std::string(text.substr(colon + 1)) + "\" is not a port number (0 to 65535)";
    return false;
  }
  *address = *std::move(readAddress);
  *port = readPort;
  return true;
}

}  // namespace ce::host
