// A module that is built in: what stands behind a name that a program loads at run time.
#pragma once

#include <span>
#include <string_view>

#include "platform/modules.h"

namespace ce::host {

struct ModuleFunction {
  std::u16string_view name;  // matches with its case
  FARPROC function = nullptr;
};

// What it points to lives as long as the process.
struct BuiltInModule {
  std::u16string_view name;           // matches without regard to case
  const char16_t* setting = nullptr;  // a DWORD setting of the handheld; 0: it lacks the module
  std::span<const ModuleFunction> functions = {};
  void (*attach)() = nullptr;  // run when it is loaded the first time, and may throw; may be null
  void (*detach)() = nullptr;  // run when it is freed the last time; may be null
};

// Those of the handheld, each time the same.
std::span<const BuiltInModule> BuiltInModules();

}  // namespace ce::host
