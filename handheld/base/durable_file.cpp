#include "handheld/base/durable_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "handheld/base/fault.h"
#include "handheld/base/host_error.h"
#include "handheld/base/unique_fd.h"

namespace ce::host {
namespace {

bool WriteAll(int fd, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = ::write(fd, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool WriteDurably(const std::filesystem::path& file, std::string_view content) {
  const UniqueFd fd(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW,
                           S_IRUSR | S_IWUSR));
  return fd && WriteAll(fd.get(), content) && ::fsync(fd.get()) == 0;
}

bool SyncDirectory(const std::filesystem::path& directory) {
  const UniqueFd fd(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return fd && ::fsync(fd.get()) == 0;
}

}  // namespace

DWORD ReplaceFile(const std::filesystem::path& file, std::string_view content) {
  if (const DWORD error = FaultFor("ReplaceFile")) return error;
  const std::filesystem::path fresh = UnfinishedFile(file);
  if (!WriteDurably(fresh, content) || ::rename(fresh.c_str(), file.c_str()) != 0) {
    const DWORD error = ErrorFromErrno(errno, ERROR_WRITE_FAULT);
    ::unlink(fresh.c_str());
    return error;
  }
  // The new content stands; only its being there after a power cut is in doubt.
  if (!SyncDirectory(file.parent_path())) return ErrorFromErrno(errno, ERROR_WRITE_FAULT);
  return ERROR_SUCCESS;
}

std::filesystem::path UnfinishedFile(const std::filesystem::path& file) {
  return file.native() + ".new";
}

std::optional<std::string> ReadWholeFile(const std::filesystem::path& file, std::size_t limit) {
  const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status = {};
  if (!fd || ::fstat(fd.get(), &status) != 0) return std::nullopt;
  if (!S_ISREG(status.st_mode)) {
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return std::nullopt;
  }
  std::string content;
  char buffer[16384];
  while (true) {
    const ssize_t got = ::read(fd.get(), buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) return content;
    content.append(buffer, static_cast<std::size_t>(got));
    if (content.size() > limit) {
      errno = EFBIG;
      return std::nullopt;
    }
  }
}

}  // namespace ce::host
