#include "handheld/registry/registry_store.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "common/text/unicode.h"
#include "handheld/base/durable_file.h"
#include "handheld/base/handheld_error.h"
#include "handheld/registry/registry_text.h"

namespace ce::host {
namespace {

constexpr std::u16string_view kLocalMachine = u"HKEY_LOCAL_MACHINE";
constexpr std::u16string_view kLocalMachineShort = u"HKLM";

}  // namespace

Registry::Registry(std::filesystem::path file) : file_(std::move(file)) {}

std::shared_ptr<Registry> Registry::Load(const std::filesystem::path& file) {
  const std::optional<std::string> text = ReadWholeFile(file, kMaxRegistryText);
  if (!text) throw HandheldError(file.string() + " cannot be read: " + std::strerror(errno));
  auto registry = std::make_shared<Registry>(file);
  try {
    registry->tree_ = ParseRegistry(*text);
  } catch (const RegistryTextError& error) {
    throw HandheldError(file.string() + " is damaged in " + error.what());
  }
  return registry;
}

std::optional<std::u16string> Registry::FullPath(std::u16string_view key) {
  std::u16string path(key);
  const std::u16string first = text::Fold(key.substr(0, key.find(u'\\')));
  if (first == kLocalMachineShort) {
    path.replace(0, kLocalMachineShort.size(), kLocalMachine);
  } else if (!RegistryTree::ValidPath(key)) {
    path.insert(0, std::u16string(kLocalMachine) + (key.empty() ? u"" : u"\\"));
  }
  if (!RegistryTree::ValidPath(path)) return std::nullopt;
  return path;
}

bool Registry::HasKey(std::u16string_view key) const {
  const std::optional<std::u16string> path = FullPath(key);
  const std::lock_guard guard(lock_);
  return path && tree_.HasKey(*path);
}

std::optional<RegistryValue> Registry::Value(std::u16string_view key,
                                             std::u16string_view name) const {
  const std::optional<std::u16string> path = FullPath(key);
  const std::lock_guard guard(lock_);
  const RegistryValue* value = path ? tree_.Find(*path, name) : nullptr;
  return value ? std::optional(*value) : std::nullopt;
}

std::vector<std::u16string> Registry::SubKeys(std::u16string_view key) const {
  const std::optional<std::u16string> path = FullPath(key);
  const std::lock_guard guard(lock_);
  return path ? tree_.SubKeys(*path) : std::vector<std::u16string>{};
}

std::vector<NamedRegistryValue> Registry::Values(std::u16string_view key) const {
  const std::optional<std::u16string> path = FullPath(key);
  const std::lock_guard guard(lock_);
  return path ? tree_.Values(*path) : std::vector<NamedRegistryValue>{};
}

DWORD Registry::CreateKey(std::u16string_view key, bool* created) {
  const std::optional<std::u16string> path = FullPath(key);
  if (!path) return ERROR_INVALID_NAME;
  const std::lock_guard guard(lock_);
  if (created) *created = false;
  if (tree_.HasKey(*path)) return ERROR_SUCCESS;
  RegistryTree changed = tree_;
  changed.AddKey(*path);
  const DWORD error = Replace(std::move(changed));
  if (created) *created = error == ERROR_SUCCESS;
  return error;
}

DWORD Registry::SetValue(std::u16string_view key, std::u16string_view name, RegistryValue value) {
  return SetValues(key, {{std::u16string(name), std::move(value)}});
}

DWORD Registry::SetValues(std::u16string_view key, std::vector<NamedRegistryValue> values) {
  return Change(key, [&](RegistryTree& tree, const std::u16string& path) -> DWORD {
    for (NamedRegistryValue& value : values) {
      if (!RegistryTree::ValidName(value.name)) return ERROR_INVALID_NAME;
      if (value.value.data.size() > RegistryTree::kMaxData) return ERROR_INVALID_PARAMETER;
      tree.Set(path, value.name, std::move(value.value));
    }
    return ERROR_SUCCESS;
  });
}

DWORD Registry::DeleteValue(std::u16string_view key, std::u16string_view name) {
  return Change(key, [name](RegistryTree& tree, const std::u16string& path) {
    return tree.DeleteValue(path, name) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
  });
}

DWORD Registry::DeleteKey(std::u16string_view key) {
  return Change(key, [](RegistryTree& tree, const std::u16string& path) {
    if (path.find(u'\\') == std::u16string::npos) return ERROR_ACCESS_DENIED;
    return tree.DeleteKey(path) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
  });
}

template <typename Edit>
DWORD Registry::Change(std::u16string_view key, Edit edit) {
  const std::optional<std::u16string> path = FullPath(key);
  if (!path) return ERROR_INVALID_NAME;
  const std::lock_guard guard(lock_);
  RegistryTree changed = tree_;
  if (const DWORD error = edit(changed, *path)) return error;
  return Replace(std::move(changed));
}

DWORD Registry::Replace(RegistryTree changed) {
  const std::string text = FormatRegistry(changed);
  if (text.size() > kMaxRegistryText) return ERROR_DISK_FULL;
  if (const DWORD error = ReplaceFile(file_, text)) return error;
  tree_ = std::move(changed);
  version_.fetch_add(1, std::memory_order_release);
  return ERROR_SUCCESS;
}

}  // namespace ce::host
