#include "handheld/base/host_error.h"

#include <cerrno>

namespace ce::host {

DWORD ErrorFromErrno(int error, DWORD fallback) {
  switch (error) {
    case ENOENT:
      return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
      return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case ELOOP:
    case EBADF:
    case EXDEV:
      return ERROR_ACCESS_DENIED;
    case EEXIST:
    case ENOTEMPTY:
      return ERROR_ALREADY_EXISTS;
    case ENAMETOOLONG:
    case EILSEQ:
      return ERROR_INVALID_NAME;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return ERROR_DISK_FULL;
    case ENOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    case EINVAL:
      return ERROR_INVALID_PARAMETER;
    case ETXTBSY:
    case EBUSY:
      return ERROR_SHARING_VIOLATION;
    default:
      return fallback;
  }
}

}  // namespace ce::host
