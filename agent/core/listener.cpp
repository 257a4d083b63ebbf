#include "agent/core/listener.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

#include "agent/core/request_dispatcher.h"
#include "agent/log/log.h"
#include "platform/registry.h"
#include "platform/sockets.h"
#include "platform/status.h"
#include "platform/threads.h"

namespace corvane {
namespace {

constexpr char16_t kAddressValue[] = u"IPAddr";
constexpr ce::WORD kWinsockVersion = 0x0101;
constexpr ce::INT kBacklog = 1;

std::atomic<ce::HANDLE> g_instance{0};
// The listener leaves the key that it opens open; ResetAgent closes it.
ce::HKEY g_addressKey = 0;
std::atomic<bool> g_endedByIdleRule{false};

// Whether the host has this address.
bool IsHostAddress(ce::DWORD address) {
  char name[128] = {};
  if (ce::gethostname(name, sizeof(name)) == ce::SOCKET_ERROR) return false;
  const ce::hostent* host = ce::gethostbyname(name);
  if (!host || host->h_length != sizeof(address) || !host->h_addr_list[0]) return false;
  for (char** entry = host->h_addr_list; *entry; ++entry) {
    ce::DWORD candidate;
    std::memcpy(&candidate, *entry, sizeof(candidate));
    LOG(u"Comparing to 0x%08X", candidate);
    if (candidate == address) {
      LOG(u"Match found");
      return true;
    }
  }
  return false;
}

// The address to listen on: the configured one when the host has it, else any.
ce::DWORD ConfiguredAddress(ce::HKEY key) {
  ce::DWORD type = 0;
  ce::DWORD address = 0;
  ce::DWORD size = sizeof(address);
  const ce::HRESULT status = ce::RegQueryValueExW(key, kAddressValue, nullptr, &type,
                                                  reinterpret_cast<ce::BYTE*>(&address), &size);
  if (ce::Failed(status) || type != ce::REG_DWORD || size != sizeof(address)) return 0;
  LOG(u"Got IPAddr from Registry: 0x%08X", address);
  return IsHostAddress(address) ? address : 0;
}

bool IsInSet(ce::SOCKET socket, const ce::fd_set& set) {
  return std::ranges::count(std::span(set.fd_array, set.fd_count), socket) > 0;
}

void AddToSet(ce::SOCKET socket, ce::fd_set& set) {
  if (!IsInSet(socket, set) && set.fd_count < ce::FD_SETSIZE) {
    set.fd_array[set.fd_count++] = socket;
  }
}

// The listening socket and the last error that was fetched. A step has failed when that error is
// negative: socket errors are positive, so they do not end the listener.
class Listener {
 public:
  ce::HRESULT Start();
  void Run();
  void Close() { ce::closesocket(socket_); }

 private:
  void Pass();
  void AcceptOne();
  void Idle();

  ce::SOCKET socket_ = ce::INVALID_SOCKET;
  ce::HRESULT error_ = ce::S_OK;
};

ce::HRESULT Listener::Start() {
  socket_ = ce::socket(ce::AF_INET, ce::SOCK_STREAM, 0);
  if (socket_ == ce::INVALID_SOCKET) error_ = ce::LastErrorStatus();
  if (ce::Failed(error_)) return error_;

  ce::sockaddr_in address{};
  address.sin_family = ce::AF_INET;
  address.sin_port = ce::HostToNetworkShort(AGENT_PORT);
  error_ = ce::RegOpenKeyExW(ce::HKEY_LOCAL_MACHINE, kAgentKey, 0, 0, &g_addressKey);
  if (ce::Failed(error_)) return error_;
  address.sin_addr.s_addr = ConfiguredAddress(g_addressKey);

  if (ce::bind(socket_, &address, sizeof(address)) == ce::SOCKET_ERROR)
    error_ = ce::LastErrorStatus();
  if (ce::Failed(error_)) return error_;
  if (ce::listen(socket_, kBacklog) == ce::SOCKET_ERROR) error_ = ce::LastErrorStatus();
  return error_;
}

void Listener::Run() {
  while (QuitRequested.load(std::memory_order_relaxed) == 0 && ce::Succeeded(error_)) Pass();
}

void Listener::Pass() {
  ce::fd_set readable{};
  AddToSet(socket_, readable);
  const ce::timeval period = {IdleSeconds.load(std::memory_order_relaxed), kSelectPeriod.tv_usec};
  const ce::INT ready = ce::select(0, &readable, nullptr, nullptr, &period);
  if (ready == 0) return Idle();
  if (ready == ce::SOCKET_ERROR) {
    error_ = ce::LastErrorStatus();
    if (ce::Failed(error_)) return;
  }
  if (IsInSet(socket_, readable)) AcceptOne();
}

void Listener::Idle() {
  if (ActiveRequestCount.load(std::memory_order_relaxed) > 1) return;
  const bool alreadyAsked = QuitRequested.exchange(1, std::memory_order_relaxed) != 0;
  g_endedByIdleRule.store(!alreadyAsked, std::memory_order_relaxed);
}

void Listener::AcceptOne() {
  LOG(u"Request coming in");
  const ce::SOCKET accepted = ce::accept(socket_, nullptr, nullptr);
  // Not tested: the thread finds out.
  const ce::HANDLE thread =
      ce::CreateThread(nullptr, 0, handleRequest, reinterpret_cast<void*>(accepted), 0, nullptr);
  if (thread == 0) error_ = ce::LastErrorStatus();
}

}  // namespace

std::atomic<ce::LONG> IdleSeconds{kSelectPeriod.tv_sec};
std::atomic<ce::LONG> ActiveRequestCount{1};
std::atomic<ce::DWORD> QuitRequested{0};

int WinMain(ce::HANDLE instance, ce::HANDLE /*previous*/, ce::WCHAR* /*commandLine*/,
            int /*show*/) {
  LoadLogSettings();
  LOG(u"Corvane App Started");
  g_instance = instance;
  ce::WSADATA data{};
  if (ce::WSAStartup(kWinsockVersion, &data) != 0) return 1;
  Listener listener;
  if (ce::Succeeded(listener.Start())) listener.Run();
  listener.Close();
  LOG(u"Corvane App Ending");
  return 0;
}

bool QuitByRequest() {
  return QuitRequested.load(std::memory_order_relaxed) != 0 &&
         !g_endedByIdleRule.load(std::memory_order_relaxed);
}

void ResetAgent() {
  CloseLog();
  ResetLogSettings();
  QuitRequested = 0;
  g_endedByIdleRule = false;
  if (g_addressKey != 0) ce::RegCloseKey(std::exchange(g_addressKey, 0));
}

}  // namespace corvane
