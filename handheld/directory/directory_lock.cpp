#include "handheld/directory/directory_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "handheld/base/handheld_error.h"

namespace ce::host {
namespace {

// "123 corvane\n" as "corvane (process 123)".
std::string Holder(const std::filesystem::path& path) {
  const UniqueFd file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  char content[128];
  const ssize_t got = ::pread(file.get(), content, sizeof content, 0);
  const std::string text(content, got > 0 ? static_cast<std::size_t>(got) : 0);
  const std::size_t blank = text.find(' ');
  const std::size_t end = text.find('\n');
  // Between locking and writing, the file does not say yet.
  if (blank == std::string::npos || end == std::string::npos || blank > end) {
    return "another program";
  }
  return text.substr(blank + 1, end - blank - 1) + " (process " + text.substr(0, blank) + ")";
}

// False when somebody else has it. The error is in errno otherwise.
bool TakeLock(int file, int* error) {
  *error = ::flock(file, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
  return *error != EWOULDBLOCK;
}

}  // namespace

DirectoryLock::DirectoryLock(const std::filesystem::path& directory, std::string_view program) {
  const std::filesystem::path path = directory / ".lock";
  int error = 0;
  // Some file systems lock files alone.
  directory_.reset(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory_ && !TakeLock(directory_.get(), &error)) {
    throw HandheldInUse(directory.string() + " is in use by " + Holder(path));
  }
  file_.reset(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
  if (!file_) throw HandheldError(path.string() + " cannot be opened: " + std::strerror(errno));
  if (!TakeLock(file_.get(), &error)) {
    throw HandheldInUse(directory.string() + " is in use by " + Holder(path));
  }
  if (error != 0) {
    throw HandheldError(path.string() + " cannot be locked: " + std::strerror(error));
  }
  const std::string holder =
      std::to_string(::getpid()) + ' ' + std::string(program.substr(0, 64)) + '\n';
  if (::ftruncate(file_.get(), 0) != 0 ||
      ::pwrite(file_.get(), holder.data(), holder.size(), 0) < 0) {
    throw HandheldError(path.string() + " cannot be written: " + std::strerror(errno));
  }
}

DirectoryLock::~DirectoryLock() {
  // The lock goes with the descriptor; a stale name would mislead nobody, but looks like a holder.
  [[maybe_unused]] const int ignored = ::ftruncate(file_.get(), 0);
}

}  // namespace ce::host
