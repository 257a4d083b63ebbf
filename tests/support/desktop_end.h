// The desktop's end of a connection whose other end a streamed request is given in the same
// process.
#pragma once

#include <string>
#include <thread>
#include <vector>

#include "handheld/base/unique_fd.h"
#include "platform/sockets.h"

namespace corvane::testing {

enum class AfterSending { kStayOpen, kClose };

class DesktopEnd {
 public:
  // Sends the pieces and collects what comes back. Of several pieces the agent receives each by a
  // recv of its own, which must ask for at least that much.
  explicit DesktopEnd(std::vector<std::string> pieces = {},
                      AfterSending after = AfterSending::kStayOpen);
  ~DesktopEnd();
  DesktopEnd(const DesktopEnd&) = delete;
  DesktopEnd& operator=(const DesktopEnd&) = delete;

  // The agent's end; who gets it closes it.
  ce::SOCKET socket() const { return socket_; }
  // All that the agent sent. To be called once the request has returned: waits for the agent's end
  // to be closed, so a request that leaves it open never comes back from here.
  std::string Received();

 private:
  void Send(const std::vector<std::string>& pieces, AfterSending after);
  void Collect();

  ce::host::UniqueFd fd_;
  ce::SOCKET socket_ = 0;
  std::string received_;
  std::thread sender_;
  std::thread collector_;
};

}  // namespace corvane::testing
