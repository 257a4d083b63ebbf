// Keys and values of a registry, as data: neither locked nor stored.
//
// A key is named by its full path, "HKEY_LOCAL_MACHINE\\SOFTWARE\\…". Names match without regard to
// case and keep the spelling they were made with.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace ce::host {

// The data as it stands in memory on the device: little-endian, text with its terminator.
struct RegistryValue {
  DWORD type = 0;  // REG_SZ, REG_BINARY, REG_DWORD, or any other, which is kept as it is
  std::vector<BYTE> data;

  static RegistryValue Text(std::u16string_view text);
  static RegistryValue Number(DWORD number);
  // Nothing when the value is of another type, or a number not of 4 bytes.
  std::optional<std::u16string> AsText() const;  // up to the terminator
  std::optional<DWORD> AsNumber() const;

  friend bool operator==(const RegistryValue&, const RegistryValue&) = default;
};

struct NamedRegistryValue {
  std::u16string name;  // empty for a key's default value
  RegistryValue value;

  friend bool operator==(const NamedRegistryValue&, const NamedRegistryValue&) = default;
};

class RegistryTree {
 public:
  static constexpr std::size_t kMaxName = 255;    // characters of a key's or value's name
  static constexpr std::size_t kMaxPath = 512;    // characters of a key's path
  static constexpr std::size_t kMaxDepth = 16;    // keys on a path
  static constexpr std::size_t kMaxData = 65536;  // bytes of a value

  // False for a path that no key can have: an unknown root, an empty or invalid name, too long, too
  // deep.
  static bool ValidPath(std::u16string_view path);
  // False for a name that no value can have: too long, with control characters or half surrogates.
  static bool ValidName(std::u16string_view name);

  bool HasKey(std::u16string_view path) const;
  // Makes the keys on the way too. False when the key is there already. The path must be valid.
  bool AddKey(std::u16string_view path);
  // With everything below it. False when it is not there.
  bool DeleteKey(std::u16string_view path);

  // Null when the key or the value is not there.
  const RegistryValue* Find(std::u16string_view path, std::u16string_view name) const;
  // Makes the key when it is not there. The path must be valid.
  void Set(std::u16string_view path, std::u16string_view name, RegistryValue value);
  bool DeleteValue(std::u16string_view path, std::u16string_view name);

  // In the order of their names; nothing for a key that is not there.
  std::vector<std::u16string> SubKeys(std::u16string_view path) const;
  std::vector<NamedRegistryValue> Values(std::u16string_view path) const;

  struct Key {
    std::u16string path;
    std::map<std::u16string, NamedRegistryValue> values;  // by folded name
    friend bool operator==(const Key&, const Key&) = default;
  };
  // By folded path, parents first.
  const std::map<std::u16string, Key>& keys() const { return keys_; }

  friend bool operator==(const RegistryTree&, const RegistryTree&) = default;

 private:
  std::map<std::u16string, Key> keys_;
};

}  // namespace ce::host
