#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <mutex>
#include <unordered_set>
#include <utility>

#include "handheld/base/guarded.h"
#include "handheld/base/handle_table.h"
#include "handheld/base/host_error.h"
#include "handheld/system/device_path.h"

namespace ce {
namespace {

using host::DevicePath;
using host::ErrorFromErrno;
using host::FaultBytes;
using host::GuardedBool;
using host::GuardedCode;
using host::UniqueFd;

// A file by what it is, not by what it is called.
struct FileIdentity {
  explicit FileIdentity(const struct stat& status) : device(status.st_dev), file(status.st_ino) {}
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
  dev_t device;
  ino_t file;
};

class OpenFile;

// The files that are open. Never destroyed: a thread may end after static objects have.
struct OpenFiles {
  std::mutex lock;
  std::unordered_set<const OpenFile*> files;
};

OpenFiles& AllOpenFiles() {
  static OpenFiles* const files = new OpenFiles;
  return *files;
}

class OpenFile : public host::HandleObject {
 public:
  // The caller holds the lock of AllOpenFiles.
  OpenFile(UniqueFd file, FileIdentity identity, DWORD access, DWORD share)
      : fd(std::move(file)), identity_(identity), use_(UseFor(access)), share_(share) {
    AllOpenFiles().files.insert(this);
  }
  ~OpenFile() override {
    const std::lock_guard guard(AllOpenFiles().lock);
    AllOpenFiles().files.erase(this);
  }

  bool Is(const FileIdentity& identity) const { return identity_ == identity; }
  // Each use must be one that the other open file shares. One that neither reads nor writes is in
  // nobody's way.
  bool GoesWith(DWORD access, DWORD share) const {
    const DWORD use = UseFor(access);
    return use == 0 || use_ == 0 || ((use & ~share_) | (use_ & ~share)) == 0;
  }

  const UniqueFd fd;

 private:
  static DWORD UseFor(DWORD access) {
    return (access & GENERIC_READ ? FILE_SHARE_READ : 0) |
           (access & GENERIC_WRITE ? FILE_SHARE_WRITE : 0);
  }

  const FileIdentity identity_;
  const DWORD use_;  // as the FILE_SHARE_... that allows it
  const DWORD share_;
};

DWORD FindFile(HANDLE handle, std::shared_ptr<OpenFile>& file) {
  file = host::FindHandle<OpenFile>(handle);
  return file ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

int AccessFlags(DWORD access) {
  if ((access & GENERIC_WRITE) == 0) return O_RDONLY;
  return (access & GENERIC_READ) != 0 ? O_RDWR : O_WRONLY;
}

DWORD CheckDisposition(DWORD disposition, bool exists) {
  if (disposition < CREATE_NEW || disposition > OPEN_ALWAYS) return ERROR_INVALID_PARAMETER;
  if (disposition == CREATE_NEW && exists) return ERROR_FILE_EXISTS;
  if (disposition == OPEN_EXISTING && !exists) return ERROR_FILE_NOT_FOUND;
  return ERROR_SUCCESS;
}

// Opens or makes the entry. Never waits, whatever kind of entry it is, and never follows a link.
DWORD OpenEntry(const DevicePath& path, DWORD access, UniqueFd& fd, struct stat& status) {
  const int creation = path.exists ? 0 : O_CREAT | O_EXCL;
  const int flags = AccessFlags(access) | creation | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
  constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
  fd.reset(::openat(path.directory.get(), path.name.c_str(), flags, kMode));
  if (!fd || ::fstat(fd.get(), &status) != 0) return ErrorFromErrno(errno, ERROR_ACCESS_DENIED);
  return S_ISREG(status.st_mode) ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

// Nothing happens to the file when another one that is open does not share it.
DWORD OpenShared(const DevicePath& path, DWORD access, DWORD share, DWORD disposition,
                 std::shared_ptr<OpenFile>& file) {
  UniqueFd fd;
  struct stat status = {};
  if (const DWORD error = OpenEntry(path, access, fd, status)) return error;
  const FileIdentity identity(status);
  const std::lock_guard guard(AllOpenFiles().lock);
  for (const OpenFile* other : AllOpenFiles().files) {
    if (other->Is(identity) && !other->GoesWith(access, share)) return ERROR_SHARING_VIOLATION;
  }
  if (disposition == CREATE_ALWAYS && path.exists && ::ftruncate(fd.get(), 0) != 0) {
    return ErrorFromErrno(errno, ERROR_ACCESS_DENIED);
  }
  file = std::make_shared<OpenFile>(std::move(fd), identity, access, share);
  return ERROR_SUCCESS;
}

DWORD Seek(int fd, LONGLONG distance, DWORD method, LONGLONG& position) {
  constexpr int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  if (method > FILE_END) return ERROR_INVALID_PARAMETER;
  const off_t reached = ::lseek(fd, distance, kOrigins[method]);
  if (reached < 0) return errno == EINVAL ? ERROR_NEGATIVE_SEEK : ERROR_INVALID_PARAMETER;
  position = reached;
  return ERROR_SUCCESS;
}

// The kind of an entry that is to go from its place, which no open file allows.
DWORD KindOfClosed(const DevicePath& path, mode_t& kind) {
  struct stat status = {};
  if (!path.exists) return ERROR_FILE_NOT_FOUND;
  if (::fstatat(path.directory.get(), path.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return ErrorFromErrno(errno, ERROR_ACCESS_DENIED);
  }
  kind = status.st_mode;
  const FileIdentity identity(status);
  const std::lock_guard guard(AllOpenFiles().lock);
  for (const OpenFile* file : AllOpenFiles().files) {
    if (file->Is(identity)) return ERROR_SHARING_VIOLATION;
  }
  return ERROR_SUCCESS;
}

bool Rename(const DevicePath& from, const DevicePath& to) {
  // Should the target have come up meanwhile, it stays.
  const int done = ::renameat2(from.directory.get(), from.name.c_str(), to.directory.get(),
                               to.name.c_str(), RENAME_NOREPLACE);
  if (done == 0 || (errno != EINVAL && errno != ENOSYS)) return done == 0;
  // The file system cannot promise that.
  return ::renameat(from.directory.get(), from.name.c_str(), to.directory.get(), to.name.c_str()) ==
         0;
}

}  // namespace

HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, void*, DWORD disposition, DWORD,
                   HANDLE) {
  HANDLE handle = INVALID_HANDLE_VALUE;
  DWORD note = ERROR_SUCCESS;
  const DWORD error = GuardedCode("CreateFileW", [&]() -> DWORD {
    DevicePath entry;
    if (const DWORD failed = host::ResolveDevicePath(path, entry)) return failed;
    if (const DWORD failed = CheckDisposition(disposition, entry.exists)) return failed;
    std::shared_ptr<OpenFile> file;
    if (const DWORD failed = OpenShared(entry, access, share, disposition, file)) return failed;
    handle = host::AddHandle(std::move(file));
    if (entry.exists && disposition != OPEN_EXISTING) note = ERROR_ALREADY_EXISTS;
    return ERROR_SUCCESS;
  });
  SetLastError(error != ERROR_SUCCESS ? error : note);
  return handle;
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD bytes, DWORD* read, void*) {
  if (read) *read = 0;
  return GuardedBool("ReadFile", [&]() -> DWORD {
    std::shared_ptr<OpenFile> open;
    if (const DWORD error = FindFile(file, open)) return error;
    if (!read || (!buffer && bytes != 0)) return ERROR_INVALID_PARAMETER;
    const DWORD most = FaultBytes("ReadFile", bytes);
    while (*read < most) {
      const ssize_t got = ::read(open->fd.get(), static_cast<BYTE*>(buffer) + *read, most - *read);
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) return ErrorFromErrno(errno, ERROR_READ_FAULT);
      if (got == 0) break;
      *read += static_cast<DWORD>(got);
    }
    return ERROR_SUCCESS;
  });
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD bytes, DWORD* written, void*) {
  if (written) *written = 0;
  return GuardedBool("WriteFile", [&]() -> DWORD {
    std::shared_ptr<OpenFile> open;
    if (const DWORD error = FindFile(file, open)) return error;
    if (!written || (!buffer && bytes != 0)) return ERROR_INVALID_PARAMETER;
    const DWORD most = FaultBytes("WriteFile", bytes);
    while (*written < most) {
      const ssize_t put =
          ::write(open->fd.get(), static_cast<const BYTE*>(buffer) + *written, most - *written);
      if (put < 0 && errno == EINTR) continue;
      if (put < 0) return ErrorFromErrno(errno, ERROR_WRITE_FAULT);
      *written += static_cast<DWORD>(put);
    }
    return ERROR_SUCCESS;
  });
}

DWORD GetFileSize(HANDLE file, DWORD* sizeHigh) {
  std::uint64_t size = 0;
  const DWORD error = GuardedCode("GetFileSize", [&]() -> DWORD {
    std::shared_ptr<OpenFile> open;
    if (const DWORD failed = FindFile(file, open)) return failed;
    struct stat status = {};
    if (::fstat(open->fd.get(), &status) != 0) return ErrorFromErrno(errno, ERROR_GEN_FAILURE);
    size = static_cast<std::uint64_t>(status.st_size);
    return !sizeHigh && size >= INVALID_FILE_SIZE ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
  });
  SetLastError(error);
  if (error != ERROR_SUCCESS) return INVALID_FILE_SIZE;
  if (sizeHigh) *sizeHigh = static_cast<DWORD>(size >> 32);
  return static_cast<DWORD>(size);
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method) {
  LONGLONG position = 0;
  const DWORD error = GuardedCode("SetFilePointer", [&]() -> DWORD {
    std::shared_ptr<OpenFile> open;
    if (const DWORD failed = FindFile(file, open)) return failed;
    const LONGLONG full = distanceHigh ? LONGLONG{*distanceHigh} << 32 |
                                             static_cast<LONGLONG>(static_cast<DWORD>(distance))
                                       : LONGLONG{distance};
    return Seek(open->fd.get(), full, method, position);
  });
  SetLastError(error);
  if (error != ERROR_SUCCESS) return INVALID_SET_FILE_POINTER;
  if (distanceHigh) *distanceHigh = static_cast<LONG>(position >> 32);
  return static_cast<DWORD>(position);
}

BOOL FlushFileBuffers(HANDLE file) {
  return GuardedBool("FlushFileBuffers", [&]() -> DWORD {
    std::shared_ptr<OpenFile> open;
    if (const DWORD error = FindFile(file, open)) return error;
    return ::fsync(open->fd.get()) == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno, ERROR_WRITE_FAULT);
  });
}

BOOL DeleteFileW(const WCHAR* path) {
  return GuardedBool("DeleteFileW", [&]() -> DWORD {
    DevicePath entry;
    mode_t kind = 0;
    if (const DWORD error = host::ResolveDevicePath(path, entry)) return error;
    if (const DWORD error = KindOfClosed(entry, kind)) return error;
    if (!S_ISREG(kind)) return ERROR_ACCESS_DENIED;
    const int done = ::unlinkat(entry.directory.get(), entry.name.c_str(), 0);
    return done == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno, ERROR_ACCESS_DENIED);
  });
}

BOOL MoveFileW(const WCHAR* from, const WCHAR* to) {
  return GuardedBool("MoveFileW", [&]() -> DWORD {
    DevicePath source;
    DevicePath target;
    mode_t kind = 0;
    if (const DWORD error = host::ResolveDevicePath(from, source)) return error;
    if (const DWORD error = KindOfClosed(source, kind)) return error;
    if (const DWORD error = host::ResolveDevicePath(to, target)) return error;
    if (target.exists) return ERROR_ALREADY_EXISTS;
    if (!S_ISREG(kind) && !S_ISDIR(kind)) return ERROR_ACCESS_DENIED;
    return Rename(source, target) ? ERROR_SUCCESS : ErrorFromErrno(errno, ERROR_ACCESS_DENIED);
  });
}

BOOL CloseHandle(HANDLE handle) {
  // The caller gives the handle up whether or not the call succeeds.
  const bool closed = host::ObjectHandles().Close(handle);
  return GuardedBool("CloseHandle",
                     [closed] { return closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE; });
}

}  // namespace ce
