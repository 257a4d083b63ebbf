#include "desktop/folder/plain_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>

#include "common/files/atomic_file.h"
#include "common/files/error.h"
#include "desktop/folder/file_names.h"

namespace desktop {
namespace {

namespace fs = std::filesystem;

constexpr int kReadings = 5;
constexpr std::size_t kMostBytes = std::size_t{1} << 30;
constexpr std::size_t kMostNames = 100'000;

class OpenFile {
 public:
  explicit OpenFile(const fs::path& path)
      : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK)) {}
  ~OpenFile() {
    if (file_ >= 0) close(file_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  int get() const { return file_; }

 private:
  const int file_;
};

FileStamp StampFrom(const struct stat& status) {
  const auto time = [](const timespec& at) {
    return std::chrono::seconds(at.tv_sec) + std::chrono::nanoseconds(at.tv_nsec);
  };
  const auto modified = time(status.st_mtim);
  const auto changed = time(status.st_ctim);
  return {
      fmt::format("{}-{}-{}-{}", modified.count(), changed.count(), status.st_size, status.st_ino),
      std::chrono::system_clock::time_point(
          std::chrono::duration_cast<std::chrono::system_clock::duration>(
              std::max(modified, changed)))};
}

[[noreturn]] void Fail(const char* what, const fs::path& path, int error) {
  throw files::Error(fmt::format("cannot {} {}: {}", what, path.string(), std::strerror(error)));
}

std::string ReadAll(int file, std::size_t size, const fs::path& path) {
  std::string bytes(size + 1, '\0');
  std::size_t filled = 0;
  while (true) {
    if (filled == bytes.size()) bytes.resize(2 * bytes.size());
    const ssize_t got = read(file, bytes.data() + filled, bytes.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) Fail("read", path, errno);
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
    if (filled > kMostBytes) Fail("read", path, EFBIG);
  }
  bytes.resize(filled);
  return bytes;
}

// Nothing when it was changed on the way.
std::optional<FileBytes> ReadOnce(const fs::path& path) {
  const OpenFile file(path);
  if (file.get() < 0) Fail("read", path, errno);
  struct stat before {};
  if (fstat(file.get(), &before) != 0) Fail("read", path, errno);
  if (!S_ISREG(before.st_mode)) throw files::Error(path.string() + " is not a file");
  if (static_cast<std::size_t>(before.st_size) > kMostBytes) Fail("read", path, EFBIG);
  FileBytes read{ReadAll(file.get(), static_cast<std::size_t>(before.st_size), path), {}};
  struct stat after {};
  if (fstat(file.get(), &after) != 0) Fail("read", path, errno);
  read.stamp = StampFrom(before);
  if (!(StampFrom(after) == read.stamp)) return std::nullopt;
  return read;
}

}  // namespace

FileLook LookAt(const fs::path& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    return {errno == ENOENT || errno == ENOTDIR ? FileType::kNothing : FileType::kOther, {}};
  }
  if (S_ISREG(status.st_mode)) return {FileType::kFile, StampFrom(status)};
  return {S_ISLNK(status.st_mode) ? FileType::kLink : FileType::kOther, {}};
}

FileBytes ReadPlainFile(const fs::path& path) {
  for (int i = 0; i < kReadings; ++i) {
    if (std::optional<FileBytes> read = ReadOnce(path)) return *std::move(read);
  }
  throw files::Error(path.string() + " is being written by another program");
}

fs::path MoveToFreeName(const fs::path& file, const fs::path& target) {
  for (std::size_t attempt = 1; attempt <= kMostNames; ++attempt) {
    fs::path name = NumberedName(target, attempt);
    if (link(file.c_str(), name.c_str()) == 0) {
      files::SyncDirectoryOf(name);
      if (unlink(file.c_str()) != 0) {
        const int error = errno;
        unlink(name.c_str());
        Fail("remove", file, error);
      }
      files::SyncDirectoryOf(file);
      return name;
    }
    if (errno == EEXIST) continue;
    if (errno != EXDEV && errno != EPERM && errno != EMLINK && errno != EOPNOTSUPP) {
      Fail("move", file, errno);
    }
    // A file system without links, or another one.
    fs::path written = WriteToFreeName(ReadPlainFile(file).bytes, target);
    if (unlink(file.c_str()) != 0) {
      const int error = errno;
      unlink(written.c_str());
      Fail("remove", file, error);
    }
    files::SyncDirectoryOf(file);
    return written;
  }
  Fail("move", file, EEXIST);
}

fs::path WriteToFreeName(std::string_view bytes, const fs::path& target) {
  for (std::size_t attempt = 1; attempt <= kMostNames; ++attempt) {
    fs::path name = NumberedName(target, attempt);
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(name, ignored))) continue;
    files::AtomicFile file(name);
    file.Write(bytes);
    if (file.CommitNew()) return name;
  }
  Fail("write", target, EEXIST);
}

}  // namespace desktop
