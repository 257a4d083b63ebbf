// The telephone's library as a module.
#pragma once

#include <span>

#include "handheld/base/built_in_module.h"
#include "platform/types.h"

namespace ce::host {

// The four functions of platform/phone.h. A handle that is no open call log is answered with the
// system's code for that, 0x80070006.
extern const ModuleFunction kPhoneFunctions[4];

}  // namespace ce::host
