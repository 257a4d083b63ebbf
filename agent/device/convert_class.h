// The agent's own window class, "com.tenbrook.convert". Conversions do without it.
#pragma once

#include "platform/types.h"

namespace corvane {

inline constexpr char16_t kConvertClass[] = u"com.tenbrook.convert";

// 0, or the system's error.
[[nodiscard]] ce::HRESULT RegisterConvertClass();
[[nodiscard]] ce::HRESULT UnregisterConvertClass();

}  // namespace corvane
