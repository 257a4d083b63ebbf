#include "handheld/network/handed_over_listener.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace ce::host {
namespace {

constexpr int kFirstFd = 3;

int Option(int fd, int option) {
  int value = -1;
  socklen_t length = sizeof(value);
  return ::getsockopt(fd, SOL_SOCKET, option, &value, &length) == 0 ? value : -1;
}

bool ListensForConnections(int fd) {
  const int domain = Option(fd, SO_DOMAIN);
  return (domain == PF_INET || domain == PF_INET6) && Option(fd, SO_TYPE) == SOCK_STREAM &&
         Option(fd, SO_ACCEPTCONN) == 1;
}

bool MakeOwn(int fd) {
  const int flags = ::fcntl(fd, F_GETFL);
  return flags >= 0 && ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) == 0 &&
         ::fcntl(fd, F_SETFD, FD_CLOEXEC) == 0;
}

}  // namespace

SocketPtr TakeHandedOverListener() {
  const char* process = std::getenv("LISTEN_PID");
  const char* count = std::getenv("LISTEN_FDS");
  if (!process || !count || process != std::to_string(::getpid())) return nullptr;
  const std::string handedOver = count;
  for (const char* name : {"LISTEN_PID", "LISTEN_FDS", "LISTEN_FDNAMES"}) ::unsetenv(name);
  if (handedOver != "1") {
    throw HandedOverError("the service manager handed over " + handedOver +
                          " sockets instead of one");
  }
  if (!ListensForConnections(kFirstFd) || !MakeOwn(kFirstFd)) {
    throw HandedOverError("what the service manager handed over is no listening TCP socket");
  }
  return std::make_shared<Socket>(UniqueFd(kFirstFd), SocketState::kListening);
}

}  // namespace ce::host
