#include "handheld/modules/module_table.h"

#include <algorithm>

#include "common/text/utf.h"
#include "handheld/directory/handheld.h"

namespace ce::host {
namespace {

bool HandheldHas(const BuiltInModule& row) {
  const Handheld* handheld = Handheld::Current();
  return handheld && handheld->Number(row.setting, 1) != 0;
}

}  // namespace

ModuleTable::ModuleTable(std::span<const BuiltInModule> rows) {
  for (const BuiltInModule& row : rows) entries_.push_back({&row});
}

ModuleTable::Entry* ModuleTable::FindNamed(std::u16string_view name) {
  const std::u16string folded = Fold(name);
  const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    return Fold(entry.row->name) == folded;
  });
  return found == entries_.end() ? nullptr : &*found;
}

ModuleTable::Entry* ModuleTable::FindLoaded(HMODULE module) {
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& entry) { return &entry == module; });
  return found == entries_.end() || found->users == 0 ? nullptr : &*found;
}

HMODULE ModuleTable::Load(std::u16string_view name) {
  const std::lock_guard guard(lock_);
  Entry* entry = FindNamed(name);
  if (!entry || !HandheldHas(*entry->row)) return nullptr;
  if (entry->users == 0 && entry->row->attach) entry->row->attach();
  ++entry->users;
  return entry;
}

bool ModuleTable::Free(HMODULE module) {
  const std::lock_guard guard(lock_);
  Entry* entry = FindLoaded(module);
  if (!entry) return false;
  if (--entry->users == 0 && entry->row->detach) entry->row->detach();
  return true;
}

HMODULE ModuleTable::Loaded(std::u16string_view name) {
  const std::lock_guard guard(lock_);
  Entry* entry = FindNamed(name);
  return entry && entry->users != 0 ? entry : nullptr;
}

ModuleTable::Answer ModuleTable::Find(HMODULE module, std::u16string_view name, FARPROC& function) {
  const std::lock_guard guard(lock_);
  const Entry* entry = FindLoaded(module);
  if (!entry) return Answer::kNotLoaded;
  for (const ModuleFunction& row : entry->row->functions) {
    if (row.name != name) continue;
    function = row.function;
    return Answer::kFound;
  }
  return Answer::kNoFunction;
}

}  // namespace ce::host
