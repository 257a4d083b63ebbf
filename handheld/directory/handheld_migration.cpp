#include "handheld/directory/handheld_migration.h"

#include <algorithm>
#include <string>

#include "handheld/directory/handheld.h"
#include "handheld/registry/registry_store.h"

namespace ce::host {
namespace {

DWORD FormatVersion(const std::filesystem::path& directory, const Registry& registry) {
  const auto value = registry.Value(setting::kKey, setting::kFormatVersion);
  const auto version = value ? value->AsNumber() : std::nullopt;
  if (!version) {
    throw HandheldError(directory.string() +
                        " is not a handheld: its registry.reg names no format version");
  }
  return *version;
}

}  // namespace

void MigrateHandheld(const std::filesystem::path& directory, Registry& registry, DWORD target,
                     std::span<const Migration> steps) {
  DWORD version = FormatVersion(directory, registry);
  if (version > target) {
    throw HandheldError(directory.string() + " has format " + std::to_string(version) +
                        "; this program knows formats up to " + std::to_string(target) +
                        ". Use the newer program that it was made with.");
  }
  for (; version < target; ++version) {
    const auto step =
        std::find_if(steps.begin(), steps.end(),
                     [version](const Migration& migration) { return migration.from == version; });
    if (step == steps.end()) {
      throw HandheldError(directory.string() + " has format " + std::to_string(version) +
                          ", which cannot be brought up to date");
    }
    step->apply(directory, registry);
    if (registry.SetValue(setting::kKey, setting::kFormatVersion,
                          RegistryValue::Number(version + 1)) != ERROR_SUCCESS) {
      throw HandheldError(directory.string() +
                          " cannot be brought up to date: registry.reg cannot " + "be written");
    }
  }
}

}  // namespace ce::host
