#include "platform/registry.h"

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "handheld/base/guarded.h"
#include "handheld/base/handle_table.h"
#include "handheld/directory/handheld.h"
#include "handheld/registry/registry_store.h"

namespace ce {
namespace {

using host::GuardedCode;
using host::Registry;

struct OpenKey : host::HandleObject {
  OpenKey(std::weak_ptr<Registry> keyRegistry, std::u16string keyPath)
      : registry(std::move(keyRegistry)), path(std::move(keyPath)) {}

  const std::weak_ptr<Registry> registry;
  const std::u16string path;
};

// Apart from the objects that CloseHandle closes.
host::HandleTable& Keys() {
  static host::HandleTable* const table = new host::HandleTable;
  return *table;
}

struct KeyTarget {
  std::shared_ptr<Registry> registry;
  std::u16string path;
};

// Holds the registry for the length of a call.
DWORD FindKey(HKEY key, KeyTarget& target) {
  if (key == HKEY_LOCAL_MACHINE) {
    host::Handheld* handheld = host::Handheld::Current();
    if (!handheld) return ERROR_NOT_READY;
    target = {handheld->registry().shared_from_this(), u"HKEY_LOCAL_MACHINE"};
    return ERROR_SUCCESS;
  }
  const auto open = std::static_pointer_cast<OpenKey>(Keys().Find(key));
  if (!open) return ERROR_INVALID_HANDLE;
  target = {open->registry.lock(), open->path};
  return target.registry ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

DWORD FindSubKey(HKEY parent, const WCHAR* subKey, KeyTarget& target) {
  if (const DWORD error = FindKey(parent, target)) return error;
  if (subKey && *subKey) target.path.append(u"\\").append(subKey);
  return ERROR_SUCCESS;
}

HKEY AddKeyHandle(const KeyTarget& target) {
  return Keys().Add(std::make_shared<OpenKey>(target.registry, target.path));
}

// A key that another handle has deleted is gone for this one too.
bool Exists(const KeyTarget& target) {
  const bool isRoot = target.path.find(u'\\') == std::u16string::npos;
  return isRoot || target.registry->HasKey(target.path);
}

LONG Answer(DWORD error) {
  return static_cast<LONG>(error);
}

}  // namespace

LONG RegOpenKeyExW(HKEY parent, const WCHAR* subKey, DWORD, DWORD, HKEY* result) {
  return Answer(GuardedCode("RegOpenKeyExW", [&]() -> DWORD {
    if (!result) return ERROR_INVALID_PARAMETER;
    KeyTarget target;
    if (const DWORD error = FindSubKey(parent, subKey, target)) return error;
    if (!Exists(target)) return ERROR_FILE_NOT_FOUND;
    *result = AddKeyHandle(target);
    return ERROR_SUCCESS;
  }));
}

LONG RegCreateKeyExW(HKEY parent, const WCHAR* subKey, DWORD, WCHAR*, DWORD, DWORD, void*,
                     HKEY* result, DWORD* disposition) {
  return Answer(GuardedCode("RegCreateKeyExW", [&]() -> DWORD {
    if (!result) return ERROR_INVALID_PARAMETER;
    KeyTarget target;
    if (const DWORD error = FindSubKey(parent, subKey, target)) return error;
    bool created = false;
    if (const DWORD error = target.registry->CreateKey(target.path, &created)) return error;
    *result = AddKeyHandle(target);
    if (disposition) *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return ERROR_SUCCESS;
  }));
}

LONG RegQueryValueExW(HKEY key, const WCHAR* name, DWORD*, DWORD* type, BYTE* data, DWORD* size) {
  return Answer(GuardedCode("RegQueryValueExW", [&]() -> DWORD {
    if (data && !size) return ERROR_INVALID_PARAMETER;
    KeyTarget target;
    if (const DWORD error = FindKey(key, target)) return error;
    const auto value = target.registry->Value(target.path, name ? name : u"");
    if (!value) return ERROR_FILE_NOT_FOUND;
    const auto needed = static_cast<DWORD>(value->data.size());
    const bool fits = !data || *size >= needed;
    if (type) *type = value->type;
    if (size) *size = needed;
    if (!fits) return ERROR_MORE_DATA;
    if (data && needed != 0) std::memcpy(data, value->data.data(), needed);
    return ERROR_SUCCESS;
  }));
}

LONG RegSetValueExW(HKEY key, const WCHAR* name, DWORD, DWORD type, const BYTE* data, DWORD size) {
  return Answer(GuardedCode("RegSetValueExW", [&]() -> DWORD {
    if (!data && size != 0) return ERROR_INVALID_PARAMETER;
    KeyTarget target;
    if (const DWORD error = FindKey(key, target)) return error;
    if (!Exists(target)) return ERROR_FILE_NOT_FOUND;
    host::RegistryValue value{type, {}};
    if (size > host::RegistryTree::kMaxData) return ERROR_INVALID_PARAMETER;
    if (data) value.data.assign(data, data + size);
    return target.registry->SetValue(target.path, name ? name : u"", std::move(value));
  }));
}

LONG RegCloseKey(HKEY key) {
  return Answer(GuardedCode("RegCloseKey", [&]() -> DWORD {
    if (key == HKEY_LOCAL_MACHINE) return ERROR_SUCCESS;
    return Keys().Close(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
  }));
}

}  // namespace ce
