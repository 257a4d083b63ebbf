// Room on the handheld's volumes.
#pragma once

#include "platform/types.h"

namespace ce {

// Of the volume that holds the directory, which is the root when it is null. Sizes are in bytes;
// each of the results may be null. FALSE with the last error, and nothing written, when there is no
// such directory (ERROR_PATH_NOT_FOUND) or its path is none (see files.h).
BOOL GetDiskFreeSpaceExW(const WCHAR* directory, ULONGLONG* freeToCaller, ULONGLONG* total,
                         ULONGLONG* free);

}  // namespace ce
