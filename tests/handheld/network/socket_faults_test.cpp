#include <gtest/gtest.h>

#include <filesystem>

#include "handheld/network/socket_watcher.h"
#include "handheld/system/threads.h"
#include "platform/status.h"
#include "tests/handheld/network/loopback.h"
#include "tests/support/fault_runs.h"

namespace corvane::testing {
namespace {

std::ptrdiff_t OpenDescriptors() {
  const std::filesystem::directory_iterator open("/proc/self/fd");
  return std::distance(begin(open), end(open));
}

// The request's own thread: as little as makes use of every call.
ce::DWORD Serve(void* parameter) {
  const auto socket = reinterpret_cast<ce::SOCKET>(parameter);
  char request[4];
  if (ce::recv(socket, request, sizeof(request), 0) != sizeof(request)) return 1;
  if (ce::send(socket, "pong", 4, 0) != 4) return 1;
  return ce::closesocket(socket) == 0 ? 0 : 1;
}

// Listens and serves one peer; false and the last error when a call on the way fails.
class OneSession : public LoopbackTest {
 protected:
  bool Run(std::optional<Peer>* peer) {
    ce::WSADATA data{};
    if (const ce::INT error = ce::WSAStartup(0x0101, &data)) {
      ce::SetLastError(static_cast<ce::DWORD>(error));
      return false;
    }
    const ce::SOCKET listener = NewSocket();
    const bool served = listener != ce::INVALID_SOCKET && ServeOne(listener, peer);
    const ce::DWORD error = ce::GetLastError();
    const bool closed = listener == ce::INVALID_SOCKET || ce::closesocket(listener) == 0;
    if (!served) ce::SetLastError(error);
    return served && closed;
  }

 private:
  bool ServeOne(ce::SOCKET listener, std::optional<Peer>* peer) {
    const ce::sockaddr_in agent = AgentAddress();
    if (ce::bind(listener, &agent, sizeof(agent)) != 0 || ce::listen(listener, 1) != 0) {
      return false;
    }
    peer->emplace(Port());
    (*peer)->Send("ping");
    ce::fd_set read{1, {listener}};
    if (ce::select(0, &read, nullptr, nullptr, nullptr) != 1) return false;
    const ce::SOCKET accepted = ce::accept(listener, nullptr, nullptr);
    if (accepted == ce::INVALID_SOCKET) return false;
    return ce::CreateThread(nullptr, 0, Serve, reinterpret_cast<void*>(accepted), 0, nullptr) != 0;
  }
};

TEST_F(OneSession, LeavesNothingOpenWhicheverCallFails) {
  constexpr ce::DWORD kError = 10999;
  struct Outcome {
    bool ran = false;
    ce::DWORD error = 0;
    std::optional<Peer> peer;
  };
  const std::ptrdiff_t before = OpenDescriptors();
  const auto run = [this] {
    Outcome outcome;
    outcome.ran = Run(&outcome.peer);
    outcome.error = ce::GetLastError();
    ce::host::WaitForRequestThreads();
    return outcome;
  };
  const std::uint64_t calls = FailEachCall(kError, run, [&](Outcome& outcome, const auto& call) {
    if (call.empty()) {
      EXPECT_TRUE(outcome.ran);
    }
    if (!outcome.ran) {
      EXPECT_EQ(outcome.error, kError);
    }
    EXPECT_EQ(failures_.size(), call == "bind" || call == "listen" ? 1u : 0u);
    failures_.clear();
    if (outcome.ran && call != "recv" && call != "send") {
      EXPECT_EQ(outcome.peer->Receive(4), "pong");
    }
    if (outcome.peer) {
      EXPECT_TRUE(ce::host::AbandonedSocketCount() == 1 ||
                  Eventually([&] { return outcome.peer->EndHasArrived(); }));
      outcome.peer.reset();
    }
    EXPECT_TRUE(Eventually([] { return ce::host::AbandonedSocketCount() == 0; }));
    ce::host::StopSocketWatcher();
    EXPECT_EQ(OpenDescriptors(), before);
  });
  EXPECT_EQ(calls, 11u) << "one for each call of a session";
}

}  // namespace
}  // namespace corvane::testing
