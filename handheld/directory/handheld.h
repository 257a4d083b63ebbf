// The virtual handheld: a directory that holds what a device would hold.
//
//   registry.reg   settings           store.db   Pocket Outlook and messages
//   files/         the file system    .lock      who uses the directory now
//
// The platform calls of ce:: act on the process's current handheld.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "handheld/base/handheld_error.h"
#include "handheld/base/settings.h"
#include "platform/clock.h"
#include "platform/types.h"

namespace ce::host {

class Clock;
class DirectoryLock;
class Registry;

// What a new handheld is made with.
struct HandheldSettings {
  LANGID language = 0x0409;
  DWORD osMajor = 5;
  DWORD osMinor = 2;
  std::string zone = "UTC";  // a name of the system's zone database
  DWORD firstOid = 1;
};

class Handheld {
 public:
  static constexpr DWORD kFormatVersion = 1;
  // A block of memory may have this many bytes unless the settings say otherwise.
  static constexpr DWORD kDefaultMaxBlock = 256u << 20;
  static constexpr DWORD kDefaultPeerTimeout = 600;    // seconds
  static constexpr DWORD kDefaultRequestTimeout = 30;  // seconds

  // Makes a handheld in `directory`, which must not exist or be empty. Throws HandheldError.
  static void Create(const std::filesystem::path& directory, const HandheldSettings& settings);

  // Opens and locks a handheld. `program` is named to whoever finds it locked. An older format is
  // migrated, a newer one refused. Throws HandheldInUse, HandheldError.
  static std::unique_ptr<Handheld> Open(const std::filesystem::path& directory,
                                        std::string_view program);
  // As Open, to look at it: also while another program has it, which may change it meanwhile.
  static std::unique_ptr<Handheld> OpenToLook(const std::filesystem::path& directory,
                                              std::string_view program);
  ~Handheld();
  Handheld(const Handheld&) = delete;
  Handheld& operator=(const Handheld&) = delete;

  // The handheld that the platform calls act on; null outside a session. Not owned.
  static Handheld* Current();
  static void MakeCurrent(Handheld* handheld);

  // Another program has it, too: nothing can be set, and its store can only be read.
  bool IsShared() const { return !lock_; }

  const std::filesystem::path& directory() const { return directory_; }
  std::filesystem::path filesRoot() const { return directory_ / "files"; }
  std::filesystem::path storePath() const { return directory_ / "store.db"; }
  std::filesystem::path reservePath() const { return directory_ / "store.reserve"; }
  Registry& registry() { return *registry_; }
  Clock& clock() { return *clock_; }

  // The handheld's own settings; the fallback when the value is missing or of another type.
  // Thread-safe. Set is durable on return and throws HandheldError when it cannot be, as it cannot
  // in one that is shared.
  DWORD Number(const char16_t* name, DWORD fallback) const;
  std::u16string Text(const char16_t* name, std::u16string_view fallback) const;
  void Set(const char16_t* name, DWORD value);
  void Set(const char16_t* name, std::u16string_view value);

  // Number of setting::kMaxBlock, at the cost of a load.
  DWORD MaxBlock() const { return maxBlock_; }
  // Numbers of these settings, looked up again only when the registry has changed.
  LANGID Language() const;
  DWORD RequestTimeout() const;
  DWORD PeerTimeout() const;

  // The rules of the handheld's zone; nothing when the system's zone database lacks it.
  std::optional<TIME_ZONE_INFORMATION> ZoneRules() const;

 private:
  // Tells the bounds of the process's uploads.
  void LimitUploads() const;

  // A number, and the registry's version that has it.
  using Remembered = std::atomic<std::uint64_t>;
  static constexpr std::uint64_t kNothing = ~std::uint64_t{0};

  Handheld(const std::filesystem::path& directory, std::unique_ptr<DirectoryLock> lock);

  void RequireOwnership() const;
  DWORD Number(Remembered& remembered, const char16_t* name, DWORD fallback) const;

  const std::filesystem::path directory_;
  const std::unique_ptr<DirectoryLock> lock_;
  const std::shared_ptr<Registry> registry_;
  const std::unique_ptr<Clock> clock_;
  std::atomic<DWORD> maxBlock_;
  mutable Remembered language_{kNothing};
  mutable Remembered requestTimeout_{kNothing};
  mutable Remembered peerTimeout_{kNothing};

  // The zone that was read last: its database file is read again when the setting changes.
  mutable std::mutex zoneLock_;
  mutable std::string zoneName_;
  mutable std::optional<TIME_ZONE_INFORMATION> zone_;
};

}  // namespace ce::host
