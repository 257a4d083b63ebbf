#include "common/files/atomic_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <random>
#include <system_error>

#include "common/files/error.h"

namespace files {
namespace {

constexpr std::size_t kBuffer = 256 * 1024;

std::filesystem::path DirectoryOf(const std::filesystem::path& path) {
  return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

}  // namespace

AtomicFile::AtomicFile(const std::filesystem::path& path) : path_(path) {
  struct stat status {};
  const bool exists = stat(path.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode)) {
    file_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file_ < 0) Fail("open");
    return;
  }
  std::error_code error;
  if (exists) path_ = std::filesystem::canonical(path, error);
  if (error) path_ = path;

  std::random_device random;
  do {
    temporary_ =
        DirectoryOf(path_) / fmt::format(".{}.{:08x}.tmp", path_.filename().string(), random());
    file_ = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  } while (file_ < 0 && errno == EEXIST);
  if (file_ < 0) {
    temporary_.clear();
    Fail("write");
  }
  if (exists) fchmod(file_, status.st_mode & 07777);
}

AtomicFile::~AtomicFile() {
  if (file_ >= 0) close(file_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void AtomicFile::Fail(std::string_view what) const {
  throw Error(fmt::format("cannot {} {}: {}", what, path_.string(), std::strerror(errno)));
}

void AtomicFile::Write(std::string_view bytes) {
  buffer_ += bytes;
  if (buffer_.size() >= kBuffer) Flush();
}

void AtomicFile::Flush() {
  std::string_view left = buffer_;
  while (!left.empty()) {
    const ssize_t written = write(file_, left.data(), left.size());
    if (written >= 0) {
      left.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      Fail("write");
    }
  }
  buffer_.clear();
}

void AtomicFile::Commit(std::string_view suffix) {
  Flush();
  const bool direct = temporary_.empty();
  if (!direct && fsync(file_) != 0) Fail("write");
  const int file = file_;
  file_ = -1;
  if (close(file) != 0) Fail("write");
  if (direct) return;
  std::filesystem::path target = path_;
  target += suffix;
  if (rename(temporary_.c_str(), target.c_str()) != 0) Fail("write");
  temporary_.clear();
  SyncDirectoryOf(path_);
}

void SyncDirectoryOf(const std::filesystem::path& path) {
  const int opened = open(DirectoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) return;
  fsync(opened);
  close(opened);
}

std::string ReadWholeFile(const std::filesystem::path& path) {
  const auto fail = [&] {
    throw Error(fmt::format("cannot read {}: {}", path.string(), std::strerror(errno)));
  };
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) fail();
  std::string bytes;
  std::size_t filled = 0;
  ssize_t got = 0;
  do {
    if (bytes.size() - filled < kBuffer) bytes.resize(std::max(2 * filled, filled + kBuffer));
    got = read(file, bytes.data() + filled, bytes.size() - filled);
    if (got > 0) filled += static_cast<std::size_t>(got);
  } while (got > 0 || (got < 0 && errno == EINTR));
  const int error = errno;
  close(file);
  if (got < 0) {
    errno = error;
    fail();
  }
  bytes.resize(filled);
  return bytes;
}

}  // namespace files
