#include "handheld/network/service_manager.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

#include "handheld/base/unique_fd.h"

namespace ce::host {
namespace {

// The manager names the stream that it reads as "DEVICE:INODE"; a child may have another.
bool IsReadByJournal(std::FILE* stream) {
  const char* journal = std::getenv("JOURNAL_STREAM");
  struct ::stat status {};
  if (!journal || ::fstat(::fileno(stream), &status) != 0) return false;
  return journal == std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino);
}

}  // namespace

void TellServiceManager(std::string_view state) {
  const char* const path = std::getenv("NOTIFY_SOCKET");
  ::sockaddr_un address{};
  if (!path || std::strlen(path) >= sizeof(address.sun_path)) return;
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, path);
  const std::size_t length = offsetof(::sockaddr_un, sun_path) + std::strlen(path);
  if (path[0] == '@') address.sun_path[0] = '\0';  // a name that is no file's
  const UniqueFd socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  // A manager that cannot be told sees for itself what becomes of the process.
  [[maybe_unused]] const ssize_t ignored =
      ::sendto(socket.get(), state.data(), state.size(), MSG_NOSIGNAL,
               reinterpret_cast<const ::sockaddr*>(&address), static_cast<socklen_t>(length));
}

void SayLine(std::FILE* to, Severity severity, std::string_view line) {
  const std::string prefix =
      IsReadByJournal(to) ? '<' + std::to_string(static_cast<int>(severity)) + '>' : "";
  std::fprintf(to, "%s%.*s\n", prefix.c_str(), static_cast<int>(line.size()), line.data());
  std::fflush(to);
}

}  // namespace ce::host
