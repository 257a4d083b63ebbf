// A library that is loaded before a program's others (LD_PRELOAD) and stands in front of the calls
// to the system that touch files below a directory, connections, or memory. It counts them and lets
// one go wrong. Settings are variables of the environment:
//
//   SHIM_CALLS  what counts: "writes" (whatever changes a file or a directory), "room" (those of
//               them that need some), "files" (all of them, and reading), "sockets" (connections
//               alone), "memory" (allocations, from the first file on), "locks" (of files) or
//               "conversions" (of text, when one is opened)
//   SHIM_BELOW  the directory
//   SHIM_AT     which of them goes wrong, from 1; 0 for none
//   SHIM_HOW    "kill" ends the process before the call; "half" writes the first half and ends it;
//               "fail" answers SHIM_ERROR this once; "fail-on" from there on
//   SHIM_ERROR  an error number; 0 for ENOMEM
//   SHIM_TOLD   the file that is told, in a line, the call that went wrong; or, at the end of a
//               process in which none did, how many there were
//
// Nothing here allocates, and it speaks to the system directly where it does not stand for a call.
#include <dlfcn.h>
#include <fcntl.h>
#include <iconv.h>
#include <signal.h>
#include <stdarg.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

enum class Counted { kNothing, kWrites, kRoom, kFiles, kSockets, kMemory, kLocks, kConversions };
enum class How { kFail, kFailOn, kKill, kHalf };

struct Settings {
  Counted counted = Counted::kNothing;
  How how = How::kFail;
  unsigned long at = 0;
  int error = ENOMEM;
  const char* below = "";
  const char* told = nullptr;
};
Settings g_settings;
std::atomic<unsigned long> g_calls{0};
std::atomic<bool> g_wentWrong{false};
// Memory counts from the first file of the directory on: what a program does before it knows its
// arguments is not its work.
std::atomic<bool> g_begun{false};

bool Is(const char* text, const char* word) {
  return std::strcmp(text, word) == 0;
}

void Tell(const char* text) {
  if (g_settings.told == nullptr) return;
  const long fd = syscall(SYS_openat, AT_FDCWD, g_settings.told,
                          O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  syscall(SYS_write, fd, text, std::strlen(text));
  syscall(SYS_close, fd);
}

__attribute__((constructor)) void ReadSettings() {
  const char* const calls = getenv("SHIM_CALLS");
  const char* const how = getenv("SHIM_HOW");
  const char* const at = getenv("SHIM_AT");
  const char* const error = getenv("SHIM_ERROR");
  const char* const below = getenv("SHIM_BELOW");
  if (calls == nullptr) return;
  g_settings.below = below != nullptr ? below : "";
  g_settings.told = getenv("SHIM_TOLD");
  g_settings.at = at != nullptr ? std::strtoul(at, nullptr, 10) : 0;
  if (error != nullptr && std::atoi(error) != 0) g_settings.error = std::atoi(error);
  if (how != nullptr) {
    g_settings.how = Is(how, "kill")      ? How::kKill
                     : Is(how, "half")    ? How::kHalf
                     : Is(how, "fail-on") ? How::kFailOn
                                          : How::kFail;
  }
  g_settings.counted = Is(calls, "writes")        ? Counted::kWrites
                       : Is(calls, "room")        ? Counted::kRoom
                       : Is(calls, "files")       ? Counted::kFiles
                       : Is(calls, "sockets")     ? Counted::kSockets
                       : Is(calls, "locks")       ? Counted::kLocks
                       : Is(calls, "conversions") ? Counted::kConversions
                                                  : Counted::kMemory;
}

__attribute__((destructor)) void TellCalls() {
  if (g_settings.counted == Counted::kNothing || g_wentWrong) return;
  char line[64];
  std::snprintf(line, sizeof(line), "%lu\n", g_calls.load());
  Tell(line);
}

// Whether this call goes wrong by an error, errno set; a process that is to be killed ends here.
bool GoesWrong(const char* call) {
  const unsigned long n = ++g_calls;
  if (g_settings.at == 0 || n < g_settings.at) return false;
  if (n > g_settings.at && g_settings.how != How::kFailOn) return false;
  if (!g_wentWrong.exchange(true)) {
    Tell(call);
    Tell("\n");
  }
  if (g_settings.how == How::kKill || g_settings.how == How::kHalf) {
    syscall(SYS_kill, syscall(SYS_getpid), SIGKILL);
  }
  errno = g_settings.error;
  return true;
}

bool IsBelow(const char* path) {
  if (path == nullptr || g_settings.counted == Counted::kNothing) return false;
  const bool below = std::strncmp(path, g_settings.below, std::strlen(g_settings.below)) == 0;
  if (below) g_begun = true;
  return below;
}
bool IsBelow(int fd) {
  char link[32], path[4096];
  std::snprintf(link, sizeof(link), "/proc/self/fd/%d", fd);
  const long length = syscall(SYS_readlinkat, AT_FDCWD, link, path, sizeof(path) - 1);
  if (length < 0) return false;
  path[length] = '\0';
  return IsBelow(path);
}
// A name in an open directory counts as that directory does.
bool IsBelow(int directory, const char* path) {
  return path != nullptr && path[0] == '/' ? IsBelow(path)
         : directory == AT_FDCWD           ? false
                                           : IsBelow(directory);
}

bool CountsWrites() {
  return g_settings.counted == Counted::kWrites || g_settings.counted == Counted::kFiles;
}
bool CountsRoom() {
  return g_settings.counted == Counted::kRoom || CountsWrites();
}
template <typename... Place>
bool WriteGoesWrong(const char* call, Place... place) {
  return IsBelow(place...) && CountsWrites() && GoesWrong(call);
}
template <typename... Place>
bool MakingGoesWrong(const char* call, Place... place) {
  return IsBelow(place...) && CountsRoom() && GoesWrong(call);
}
template <typename... Place>
bool ReadGoesWrong(const char* call, Place... place) {
  return IsBelow(place...) && g_settings.counted == Counted::kFiles && GoesWrong(call);
}
template <typename... Place>
bool OpenGoesWrong(const char* call, int flags, Place... place) {
  return (flags & (O_CREAT | O_TRUNC)) != 0 || (flags & O_TMPFILE) == O_TMPFILE
             ? MakingGoesWrong(call, place...)
             : ReadGoesWrong(call, place...);
}
bool SocketGoesWrong(const char* call) {
  return g_settings.counted == Counted::kSockets && GoesWrong(call);
}
bool MemoryGoesWrong(const char* call) {
  return g_settings.counted == Counted::kMemory && g_begun && GoesWrong(call);
}

// What stands behind this library under that name.
template <typename Function>
Function Behind(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// Whether the next write is the one that ends halfway.
bool EndsHalfway() {
  return g_settings.how == How::kHalf && g_calls + 1 == g_settings.at;
}

}  // namespace

#define BEHIND(name) static const auto behind = Behind<decltype(&name)>(#name)

extern "C" {

#define SHIM_OPEN(name)                                                          \
  int name(const char* path, int flags, ...) {                                   \
    static const auto behind = Behind<int (*)(const char*, int, mode_t)>(#name); \
    va_list more;                                                                \
    va_start(more, flags);                                                       \
    const mode_t mode = va_arg(more, mode_t);                                    \
    va_end(more);                                                                \
    return OpenGoesWrong(#name, flags, path) ? -1 : behind(path, flags, mode);   \
  }
SHIM_OPEN(open)
SHIM_OPEN(open64)
#define SHIM_OPENAT(name)                                                                       \
  int name(int directory, const char* path, int flags, ...) {                                   \
    static const auto behind = Behind<int (*)(int, const char*, int, mode_t)>(#name);           \
    va_list more;                                                                               \
    va_start(more, flags);                                                                      \
    const mode_t mode = va_arg(more, mode_t);                                                   \
    va_end(more);                                                                               \
    return OpenGoesWrong(#name, flags, directory, path) ? -1                                    \
                                                        : behind(directory, path, flags, mode); \
  }
SHIM_OPENAT(openat)
SHIM_OPENAT(openat64)

ssize_t write(int fd, const void* bytes, size_t count) {
  BEHIND(write);
  if (!IsBelow(fd) || !CountsRoom()) return behind(fd, bytes, count);
  if (EndsHalfway()) behind(fd, bytes, count / 2);
  return GoesWrong("write") ? -1 : behind(fd, bytes, count);
}
#define SHIM_PWRITE(name, Offset)                                           \
  ssize_t name(int fd, const void* bytes, size_t count, Offset at) {        \
    BEHIND(name);                                                           \
    if (!IsBelow(fd) || !CountsRoom()) return behind(fd, bytes, count, at); \
    if (EndsHalfway()) behind(fd, bytes, count / 2, at);                    \
    return GoesWrong(#name) ? -1 : behind(fd, bytes, count, at);            \
  }
SHIM_PWRITE(pwrite, off_t)
SHIM_PWRITE(pwrite64, off64_t)
ssize_t writev(int fd, const iovec* parts, int count) {
  BEHIND(writev);
  if (!IsBelow(fd) || !CountsRoom()) return behind(fd, parts, count);
  if (EndsHalfway() && count > 0) behind(fd, parts, 1);
  return GoesWrong("writev") ? -1 : behind(fd, parts, count);
}

#define SHIM_WRITE(result, name, parameters, arguments, ...)           \
  result name parameters {                                             \
    BEHIND(name);                                                      \
    return WriteGoesWrong(#name, __VA_ARGS__) ? -1 : behind arguments; \
  }
#define SHIM_MAKE(result, name, parameters, arguments, ...)             \
  result name parameters {                                              \
    BEHIND(name);                                                       \
    return MakingGoesWrong(#name, __VA_ARGS__) ? -1 : behind arguments; \
  }
SHIM_WRITE(int, fsync, (int fd), (fd), fd)
SHIM_WRITE(int, fdatasync, (int fd), (fd), fd)
SHIM_WRITE(int, ftruncate, (int fd, off_t size), (fd, size), fd)
SHIM_WRITE(int, ftruncate64, (int fd, off64_t size), (fd, size), fd)
SHIM_MAKE(int, mkdir, (const char* path, mode_t mode), (path, mode), path)
SHIM_WRITE(int, unlink, (const char* path), (path), path)
SHIM_WRITE(int, rmdir, (const char* path), (path), path)
SHIM_WRITE(int, remove, (const char* path), (path), path)
SHIM_WRITE(int, unlinkat, (int directory, const char* path, int flags), (directory, path, flags),
           directory, path)
SHIM_MAKE(int, link, (const char* from, const char* to), (from, to), to)
SHIM_MAKE(int, linkat, (int in, const char* from, int out, const char* to, int flags),
          (in, from, out, to, flags), out, to)
SHIM_MAKE(int, symlink, (const char* target, const char* path), (target, path), path)
SHIM_WRITE(int, rename, (const char* from, const char* to), (from, to), to)
SHIM_WRITE(int, renameat, (int in, const char* from, int out, const char* to), (in, from, out, to),
           out, to)
SHIM_WRITE(int, renameat2, (int in, const char* from, int out, const char* to, unsigned flags),
           (in, from, out, to, flags), out, to)
SHIM_WRITE(int, fchmod, (int fd, mode_t mode), (fd, mode), fd)

int posix_fallocate(int fd, off_t at, off_t size) {
  BEHIND(posix_fallocate);
  return MakingGoesWrong("posix_fallocate", fd) ? g_settings.error : behind(fd, at, size);
}

#define SHIM_READ(result, name, parameters, arguments, ...)           \
  result name parameters {                                            \
    BEHIND(name);                                                     \
    return ReadGoesWrong(#name, __VA_ARGS__) ? -1 : behind arguments; \
  }
SHIM_READ(ssize_t, read, (int fd, void* bytes, size_t count), (fd, bytes, count), fd)
SHIM_READ(ssize_t, pread, (int fd, void* bytes, size_t count, off_t at), (fd, bytes, count, at), fd)
SHIM_READ(ssize_t, pread64, (int fd, void* bytes, size_t count, off64_t at), (fd, bytes, count, at),
          fd)

#define SHIM_SOCKET(result, name, parameters, arguments)   \
  result name parameters {                                 \
    BEHIND(name);                                          \
    return SocketGoesWrong(#name) ? -1 : behind arguments; \
  }
SHIM_SOCKET(int, socket, (int family, int type, int protocol), (family, type, protocol))
SHIM_SOCKET(int, connect, (int fd, const sockaddr* to, socklen_t size), (fd, to, size))
SHIM_SOCKET(ssize_t, send, (int fd, const void* bytes, size_t count, int flags),
            (fd, bytes, count, flags))
SHIM_SOCKET(ssize_t, recv, (int fd, void* bytes, size_t count, int flags),
            (fd, bytes, count, flags))

int flock(int fd, int operation) noexcept {
  BEHIND(flock);
  return IsBelow(fd) && g_settings.counted == Counted::kLocks && GoesWrong("flock")
             ? -1
             : behind(fd, operation);
}

iconv_t iconv_open(const char* to, const char* from) {
  BEHIND(iconv_open);
  return g_settings.counted == Counted::kConversions && GoesWrong("iconv_open")
             ? reinterpret_cast<iconv_t>(-1)
             : behind(to, from);
}

// The library's own, which need no look-up: that would allocate.
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

void* malloc(size_t size) {
  return MemoryGoesWrong("malloc") ? nullptr : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
  return MemoryGoesWrong("calloc") ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) {
  return MemoryGoesWrong("realloc") ? nullptr : __libc_realloc(block, size);
}

}  // extern "C"
