// The registry of a handheld: in memory, and in a file that each change replaces as a whole.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "handheld/registry/registry_tree.h"

namespace ce::host {

// Keys are named from their root ("HKEY_LOCAL_MACHINE\\SOFTWARE\\…", "HKLM\\…" for short) or from
// HKEY_LOCAL_MACHINE ("SOFTWARE\\…"). Thread-safe. A change is durable when it returns 0; when it
// returns an error, neither the file nor what is in memory has changed.
class Registry : public std::enable_shared_from_this<Registry> {
 public:
  // A registry to be kept in `file`, which is written by the first change.
  explicit Registry(std::filesystem::path file);
  // Throws HandheldError, which names the file and a damaged line.
  static std::shared_ptr<Registry> Load(const std::filesystem::path& file);

  bool HasKey(std::u16string_view key) const;
  std::optional<RegistryValue> Value(std::u16string_view key, std::u16string_view name) const;
  // In the order of their names; nothing for a key that is not there.
  std::vector<std::u16string> SubKeys(std::u16string_view key) const;
  std::vector<NamedRegistryValue> Values(std::u16string_view key) const;

  // ERROR_INVALID_NAME for a name that no key or value can have, ERROR_FILE_NOT_FOUND when what is
  // to be deleted is not there, ERROR_DISK_FULL beyond the size that a registry may have.
  // `created`, which may be null, receives whether the key was made.
  [[nodiscard]] DWORD CreateKey(std::u16string_view key, bool* created);
  [[nodiscard]] DWORD SetValue(std::u16string_view key, std::u16string_view name,
                               RegistryValue value);
  // All of them in one durable step.
  [[nodiscard]] DWORD SetValues(std::u16string_view key, std::vector<NamedRegistryValue> values);
  [[nodiscard]] DWORD DeleteValue(std::u16string_view key, std::u16string_view name);
  // With everything below it. A root cannot be deleted: ERROR_ACCESS_DENIED.
  [[nodiscard]] DWORD DeleteKey(std::u16string_view key);

  // Another number after every change.
  std::uint32_t version() const { return version_.load(std::memory_order_acquire); }

  // The key's name from its root; nothing for a name that no key can have.
  static std::optional<std::u16string> FullPath(std::u16string_view key);

 private:
  // Lets `edit` change a copy and, when that gives 0, takes the copy over.
  template <typename Edit>
  DWORD Change(std::u16string_view key, Edit edit);
  // Takes the changed tree over once it is in the file.
  DWORD Replace(RegistryTree changed);

  const std::filesystem::path file_;
  mutable std::mutex lock_;
  RegistryTree tree_;
  std::atomic<std::uint32_t> version_{0};
};

}  // namespace ce::host
