// Where and how the agent listens on this host.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "handheld/network/address_range.h"

namespace ce::host {

// The agent binds the device's port 2005. What that is on this host is the user's choice.
struct ListenOptions {
  // For an agent that binds any address. One that the agent itself names is bound as named.
  std::string address = "127.0.0.1";
  // In place of 2005; 0 for any free one.
  std::uint16_t port = 2005;
  // Closing the listener leaves it listening for the next one that binds, so that no connection is
  // refused meanwhile.
  bool keepListening = false;
  // Who may connect; everybody when there are none.
  std::vector<AddressRange> allowed = {};
  // Told once of each listener that listens, with its real address: "127.0.0.1:2005".
  std::function<void(const std::string& address)> onListening;
  // Told before that of a listener that other computers can reach.
  std::function<void(const std::string& address)> onOpenToNetwork = {};
  // Told of the address of somebody who may not connect, once for as long as it is the same one.
  std::function<void(const std::string& address)> onRefusal = {};
  // Told when bind or listen failed, with a message for people.
  std::function<void(const std::string& message)> onFailure;
};

// For listeners bound from now on.
void SetListenOptions(ListenOptions options);
ListenOptions CurrentListenOptions();

// Whether somebody from this address may connect; says so when not.
bool MayConnect(const AnyAddress& address);

// Ends a listener that keepListening holds; nothing when there is none.
void CloseKeptListener();

// Reads "ADDR", "ADDR:PORT" or ":PORT", with an IPv4 address or the name of a host, of which the
// first IPv4 address is given. A part that is not given leaves its value unchanged. False, with
// `error` worded for people and nothing else changed, for other text.
[[nodiscard]] bool ParseListenAddress(std::string_view text, std::string* address,
                                      std::uint16_t* port, std::string* error);

}  // namespace ce::host
