#include "platform/disk_space.h"

#include <sys/statvfs.h>

#include <cerrno>

#include "handheld/base/guarded.h"
#include "handheld/base/host_error.h"
#include "handheld/system/device_path.h"

namespace ce {

BOOL GetDiskFreeSpaceExW(const WCHAR* directory, ULONGLONG* freeToCaller, ULONGLONG* total,
                         ULONGLONG* free) {
  return host::GuardedBool("GetDiskFreeSpaceExW", [&]() -> DWORD {
    host::UniqueFd root;
    host::UniqueFd opened;
    if (const DWORD error = host::OpenFilesRoot(root)) return error;
    const std::u16string_view path = directory ? directory : u"\\";
    if (const DWORD error = host::OpenDeviceDirectory(root, path, opened)) return error;
    struct statvfs volume = {};
    if (::fstatvfs(opened.get(), &volume) != 0) return host::ErrorFromErrno(errno, ERROR_NOT_READY);
    const ULONGLONG block = volume.f_frsize;
    if (freeToCaller) *freeToCaller = volume.f_bavail * block;
    if (total) *total = volume.f_blocks * block;
    if (free) *free = volume.f_bfree * block;
    return ERROR_SUCCESS;
  });
}

}  // namespace ce
