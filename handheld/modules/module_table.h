// Modules that are built in: what stands behind a name that a program loads at run time.
#pragma once

#include <mutex>
#include <span>
#include <string_view>
#include <vector>

#include "handheld/base/built_in_module.h"

namespace ce::host {

// The rows of the process. A folder that serves a module adds its row there, and nothing else
// knows it.
std::span<const BuiltInModule> BuiltInModules();

// Counts who uses which of the modules. Thread-safe.
class ModuleTable {
 public:
  // The rows outlive the table.
  explicit ModuleTable(std::span<const BuiltInModule> rows);

  // Null when there is no such module, or the current handheld does not have it.
  HMODULE Load(std::u16string_view name);
  // False when the module is not loaded.
  bool Free(HMODULE module);
  // Null when it is not loaded. Does not count.
  HMODULE Loaded(std::u16string_view name);
  enum class Answer { kFound, kNoFunction, kNotLoaded };
  Answer Find(HMODULE module, std::u16string_view name, FARPROC& function);

 private:
  struct Entry {
    const BuiltInModule* row;
    unsigned users = 0;
  };
  Entry* FindLoaded(HMODULE module);
  Entry* FindNamed(std::u16string_view name);

  std::mutex lock_;
  std::vector<Entry> entries_;  // never moves: an entry's address is its module's handle
};

}  // namespace ce::host
