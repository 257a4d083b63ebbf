#include "desktop/transfer/journal.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "common/files/atomic_file.h"
#include "desktop/wire/error.h"

namespace desktop {

Journal::Journal(std::filesystem::path path) : path_(std::move(path)) {}

Journal::~Journal() {
  if (file_ >= 0) close(file_);
}

void Journal::Fail(int error) const {
  throw Error(fmt::format("cannot write {}: {}", path_.string(), std::strerror(error)));
}

bool Journal::exists() const {
  std::error_code error;
  return std::filesystem::exists(path_, error) || error;
}

std::vector<std::string> Journal::Lines() const {
  std::vector<std::string> lines;
  const std::string bytes = files::ReadWholeFile(path_);
  std::size_t begin = 0;
  for (std::size_t end; (end = bytes.find('\n', begin)) != std::string::npos; begin = end + 1) {
    lines.push_back(bytes.substr(begin, end - begin));
  }
  return lines;
}

void Journal::Open() {
  file_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0600);
  if (file_ < 0) Fail(errno);
  files::SyncDirectoryOf(path_);
}

bool Journal::Add(std::string_view lines) const {
  while (!lines.empty()) {
    const ssize_t written = write(file_, lines.data(), lines.size());
    if (written >= 0) {
      lines.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

void Journal::Append(std::string_view lines) {
  if (file_ < 0) Open();
  if (damaged_) Fail(EIO);
  if (Add(lines)) {
    size_ += static_cast<off_t>(lines.size());
    synced_ = false;
    return;
  }
  const int error = errno;
  damaged_ = ftruncate(file_, size_) != 0;
  Fail(error);
}

void Journal::Sync() {
  if (synced_) return;
  // What the system could not write it does not try again: a second call would tell of success.
  damaged_ = damaged_ || fdatasync(file_) != 0;
  if (damaged_) Fail(EIO);
  synced_ = true;
}

void Journal::Discard() {
  if (file_ >= 0) close(file_);
  file_ = -1;
  size_ = 0;
  synced_ = true;
  damaged_ = false;
  if (unlink(path_.c_str()) != 0 && errno != ENOENT) {
    throw Error(fmt::format("cannot delete {}: {}", path_.string(), std::strerror(errno)));
  }
}

}  // namespace desktop
