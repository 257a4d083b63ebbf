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
std::uint64_t RoomBeside(const std::filesystem::path& file) {
  struct ::statvfs volume {};
  if (::statvfs(file.parent_path().c_str(), &volume) != 0) return 0;
  const std::uint64_t room = std::uint64_t{volume.f_bavail} * volume.f_frsize;
  return FaultBytes("statvfs:reserve", static_cast<DWORD>(std::min<std::uint64_t>(
                                           room, std::numeric_limits<DWORD>::max())));
}

}  // namespace

void KeepReserve(const std::filesystem::path& file) {
  struct ::stat there {};
  const bool exists = ::lstat(file.c_str(), &there) == 0;
  if (exists && static_cast<std::uint64_t>(there.st_size) >= kReserveBytes) return;
  const std::uint64_t bytes =
      std::min(kReserveBytes, RoomBeside(file) / 2 / kReserveSteps * kReserveSteps);
  if (bytes == 0) return;
  const UniqueFd fd(
      ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
  if (fd && ::posix_fallocate(fd.get(), 0, static_cast<off_t>(bytes)) != 0) {
    ::unlink(file.c_str());
  }
}

bool ReleaseReserve(const std::filesystem::path& file) {
  return RoomBeside(file) < kReserveBytes && ::unlink(file.c_str()) == 0;
}

}  // namespace ce::host
