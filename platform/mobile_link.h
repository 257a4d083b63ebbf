// The control panel of the AvantGo client: the module "mobilelink.cpl", found by name at run time.
#pragma once

#include "platform/types.h"

namespace ce {

// "AGMALCPOption". (0, 2, 0, 0) synchronises, and returns when that is done.
using AgmalCpOptionFn = LONG (*)(DWORD, DWORD, DWORD, DWORD);

}  // namespace ce
