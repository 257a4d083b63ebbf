// The virtual handheld: a directory that holds what a device would hold.
//
//   registry.reg   settings           store.db   Pocket Outlook and messages
//   files/         the file system    .lock      who uses the directory now
//
// The platform calls of ce:: act on the process's current handheld.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/types.h"

namespace ce::host {

class Clock;
class DirectoryLock;
class Registry;

// What went wrong with a handheld's directory, worded for the person who named it.
class HandheldError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What a new handheld is made with.
struct HandheldSettings {
  LANGID language = 0x0409;
  DWORD osMajor = 5;
  DWORD osMinor = 2;
  std::string zone = "UTC";  // a name of the system's zone database
  DWORD firstOid = 1;
};

// Names of the handheld's own settings: values of this key.
namespace setting {
inline constexpr char16_t kKey[] = u"HKEY_LOCAL_MACHINE\\Handheld";
inline constexpr char16_t kFormatVersion[] = u"FormatVersion";    // DWORD
inline constexpr char16_t kLanguage[] = u"Language";              // DWORD, a LANGID
inline constexpr char16_t kOsMajor[] = u"OsMajor";                // DWORD
inline constexpr char16_t kOsMinor[] = u"OsMinor";                // DWORD
inline constexpr char16_t kZone[] = u"Zone";                      // SZ
inline constexpr char16_t kOwner[] = u"Owner";                    // SZ
inline constexpr char16_t kClockOffset[] = u"ClockOffset";        // SZ, milliseconds, signed
inline constexpr char16_t kFirstOid[] = u"FirstOid";              // DWORD
inline constexpr char16_t kYomiFields[] = u"YomiFields";          // DWORD, 0: no Yomi fields
inline constexpr char16_t kPeerTimeout[] = u"PeerTimeout";        // DWORD, seconds (600)
inline constexpr char16_t kMaxBlock[] = u"MaxBlock";              // DWORD, bytes (256 MiB)
inline constexpr char16_t kMaxContactText[] = u"MaxContactText";  // DWORD, characters (1023)
inline constexpr char16_t kMaxBody[] = u"MaxBody";                // DWORD, bytes (61440)
}  // namespace setting

class Handheld {
 public:
  static constexpr DWORD kFormatVersion = 1;

  // Makes a handheld in `directory`, which must not exist or be empty. Throws HandheldError.
  static void Create(const std::filesystem::path& directory, const HandheldSettings& settings);

  // Opens and locks a handheld. `program` is named to whoever finds it locked. An older format is
  // migrated, a newer one refused. Throws HandheldError.
  static std::unique_ptr<Handheld> Open(const std::filesystem::path& directory,
                                        std::string_view program);
  ~Handheld();
  Handheld(const Handheld&) = delete;
  Handheld& operator=(const Handheld&) = delete;

  // The handheld that the platform calls act on; null outside a session. Not owned.
  static Handheld* Current();
  static void MakeCurrent(Handheld* handheld);

  const std::filesystem::path& directory() const { return directory_; }
  std::filesystem::path filesRoot() const { return directory_ / "files"; }
  std::filesystem::path storePath() const { return directory_ / "store.db"; }
  Registry& registry() { return *registry_; }
  Clock& clock() { return *clock_; }

  // The handheld's own settings; the fallback when the value is missing or of another type.
  // Thread-safe. Set is durable on return and throws HandheldError when it cannot be.
  DWORD Number(const char16_t* name, DWORD fallback) const;
  std::u16string Text(const char16_t* name, std::u16string_view fallback) const;
  void Set(const char16_t* name, DWORD value);
  void Set(const char16_t* name, std::u16string_view value);

  // The rules of the handheld's zone; nothing when the system's zone database lacks it.
  std::optional<TIME_ZONE_INFORMATION> ZoneRules() const;

 private:
  Handheld(const std::filesystem::path& directory, std::unique_ptr<DirectoryLock> lock);

  const std::filesystem::path directory_;
  const std::unique_ptr<DirectoryLock> lock_;
  const std::shared_ptr<Registry> registry_;
  const std::unique_ptr<Clock> clock_;

  // The zone that was read last: its database file is read again when the setting changes.
  mutable std::mutex zoneLock_;
  mutable std::string zoneName_;
  mutable std::optional<TIME_ZONE_INFORMATION> zone_;
};

}  // namespace ce::host
