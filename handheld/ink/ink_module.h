// The RichInk control as a module.
#pragma once

#include "platform/types.h"

namespace ce::host {

namespace setting {
inline constexpr char16_t kRichInk[] = u"RichInk";  // DWORD, 0: no RichInk control
}

// Add and remove the window class. May throw std::bad_alloc.
void AttachRichInk();
void DetachRichInk();

}  // namespace ce::host
