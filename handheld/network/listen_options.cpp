#include "handheld/network/listen_options.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <charconv>
#include <mutex>
#include <utility>

namespace ce::host {
namespace {

std::mutex g_lock;

ListenOptions& Options() {
  static ListenOptions* const options = new ListenOptions;
  return *options;
}

bool IsAddress(const std::string& text) {
  in_addr address{};
  return ::inet_pton(PF_INET, text.c_str(), &address) == 1;
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

bool ParseListenAddress(std::string_view text, std::string* address, std::uint16_t* port,
                        std::string* error) {
  const std::size_t colon = text.rfind(':');
  const std::string addressText(text.substr(0, colon));
  if (!(addressText.empty() && colon != text.npos) && !IsAddress(addressText)) {
    *error = "\"" + addressText + "\" is not an IPv4 address";
    return false;
  }
  std::uint16_t readPort = *port;
  if (colon != text.npos && !ReadPort(text.substr(colon + 1), &readPort)) {
    *error = "\"" + std::string(text.substr(colon + 1)) + "\" is not a port number (0 to 65535)";
    return false;
  }
  if (!addressText.empty()) *address = addressText;
  *port = readPort;
  return true;
}

}  // namespace ce::host
