#include "common/files/atomic_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <random>
#include <system_error>

#include "common/files/error.h"

namespace files {
namespace {

constexpr std::size_t kBuffer = 256 * 1024;
constexpr char kOpenFiles[] = "/proc/self/fd";

std::filesystem::path DirectoryOf(const std::filesystem::path& path) {
  return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

}  // namespace

AtomicFile::AtomicFile(const std::filesystem::path& path, Access access) : path_(path) {
  struct stat status {};
  const bool exists = stat(path.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode)) {
    direct_ = true;
    file_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file_ < 0) Fail("open");
    return;
  }
  std::error_code error;
  if (exists) path_ = std::filesystem::canonical(path, error);
  if (error) path_ = path;
  OpenTemporary(access == Access::kPrivate ? 0600 : 0666);
  if (exists && access == Access::kByUmask) fchmod(file_, status.st_mode & 07777);
}

void AtomicFile::OpenTemporary(mode_t mode) {
  // It can be given a name through there alone.
  if (::access(kOpenFiles, X_OK) == 0) {
    file_ = open(DirectoryOf(path_).c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, mode);
  }
  if (file_ >= 0) return;
  do {
    temporary_ = NameBeside();
    file_ = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  } while (file_ < 0 && errno == EEXIST);
  if (file_ < 0) {
    temporary_.clear();
    Fail("write");
  }
}

AtomicFile::~AtomicFile() {
  if (file_ >= 0) close(file_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

std::filesystem::path AtomicFile::NameBeside() const {
  std::random_device random;
  return DirectoryOf(path_) / fmt::format(".{}.{:08x}.tmp", path_.filename().string(), random());
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

// Gives the file without a name that of the target, or, where there is one, a name to replace it
// by.
void AtomicFile::Link(const std::filesystem::path& target) {
  const std::string self = fmt::format("{}/{}", kOpenFiles, file_);
  const auto link = [&](const std::filesystem::path& name) {
    return linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
  };
  if (link(target)) return;
  std::filesystem::path name;
  do {
    if (errno != EEXIST) Fail("write");
    name = NameBeside();
  } while (!link(name));
  temporary_ = name;
}

void AtomicFile::Finish() {
  Flush();
  if (!direct_ && fsync(file_) != 0) Fail("write");
}

void AtomicFile::Close() {
  const int file = file_;
  file_ = -1;
  if (close(file) != 0) Fail("write");
}

void AtomicFile::Commit(std::string_view suffix) {
  Finish();
  std::filesystem::path target = path_;
  target += suffix;
  if (!direct_ && temporary_.empty()) Link(target);
  Close();
  if (direct_) return;
  if (!temporary_.empty() && rename(temporary_.c_str(), target.c_str()) != 0) Fail("write");
  temporary_.clear();
  SyncDirectoryOf(path_);
}

// A file system that cannot tell whether the name is free gets it by way of a look before.
bool AtomicFile::LinkNew() {
  if (temporary_.empty()) {
    const std::string self = fmt::format("{}/{}", kOpenFiles, file_);
    return linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path_.c_str(), AT_SYMLINK_FOLLOW) == 0;
  }
  if (renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, path_.c_str(), RENAME_NOREPLACE) == 0) {
    return true;
  }
  if (errno != EINVAL && errno != ENOSYS) return false;
  struct stat status {};
  if (lstat(path_.c_str(), &status) == 0) {
    errno = EEXIST;
    return false;
  }
  return rename(temporary_.c_str(), path_.c_str()) == 0;
}

bool AtomicFile::CommitNew() {
  if (direct_) return false;
  Finish();
  if (!LinkNew()) {
    if (errno != EEXIST) Fail("write");
    return false;
  }
  temporary_.clear();
  Close();
  SyncDirectoryOf(path_);
  return true;
}

void MakePrivateDirectories(const std::filesystem::path& path) {
  std::error_code error;
  if (path.empty() || std::filesystem::exists(path, error)) return;
  MakePrivateDirectories(path.parent_path());
  mkdir(path.c_str(), 0700);
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
