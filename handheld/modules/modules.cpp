#include "platform/modules.h"

#include "handheld/base/guarded.h"
#include "handheld/modules/module_table.h"

namespace ce {
namespace {

using host::GuardedBool;
using host::ModuleTable;

// Never destroyed: a module may be freed by what ends after static objects have.
ModuleTable& Modules() {
  static ModuleTable* const table = new ModuleTable(host::BuiltInModules());
  return *table;
}

// Its address stands for the program itself.
int g_program;

}  // namespace

HMODULE LoadLibraryW(const WCHAR* name) {
  HMODULE module = nullptr;
  GuardedBool("LoadLibraryW", [&]() -> DWORD {
    if (!name) return ERROR_INVALID_PARAMETER;
    module = Modules().Load(name);
    return module ? ERROR_SUCCESS : ERROR_MOD_NOT_FOUND;
  });
  return module;
}

BOOL FreeLibrary(HMODULE module) {
  return GuardedBool("FreeLibrary", [&]() -> DWORD {
    return Modules().Free(module) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
  });
}

FARPROC GetProcAddressW(HMODULE module, const WCHAR* name) {
  FARPROC function = nullptr;
  GuardedBool("GetProcAddressW", [&]() -> DWORD {
    if (!name) return ERROR_INVALID_PARAMETER;
    if (module == &g_program) return ERROR_PROC_NOT_FOUND;
    switch (Modules().Find(module, name, function)) {
      case ModuleTable::Answer::kFound:
        return ERROR_SUCCESS;
      case ModuleTable::Answer::kNoFunction:
        return ERROR_PROC_NOT_FOUND;
      case ModuleTable::Answer::kNotLoaded:
        break;
    }
    return ERROR_INVALID_HANDLE;
  });
  return function;
}

HMODULE GetModuleHandleW(const WCHAR* name) {
  HMODULE module = nullptr;
  GuardedBool("GetModuleHandleW", [&]() -> DWORD {
    module = name ? Modules().Loaded(name) : &g_program;
    return module ? ERROR_SUCCESS : ERROR_MOD_NOT_FOUND;
  });
  return module;
}

}  // namespace ce
