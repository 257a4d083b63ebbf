// The modules of the device tests' handheld: the ink control, and the control panel of the AvantGo
// client, which a real handheld lacks.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

namespace corvane::testing {

// A handheld's setting; 0: it lacks the client.
inline constexpr char16_t kMobileLinkSetting[] = u"MobileLink";

// Whether the client's module has its function, from now on.
void SetMobileLinkHasFunction(bool has);
// The arguments of each call since this was asked last.
std::vector<std::vector<ce::DWORD>> TakeMobileLinkCalls();

}  // namespace corvane::testing
