#include "handheld/store/reserve.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

#include "handheld/base/fault.h"
#include "handheld/base/unique_fd.h"

namespace ce::host {
namespace {

constexpr std::uint64_t kReserveSteps = 64 * 1024;

// What an ordinary user may fill, as far as it matters.
std::uint64_t RoomOn(const struct ::statvfs& volume) {
  const std::uint64_t room = std::uint64_t{volume.f_bavail} * volume.f_frsize;
  return FaultBytes("statvfs:reserve", static_cast<DWORD>(std::min<std::uint64_t>(
                                           room, std::numeric_limits<DWORD>::max())));
}

}  // namespace

void KeepReserve(const std::filesystem::path& file) {
  struct ::stat there {};
  const bool exists = ::lstat(file.c_str(), &there) == 0;
  if (exists && static_cast<std::uint64_t>(there.st_size) >= kReserveBytes) return;
  const UniqueFd fd(
      ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
  struct ::statvfs volume {};
  if (!fd || ::fstatvfs(fd.get(), &volume) != 0) return;
  const std::uint64_t bytes =
      std::min(kReserveBytes, RoomOn(volume) / 2 / kReserveSteps * kReserveSteps);
  if (bytes == 0 && exists) return;
  if (bytes == 0 || ::posix_fallocate(fd.get(), 0, static_cast<off_t>(bytes)) != 0)
    ::unlink(file.c_str());
}

bool ReleaseReserve(const std::filesystem::path& file) {
  struct ::statvfs volume {};
  return ::statvfs(file.c_str(), &volume) == 0 && RoomOn(volume) < kReserveBytes &&
         ::unlink(file.c_str()) == 0;
}

}  // namespace ce::host
